#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>

#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZEMO_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZEMO_TEST_SANITIZED 1
#endif
#endif

namespace zemo::test {
namespace {

const std::vector<float> kThree{0.25F, -1.0F, 0.5F};
const std::vector<float> kOld{0.125F, 0.375F};

class OpenSoundFile : public testing::Test {
protected:
    OpenSoundFile() {
        dirtyFreshMemory();
        platform.launch(48000.0);
    }

    std::string open(const std::string& path, const Bytes& bytes) {
        platform.files.files[path] = bytes;
        return openSoundFile(FileUrl(path));
    }

    void expectOldSoundKept() const { EXPECT_EQ(currentSound(), kOld); }

    FakePlatform platform;
};

// Accepted ----------------------------------------------------------------------------------

TEST_F(OpenSoundFile, ALittleEndianFloatCafIsLoadedAsItStands) {
    EXPECT_EQ(open("/a.caf", cafFile({}, littleFloats(kThree))), "OK");
    EXPECT_EQ(currentSound(), kThree);
    EXPECT_TRUE(platform.alert.shown.empty());
}

TEST_F(OpenSoundFile, ABigEndianFloatCafHasEveryWordReversed) {
    EXPECT_EQ(open("/a.caf", cafFile({.flags = 1}, bigFloats(kThree))), "OK");
    EXPECT_EQ(currentSound(), kThree);
}

TEST_F(OpenSoundFile, ABigEndianFloatAiffHasEveryWordReversed) {
    EXPECT_EQ(open("/a.aif", aiffFile({.frames = 3}, bigFloats(kThree))), "OK");
    EXPECT_EQ(currentSound(), kThree);
}

TEST_F(OpenSoundFile, AnAcceptedLittleEndianCafIsTracedLineByLine) {
    open("/sounds/a.caf", cafFile({}, littleFloats(kThree)));
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "log: \nthePath = /sounds/a.caf\n",
                                      "log: \nURL = file:///sounds/a.caf\n",
                                      "log: \nLinearPCM : OK\n",
                                      "log: \nOne Frame/Packet: OK\n",
                                      "log: \nMono : OK\n",
                                      "log: \nNativeEndian : OK\n",
                                      "log: \nFloat : OK\n",
                                      "log: \n32-bit : OK\n",
                                      "log: \nR = 48000.000000 : OK\n",
                                      "log: \n!!!IS PACKED!!!\n",
                                      "log: \nFILE IS READABLE\n",
                                      "log: \nFormat Confirmed\nPackets: 3\n Bytes: 12\n",
                                      "log: \nNUM_PACKETS: 3\nNUM_BYTES: 12\nBUF_SIZE: 3",
                                      "log: \nSIZE OF FLOAT32 = 4\n",
                                  }));
}

TEST_F(OpenSoundFile, AnAcceptedBigEndianAiffIsTracedWithoutTheNativeEndianLine) {
    open("/sounds/a.AIF", aiffFile({.frames = 3}, bigFloats(kThree)));
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "log: \nthePath = /sounds/a.AIF\n",
                                      "log: \nURL = file:///sounds/a.AIF\n",
                                      "log: \nLinearPCM : OK\n",
                                      "log: \nOne Frame/Packet: OK\n",
                                      "log: \nMono : OK\n",
                                      "log: \nFloat : OK\n",
                                      "log: \n32-bit : OK\n",
                                      "log: \nR = 48000.000000 : OK\n",
                                      "log: \n!!!IS PACKED!!!\n",
                                      "log: \nFILE IS READABLE\n",
                                      "log: \nFormat Confirmed\nPackets: 3\n Bytes: 12\n",
                                      "log: \nNUM_PACKETS: 3\nNUM_BYTES: 12\nBUF_SIZE: 3",
                                      "log: \nSIZE OF FLOAT32 = 4\n",
                                  }));
}

TEST_F(OpenSoundFile, PacketsOfAnotherSizeThanTheOutputsAreNotConfirmed) {
    open("/a.aif", aiffFile({.frames = 6, .bits = 16, .compression = ""}, counting(12)));
    const auto& logged = platform.trace.logged;
    ASSERT_GE(logged.size(), 3U);
    EXPECT_EQ(logged[logged.size() - 3], "\nFILE IS READABLE\n");
    EXPECT_EQ(logged[logged.size() - 2], "\nNUM_PACKETS: 6\nNUM_BYTES: 12\nBUF_SIZE: 6");
    EXPECT_EQ(logged[logged.size() - 1], "\nSIZE OF FLOAT32 = 4\n");
}

