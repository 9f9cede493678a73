#include "midi/MidiClient.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "platform_linux/LinuxMidi.h"
#include "platform_linux/MidiPackets.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename Number> void append(Bytes& list, Number number) {
    const std::size_t before = list.size();
    list.resize(before + sizeof number);
    std::memcpy(list.data() + before, &number, sizeof number);
}

Bytes packetList(const std::vector<Bytes>& packets) {
    Bytes list;
    append(list, static_cast<std::uint32_t>(packets.size()));
    for (const Bytes& data : packets) {
        append(list, std::uint64_t{0});
        append(list, static_cast<std::uint16_t>(data.size()));
        list.insert(list.end(), data.begin(), data.end());
    }
    return list;
}

class RecordingMidiDelegate final : public MidiDelegate {
public:
    std::vector<std::string> messages;
    void playButtonPressedByMidi() override { messages.emplace_back("playButtonPressed"); }
    void setPlayTitleByMidi() override { messages.emplace_back("setPlayTitle"); }
    void midiNoticeChanged() override { messages.emplace_back("midiNoticeChanged"); }
};

class Midi : public ::testing::Test {
protected:
    Midi() {
        omni = true;
        channel = 0;
        midiDelegate = &delegate;
    }
    ~Midi() override { midiDelegate = nullptr; }

    void receive(const Bytes& list) { midiReadProc({list.data(), list.size()}, nullptr, nullptr); }
    std::size_t plays() const { return delegate.messages.size() / 2; }

    FakePlatform platform;
    RecordingMidiDelegate delegate;
};

TEST_F(Midi, CreatesAClientAPortAndConnectsEverySource) {
    omni = false;
    platform.midi.sources = 2;
    createMIDI(&bufferPlayer);
    EXPECT_EQ(platform.midi.calls,
              (std::vector<std::string>{"createClient MIDI_Client", "createInputPort 7 MIDI_Input",
                                        "connectSource 9 100", "connectSource 9 101"}));
    EXPECT_EQ(platform.trace.out, "MIDI Sources: 2\n");
    EXPECT_EQ(bufferPlayer.midiClient, 7U);
    EXPECT_EQ(bufferPlayer.midiInPort, 9U);
    EXPECT_TRUE(omni);
    EXPECT_TRUE(platform.midi.omniAtDelivery) << "or a note on another channel is left out";
}

TEST_F(Midi, WithoutSourcesAllGoesOn) {
    createMIDI(&bufferPlayer);
    EXPECT_EQ(platform.trace.out, "MIDI Sources: 0\n");
}

TEST_F(Midi, ASourceThatCannotBeConnectedIsIgnored) {
    platform.midi.sources = 2;
    platform.midi.failures["connectSource"] = -1;
    createMIDI(&bufferPlayer);
    EXPECT_EQ(platform.midi.calls.size(), 4U);
    EXPECT_TRUE(platform.alert.shown.empty());
}

TEST_F(Midi, ANoticeOfTheServiceIsPassedOn) {
    createMIDI(&bufferPlayer);
    platform.midi.noticeChanged();
    EXPECT_EQ(delegate.messages, std::vector<std::string>{"midiNoticeChanged"});
    midiDelegate = nullptr;
    platform.midi.noticeChanged();
    EXPECT_EQ(delegate.messages.size(), 1U) << "nobody listens";
}

TEST(MidiDeathTest, AClientThatCannotBeHadEndsTheProgram) {
    EXPECT_EXIT(
        {
            FakePlatform platform;
            platform.midi.failures["createClient"] = -50;
            createMIDI(&bufferPlayer);
        },
        ::testing::ExitedWithCode(1), "");
}

TEST(MidiDeathTest, APortThatCannotBeHadEndsTheProgram) {
    EXPECT_EXIT(
        {
            FakePlatform platform;
            platform.midi.failures["createInputPort"] = -50;
            createMIDI(&bufferPlayer);
        },
        ::testing::ExitedWithCode(1), "");
}

TEST_F(Midi, ANoteOnPressesPlayAndThenSetsTheTitle) {
    receive(packetList({{0x99, 60, 64}}));
    EXPECT_EQ(platform.trace.out, "Channel: 9, Message: 9\nNOTE ON\n");
    EXPECT_EQ(delegate.messages, (std::vector<std::string>{"playButtonPressed", "setPlayTitle"}));
}

TEST_F(Midi, VelocityZeroIsOnlyTraced) {
    receive(packetList({{0x90, 60, 0}}));
    EXPECT_EQ(platform.trace.out, "Channel: 0, Message: 9\n");
    EXPECT_TRUE(delegate.messages.empty());
}

TEST_F(Midi, OnlySevenBitsOfTheVelocityCount) {
    receive(packetList({{0x90, 60, 0x80}}));
    EXPECT_TRUE(delegate.messages.empty());
}

TEST_F(Midi, ANoteOffIsOnlyTraced) {
    receive(packetList({{0x8A, 60, 64}}));
    EXPECT_EQ(platform.trace.out, "Channel: a, Message: 8\n");
    EXPECT_TRUE(delegate.messages.empty());
}

TEST_F(Midi, SystemMessagesLeaveNoTrace) {
    receive(packetList({{0xF8}, {0xF0, 1, 2, 0xF7}, {0xFF}}));
    EXPECT_TRUE(platform.trace.out.empty());
}

