#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <numeric>

#include <gtest/gtest.h>

#include "files/RawFileReader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

const std::vector<float> kOld{0.125F, 0.375F};

class OpenFile : public testing::Test {
protected:
    OpenFile() { dirtyFreshMemory(); }

    std::string open(const Bytes& bytes, bool swap = false, const std::string& path = "/x.raw") {
        platform.files.files[path] = bytes;
        return openFile(path.c_str(), swap);
    }

    FakePlatform platform;
};

// Values ------------------------------------------------------------------------------------

TEST_F(OpenFile, TheWholeFileIsItsSamples) {
    open(littleFloats({0.5F, -0.25F, 1.0F}));
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F, -0.25F, 1.0F}));
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenFile, OneToThreeTrailingBytesAreIgnored) {
    for (std::size_t bytes = 4; bytes <= 12; ++bytes) {
        open(counting(bytes));
        EXPECT_EQ(soundWords(), wordsOf(counting(bytes), bytes / 4));
        EXPECT_TRUE(slackIsZero());
    }
}

TEST_F(OpenFile, AFileOfTenBytesHasTwoValues) {
    open(counting(10));
    EXPECT_EQ(fBuffersize, 2);
}

TEST_F(OpenFile, LittleEndianOneIsOne) {
    open({0x00, 0x00, 0x80, 0x3F});
    EXPECT_EQ(currentSound(), (std::vector<float>{1.0F}));
}

TEST_F(OpenFile, SwappedLittleEndianOneIsTheTinyNumberOfItsReversedBits) {
    open({0x00, 0x00, 0x80, 0x3F}, true);
    EXPECT_EQ(soundWords(), (std::vector<std::uint32_t>{0x0000803F}));
}

TEST_F(OpenFile, SwappedBigEndianValuesAreThemselves) {
    open(bigFloats({0.5F, -0.25F, 1.0F}), true);
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F, -0.25F, 1.0F}));
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenFile, ANaNIsKeptBitForBit) {
    const std::vector<std::uint32_t> odd{0x7FC00001, 0xFFA00002, 0x7F800001, 0x80000000};
    open(littleWords(odd));
    EXPECT_EQ(soundWords(), odd);
    open(bigWords(odd), true);
    EXPECT_EQ(soundWords(), odd);
}

TEST_F(OpenFile, ValuesOfAnySizeAreTakenAsTheyAre) {
    const std::vector<float> loud{1e30F, -3.0F, 1e-40F};
    open(littleFloats(loud));
    EXPECT_EQ(currentSound(), loud);
}

TEST_F(OpenFile, WhatCannotBeReadIsZero) {
    platform.files.readableBytes = 6;
    EXPECT_NE(open(counting(12)), "error");
    EXPECT_EQ(soundWords(), (std::vector<std::uint32_t>{0x04030201, 0x00000605, 0}));
}

TEST_F(OpenFile, TheNewSoundReplacesTheOldOne) {
    loadSound(std::vector<float>(5000, 1.0F));
    open(littleFloats({0.5F}));
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F}));
    EXPECT_TRUE(slackIsZero());
}

TEST_F(OpenFile, ASoundFileIsReadHeaderAndAll) {
    const Bytes caf = cafFile({}, littleFloats({0.5F}));
    EXPECT_EQ(open(caf, false, "/x.caf"), "caff");
    EXPECT_EQ(soundWords(), wordsOf(caf, caf.size() / 4));
}

// How much is swapped -----------------------------------------------------------------------

TEST(SwappedBytes, EveryByteOfASoundBelowTwoToTheThirtiethSample) {
    static_assert(swappedBytes(0) == 0);
    static_assert(swappedBytes(3) == 12);
    static_assert(swappedBytes((std::int64_t{1} << 30) - 1) == 0xFFFFFFFC);
    SUCCEED();
}

TEST(SwappedBytes, TheCountWrapsAtTwoToTheThirtiethSample) {
    static_assert(swappedBytes(std::int64_t{1} << 30) == 0);
    static_assert(swappedBytes((std::int64_t{1} << 30) + 3) == 12);
    static_assert(swappedBytes(std::int64_t{5} << 30) == 0);
    SUCCEED();
}

// The first line ----------------------------------------------------------------------------

