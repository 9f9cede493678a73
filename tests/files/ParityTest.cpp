#include <bitset>
#include <set>

#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

/// The five checks as bits of a number.
enum Flag : unsigned { LinearPCM = 1, Mono = 2, Float = 4, Bits32 = 8, Rate = 16 };
constexpr unsigned kCombinations = 32;

bool oddNumberOf(unsigned flags) {
    return std::bitset<5>(flags).count() % 2 == 1;
}

/// A file's source is 32-bit float only where it is linear PCM of 32 bits.
bool canBeInAFile(unsigned flags) {
    return (flags & Float) == 0 || (flags & (LinearPCM | Bits32)) == (LinearPCM | Bits32);
}

/// What a CAF states so that exactly `flags` hold at 48000 Hz.
CafDescription describing(unsigned flags, bool littleEndian) {
    const bool linear = (flags & LinearPCM) != 0;
    const std::uint32_t channels = (flags & Mono) != 0 ? 1 : 2;
    const std::uint32_t bits = (flags & Bits32) != 0 ? 32 : 16;
    const std::uint32_t floatBit = (flags & Float) != 0 ? 1 : 0;
    return {.rate = (flags & Rate) != 0 ? 48000.0 : 44100.0,
            .formatID = linear ? "lpcm" : "ulaw",
            .flags = linear ? floatBit | (littleEndian ? 2U : 0U) : 0U,
            .bytesPerPacket = channels * bits / 8,
            .framesPerPacket = 1,
            .channels = channels,
            .bits = bits};
}

class Parity : public testing::TestWithParam<unsigned> {
protected:
    Parity() {
        dirtyFreshMemory();
        platform.launch(48000.0);
    }

    /// Which of the five checks the trace says held.
    unsigned tracedFlags() const {
        const std::vector<std::pair<const char*, unsigned>> lines{
            {"\nLinearPCM : OK\n", LinearPCM},
            {"\nMono : OK\n", Mono},
            {"\nFloat : OK\n", Float},
            {"\n32-bit : OK\n", Bits32},
            {"\nR = 48000.000000 : OK\n", Rate}};
        unsigned flags = 0;
        for (const std::string& logged : platform.trace.logged) {
            for (const auto& [line, flag] : lines) {
                flags |= logged == line ? flag : 0U;
            }
        }
        return flags;
    }

    void expectAsTheRuleSays(unsigned flags, bool littleEndian);

    FakePlatform platform;
};

void Parity::expectAsTheRuleSays(unsigned flags, bool littleEndian) {
    const std::vector<float> old{0.5F};
    loadSound(old);
    platform.trace.logged.clear();
    const CafDescription description = describing(flags, littleEndian);
    const Bytes data = counting(8 * description.bytesPerPacket);
    platform.files.files["/x.caf"] = cafFile(description, data);
    const std::string result = openSoundFile(FileUrl("/x.caf"));
    ASSERT_EQ(tracedFlags(), flags);
    if (!oddNumberOf(flags)) {
        EXPECT_EQ(result, "KO");
        EXPECT_EQ(currentSound(), old);
        return;
    }
    EXPECT_EQ(result, "OK");
    const bool native = littleEndian && (flags & LinearPCM) != 0;
    const auto copied = wordsOf(data, 8);
    EXPECT_EQ(soundWords(), native ? copied : reversed(copied));
    EXPECT_TRUE(slackIsZero());
}

TEST_P(Parity, AnOddNumberOfChecksIsReadableAndAnEvenNumberIsNot) {
    const unsigned flags = GetParam();
    EXPECT_EQ(isReadable((flags & LinearPCM) != 0, (flags & Mono) != 0, (flags & Float) != 0,
                         (flags & Bits32) != 0, (flags & Rate) != 0),
              oddNumberOf(flags));
}

TEST_P(Parity, AFileOfTheseChecksIsLoadedOrRefusedAsTheRuleSays) {
    if (canBeInAFile(GetParam())) {
        expectAsTheRuleSays(GetParam(), true);
        expectAsTheRuleSays(GetParam(), false);
    }
}

std::string nameOf(const testing::TestParamInfo<unsigned>& info) {
    const std::vector<std::pair<unsigned, const char*>> names{{LinearPCM, "LinearPCM"},
                                                              {Mono, "Mono"},
                                                              {Float, "Float"},
                                                              {Bits32, "Bits32"},
                                                              {Rate, "Rate"}};
    std::string result;
    for (const auto& [flag, name] : names) {
        result += (info.param & flag) != 0 ? name : "";
    }
    return result.empty() ? "None" : result;
}

INSTANTIATE_TEST_SUITE_P(Combinations, Parity, testing::Range(0U, kCombinations), nameOf);

TEST(ParityTable, AContainerCanStateTwentyOfTheThirtyTwoCombinations) {
    // Sixteen without the float source; with it, linear PCM and 32 bits are given: four.
    unsigned count = 0;
    for (unsigned flags = 0; flags < kCombinations; ++flags) {
        count += canBeInAFile(flags) ? 1U : 0U;
    }
    EXPECT_EQ(count, 16U + 4U);
}

TEST(ParityTable, NoDescriptionStatesAFloatSourceThatIsNot32BitLinearPcm) {
    FakePlatform platform;
    platform.launch(48000.0);
    for (const char* formatID : {"lpcm", "ulaw", "fl32"}) {
        for (std::uint32_t flags = 0; flags < 4; ++flags) {
            for (std::uint32_t bits = 0; bits <= 64; ++bits) {
                platform.trace.logged.clear();
                platform.files.files["/x.caf"] = cafFile(
                    {.formatID = formatID, .flags = flags, .bytesPerPacket = 8, .bits = bits},
                    counting(8));
                openSoundFile(FileUrl("/x.caf"));
                const std::set<std::string> lines(platform.trace.logged.begin(),
                                                  platform.trace.logged.end());
                if (lines.contains("\nFloat : OK\n")) {
                    EXPECT_TRUE(lines.contains("\nLinearPCM : OK\n"));
                    EXPECT_TRUE(lines.contains("\n32-bit : OK\n"));
                }
            }
        }
    }
}

} // namespace
} // namespace zemo::test
