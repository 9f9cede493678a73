#pragma once

#include <atomic>
#include <optional>

#include "platform/MidiInput.h"
#include "playback/SharedState.h"

namespace zemo {

/// What a note does. Every message is [midi].
class MidiDelegate {
public:
    MidiDelegate() = default;
    MidiDelegate(const MidiDelegate&) = delete;
    MidiDelegate& operator=(const MidiDelegate&) = delete;
    virtual ~MidiDelegate() = default;

    virtual void playButtonPressedByMidi() = 0; ///< as the play button, with no sender
    virtual void setPlayTitleByMidi() = 0;      ///< the play button's title becomes that of a play
    virtual void midiNoticeChanged() {}         ///< the service's notice is another one
};

/// The delegate of this process; null: nobody listens.
extern std::atomic<MidiDelegate*> midiDelegate;

inline constexpr const char* kMidiClientName = "MIDI_Client";

/// [main] Makes the client and its input port and connects every source that is present now. Ends
/// the process when the service is there and fails.
void createMIDI(BufferPlayer* player);

/// [main], [worker] Closes all of that and makes it anew, by a service that is looked for anew,
/// also where the one before has died. How many sources there are; nothing when the service is
/// there and fails.
std::optional<long> recreateMIDI(BufferPlayer* player);

/// [midi] A note-on with a velocity, on an accepted channel, plays or stops. Only the first message
/// of a packet counts. A packet that runs past the list ends it.
void midiReadProc(const platform::MidiPacketList& packets, void* readContext, void* sourceContext);

} // namespace zemo
