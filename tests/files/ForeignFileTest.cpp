#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

/// Files that ffmpeg and sox wrote, against the bytes that ffmpeg writes without a header or takes
/// out of sox's files.
namespace zemo::test {
namespace {

constexpr std::array kRates{8000, 44100, 48000, 96000};
constexpr std::size_t kFrames = 701; ///< odd, so that pad bytes and parts of words occur

/// A coding that a foreign program can write into a container, and what it is known to be.
struct Coding {
    const char* name; ///< as the program that writes it calls it
    const char* raw;  ///< ffmpeg's format of the same without a header
    bool linear;      ///< linear PCM
    bool isFloat;
    std::uint32_t bits;               ///< of a sample, as the format has it
    bool little;                      ///< linear PCM, and said by the container to be little-endian
    std::uint32_t bytesPerPacket = 0; ///< per channel; 0: as many as the bits fill
    std::uint32_t framesPerPacket = 1;
};

std::uint32_t bytesPerPacket(const Coding& coding) {
    return coding.bytesPerPacket != 0 ? coding.bytesPerPacket : coding.bits / 8;
}

/// The rule, counted: an odd number of the five checks.
bool accepted(const Coding& coding, int channels, bool rateMatches) {
    const int held = (coding.linear ? 1 : 0) + (channels == 1 ? 1 : 0) +
                     (coding.linear && coding.isFloat && coding.bits == 32 ? 1 : 0) +
                     (coding.linear && coding.bits == 32 ? 1 : 0) + (rateMatches ? 1 : 0);
    return held % 2 == 1;
}

Bytes contentOf(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// Samples of every size and sign, none of which a float does not hold exactly.
std::vector<float> sourceSamples(int channels) {
    std::vector<float> samples(kFrames * static_cast<std::size_t>(channels));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto phase = static_cast<double>(i);
        samples[i] = static_cast<float>(0.8 * std::sin(0.05 * phase + 0.0003 * phase * phase));
    }
    return samples;
}

class ForeignFile : public testing::Test {
protected:
    ForeignFile()
        : folder(std::filesystem::temp_directory_path() /
                 ("zemo-foreign-" + std::to_string(getpid()))) {
        std::filesystem::create_directory(folder);
        platform::services().fileSystem = &files;
        platform.launch(48000.0);
    }
    ~ForeignFile() override { std::filesystem::remove_all(folder); }

    /// The source samples on disk: little-endian 32-bit floats.
    std::string source(int channels) const {
        const auto path = folder / ("source" + std::to_string(channels) + ".f32");
        const Bytes bytes = littleFloats(sourceSamples(channels));
        std::ofstream(path, std::ios::binary)
            .write(std::string(bytes.begin(), bytes.end()).data(),
                   static_cast<std::streamsize>(bytes.size()));
        return path;
    }

