#include "midi/MidiClient.h"

#include <cstring>
#include <span>

#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/CheckError.h"

namespace zemo {
namespace {

using platform::format;

constexpr unsigned kSystemMessage = 0xF;
constexpr unsigned kNoteOn = 9;
constexpr std::size_t kTimeStampBytes = 8;

platform::TraceLog& trace() {
    return *platform::services().trace;
}

/// A number at the head of `bytes`, taken off it; false when they are too few.
template <typename Number> bool take(std::span<const std::uint8_t>& bytes, Number& number) {
    if (bytes.size() < sizeof(Number)) {
        return false;
    }
    std::memcpy(&number, bytes.data(), sizeof(Number));
    bytes = bytes.subspan(sizeof(Number));
    return true;
}

/// The data of the next packet, taken off the list; false at its end.
bool takePacket(std::span<const std::uint8_t>& list, std::span<const std::uint8_t>& data) {
    std::uint64_t timeStamp = 0;
    std::uint16_t length = 0;
    static_assert(sizeof timeStamp == kTimeStampBytes);
    if (!take(list, timeStamp) || !take(list, length) || list.size() < length) {
        return false;
    }
    data = list.first(length);
    list = list.subspan(length);
    return true;
}

/// Whether a message starts or stops the play. A note-on that was cut short has no velocity.
bool isAudibleNoteOn(unsigned message, unsigned midiChannel, std::span<const std::uint8_t> data) {
    const bool accepted = omni.load() || midiChannel == channel.load();
    const unsigned velocity = data.size() > 2 ? data[2] & 0x7FU : 0U;
    return accepted && message == kNoteOn && velocity != 0;
}

void readPacket(std::span<const std::uint8_t> data) {
    if (data.empty()) {
        return;
    }
    const unsigned message = data[0] >> 4U;
    const unsigned midiChannel = data[0] & 0x0FU;
    if (message == kSystemMessage) {
        return;
    }
    trace().print(format("Channel: %x, Message: %x\n", midiChannel, message));
    if (!isAudibleNoteOn(message, midiChannel, data)) {
        return;
    }
    trace().print("NOTE ON\n");
    if (MidiDelegate* const delegate = midiDelegate.load()) {
        delegate->playButtonPressedByMidi();
        delegate->setPlayTitleByMidi();
    }
}

} // namespace

std::atomic<MidiDelegate*> midiDelegate{nullptr};

/// [midi]
static void passNoticeOn() {
    if (MidiDelegate* const delegate = midiDelegate.load()) {
        delegate->midiNoticeChanged();
    }
}

namespace {

/// What came of it: the operation that failed, if one did, and how many sources there are.
struct Connection {
    platform::Status status = platform::kNoError;
    const char* operation = nullptr;
    long sources = 0;
};

Connection connectMidi(platform::MidiService& midi, BufferPlayer& player) {
    player.midiClient = 0;
    if (const auto status = midi.createClient(kMidiClientName, player.midiClient)) {
        return {status, "MIDI Client Create Error\nRelaunch Application:"};
    }
    midi.onNotice(passNoticeOn);
    if (const auto status = midi.createInputPort(player.midiClient, "MIDI_Input", midiReadProc,
                                                 nullptr, player.midiInPort)) {
        return {status, "MIDI Port Create Error\nRelaunch Application:"};
    }
    const long sources = midi.numberOfSources();
    trace().print(format("MIDI Sources: %ld\n", sources));
    for (long index = 0; index < sources; ++index) {
        // A source that cannot be connected is left out.
        static_cast<void>(midi.connectSource(player.midiInPort, midi.source(index), nullptr));
    }
    omni.store(true);
    midi.deliver(); // not before: a note on another channel would have been left out
    return {.sources = sources};
}

} // namespace

void createMIDI(BufferPlayer* player) {
    const Connection made = connectMidi(*platform::services().midi, *player);
    CheckError(made.status, made.operation);
}

std::optional<long> recreateMIDI(BufferPlayer* player) {
    platform::MidiService& midi = *platform::services().midi;
    midi.startOver();
    const Connection made = connectMidi(midi, *player);
    return made.status == platform::kNoError ? std::optional(made.sources) : std::nullopt;
}

void midiReadProc(const platform::MidiPacketList& packets, void* /*readContext*/,
                  void* /*sourceContext*/) {
    std::span<const std::uint8_t> list(packets.bytes, packets.size);
    std::uint32_t count = 0;
    if (!take(list, count)) {
        return;
    }
    std::span<const std::uint8_t> data;
    while (count > 0 && takePacket(list, data)) {
        readPacket(data);
        --count;
    }
}

} // namespace zemo