TEST_F(OpenSoundFile, SamplesAlignedHighInTheirBytesAreTraced) {
    open("/a.aif", aiffFile({.frames = 6, .bits = 12, .compression = ""}, counting(12)));
    const auto& logged = platform.trace.logged;
    EXPECT_EQ(std::count(logged.begin(), logged.end(), "\n!!!IS ALIGNED HIGH!!!\n"), 1);
    EXPECT_EQ(std::count(logged.begin(), logged.end(), "\n!!!IS PACKED!!!\n"), 0);
}

TEST_F(OpenSoundFile, PacketsOfManyFramesAreTracedAsNotOne) {
    open("/a.caf", cafFile({.bytesPerPacket = 8, .framesPerPacket = 2}, counting(16)));
    const auto& logged = platform.trace.logged;
    EXPECT_EQ(std::count(logged.begin(), logged.end(), "\nOne Frame/Packet: OK\n"), 0);
    EXPECT_EQ(fBuffersize, 2) << "they take no part in the decision";
}

TEST_F(OpenSoundFile, TheContentDecidesWhicheverExtensionTheNameHas) {
    for (const char* extension : {"caf", "CAF", "aif", "AIF"}) {
        const std::string path = std::string("/a.") + extension;
        EXPECT_EQ(open(path, cafFile({}, littleFloats(kThree))), "OK");
        EXPECT_EQ(currentSound(), kThree);
        EXPECT_EQ(open(path, aiffFile({.frames = 2}, bigFloats(kOld))), "OK");
        EXPECT_EQ(currentSound(), kOld);
    }
}

TEST_F(OpenSoundFile, TheSlackBehindTheSoundIsZero) {
    loadSound(std::vector<float>(4000, 1.0F)); // its block may come back for the next sound
    open("/a.caf", cafFile({}, littleFloats(kThree)));
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenSoundFile, ASoundOfNoPacketsIsTaken) {
    loadSound(kOld);
    EXPECT_EQ(open("/a.caf", cafFile({}, {})), "OK");
    EXPECT_EQ(fBuffersize, 0);
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenSoundFile, ANaNIsKeptBitForBit) {
    const std::vector<std::uint32_t> odd{0x7FC00001, 0xFFA00002, 0x7F800001,
                                         0x80000000, 0x7F800000, 0x00000001};
    open("/a.caf", cafFile({}, littleWords(odd)));
    EXPECT_EQ(soundWords(), odd);
    open("/a.aif", aiffFile({.frames = 6}, bigWords(odd)));
    EXPECT_EQ(soundWords(), odd);
}

TEST_F(OpenSoundFile, SixteenBitSamplesAreCopiedRawTwoToAFloat) {
    const Bytes data = counting(12); // six packets
    EXPECT_EQ(open("/a.caf", cafFile({.flags = 2, .bytesPerPacket = 2, .bits = 16}, data)), "OK");
    EXPECT_EQ(soundWords(),
              (std::vector<std::uint32_t>{0x04030201, 0x08070605, 0x0C0B0A09, 0, 0, 0}));
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenSoundFile, BigEndianSixteenBitSamplesAreReversedFourBytesAtATime) {
    const Bytes data = counting(12);
    EXPECT_EQ(open("/a.aif", aiffFile({.frames = 6, .bits = 16, .compression = ""}, data)), "OK");
    EXPECT_EQ(soundWords(),
              (std::vector<std::uint32_t>{0x01020304, 0x05060708, 0x090A0B0C, 0, 0, 0}));
}

TEST_F(OpenSoundFile, ATrailingPartOfAWordIsReversedWithItsZeros) {
    for (std::uint16_t bits : {std::uint16_t{8}, std::uint16_t{24}}) {
        for (std::uint32_t packets = 0; packets <= 9; ++packets) {
            const Bytes data = counting(packets * bits / 8U);
            EXPECT_EQ(open("/a.aif",
                           aiffFile({.frames = packets, .bits = bits, .compression = ""}, data)),
                      "OK");
            EXPECT_EQ(soundWords(), reversed(wordsOf(data, packets)));
            EXPECT_TRUE(slackIsZero());
        }
    }
}

TEST_F(OpenSoundFile, OfPacketsLongerThanAFloatOnlyAsManyWordsAsPacketsAreStored) {
    const Bytes data = counting(24); // three packets, three of six words
    const CafDescription doubles{.rate = 44100.0, .bytesPerPacket = 8, .channels = 2, .bits = 64};
    ASSERT_EQ(open("/a.caf", cafFile(doubles, data)), "OK") << "one of the five checks holds";
    EXPECT_EQ(soundWords(), wordsOf(data, 3));
    EXPECT_TRUE(slackIsZero());
    EXPECT_EQ(platform.trace.logged.at(platform.trace.logged.size() - 2),
              "\nNUM_PACKETS: 3\nNUM_BYTES: 24\nBUF_SIZE: 3");
}