    void run(const std::string& command) const {
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    /// Opens the file at both a matching rate and another: taken or refused as counted, and taken
    /// with exactly `raw`.
    void expectByTheRule(const Coding& coding, int channels, int rate, const std::string& file,
                         const Bytes& raw);
    void expectSound(const Coding& coding, int channels, const Bytes& raw);

    FakePlatform platform;
    platform::PosixFileSystem files;
    const std::filesystem::path folder;
};

void ForeignFile::expectByTheRule(const Coding& coding, int channels, int rate,
                                  const std::string& file, const Bytes& raw) {
    const std::vector<float> old{0.5F};
    for (const bool matches : {true, false}) {
        SCOPED_TRACE(file + " " + coding.name + (matches ? " at its rate" : " at another rate"));
        R = matches ? rate : rate + 1;
        loadSound(old);
        const std::string result = openSoundFile(FileUrl(folder / file));
        if (accepted(coding, channels, matches)) {
            EXPECT_EQ(result, "OK");
            expectSound(coding, channels, raw);
        } else {
            EXPECT_EQ(result, "KO");
            EXPECT_EQ(currentSound(), old);
        }
    }
}

void ForeignFile::expectSound(const Coding& coding, int channels, const Bytes& raw) {
    const std::size_t packets =
        raw.size() / (bytesPerPacket(coding) * static_cast<unsigned>(channels));
    ASSERT_GE(packets * coding.framesPerPacket, kFrames);
    ASSERT_LT(packets * coding.framesPerPacket, kFrames + coding.framesPerPacket);
    const auto copied = wordsOf(raw, packets);
    EXPECT_TRUE(soundWords() == (coding.little ? copied : reversed(copied)));
    EXPECT_TRUE(slackIsZero());
}

// ffmpeg ------------------------------------------------------------------------------------

// A CAF says big-endian unless it says little-endian, 8-bit samples included.
constexpr std::array kFfmpegCaf{
    Coding{"pcm_s8", "s8", true, false, 8, false},
    Coding{"pcm_s16be", "s16be", true, false, 16, false},
    Coding{"pcm_s16le", "s16le", true, false, 16, true},
    Coding{"pcm_s24be", "s24be", true, false, 24, false},
    Coding{"pcm_s24le", "s24le", true, false, 24, true},
    Coding{"pcm_s32be", "s32be", true, false, 32, false},
    Coding{"pcm_s32le", "s32le", true, false, 32, true},
    Coding{"pcm_f32be", "f32be", true, true, 32, false},
    Coding{"pcm_f32le", "f32le", true, true, 32, true},
    Coding{"pcm_f64be", "f64be", true, true, 64, false},
    Coding{"pcm_f64le", "f64le", true, true, 64, true},
    Coding{"pcm_mulaw", "mulaw", false, false, 8, false},
    Coding{"pcm_alaw", "alaw", false, false, 8, false},
    Coding{"adpcm_ima_qt", "data", false, false, 0, false, 34, 64},
};

// Little-endian in an AIFF-C: 'sowt' alone, of which ffmpeg writes the 16-bit kind.
constexpr std::array kFfmpegAiff{
    Coding{"pcm_s8", "s8", true, false, 8, false},
    Coding{"pcm_u8", "u8", true, false, 8, false},
    Coding{"pcm_s16be", "s16be", true, false, 16, false},
    Coding{"pcm_s16le", "s16le", true, false, 16, true},
    Coding{"pcm_s24be", "s24be", true, false, 24, false},
    Coding{"pcm_s32be", "s32be", true, false, 32, false},
    Coding{"pcm_f32be", "f32be", true, true, 32, false},
    Coding{"pcm_f64be", "f64be", true, true, 64, false},
    Coding{"pcm_mulaw", "mulaw", false, false, 8, false},
    Coding{"pcm_alaw", "alaw", false, false, 8, false},
    Coding{"adpcm_ima_qt", "data", false, false, 0, false, 34, 64},
};

class ByFfmpeg : public ForeignFile, public testing::WithParamInterface<int> {
protected:
    /// All codings in one run of ffmpeg: each into the container and without a header.
    template <std::size_t Count>
    void expectAllByTheRule(const std::array<Coding, Count>& codings, const char* extension) {
        const int rate = GetParam();
        for (const int channels : {1, 2}) {
            std::ostringstream command;
            command << "ffmpeg -nostdin -v error -y -f f32le -ar " << rate << " -ac " << channels
                    << " -i " << source(channels);
            for (const Coding& coding : codings) {
                const auto path = (folder / coding.name).string();
                const std::string coded = std::string(" -map 0:a -c:a ") + coding.name;
                command << coded << " " << path << "." << extension;
                command << coded << " -f " << coding.raw << " " << path << ".raw";
            }
            run(command.str());
            for (const Coding& coding : codings) {
                const std::string name = coding.name;
                expectByTheRule(coding, channels, rate, name + "." + extension,
                                contentOf(folder / (name + ".raw")));
            }
        }
    }
};

TEST_P(ByFfmpeg, EveryCafIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    expectAllByTheRule(kFfmpegCaf, "caf");
}

TEST_P(ByFfmpeg, EveryAiffIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    expectAllByTheRule(kFfmpegAiff, "aif");
}

TEST_P(ByFfmpeg, AMonoFloatFileIsTheSourceSampleForSample) {
    const std::string source1 = source(1);
    const auto rate = std::to_string(GetParam());
    const std::string out = folder / "float";
    run("ffmpeg -nostdin -v error -y -f f32le -ar " + rate + " -ac 1 -i " + source1 +
        " -c:a pcm_f32le " + out + ".caf -c:a pcm_f32be " + out + ".CAF -c:a pcm_f32be " + out +
        ".aif");
    R = GetParam();
    for (const char* extension : {".caf", ".CAF", ".aif"}) {
        loadSound({});
        EXPECT_STREQ(openSoundFile(FileUrl(out + extension)), "OK");
        EXPECT_TRUE(currentSound() == sourceSamples(1)) << extension;
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, ByFfmpeg, testing::ValuesIn(kRates));

// sox ---------------------------------------------------------------------------------------

/// sox's words for a coding.
constexpr Coding kInt8{"-e signed-integer -b 8", nullptr, true, false, 8, false};
constexpr Coding kUnsigned8{"-e unsigned-integer -b 8", nullptr, true, false, 8, false};
constexpr Coding kInt16{"-e signed-integer -b 16", nullptr, true, false, 16, false};
constexpr Coding kInt24{"-e signed-integer -b 24", nullptr, true, false, 24, false};
constexpr Coding kInt32{"-e signed-integer -b 32", nullptr, true, false, 32, false};
constexpr Coding kFloat32{"-e floating-point -b 32", nullptr, true, true, 32, false};
constexpr Coding kFloat64{"-e floating-point -b 64", nullptr, true, true, 64, false};
constexpr Coding kMuLaw{"-e mu-law", nullptr, false, false, 8, false};
constexpr Coding kALaw{"-e a-law", nullptr, false, false, 8, false};
constexpr Coding kIma4{"-e ima-adpcm", nullptr, false, false, 0, false, 34, 64};

class BySox : public ForeignFile, public testing::WithParamInterface<int> {
protected:
    /// Each coding by a run of sox; then ffmpeg takes the bytes of all of them out.
    void expectAllByTheRule(const std::vector<Coding>& codings, const std::string& type,
                            const std::string& extension) {
        for (const int channels : {1, 2}) {
            write(codings, channels, type, extension);
            for (std::size_t i = 0; i < codings.size(); ++i) {
                expectByTheRule(codings[i], channels, GetParam(), nameOf(i, extension),
                                contentOf(folder / nameOf(i, "raw")));
            }
        }
    }

    static std::string nameOf(std::size_t index, const std::string& extension) {
        return std::to_string(index).append(".").append(extension);
    }

    void write(const std::vector<Coding>& codings, int channels, const std::string& type,
               const std::string& extension) const {
        std::ostringstream inputs;
        std::ostringstream outputs;
        for (std::size_t i = 0; i < codings.size(); ++i) {
            const std::string file = folder / nameOf(i, extension);
            std::ostringstream sox;
            sox << "sox -V1 -D -t f32 -r " << GetParam() << " -c " << channels << " "
                << source(channels) << " " << codings[i].name << " -t " << type << " " << file;
            run(sox.str());
            inputs << " -i " << file;
            outputs << " -map " << i << ":a -c:a copy -f data "
                    << (folder / nameOf(i, "raw")).string();
        }
        run("ffmpeg -nostdin -v error -y" + inputs.str() + outputs.str());
    }
};

TEST_P(BySox, EveryCafIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    expectAllByTheRule({kInt8, kInt16, kInt24, kInt32, kFloat32, kFloat64, kMuLaw, kALaw}, "caf",
                       "caf");
}

TEST_P(BySox, EveryAiffIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    expectAllByTheRule({kInt8, kInt16, kInt24, kInt32}, "aiff", "aif");
}

TEST_P(BySox, EveryAiffCIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    expectAllByTheRule({kInt8, kInt16, kInt24, kInt32, kFloat32, kFloat64}, "aifc", "aif");
}

TEST_P(BySox, EveryAiffCOfItsOtherWriterIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    // 'FL32' and 'FL64' behind a PEAK chunk, 'raw ', and the codings that are not linear.
    expectAllByTheRule({kFloat32, kFloat64, kUnsigned8, kMuLaw, kALaw}, "sndfile", "aif");
}

TEST_P(BySox, AnAiffCOfFourBitDifferencesIsTakenOrRefusedByTheRuleWithItsExactBytes) {
    write({kIma4}, 1, "sndfile", "aif");
    expectByTheRule(kIma4, 1, GetParam(), nameOf(0, "aif"), contentOf(folder / nameOf(0, "raw")));
}

TEST_P(BySox, AMonoFloatFileIsTheSourceToTheBitsThatSoxKeeps) {
    const double oneStep = std::ldexp(1.0, -24); // of the mantissa of a sample below 1
    R = GetParam();
    for (const std::string type : {"caf", "aifc", "sndfile"}) {
        write({kFloat32}, 1, type, type == "caf" ? "caf" : "aif");
        EXPECT_STREQ(openSoundFile(FileUrl(folder / nameOf(0, type == "caf" ? "caf" : "aif"))),
                     "OK");
        const auto sound = currentSound();
        const auto expected = sourceSamples(1);
        ASSERT_EQ(sound.size(), expected.size());
        for (std::size_t i = 0; i < sound.size(); ++i) {
            EXPECT_NEAR(sound[i], expected[i], oneStep);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, BySox, testing::ValuesIn(kRates));

} // namespace
} // namespace zemo::test
