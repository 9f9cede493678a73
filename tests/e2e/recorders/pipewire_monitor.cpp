// pipewire_monitor SINK RATE: writes what the monitor of a sink of PipeWire gets, and when, to the
// standard output. Of each cycle of the graph: the monotonic time in nanoseconds and the number of
// frames, 64 bits each, then the frames of the left channel as 32-bit floats.
//
// It says nothing about latency, so that the graph's period is what the players make it.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <vector>

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <unistd.h>

namespace {

constexpr std::size_t kChannels = 2;

struct Monitor {
    pw_main_loop* loop;
    pw_stream* stream;
    std::vector<float> left;
};

std::int64_t monotonicTime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

void writeAll(const void* bytes, std::size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(STDOUT_FILENO, next, count);
        if (written <= 0) {
            std::_Exit(0); // nobody listens any more
        }
        next += written;
        count -= static_cast<std::size_t>(written);
    }
}

void listen(void* context) {
    Monitor& monitor = *static_cast<Monitor*>(context);
    const std::int64_t now = monotonicTime();
    while (pw_buffer* buffer = pw_stream_dequeue_buffer(monitor.stream)) {
        const spa_data& data = buffer->buffer->datas[0];
        const auto* frames =
            reinterpret_cast<const float*>(static_cast<char*>(data.data) + data.chunk->offset);
        monitor.left.resize(data.chunk->size / (kChannels * sizeof(float)));
        for (float& sample : monitor.left) {
            sample = *frames;
            frames += kChannels;
        }
        const std::array<std::int64_t, 2> head{now, static_cast<std::int64_t>(monitor.left.size())};
        writeAll(head.data(), sizeof head);
        writeAll(monitor.left.data(), monitor.left.size() * sizeof(float));
        pw_stream_queue_buffer(monitor.stream, buffer);
    }
}

const pw_stream_events kStreamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.process = listen;
    events.state_changed = [](void* context, pw_stream_state, pw_stream_state state, const char*) {
        if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
            pw_main_loop_quit(static_cast<Monitor*>(context)->loop);
        }
    };
    return events;
}();

pw_properties* properties(const char* sink) {
    pw_properties* list = pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_NODE_NAME, "monitor",
        PW_KEY_STREAM_CAPTURE_SINK, "true", PW_KEY_NODE_ALWAYS_PROCESS, "true", nullptr);
    pw_properties_set(list, PW_KEY_TARGET_OBJECT, sink);
    return list;
}

bool connect(Monitor& monitor, std::uint32_t rate) {
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32;
    info.rate = rate;
    info.channels = kChannels;
    info.position[0] = SPA_AUDIO_CHANNEL_FL;
    info.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::uint8_t memory[1024];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory, sizeof memory);
    const spa_pod* format = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info);
    constexpr auto kFlags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    return pw_stream_connect(monitor.stream, PW_DIRECTION_INPUT, PW_ID_ANY, kFlags, &format, 1) ==
           0;
}

} // namespace

int main(int count, char** words) {
    if (count != 3) {
        return 2;
    }
    pw_init(nullptr, nullptr);
    Monitor monitor{pw_main_loop_new(nullptr), nullptr, {}};
    monitor.stream = pw_stream_new_simple(pw_main_loop_get_loop(monitor.loop), "monitor",
                                          properties(words[1]), &kStreamEvents, &monitor);
    if (monitor.stream == nullptr ||
        !connect(monitor, static_cast<std::uint32_t>(std::atoi(words[2])))) {
        return 1;
    }
    pw_main_loop_run(monitor.loop);
    return 0;
}
