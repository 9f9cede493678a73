#pragma once

#include <memory>

#include "platform/MidiInput.h"

namespace zemo::platform {

/// Of a service that hangs, or is there and gives no sign of life.
inline constexpr const char* kMidiDoesNotAnswer = "MIDI does not answer: no notes are read";

/// No MIDI at all: no sources, no failures.
class EmptyMidi final : public MidiService {
public:
    Status createClient(const char* name, MidiObject& client) override;
    Status createInputPort(MidiObject client, const char* name, MidiReadProc read,
                           void* readContext, MidiObject& port) override;
    long numberOfSources() override { return 0; }
    MidiObject source(long /*index*/) override { return 0; }
    Status connectSource(MidiObject /*port*/, MidiObject /*source*/, void* /*context*/) override {
        return kNoError;
    }
};

/// [main] The computer's MIDI, sought and called on a thread of its own: no call hangs.
/// `clientName` is what the client will be called; JACK wants to know it before it says whether it
/// is there.
std::unique_ptr<MidiService> makeLinuxMidi(const char* clientName);

/// [any] The ALSA sequencer; where there is none, JACK; else EmptyMidi.
std::unique_ptr<MidiService> findLinuxMidi(const char* clientName);

/// [any] One of them; null where it is not there.
std::unique_ptr<MidiService> makeAlsaMidi();
std::unique_ptr<MidiService> makeJackMidi(const char* clientName);

} // namespace zemo::platform