TEST_F(Midi, OnlyTheFirstMessageOfAPacketCounts) {
    receive(packetList({{0x90, 60, 64, 0x90, 62, 64}}));
    EXPECT_EQ(plays(), 1U);
}

TEST_F(Midi, EveryPacketOfAListCounts) {
    receive(packetList({{0x90, 60, 64}, {0xF8}, {0x80, 60, 0}, {0x95, 60, 1}}));
    EXPECT_EQ(plays(), 2U);
}

TEST_F(Midi, WithoutOmniOnlyTheChannelCounts) {
    omni = false;
    channel = 3;
    receive(packetList({{0x92, 60, 64}}));
    EXPECT_EQ(plays(), 0U);
    receive(packetList({{0x93, 60, 64}}));
    EXPECT_EQ(plays(), 1U);
}

TEST_F(Midi, APacketWithoutDataIsSkipped) {
    receive(packetList({{}, {0x90, 60, 64}}));
    EXPECT_EQ(plays(), 1U);
}

TEST_F(Midi, ANoteOnThatIsCutShortHasNoVelocity) {
    receive(packetList({{0x90}, {0x90, 60}}));
    EXPECT_EQ(plays(), 0U);
    EXPECT_EQ(platform.trace.out, "Channel: 0, Message: 9\nChannel: 0, Message: 9\n");
}

TEST_F(Midi, APacketThatRunsPastTheListEndsIt) {
    const Bytes whole = packetList({{0x90, 60, 64}, {0x90, 61, 64}});
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        delegate.messages.clear();
        receive(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_EQ(plays(), length == whole.size() ? 2U : (length >= 17 ? 1U : 0U)) << length;
    }
}

TEST_F(Midi, ALongerCountThanPacketsIsHarmless) {
    Bytes list = packetList({{0x90, 60, 64}});
    list[0] = 0xFF;
    list[3] = 0xFF;
    receive(list);
    EXPECT_EQ(plays(), 1U);
}

TEST_F(Midi, AnyBytesAreReadWithoutHarm) {
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        Bytes list(random() % 64);
        for (std::uint8_t& byte : list) {
            byte = static_cast<std::uint8_t>(random());
        }
        if (list.size() >= 4) {
            list[1] = list[2] = list[3] = 0;
        }
        receive(list);
    }
    EXPECT_EQ(delegate.messages.size() % 2, 0U);
}

/// Packets of any length and content, of which some begin as note-ons do.
std::vector<Bytes> randomPackets(std::mt19937& random) {
    std::vector<Bytes> packets(random() % 6);
    for (Bytes& data : packets) {
        data.resize(random() % 64 == 0 ? random() % 0x10000 : random() % 6);
        for (std::uint8_t& byte : data) {
            byte = static_cast<std::uint8_t>(random());
        }
        if (!data.empty() && random() % 2 == 0) {
            data[0] = 0x95;
        }
    }
    return packets;
}

/// How many of the packets that lie whole within the first `size` bytes of their list play.
std::size_t playsWithin(const std::vector<Bytes>& packets, std::size_t size) {
    std::size_t played = 0;
    std::size_t end = 4;
    for (const Bytes& data : packets) {
        end += 10 + data.size();
        const bool isNoteOn = data.size() > 2 && data[0] >> 4U == 9 && (data[2] & 0x7FU) != 0;
        played += end <= size && isNoteOn ? 1 : 0;
    }
    return played;
}

/// How many lists the environment asks for: many of them are a soak.
int listsAskedFor() {
    const char* const asked = std::getenv("ZEMO_MIDI_LISTS"); // NOLINT(concurrency-mt-unsafe)
    return asked != nullptr ? std::stoi(asked) : 20000;
}

TEST_F(Midi, RandomListsPlayWhatIsWholeInThem) {
    std::mt19937 random(2);
    const int rounds = listsAskedFor();
    for (int round = 0; round < rounds; ++round) {
        const std::vector<Bytes> packets = randomPackets(random);
        Bytes list = packetList(packets);
        if (random() % 2 == 0) {
            list.resize(random() % (list.size() + 1));
        }
        if (random() % 8 == 0 && list.size() >= 4) {
            list[3] = 0xFF; // more packets than there are
        }
        const Bytes block(list); // of its own, so that a read past the list is one past the block
        delegate.messages.clear();
        platform.trace.out.clear();
        platform.trace.all.clear();
        receive(block);
        ASSERT_EQ(plays(), playsWithin(packets, block.size())) << "list " << round;
    }
}

TEST_F(Midi, TheServicesHandOverOneMessageAsOnePacket) {
    platform::MidiPacketSender sender;
    sender.setReader(midiReadProc, nullptr);
    const Bytes note{0x91, 60, 100};
    sender.send(0, note, nullptr);
    EXPECT_EQ(platform.trace.out, "Channel: 1, Message: 9\nNOTE ON\n");
}

TEST_F(Midi, TheEmptyServiceHasNoSourcesAndNeverFails) {
    platform::EmptyMidi empty;
    platform::services().midi = &empty;
    createMIDI(&bufferPlayer);
    EXPECT_EQ(platform.trace.out, "MIDI Sources: 0\n");
    EXPECT_TRUE(platform.alert.shown.empty());
}

} // namespace
} // namespace zemo::test
