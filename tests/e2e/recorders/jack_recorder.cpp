// jack_recorder PARENT FILE: records its two ports into a file of 32-bit floats, channel beside
// channel.
//
// Its ports pass for a device's, so whatever looks for one connects to them. From one SIGUSR1 to
// the next it has the server in freewheel, in which a period begins when all clients are done with
// the last one and none is left out, and gives it back the time: it holds each period for its
// length, and until all sleep. With a PARENT of 0 it does not look who sleeps: for MIDI it is
// enough that nobody is left out. Clients are to come before that and to go after it: a
// freewheeling server may take seconds over it. While it freewheels there is a file FILE.freewheel.
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <jack/jack.h>
#include <unistd.h>

#include "Pace.h"

namespace {

using zemo::recorders::Pace;

struct Recorder {
    jack_client_t* client;
    std::array<jack_port_t*, 2> ears;
    std::FILE* file;
    Pace pace;
    std::vector<float> frames;
};

std::atomic<bool> isFreewheeling{false};

/// The server says when it has begun or ended to.
void markFreewheel(int begins, void* mark) {
    const char* const path = static_cast<const std::string*>(mark)->c_str();
    if (begins == 0) {
        std::remove(path);
    } else if (std::FILE* file = std::fopen(path, "w")) {
        std::fclose(file);
    }
}

int process(jack_nframes_t count, void* context) {
    Recorder& recorder = *static_cast<Recorder*>(context);
    recorder.frames.resize(2 * count);
    for (std::size_t channel = 0; channel < recorder.ears.size(); ++channel) {
        const auto* samples =
            static_cast<const float*>(jack_port_get_buffer(recorder.ears[channel], count));
        for (std::size_t i = 0; i < count; ++i) {
            recorder.frames[2 * i + channel] = samples[i];
        }
    }
    std::fwrite(recorder.frames.data(), sizeof(float), recorder.frames.size(), recorder.file);
    std::fflush(recorder.file);
    if (isFreewheeling) {
        recorder.pace.waitAndTick(count);
    }
    return 0;
}

} // namespace

int main(int count, char** words) {
    if (count != 3) {
        return 2;
    }
    sigset_t signals; // blocked in all threads, and waited for in this one
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    sigaddset(&signals, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    jack_client_t* client = jack_client_open("recorder", JackNoStartServer, nullptr);
    std::FILE* file = std::fopen(words[2], "wb");
    if (client == nullptr || file == nullptr) {
        return 1;
    }
    const auto ear = [&](const char* name) {
        return jack_port_register(client, name, JACK_DEFAULT_AUDIO_TYPE,
                                  JackPortIsInput | JackPortIsPhysical | JackPortIsTerminal, 0);
    };
    Recorder recorder{client,
                      {ear("in_1"), ear("in_2")},
                      file,
                      Pace(jack_get_sample_rate(client), std::atoi(words[1])),
                      {}};
    jack_set_process_callback(client, process, &recorder);
    std::string mark = std::string(words[2]) + ".freewheel";
    jack_set_freewheel_callback(client, markFreewheel, &mark);
    jack_on_shutdown(
        client, [](void*) { kill(getpid(), SIGUSR2); }, nullptr);
    if (jack_activate(client) != 0) {
        return 1;
    }
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal == SIGUSR1) {
        isFreewheeling = !isFreewheeling;
        jack_set_freewheel(client, isFreewheeling ? 1 : 0);
    }
    if (signal == SIGUSR2) {
        std::_Exit(0); // the server is gone: its library would wait for it
    }
    jack_client_close(client);
    return 0;
}