TEST_F(OpenFile, TheFirstLineKeepsItsNewline) {
    EXPECT_EQ(open(text("one two\nthree\n")), "one two\n");
}

TEST_F(OpenFile, AFileWithoutANewlineIsOneLine) {
    EXPECT_EQ(open(text("no end")), "no end");
}

TEST_F(OpenFile, ALineIsAtMost999Bytes) {
    for (std::size_t length : {std::size_t{998}, std::size_t{999}, std::size_t{1000},
                               std::size_t{1001}, std::size_t{5000}}) {
        const std::string whole(length, 'x');
        EXPECT_EQ(open(text(whole)), whole.substr(0, 999));
    }
}

TEST_F(OpenFile, TheNewlineIsKeptOnlyWhenItFits) {
    EXPECT_EQ(open(text(std::string(998, 'x') + "\nmore")), std::string(998, 'x') + "\n");
    EXPECT_EQ(open(text(std::string(999, 'x') + "\nmore")), std::string(999, 'x'));
}

TEST_F(OpenFile, ALineIsShownUpToItsFirstZeroByte) {
    EXPECT_EQ(open({'a', 'b', 0, 'c', 'd', '\n'}), "ab");
}

TEST_F(OpenFile, ALineThatBeginsWithAZeroByteIsShownEmpty) {
    EXPECT_EQ(open(littleFloats({0.0F, 1.0F})), "");
}

TEST_F(OpenFile, ALineIsNeverAFormat) {
    EXPECT_EQ(open(text("%s%n%%\n")), "%s%n%%\n");
    EXPECT_EQ(platform.trace.all.back(), "out: S = %s%n%%\n\n");
}

TEST_F(OpenFile, AShorterLineLeavesNothingOfALongerOne) {
    open(text(std::string(2000, 'x')));
    EXPECT_EQ(open(text("brief")), "brief");
}

TEST_F(OpenFile, AFileOfWhichNothingCanBeReadHasNoText) {
    platform.files.readableBytes = 0;
    EXPECT_EQ(open(counting(8)), "No text");
    EXPECT_EQ(soundWords(), (std::vector<std::uint32_t>{0, 0}));
    EXPECT_EQ(platform.trace.all.back(), "out: S = No text\n");
}

// Trace -------------------------------------------------------------------------------------

TEST_F(OpenFile, ALoadIsTracedLineByLine) {
    open(text("a line\nand more"), false, "/some where/%s.txt");
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "out: File /some where/%s.txt: 3\t values\n\n",
                                      "out: Buffer read!\n",
                                      "out: S = a line\n\n",
                                  }));
}

// Failures ----------------------------------------------------------------------------------

TEST_F(OpenFile, FewerThanFourBytesAreASizeError) {
    for (std::size_t bytes = 0; bytes < 4; ++bytes) {
        loadSound(kOld);
        platform.trace.all.clear();
        EXPECT_EQ(open(counting(bytes)), "size_error");
        EXPECT_EQ(fBuffersize, 0);
        EXPECT_EQ(fBuffer.load(), nullptr);
        EXPECT_EQ(platform.trace.all,
                  (std::vector<std::string>{"out: File /x.raw: 0\t values\n\n"}));
    }
}

TEST_F(OpenFile, AFileThatCannotBeOpenedEmptiesTheSound) {
    loadSound(kOld);
    EXPECT_STREQ(openFile("/absent", false), "error");
    EXPECT_EQ(fBuffersize, 0);
    EXPECT_EQ(fBuffer.load(), nullptr);
}

TEST_F(OpenFile, AFileThatCannotBeOpenedIsReportedWithTheSystemsText) {
    platform.files.openErrors["/secret"] = EACCES;
    openFile("/absent", false);
    openFile("/secret", true);
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "err: error: No such file or directory\n",
                                      "out: S = error\n",
                                      "err: error: Permission denied\n",
                                      "out: S = error\n",
                                  }));
}

/// Of 2^64 - 1 bytes, so that their samples cannot even be counted as bytes of memory.
class EndlessFileSystem final : public platform::FileSystem {
    class Stream final : public platform::FileStream {
        std::uint64_t size() const override { return UINT64_MAX; }
        std::size_t readAt(std::uint64_t, void*, std::size_t) override { return 0; }
    };
    std::unique_ptr<platform::FileStream> openForReading(const std::string&, int&) override {
        return std::make_unique<Stream>();
    }
};

