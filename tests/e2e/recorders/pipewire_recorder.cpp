// pipewire_recorder PARENT NAME RATE FRAMES FILE: a sink of PipeWire of that name and rate, which
// records what it gets into a file of 32-bit floats, channel beside channel.
//
// It is its own driver: a period of so many frames begins when it says so, which is when the last
// one is over, its time has passed, and all sleep. While nobody plays, or the server stands still,
// it writes silence by itself. SIGUSR1 makes the periods half as long, and again as long as before.
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

#include "Pace.h"

namespace {

using zemo::recorders::Pace;

struct Recorder {
    pw_main_loop* loop;
    pw_stream* stream;
    spa_source* timer;
    std::FILE* file;
    std::uint32_t rate;
    std::uint32_t usualFrames;
    std::uint32_t frames;
    Pace pace;
    bool cycleIsOver = true;

    void lookAgain() {
        timespec after{0, static_cast<long>(pace.untilNextLook().count())}; // below a second
        pw_loop_update_timer(pw_main_loop_get_loop(loop), timer, &after, nullptr, false);
    }

    void changePeriod(std::uint32_t count) {
        frames = count;
        const std::string value = std::to_string(count);
        const spa_dict_item item{"node.force-quantum", value.c_str()};
        const spa_dict properties{0, 1, &item};
        pw_stream_update_properties(stream, &properties);
    }

    void writeSilence() {
        const std::vector<float> silence(2 * frames);
        std::fwrite(silence.data(), sizeof(float), silence.size(), file);
        std::fflush(file);
    }

    bool isPlaying() const {
        return pw_stream_get_state(stream, nullptr) == PW_STREAM_STATE_STREAMING;
    }
};

void look(void* context, std::uint64_t /*expirations*/) {
    Recorder& recorder = *static_cast<Recorder*>(context);
    if (!recorder.pace.mayTick()) {
        return recorder.lookAgain();
    }
    recorder.pace.tick(recorder.frames);
    recorder.lookAgain();
    // One that is not over although all sleep was stopped, or lost in a change of the period.
    if (!recorder.isPlaying() || (!recorder.cycleIsOver && recorder.pace.isStopped())) {
        recorder.writeSilence();
    } else {
        recorder.cycleIsOver = false;
        pw_stream_trigger_process(recorder.stream);
    }
}

void changePeriod(void* context, int /*signal*/) {
    Recorder& recorder = *static_cast<Recorder*>(context);
    const bool isUsual = recorder.frames == recorder.usualFrames;
    recorder.changePeriod(isUsual ? recorder.usualFrames / 2 : recorder.usualFrames);
}

void record(void* context) {
    const Recorder& recorder = *static_cast<Recorder*>(context);
    while (pw_buffer* buffer = pw_stream_dequeue_buffer(recorder.stream)) {
        const spa_data& data = buffer->buffer->datas[0];
        std::fwrite(static_cast<char*>(data.data) + data.chunk->offset, 1, data.chunk->size,
                    recorder.file);
        pw_stream_queue_buffer(recorder.stream, buffer);
    }
    std::fflush(recorder.file);
}

const pw_stream_events kStreamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.process = record;
    events.trigger_done = [](void* context) {
        static_cast<Recorder*>(context)->cycleIsOver = true;
    };
    events.state_changed = [](void* context, pw_stream_state, pw_stream_state state, const char*) {
        if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
            pw_main_loop_quit(static_cast<Recorder*>(context)->loop);
        }
    };
    return events;
}();

pw_properties* properties(const std::string& name, std::uint32_t rate, std::uint32_t frames) {
    pw_properties* list = pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CLASS, "Audio/Sink", PW_KEY_NODE_DRIVER, "true",
        PW_KEY_PRIORITY_DRIVER, "30000", PW_KEY_PRIORITY_SESSION, "2000", PW_KEY_NODE_VIRTUAL,
        "true", PW_KEY_NODE_ALWAYS_PROCESS, "true", "audio.position", "[ FL FR ]", nullptr);
    pw_properties_set(list, PW_KEY_NODE_NAME, name.c_str());
    pw_properties_set(list, PW_KEY_NODE_DESCRIPTION, name.c_str());
    pw_properties_setf(list, PW_KEY_NODE_LATENCY, "%u/%u", frames, rate);
    pw_properties_setf(list, PW_KEY_NODE_RATE, "1/%u", rate);
    pw_properties_setf(list, "node.force-quantum", "%u", frames);
    pw_properties_setf(list, "node.force-rate", "%u", rate);
    return list;
}

bool connect(Recorder& recorder) {
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32;
    info.rate = recorder.rate;
    info.channels = 2;
    info.position[0] = SPA_AUDIO_CHANNEL_FL;
    info.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::uint8_t memory[1024];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory, sizeof memory);
    const spa_pod* format = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info);
    return pw_stream_connect(
               recorder.stream, PW_DIRECTION_INPUT, PW_ID_ANY,
               static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS),
               &format, 1) == 0;
}

} // namespace

int main(int count, char** words) {
    if (count != 6) {
        return 2;
    }
    const auto number = [&](int word) {
        return static_cast<std::uint32_t>(std::atoi(words[word]));
    };
    sigset_t changes; // the loop takes it, so none of the library's threads may
    sigemptyset(&changes);
    sigaddset(&changes, SIGUSR1);
    sigprocmask(SIG_BLOCK, &changes, nullptr);
    pw_init(nullptr, nullptr);
    Recorder recorder{pw_main_loop_new(nullptr),
                      nullptr,
                      nullptr,
                      std::fopen(words[5], "wb"),
                      number(3),
                      number(4),
                      number(4),
                      Pace(number(3), std::atoi(words[1]))};
    pw_loop* loop = pw_main_loop_get_loop(recorder.loop);
    recorder.stream =
        pw_stream_new_simple(loop, words[2], properties(words[2], recorder.rate, recorder.frames),
                             &kStreamEvents, &recorder);
    recorder.timer = pw_loop_add_timer(loop, look, &recorder);
    if (recorder.file == nullptr || recorder.stream == nullptr || !connect(recorder)) {
        return 1;
    }
    pw_loop_add_signal(loop, SIGUSR1, changePeriod, &recorder);
    recorder.lookAgain();
    pw_main_loop_run(recorder.loop);
    return 0;
}