TEST_F(OpenSoundFile, OfLongPacketsToBeReversedOnlyAsManyWordsAsPacketsAreStored) {
    const Bytes data = counting(24);
    ASSERT_EQ(open("/a.aif", aiffFile({.frames = 3, .bits = 64, .compression = "fl64"}, data)),
              "OK");
    EXPECT_EQ(soundWords(), reversed(wordsOf(data, 3)));
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenSoundFile, WhatIsNotLinearPcmIsReversedToo) {
    R = 44100.0; // so that mono alone holds
    const CafDescription ulaw{.formatID = "ulaw", .flags = 0, .bytesPerPacket = 1, .bits = 8};
    ASSERT_EQ(open("/a.caf", cafFile(ulaw, counting(6))), "OK");
    EXPECT_EQ(soundWords(), reversed(wordsOf(counting(6), 6)));
}

TEST_F(OpenSoundFile, WhatCannotBeReadOfTheDataIsZero) {
    const Bytes file = cafFile({}, littleFloats(kThree));
    platform.files.readableBytes = file.size() - 6;
    EXPECT_EQ(open("/a.caf", file), "OK");
    EXPECT_EQ(soundWords(), wordsOf(Bytes(file.end() - 12, file.end() - 6), 3));
    EXPECT_EQ(platform.trace.logged.at(platform.trace.logged.size() - 2),
              "\nNUM_PACKETS: 1\nNUM_BYTES: 6\nBUF_SIZE: 3");
}

TEST_F(OpenSoundFile, WhatCannotBeReadOfReversedDataIsZero) {
    const Bytes file = aiffFile({.frames = 3}, bigFloats(kThree));
    platform.files.readableBytes = file.size() - 6;
    EXPECT_EQ(open("/a.aif", file), "OK");
    EXPECT_EQ(soundWords(), reversed(wordsOf(Bytes(file.end() - 12, file.end() - 6), 3)));
    EXPECT_EQ(platform.trace.logged.at(platform.trace.logged.size() - 2),
              "\nNUM_PACKETS: 3\nNUM_BYTES: 6\nBUF_SIZE: 3");
}

/// A large file is read in pieces by several threads, which end wherever they end.
TEST_F(OpenSoundFile, ALargeFileThatCannotBeReadToItsEndIsZeroFromThereOn) {
    platform::ThreadWorkers workers(3);
    platform::services().workers = &workers;
    constexpr std::size_t kPiece = std::size_t{8} << 20;
    std::vector<float> samples(5 * kPiece / 2 / sizeof(float));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(1 + i % 1000);
    }
    const Bytes file = cafFile({}, littleFloats(samples));
    const std::size_t head = file.size() - samples.size() * sizeof(float);
    for (const std::size_t readable :
         {std::size_t{0}, kPiece - 4, kPiece, kPiece + 4, 2 * kPiece, 5 * kPiece / 2}) {
        platform.files.readableBytes = head + readable;
        ASSERT_EQ(open("/a.caf", file), "OK");
        std::vector<float> expected = samples;
        std::fill(expected.begin() + static_cast<std::ptrdiff_t>(readable / sizeof(float)),
                  expected.end(), 0.0F);
        EXPECT_TRUE(currentSound() == expected) << readable;
        EXPECT_NE(platform.trace.logged.at(platform.trace.logged.size() - 2)
                      .find("NUM_BYTES: " + std::to_string(readable)),
                  std::string::npos)
            << readable;
    }
    platform::services().workers = nullptr;
}

// Refused -----------------------------------------------------------------------------------

TEST_F(OpenSoundFile, TheSameFileAtAnotherRateIsRefused) {
    EXPECT_EQ(open("/a.caf", cafFile({.rate = 44100.0}, littleFloats(kThree))), "KO");
}

TEST_F(OpenSoundFile, AFractionOfAHertzIsAnotherRate) {
    EXPECT_EQ(open("/a.caf", cafFile({.rate = std::nextafter(48000.0, 0.0)}, littleFloats(kThree))),
              "KO");
}

TEST_F(OpenSoundFile, ARateThatIsNoNumberNeverMatches) {
    R = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(open("/a.caf", cafFile({.rate = R}, littleFloats(kThree))), "KO");
}

