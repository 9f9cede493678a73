#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

/// Sound files of every kind, cut off at every length and with every byte of their headers turned
/// into every other.
namespace zemo::test {
namespace {

constexpr const char* kPath = "/damaged.caf";
constexpr std::size_t kSamples = 24;

struct Seed {
    const char* name;
    Bytes bytes;
    std::size_t audio = 0; ///< bytes at the end that are sound and no header
};

void PrintTo(const Seed& seed, std::ostream* out) {
    *out << seed.name;
}

Bytes samples(std::size_t bytesEach, std::size_t count = kSamples) {
    return counting(bytesEach * count);
}

CafDescription linear(std::uint32_t flags, std::uint32_t bits, std::uint32_t channels = 1) {
    return {
        .flags = flags, .bytesPerPacket = bits / 8 * channels, .channels = channels, .bits = bits};
}

Seed caf(const char* name, const CafDescription& description, std::size_t bytesEach) {
    return {name, cafFile(description, samples(bytesEach)), kSamples * bytesEach};
}

Seed aiff(const char* name, const std::string& compression, std::uint16_t bits,
          std::size_t bytesEach, std::uint16_t channels = 1) {
    const AiffCommon common{
        .channels = channels, .frames = kSamples, .bits = bits, .compression = compression};
    return {name, aiffFile(common, samples(bytesEach)), kSamples * bytesEach};
}

Bytes varyingPackets() {
    const CafDescription description{
        .formatID = "aac ", .flags = 0, .bytesPerPacket = 0, .framesPerPacket = 1024, .bits = 0};
    const Bytes table = join({big(6, 8), big(6 * 1024, 8), big(0, 4), big(0, 4), counting(6)});
    return join({cafHeader(), cafDescriptionChunk(description), cafChunk("pakt", table),
                 cafDataChunk(counting(21))});
}

std::vector<Seed> seeds() {
    const CafDescription plain;
    const AiffCommon common{.frames = kSamples};
    const CafDescription ima{
        .formatID = "ima4", .flags = 0, .bytesPerPacket = 34, .framesPerPacket = 64, .bits = 0};
    const CafDescription ulaw{.formatID = "ulaw", .flags = 0, .bytesPerPacket = 1, .bits = 0};
    return {
        caf("caf_float", plain, 4),
        caf("caf_big_float", linear(1, 32), 4),
        caf("caf_double", linear(3, 64), 8),
        caf("caf_16", linear(2, 16), 2),
        caf("caf_24_stereo", linear(0, 24, 2), 6),
        caf("caf_32", linear(2, 32), 4),
        caf("caf_ulaw", ulaw, 1),
        caf("caf_ima4", ima, 34),
        {"caf_aac", varyingPackets(), 21},
        {"caf_open_end",
         join({cafHeader(), cafDescriptionChunk(plain),
               cafChunk("data", -1, join({big(0, 4), samples(4)}))}),
         kSamples * 4},
        {"caf_unknown_chunks",
         join({cafHeader(), cafDescriptionChunk(plain), cafChunk("free", zeros(5)),
               cafChunk("info", counting(3)), cafDataChunk(samples(4))}),
         kSamples * 4},
        {"caf_data_first",
         join({cafHeader(), cafDataChunk(samples(4)), cafDescriptionChunk(plain)})},
        aiff("aiff_8", "", 8, 1),
        aiff("aiff_16", "", 16, 2),
        aiff("aiff_24_stereo", "", 24, 6, 2),
        aiff("aiff_32", "", 32, 4),
        aiff("aifc_fl32", "fl32", 32, 4),
        aiff("aifc_FL32", "FL32", 32, 4),
        aiff("aifc_fl64", "fl64", 64, 8),
        aiff("aifc_sowt", "sowt", 16, 2),
        aiff("aifc_ulaw", "ulaw", 16, 1),
        aiff("aifc_ima4", "ima4", 16, 34),
        {"aifc_version_and_offset",
         aiffForm("AIFC",
                  {aiffChunk("FVER", big(0xA2805140, 4)), aiffCommonChunk(common),
                   aiffChunk("NAME", counting(3)), aiffDataChunk(join({zeros(6), samples(4)}), 6)}),
         kSamples * 4},
        {"aifc_data_first", aiffForm("AIFC", {aiffDataChunk(samples(4)), aiffCommonChunk(common)})},
    };
}

/// Alerts and traces would fill the memory with half a million refusals.
class Silence final : public platform::Alert, public platform::TraceLog {
    void runCritical(const std::string&, const std::string&, const std::string&) override {
        ++alerts;
    }
    void print(std::string_view) override {}
    void printError(std::string_view) override {}
    void log(std::string_view) override {}

public:
    int alerts = 0;
};

class DamagedFile : public testing::TestWithParam<Seed> {
protected:
    DamagedFile() {
        platform::services().alert = &silence;
        platform::services().trace = &silence;
        platform.launch(48000.0);
    }

    /// Opens `bytes` over a sound that is there. Taken, it is no longer than the file has bytes
    /// for, with silent slack behind it; refused, it says so once and the old sound stays.
    void open(const Bytes& bytes) {
        const float* const before = fBuffer.load();
        const std::vector<std::uint32_t> words = soundWords();
        platform.files.files[kPath] = bytes;
        silence.alerts = 0;
        const std::string result = openSoundFile(FileUrl(kPath));
        if (result == "OK") {
            ASSERT_EQ(silence.alerts, 0);
            ASSERT_GE(fBuffersize.load(), 0);
            ASSERT_LE(static_cast<std::uint64_t>(fBuffersize.load()), bytes.size());
            ASSERT_TRUE(slackIsZero());
            ++taken;
        } else {
            ASSERT_EQ(result, "KO");
            ASSERT_EQ(silence.alerts, 1);
            ASSERT_EQ(fBuffer.load(), before);
            ASSERT_EQ(soundWords(), words);
            ++refused;
        }
    }

    FakePlatform platform;
    Silence silence;
    int taken = 0;
    int refused = 0;
};

TEST_P(DamagedFile, CutOffAnywhereItIsTakenAsFarAsItGoesOrRefused) {
    const Bytes& whole = GetParam().bytes;
    loadSound({0.5F, 0.25F});
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        ASSERT_NO_FATAL_FAILURE(
            open(Bytes(whole.begin(), whole.begin() + static_cast<long>(length))));
    }
    EXPECT_GT(refused, 0); // an empty file at least
}

TEST_P(DamagedFile, WithAnyByteOfItsHeaderChangedItIsTakenWithWhatIsThereOrRefused) {
    Bytes bytes = GetParam().bytes;
    const std::size_t header = bytes.size() - GetParam().audio;
    loadSound({0.5F, 0.25F});
    for (std::size_t at = 0; at < header; ++at) {
        const std::uint8_t before = bytes[at];
        for (int change = 1; change < 256; ++change) {
            bytes[at] = static_cast<std::uint8_t>(before ^ change);
            SCOPED_TRACE(testing::Message() << "byte " << at << " is " << int{bytes[at]});
            ASSERT_NO_FATAL_FAILURE(open(bytes));
        }
        bytes[at] = before;
    }
    EXPECT_GT(taken, 0);
    EXPECT_GT(refused, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DamagedFile, testing::ValuesIn(seeds()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(DamagedFileSeeds, AreTwentyOrMore) {
    EXPECT_GE(seeds().size(), 20U);
}

} // namespace
} // namespace zemo::test
