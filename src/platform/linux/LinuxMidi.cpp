#include "platform_linux/LinuxMidi.h"

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

std::unique_ptr<MidiService> makeLinuxMidi() {
    if (auto alsa = makeAlsaMidi()) {
        return alsa;
    }
    if (auto jack = makeJackMidi()) {
        return jack;
    }
    return std::make_unique<EmptyMidi>();
}

} // namespace zemo::platform
