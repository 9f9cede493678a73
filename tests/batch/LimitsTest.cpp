#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ForeignSounds.h"
#include "batch/CommandLine.h"
#include "dsp/Resampler.h"
#include "files/AudioFile.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

/// Limits that the documents name and that no other test goes up to and one step beyond.
namespace zemo::test {
namespace {

/// Lets the sound say a length that it has not; nobody may read it meanwhile.
class SaidLength {
public:
    explicit SaidLength(std::int64_t count) : before_(fBuffersize.exchange(count)) {}
    SaidLength(const SaidLength&) = delete;
    SaidLength& operator=(const SaidLength&) = delete;
    ~SaidLength() { fBuffersize.store(before_); }

private:
    std::int64_t before_;
};

class Limits : public testing::Test {
protected:
    Limits() {
        platform.launch(44100.0);
        loadSound({0.5F});
    }

    static std::string refusalOfExport(const std::string& path) {
        const auto result = exportSound(FileUrl(path));
        return result ? "" : std::string(result.error().sentence);
    }

    std::string refusalOfImport(double outputRate, std::uint32_t rate) {
        R = outputRate;
        platform.files.files["/x"] = wavOfZeros(1, rate, 3000);
        const auto result = importSound(FileUrl("/x"));
        return result ? "" : std::string(result.error().sentence);
    }

    FakePlatform platform;
};

/// A CAF whose description and data come behind that many empty chunks.
Bytes cafBehind(std::size_t chunks) {
    Bytes file = cafHeader();
    const Bytes empty = cafChunk("free", Bytes());
    for (std::size_t i = 0; i < chunks; ++i) {
        file.insert(file.end(), empty.begin(), empty.end());
    }
    return join({file, cafDescriptionChunk({}), cafDataChunk(littleFloats({0.5F}))});
}

TEST_F(Limits, ACafIsReadUpToItsChunk65536AndNoFurther) {
    platform.files.files = {{"/at.caf", cafBehind(65534)}, {"/beyond.caf", cafBehind(65535)}};
    EXPECT_TRUE(AudioFile::open("/at.caf"));
    const auto beyond = AudioFile::open("/beyond.caf");
    ASSERT_FALSE(beyond);
    EXPECT_EQ(beyond.error().sentence, "The CAF file has no audio description or no audio data.");
}

TEST_F(Limits, FlacHolds2To36SamplesLessOne) {
    R = 44100.5; // what is refused next, so that nothing is read
    {
        const SaidLength at((std::int64_t{1} << 36) - 1);
        EXPECT_TRUE(refusalOfExport("/x.flac").starts_with("FLAC holds whole rates"));
    }
    const SaidLength beyond(std::int64_t{1} << 36);
    EXPECT_EQ(refusalOfExport("/x.flac"),
              "The sound is too long for FLAC: export it as .wav instead.");
    EXPECT_TRUE(refusalOfExport("/x.wav").starts_with("WAV holds whole rates"));
}

TEST_F(Limits, WavHoldsRatesOf32Bits) {
    R = 4294967295.0;
    EXPECT_EQ(refusalOfExport("/x.wav"), "");
    R = 4294967296.0;
    EXPECT_EQ(refusalOfExport("/x.wav"),
              "WAV holds whole rates up to 4294967295 Hz, and the sound's is 4294967296 Hz.");
}

TEST_F(Limits, FlacHoldsTensAboveItsOddRates) {
    for (const auto& [rate, isHeld] : std::vector<std::pair<double, bool>>{{65535.0, true},
                                                                           {65536.0, false},
                                                                           {65540.0, true},
                                                                           {655350.0, true},
                                                                           {655360.0, false}}) {
        R = rate;
        EXPECT_EQ(refusalOfExport("/x.flac").empty(), isHeld) << rate;
    }
}

TEST_F(Limits, ARateIsChangedAThousandfoldAtMost) {
    EXPECT_EQ(refusalOfImport(48.0, 48000), "");
    EXPECT_EQ(refusalOfImport(48.0, 48001),
              "The sound file's rate of 48001 Hz cannot be converted to 48 Hz.");
    EXPECT_EQ(refusalOfImport(8e6, 8000), "");
    EXPECT_EQ(refusalOfImport(8e6, 7999),
              "The sound file's rate of 7999 Hz cannot be converted to 8000000 Hz.");
}

TEST_F(Limits, AThousandHertzToAMillionAreImported) {
    EXPECT_EQ(refusalOfImport(44100.0, 1000), "");
    EXPECT_NE(refusalOfImport(44100.0, 999), "");
    EXPECT_EQ(refusalOfImport(44100.0, 1000000), "");
    EXPECT_NE(refusalOfImport(44100.0, 1000001), "");
}

TEST_F(Limits, ASoundOf2To31SamplesIsNotResampled) {
    {
        const SaidLength at(INT32_MAX);
        EXPECT_FALSE(resampleRefusal(0.5F));
    }
    const SaidLength beyond(std::int64_t{INT32_MAX} + 1);
    const Refusal refusal = resampleBuffer(0.5F);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->sentence, "Only a sound of 3 to 2147483647 samples can be resampled.");
}

TEST_F(Limits, EachSettingOfHdIsTakenAtItsBoundsAndClampedBeyond) {
    const std::vector<std::pair<const char*, bool>> settings{
        {"slope=0.6", true},  {"slope=0.599", false}, {"slope=0.998", true}, {"slope=0.999", false},
        {"attack=100", true}, {"attack=99", false},   {"attack=1000", true}, {"attack=1001", false},
        {"mix=0", true},      {"mix=-0.1", false},    {"mix=1", true},       {"mix=1.1", false},
        {"knee=0", true},     {"knee=-0.1", false},   {"knee=1", true},      {"knee=1.1", false},
        {"comp=0.2", true},   {"comp=0.19", false},   {"comp=1", true},      {"comp=1.1", false}};
    for (const auto& [setting, isTaken] : settings) {
        std::string complaint;
        const auto line = batch::parseCommandLine({"hd", setting}, complaint);
        ASSERT_TRUE(line) << setting << ": " << complaint;
        EXPECT_EQ(line->notices.empty(), isTaken) << setting;
    }
}

} // namespace
} // namespace zemo::test