TEST_F(OpenFile, WithoutMemoryForItTheOldSoundStaysAndAnAlertSaysSo) {
    loadSound(kOld);
    EndlessFileSystem endless;
    platform::services().fileSystem = &endless;
    EXPECT_STREQ(openFile("/huge", false), "error");
    EXPECT_EQ(currentSound(), kOld);
    ASSERT_EQ(platform.alert.shown.size(), 1U);
    EXPECT_EQ(platform.alert.shown[0].title, "ZEMO: Error:");
    EXPECT_EQ(platform.alert.shown[0].message,
              "The sound is too large for this computer's memory.");
    EXPECT_EQ(platform.alert.shown[0].button, "OK");
}

// getSize -----------------------------------------------------------------------------------

TEST_F(OpenFile, TheSizeOfNoStreamIsZeroAndNotPrinted) {
    EXPECT_EQ(getSize(nullptr, "/x"), 0);
    EXPECT_EQ(platform.trace.out, "");
}

TEST_F(OpenFile, TheSizeIsCountedInWholeValuesAndPrinted) {
    platform.files.files["/x"] = counting(11);
    int error = 0;
    const auto stream = platform.files.openForReading("/x", error);
    EXPECT_EQ(getSize(stream.get(), "/x"), 2);
    EXPECT_EQ(platform.trace.out, "File /x: 2\t values\n\n");
}

// Real files --------------------------------------------------------------------------------

class OpenRealFile : public testing::Test {
protected:
    OpenRealFile()
        : folder(std::filesystem::temp_directory_path() /
                 ("zemo-raw-" + std::to_string(getpid()))) {
        std::filesystem::create_directory(folder);
        platform::services().fileSystem = &files;
        loadSound(kOld);
    }
    ~OpenRealFile() override { std::filesystem::remove_all(folder); }

    void expectNotOpened(const std::string& path, const std::string& why) {
        EXPECT_STREQ(openFile(path.c_str(), false), "error");
        EXPECT_EQ(platform.trace.err, "error: " + why + "\n");
        EXPECT_EQ(fBuffer.load(), nullptr);
        EXPECT_EQ(fBuffersize, 0);
    }

    FakePlatform platform;
    platform::PosixFileSystem files;
    const std::filesystem::path folder;
};

TEST_F(OpenRealFile, AFileOnDiskIsReadWholeAcrossManyBlocks) {
    const Bytes bytes = [] {
        Bytes result(3'000'007);
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = static_cast<std::uint8_t>(i * 2654435761U >> 24);
        }
        return result;
    }();
    const auto path = folder / "sound.raw";
    std::ofstream(path, std::ios::binary)
        .write(std::string(bytes.begin(), bytes.end()).data(),
               static_cast<std::streamsize>(bytes.size()));
    openFile(path.c_str(), false);
    EXPECT_EQ(soundWords(), wordsOf(bytes, bytes.size() / 4));
    openFile(path.c_str(), true);
    EXPECT_EQ(soundWords(), reversed(wordsOf(bytes, bytes.size() / 4)));
}

/// The file is taken in pieces of four megabytes.
TEST_F(OpenRealFile, AFileOfManyPiecesIsReadWhole) {
    std::vector<std::uint32_t> words(2'500'000);
    std::iota(words.begin(), words.end(), 7U);
    const auto path = folder / "long.raw";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(words.data()),
               static_cast<std::streamsize>(words.size() * sizeof(words[0])));
    openFile(path.c_str(), false);
    EXPECT_TRUE(soundWords() == words);
}

TEST_F(OpenRealFile, AnAbsentFileCannotBeOpened) {
    expectNotOpened(folder / "absent", "No such file or directory");
}

TEST_F(OpenRealFile, AFolderCannotBeOpened) {
    expectNotOpened(folder, "Is a directory");
}

TEST_F(OpenRealFile, APipeCannotBeOpenedAndDoesNotHoldTheProgram) {
    const auto path = folder / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expectNotOpened(path, "Invalid argument");
}

TEST_F(OpenRealFile, ADeviceCannotBeOpened) {
    expectNotOpened("/dev/zero", "Invalid argument");
}

} // namespace
} // namespace zemo::test