/// It reports no format, so that no check holds: not one of them alone either, which would be an
/// odd number.
TEST_F(OpenSoundFile, AnUnknownCompressionIsRefusedWhateverElseTheHeaderSays) {
    loadSound(kOld);
    for (const auto channels : std::initializer_list<std::uint16_t>{1, 2}) {
        for (const double rate : {44100.0, 48000.0}) {
            R = rate;
            EXPECT_EQ(
                open("/a.aif", aiffFile({.channels = channels, .frames = 3, .compression = "QDMC"},
                                        littleFloats(kThree))),
                "KO")
                << channels << " " << rate;
            expectOldSoundKept();
        }
    }
}

TEST_F(OpenSoundFile, AStereoFileIsRefusedWhenTheOtherFourChecksHold) {
    EXPECT_EQ(open("/a.caf", cafFile({.bytesPerPacket = 8, .channels = 2}, counting(16))), "KO");
}

TEST_F(OpenSoundFile, ARefusedFileIsTracedLineByLine) {
    open("/b.caf", cafFile({.rate = 44100.0}, littleFloats(kThree)));
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "log: \nthePath = /b.caf\n",
                                      "log: \nURL = file:///b.caf\n",
                                      "log: \nLinearPCM : OK\n",
                                      "log: \nOne Frame/Packet: OK\n",
                                      "log: \nMono : OK\n",
                                      "log: \nNativeEndian : OK\n",
                                      "log: \nFloat : OK\n",
                                      "log: \n32-bit : OK\n",
                                      "log: \n!!!IS PACKED!!!\n",
                                      "log: \nFILE NOT READABLE\n",
                                  }));
}

TEST_F(OpenSoundFile, AFileThatCannotBeOpenedFailsEveryCheck) {
    EXPECT_STREQ(openSoundFile(FileUrl("/absent.caf")), "KO");
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "log: \nthePath = /absent.caf\n",
                                      "log: \nURL = file:///absent.caf\n",
                                      "log: \nFILE NOT READABLE\n",
                                  }));
    EXPECT_EQ(platform.alert.shown.size(), 1U);
}

TEST_F(OpenSoundFile, AFileThatCannotBeOpenedIsRefusedAtAnyRate) {
    R = 0.0; // the rate of a format of zeros
    EXPECT_STREQ(openSoundFile(FileUrl("/absent.caf")), "KO");
}

TEST_F(OpenSoundFile, AnEmptyFileIsRefused) {
    EXPECT_EQ(open("/a.caf", {}), "KO");
    EXPECT_EQ(platform.alert.shown.size(), 1U);
}

TEST_F(OpenSoundFile, ARefusalIsOneAlertWithTitleNameAndButton) {
    open("/sounds/b.caf", counting(5));
    ASSERT_EQ(platform.alert.shown.size(), 1U);
    EXPECT_EQ(platform.alert.shown[0].title, "ZEMO: Error:");
    EXPECT_EQ(platform.alert.shown[0].message, "ZEMO CAN'T READ THE FILE:\nb.caf");
    EXPECT_EQ(platform.alert.shown[0].button, "OK");
}

TEST_F(OpenSoundFile, TheAlertKeepsThePercentEscapesOfTheName) {
    open("/my sounds/a \xC3\xA9.caf", {});
    EXPECT_EQ(platform.trace.logged[0], "\nthePath = /my sounds/a \xC3\xA9.caf\n");
    EXPECT_EQ(platform.trace.logged[1], "\nURL = file:///my%20sounds/a%20%C3%A9.caf\n");
    EXPECT_EQ(platform.alert.shown.at(0).message, "ZEMO CAN'T READ THE FILE:\na%20%C3%A9.caf");
}

TEST_F(OpenSoundFile, ANameIsNeverAFormat) {
    open("/%s%n.caf", {});
    EXPECT_EQ(platform.trace.logged[0], "\nthePath = /%s%n.caf\n");
    EXPECT_EQ(platform.alert.shown.at(0).message, "ZEMO CAN'T READ THE FILE:\n%25s%25n.caf");
}

TEST_F(OpenSoundFile, TheAlertsTextIsAtMost511Bytes) {
    const std::string head = "ZEMO CAN'T READ THE FILE:\n";
    for (std::size_t length :
         {511 - head.size() - 1, 511 - head.size(), 512 - head.size(), std::size_t{2000}}) {
        const std::string name = std::string(length - 4, 'n') + ".caf";
        open("/" + name, {});
        EXPECT_EQ(platform.alert.shown.back().message, (head + name).substr(0, 511));
    }
}

TEST_F(OpenSoundFile, AfterARefusalTheOldSoundIsStillThere) {
    loadSound(kOld);
    const float* const block = fBuffer;
    EXPECT_EQ(open("/b.caf", cafFile({.rate = 44100.0}, littleFloats(kThree))), "KO");
    expectOldSoundKept();
    EXPECT_EQ(fBuffer.load(), block);
}

