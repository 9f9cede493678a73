#include "platform_linux/LinuxMidi.h"

#include <string>

#include "platform_linux/GuardedMidi.h"

namespace zemo::platform {

Status EmptyMidi::createClient(const char* /*name*/, MidiObject& client) {
    client = 1;
    return kNoError;
}

Status EmptyMidi::createInputPort(MidiObject /*client*/, const char* /*name*/,
                                  MidiReadProc /*read*/, void* /*readContext*/, MidiObject& port) {
    port = 1;
    return kNoError;
}

std::unique_ptr<MidiService> findLinuxMidi(const char* clientName) {
    if (auto alsa = makeAlsaMidi()) {
        return alsa;
    }
    if (auto jack = makeJackMidi(clientName)) {
        return jack;
    }
    return std::make_unique<EmptyMidi>();
}

std::unique_ptr<MidiService> makeLinuxMidi(const char* clientName) {
    return std::make_unique<GuardedMidi>(
        [name = std::string(clientName)] { return findLinuxMidi(name.c_str()); });
}

} // namespace zemo::platform