TEST_F(OpenSoundFile, AnAcceptedFileLeavesTheRateTheFormatAndTheTotalAsTheyWere) {
    totalFrames = 77;
    const auto before = streamFormat;
    open("/a.caf", cafFile({}, littleFloats(kThree)));
    EXPECT_EQ(totalFrames, 77);
    EXPECT_EQ(R, 48000.0);
    EXPECT_EQ(streamFormat.mSampleRate, before.mSampleRate);
    EXPECT_EQ(streamFormat.mFormatFlags, before.mFormatFlags);
}

// Too large ---------------------------------------------------------------------------------

/// A file with a header at its start and nothing but zeros up to a size that no disk has.
class EndlessFileSystem final : public platform::FileSystem {
public:
    Bytes header;
    std::uint64_t size = 0;

    std::unique_ptr<platform::FileStream> openForReading(const std::string&, int&) override {
        return std::make_unique<Stream>(header, size);
    }

private:
    class Stream final : public platform::FileStream {
    public:
        Stream(const Bytes& header, std::uint64_t size) : header_(header), size_(size) {}
        std::uint64_t size() const override { return size_; }
        std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
            auto* const bytes = static_cast<std::uint8_t*>(destination);
            for (std::size_t i = 0; i < count; ++i) {
                bytes[i] = offset + i < header_.size() ? header_[offset + i] : std::uint8_t{0};
            }
            return count;
        }

    private:
        const Bytes& header_;
        std::uint64_t size_;
    };
};

Bytes endlessCaf(const CafDescription& description) {
    return join({cafHeader(), cafDescriptionChunk(description), cafChunk("data", -1, zeros(4))});
}

TEST_F(OpenSoundFile, ASoundOfMoreBytesThanCanBeCountedIsTooLarge) {
    loadSound(kOld);
    EndlessFileSystem endless;
    endless.header = endlessCaf({.flags = 2, .bytesPerPacket = 1, .bits = 8});
    endless.size = std::uint64_t{1} << 62;
    platform::services().fileSystem = &endless;
    EXPECT_STREQ(openSoundFile(FileUrl("/huge.caf")), "KO");
    expectOldSoundKept();
    ASSERT_EQ(platform.alert.shown.size(), 1U);
    EXPECT_EQ(platform.alert.shown[0].title, "ZEMO: Error:");
    EXPECT_EQ(platform.alert.shown[0].message,
              "The sound is too large for this computer's memory.");
}

TEST_F(OpenSoundFile, APacketCountPastTheSignedNumbersIsTooLarge) {
    loadSound(kOld);
    EndlessFileSystem endless;
    endless.header = endlessCaf({.flags = 2, .bytesPerPacket = 1, .bits = 8});
    endless.size = UINT64_MAX;
    platform::services().fileSystem = &endless;
    EXPECT_STREQ(openSoundFile(FileUrl("/huge.caf")), "KO");
    expectOldSoundKept();
}

#ifndef ZEMO_TEST_SANITIZED
/// In a process with 1 GiB of address space: the sound of a real file of 16 GiB, all holes.
[[noreturn]] void openHugeFileInLittleMemory(const std::string& path) {
    FakePlatform platform;
    platform::PosixFileSystem files;
    platform.launch(48000.0);
    platform::services().fileSystem = &files;
    loadSound(kOld);
    const rlimit little{1U << 30, 1U << 30};
    const bool kept =
        setrlimit(RLIMIT_AS, &little) == 0 && std::string(openSoundFile(FileUrl(path))) == "KO" &&
        currentSound() == kOld && platform.alert.shown.size() == 1 &&
        platform.alert.shown[0].message == "The sound is too large for this computer's memory.";
    _exit(kept ? 0 : 1);
}
#endif

TEST(OpenHugeSoundFile, WithoutMemoryForItTheOldSoundStays) {
#ifdef ZEMO_TEST_SANITIZED
    GTEST_SKIP() << "A sanitizer needs more address space than this leaves.";
#else
    const auto path =
        std::filesystem::temp_directory_path() / ("zemo-huge-" + std::to_string(getpid()) + ".caf");
    const Bytes header = endlessCaf({});
    std::ofstream(path, std::ios::binary)
        .write(std::string(header.begin(), header.end()).data(),
               static_cast<std::streamsize>(header.size()));
    std::filesystem::resize_file(path, std::uintmax_t{16} << 30);
    const pid_t child = fork();
    if (child == 0) {
        openHugeFileInLittleMemory(path);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    std::filesystem::remove(path);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
#endif
}

} // namespace
} // namespace zemo::test
