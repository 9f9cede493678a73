#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "SavedFiles.h"
#include "files/AudioFile.h"
#include "files/AudioFileLayout.h"
#include "files/AudioFileReader.h"
#include "files/AudioFileWriter.h"
#include "files_test/SoundChecks.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Words = std::vector<std::uint32_t>;

constexpr std::array kExtensions{"caf", "CAF", "aif", "AIF"};

Words wordsOf(const std::vector<float>& samples) {
    Words words;
    for (const float sample : samples) {
        words.push_back(std::bit_cast<std::uint32_t>(sample));
    }
    return words;
}

Words withPair(Words words, std::uint32_t first = 0, std::uint32_t second = 0) {
    words.push_back(first);
    words.push_back(second);
    return words;
}

Bytes expectedFile(const std::string& extension, const Words& words) {
    const bool isCaf = extension == "caf" || extension == "CAF";
    return isCaf ? expectedCaf(words) : expectedAiffC(words);
}

void loadWords(const Words& words) {
    std::vector<float> samples(words.size());
    std::memcpy(samples.data(), words.data(), words.size() * sizeof(float));
    loadSound(samples);
}

/// Samples in memory with a known number of readable values behind them.
void loadWithSlack(const std::vector<float>& samples, const std::vector<float>& slack) {
    const auto count = static_cast<std::int64_t>(samples.size());
    SampleBlock block = allocateSamples(count);
    std::copy(samples.begin(), samples.end(), block.get());
    std::copy(slack.begin(), slack.end(), block.get() + count);
    replaceBuffer(std::move(block), count, static_cast<std::int64_t>(slack.size()));
}

class SaveAsAudioFile : public testing::Test {
protected:
    SaveAsAudioFile() { platform.launch(48000.0); }

    bool save(const std::string& path) {
        SoundCopy copy = SoundCopy::take();
        return saveAsAudioFile(FileUrl(path), copy.bytes());
    }
    const Bytes& file(const std::string& path) { return platform.files.files.at(path); }

    FakePlatform platform;
    const std::vector<float> three{0.25F, -0.5F, 1.0F};
};

// The file ----------------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, ThreeSamplesAreFiveLittleEndianValuesOfACaf) {
    loadSound(three);
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
    EXPECT_EQ(file("/s/x.caf").size(), 68U + 5 * 4);
}

TEST_F(SaveAsAudioFile, ThreeSamplesAreFiveBigEndianValuesOfAnAiffC) {
    loadSound(three);
    EXPECT_TRUE(save("/s/x.aif"));
    EXPECT_EQ(file("/s/x.aif"), expectedAiffC(withPair(wordsOf(three))));
    EXPECT_EQ(file("/s/x.aif").size(), 72U + 5 * 4);
}

TEST_F(SaveAsAudioFile, TheExtensionsInCapitalsGiveTheSameFiles) {
    loadSound(three);
    for (const std::string extension : kExtensions) {
        EXPECT_TRUE(save("/s/x." + extension));
        EXPECT_EQ(file("/s/x." + extension), expectedFile(extension, withPair(wordsOf(three))));
    }
}

TEST_F(SaveAsAudioFile, ItReplacesWhatWasThere) {
    loadSound(three);
    platform.files.files["/s/x.caf"] = counting(1000);
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
    EXPECT_EQ(platform.files.files.size(), 1U);
}

TEST_F(SaveAsAudioFile, NothingButTheFileIsLeft) {
    loadSound(three);
    EXPECT_TRUE(save("/s/x.aif"));
    EXPECT_EQ(platform.files.files.size(), 1U);
    EXPECT_EQ(platform.operations.openDescriptors(), 0U);
    EXPECT_TRUE(platform.alert.shown.empty());
}

TEST_F(SaveAsAudioFile, TheRateIsThatOfTheOutput) {
    loadSound(three);
    for (const double rate : {1.0, 8000.0, 22050.0, 44100.0, 44100.5, 48000.0, 96000.0, 1e6}) {
        R = rate;
        for (const char* path : {"/s/x.caf", "/s/x.aif"}) {
            EXPECT_TRUE(save(path));
            const auto saved = AudioFile::open(path);
            ASSERT_TRUE(saved);
            EXPECT_EQ(saved.value().dataFormat().mSampleRate, rate) << path;
        }
    }
}

TEST_F(SaveAsAudioFile, EveryKindOfSampleIsWrittenBitForBit) {
    const Words specials{0x7FC00000, 0xFFC00001, 0x7F800001, 0xFFFFFFFF, 0x7F800000, 0xFF800000,
                         0x80000000, 0x00000000, 0x00000001, 0x807FFFFF, 0x7F7FFFFF, 0x3F800000};
    loadWords(specials);
    for (const std::string extension : kExtensions) {
        EXPECT_TRUE(save("/s/x." + extension));
        EXPECT_EQ(file("/s/x." + extension), expectedFile(extension, withPair(specials)));
    }
}

TEST_F(SaveAsAudioFile, ASoundOfManyBlocksIsWrittenWhole) {
    std::mt19937 random(3);
    Words words(1'200'001); // more than a block
    std::generate(words.begin(), words.end(), random);
    loadWords(words);
    for (const std::string extension : {"caf", "aif"}) {
        EXPECT_TRUE(save("/s/x." + extension));
        EXPECT_TRUE(file("/s/x." + extension) == expectedFile(extension, withPair(words)));
    }
}

/// For an AIFF-C it is copied in pieces of four megabytes.
TEST_F(SaveAsAudioFile, ASoundOfManyPiecesIsSavedAsItIs) {
    Words words(2'500'000);
    std::iota(words.begin(), words.end(), 7U);
    loadWords(words);
    for (const std::string extension : {"caf", "aif"}) {
        EXPECT_TRUE(saveSound(FileUrl("/s/x." + extension)));
        EXPECT_TRUE(file("/s/x." + extension) == expectedFile(extension, withPair(words)));
    }
}

TEST_F(SaveAsAudioFile, ItHasNoNameUntilItIsWhole) {
    loadSound(three);
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        EXPECT_EQ(platform.files.files.count("/s/folder/x.caf"),
                  call == "sync" || call == "close" || call == "syncFolder"
                      ? platform.files.files.size()
                      : 0U)
            << call;
        return 0L;
    };
    EXPECT_TRUE(save("/s/folder/x.caf"));
    EXPECT_EQ(platform.files.files.size(), 1U);
}

TEST_F(SaveAsAudioFile, WithoutNamelessFilesItIsWrittenUnderAHiddenNameInTheSameFolder) {
    platform.operations.hasNamelessFiles = false;
    loadSound(three);
    std::string temporary;
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        if (call == "rename") {
            EXPECT_EQ(platform.files.files.size(), 1U);
            temporary = platform.files.files.begin()->first;
        }
        return 0L;
    };
    EXPECT_TRUE(save("/s/folder/x.caf"));
    EXPECT_EQ(temporary.substr(0, 11), "/s/folder/.");
    EXPECT_EQ(temporary.find('/', 11), std::string::npos);
}

TEST_F(SaveAsAudioFile, ItIsOnTheDiskBeforeItHasItsNameAndSoIsTheNameAfterwards) {
    loadSound(three);
    EXPECT_TRUE(save("/s/x.caf"));
    const auto& calls = platform.operations.calls;
    const auto at = [&](const char* call) {
        return std::find(calls.begin(), calls.end(), call) - calls.begin();
    };
    EXPECT_LT(at("write"), at("sync"));
    EXPECT_LT(at("sync"), at("closeDuplicate"));
    EXPECT_LT(at("closeDuplicate"), at("link"));
    EXPECT_LT(at("link"), at("syncFolder"));
    EXPECT_EQ(calls.back(), "syncFolder");
}

TEST_F(SaveAsAudioFile, AHiddenFileIsOnTheDiskBeforeItIsRenamedAndSoIsItsNameAfterwards) {
    platform.operations.hasNamelessFiles = false;
    loadSound(three);
    EXPECT_TRUE(save("/s/x.caf"));
    const auto& calls = platform.operations.calls;
    const auto at = [&](const char* call) {
        return std::find(calls.begin(), calls.end(), call) - calls.begin();
    };
    EXPECT_LT(at("write"), at("sync"));
    EXPECT_LT(at("sync"), at("close"));
    EXPECT_LT(at("close"), at("rename"));
    EXPECT_LT(at("rename"), at("syncFolder"));
    EXPECT_EQ(calls.back(), "syncFolder");
}

TEST_F(SaveAsAudioFile, ANameThatIsTakenIsLeftAloneAndAnotherIsUsed) {
    loadSound(three);
    platform.files.files["/s/.zemo-0000000000000001"] = counting(5);
    platform.files.files["/s/.zemo-0000000000000003"] = counting(6);
    for (const bool nameless : {true, false}) {
        platform.operations.hasNamelessFiles = nameless;
        platform.files.files["/s/x.caf"] = {};
        EXPECT_TRUE(save("/s/x.caf"));
        EXPECT_EQ(platform.files.files.size(), 3U);
        EXPECT_EQ(file("/s/.zemo-0000000000000001"), counting(5));
        EXPECT_EQ(file("/s/.zemo-0000000000000003"), counting(6));
        EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
    }
}

TEST_F(SaveAsAudioFile, WhatReplacesAFileIsItsOwnersAloneUntilItHasTheOldOnesAttributes) {
    loadSound(three);
    for (const bool nameless : {true, false}) {
        platform.files.files["/s/x.caf"] = {};
        platform.operations.hasNamelessFiles = nameless;
        platform.operations.calls.clear();
        EXPECT_TRUE(save("/s/x.caf"));
        const auto& calls = platform.operations.calls;
        const auto at = [&](const char* call) {
            return std::find(calls.begin(), calls.end(), call) - calls.begin();
        };
        EXPECT_LT(at("write"), at("copyAttributes"));
        EXPECT_LT(at("copyAttributes"), at("sync"));
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "copyAttributes"), 1);
    }
    EXPECT_EQ(platform.operations.created, std::vector(2, platform::NewFileAccess::OwnerOnly));
    EXPECT_EQ(platform.operations.attributesOf, std::vector<std::string>(2, "/s/x.caf"));
}

TEST_F(SaveAsAudioFile, AFileThatReplacesNoneHasThePermissionsOfNewFiles) {
    loadSound(three);
    for (const bool nameless : {true, false}) {
        platform.files.files.clear();
        platform.operations.hasNamelessFiles = nameless;
        EXPECT_TRUE(save("/s/x.caf"));
    }
    EXPECT_EQ(platform.operations.created, std::vector(2, platform::NewFileAccess::Default));
    EXPECT_TRUE(platform.operations.attributesOf.empty());
}

TEST_F(SaveAsAudioFile, AFileThatAppearsMeanwhileIsReplacedAndItsAttributesAreKept) {
    loadSound(three);
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        if (call == "link") {
            platform.files.files["/s/x.caf"] = counting(5);
        }
        return 0L;
    };
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
    EXPECT_EQ(platform.operations.attributesOf, std::vector<std::string>{"/s/x.caf"});
    EXPECT_EQ(platform.files.files.size(), 1U);
}

TEST_F(SaveAsAudioFile, AFileThatGoesMeanwhileLeavesItsPlaceToThePrivateNewOne) {
    loadSound(three);
    platform.files.files["/s/x.caf"] = counting(5);
    platform.operations.inject = [&](const std::string& call, std::size_t) {
        if (call == "write") {
            platform.files.files.clear();
        }
        return 0L;
    };
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
    EXPECT_EQ(platform.operations.created, std::vector{platform::NewFileAccess::OwnerOnly});
    EXPECT_TRUE(platform.operations.attributesOf.empty());
}

// Streams -----------------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, AStreamIsWrittenToDirectly) {
    loadSound(three);
    for (const std::string extension : {"caf", "aif"}) {
        const std::string path = "/s/x." + extension;
        platform.operations.calls.clear();
        platform.operations.statuses[path] = {.exists = true, .isStream = true, .isWritable = true};
        EXPECT_TRUE(save(path));
        EXPECT_EQ(platform.operations.streamed.at(path),
                  expectedFile(extension, withPair(wordsOf(three))));
        EXPECT_EQ(platform.operations.calls.back(), "close");
        for (const std::string call : {"sync", "finishSync", "rename", "link", "linkOver"}) {
            EXPECT_EQ(std::count(platform.operations.calls.begin(), platform.operations.calls.end(),
                                 call),
                      0)
                << call;
        }
    }
    EXPECT_TRUE(platform.files.files.empty());
    EXPECT_EQ(platform.operations.openDescriptors(), 0U);
}

TEST_F(SaveAsAudioFile, ALinkStaysAndItsTargetIsReplaced) {
    loadSound(three);
    platform.operations.links["/s/link.caf"] = "/elsewhere/x.caf";
    EXPECT_TRUE(save("/s/link.caf"));
    EXPECT_EQ(platform.files.files.size(), 1U);
    EXPECT_EQ(file("/elsewhere/x.caf"), expectedCaf(withPair(wordsOf(three))));
}

// The extra pair ----------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, TheExtraPairIsWhatTheSlackHolds) {
    loadWithSlack(three, {0.75F, -0.125F, 0.5F});
    for (const std::string extension : kExtensions) {
        EXPECT_TRUE(save("/s/x." + extension));
        EXPECT_EQ(
            file("/s/x." + extension),
            expectedFile(extension, withPair(wordsOf(three), std::bit_cast<std::uint32_t>(0.75F),
                                             std::bit_cast<std::uint32_t>(-0.125F))));
    }
}

TEST_F(SaveAsAudioFile, WithoutSlackTheExtraPairIsTwoZeros) {
    loadWithSlack(three, {});
    fBuffer.load()[3] = 9.0F; // in the block, but no slack
    fBuffer.load()[4] = 9.0F;
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
}

TEST_F(SaveAsAudioFile, OneSampleOfSlackIsSavedAndAZero) {
    loadWithSlack(three, {0.75F});
    fBuffer.load()[4] = 9.0F;
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_EQ(file("/s/x.caf"),
              expectedCaf(withPair(wordsOf(three), std::bit_cast<std::uint32_t>(0.75F))));
}

/// The block ends with the sound: under the address sanitizer reading on would end the test.
TEST_F(SaveAsAudioFile, NothingPastTheEndOfASoundWithoutSlackIsRead) {
    SampleBlock exact = ownSamples(static_cast<float*>(std::malloc(three.size() * sizeof(float))));
    std::copy(three.begin(), three.end(), exact.get());
    replaceBuffer(std::move(exact), 3, 0);
    EXPECT_TRUE(save("/s/x.caf"));
    EXPECT_TRUE(saveSound(FileUrl("/s/y.caf")));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
    EXPECT_EQ(file("/s/y.caf"), file("/s/x.caf"));
}

// The copy ----------------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, WhatHappensToTheSoundAfterTheCopyIsNotSaved) {
    loadSound(three);
    SoundCopy copy = SoundCopy::take();
    fBuffer.load()[1] = 99.0F;
    fBuffer.load()[3] = 99.0F;
    loadSound({7.0F});
    emptyBuffer();
    EXPECT_TRUE(saveAsAudioFile(FileUrl("/s/x.caf"), copy.bytes()));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(withPair(wordsOf(three))));
}

TEST_F(SaveAsAudioFile, SavingDoesNotChangeTheSound) {
    loadWords({0x7FC00001, 0x80000000, 0x00000001});
    const Words before = soundWords();
    for (const std::string extension : kExtensions) {
        EXPECT_TRUE(save("/s/x." + extension));
        EXPECT_TRUE(saveSound(FileUrl("/s/y." + extension)));
        EXPECT_EQ(soundWords(), before);
        EXPECT_TRUE(slackIsZero());
    }
}

TEST_F(SaveAsAudioFile, ThereIsNoCopyOfNoSound) {
    EXPECT_TRUE(SoundCopy::take().empty());
    EXPECT_TRUE(SoundCopy::take().bytes().empty());
}

TEST_F(SaveAsAudioFile, WithoutMemoryForACopyNothingIsWritten) {
    loadSound(three);
    fBuffersize = INT64_MAX / 4; // more than any computer has
    EXPECT_TRUE(SoundCopy::take().empty());
    EXPECT_FALSE(saveSound(FileUrl("/s/x.aif")));
    fBuffersize = 3;
    EXPECT_TRUE(platform.files.files.empty());
    ASSERT_EQ(platform.alert.shown.size(), 1U);
    EXPECT_EQ(platform.alert.shown[0].message, "There is not enough memory to save the sound.");
}

TEST_F(SaveAsAudioFile, SavingTheSoundAsItIsGivesTheSameFileAsACopyOfIt) {
    for (const std::vector<float>& slack :
         {std::vector<float>{}, {0.5F}, {0.5F, -0.5F}, {0.5F, -0.5F, 0.25F}}) {
        loadWithSlack(three, slack);
        for (const std::string extension : kExtensions) {
            EXPECT_TRUE(save("/s/copy." + extension));
            EXPECT_TRUE(saveSound(FileUrl("/s/sound." + extension)));
            EXPECT_EQ(file("/s/sound." + extension), file("/s/copy." + extension));
        }
    }
}

TEST_F(SaveAsAudioFile, ABlockForAnAiffCIsReversedInItsPlace) {
    loadSound(three);
    SoundCopy copy = SoundCopy::take();
    EXPECT_TRUE(saveAsAudioFile(FileUrl("/s/x.aif"), copy.bytes()));
    const auto bytes = copy.bytes();
    const Bytes expected = bigWords(withPair(wordsOf(three)));
    ASSERT_EQ(bytes.size(), expected.size());
    EXPECT_EQ(std::memcmp(bytes.data(), expected.data(), expected.size()), 0);
}

// The trace ---------------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, ItsTraceLinesComeInTheirOrder) {
    loadSound(three);
    platform.trace.all.clear();
    EXPECT_TRUE(save("/s/a b%.caf"));
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "log: \nthePath = /s/a b%.caf\n",
                                      "log: \nURL = file:///s/a%20b%25.caf\n",
                                      "log: data length = 20 bytes\n",
                                      "log: \nfile extension: caf\n",
                                      "log: \nSize in bytes = 20",
                                  }));
}

TEST_F(SaveAsAudioFile, TheExtensionIsTracedAsItIsWritten) {
    loadSound(three);
    for (const std::string extension : kExtensions) {
        platform.trace.logged.clear();
        EXPECT_TRUE(save("/s/x." + extension));
        ASSERT_EQ(platform.trace.logged.size(), 5U);
        EXPECT_EQ(platform.trace.logged[3], "\nfile extension: " + extension + "\n");
    }
}

// What is refused ---------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, AnyOtherExtensionIsRefusedWithOneAlertAndNothingIsTouched) {
    loadSound(three);
    for (const std::string name : {"x", "x.", "x.wav", "x.Caf", "x.aiff", "x.AIFF", "x.caf.txt",
                                   ".caf", "x.caf/", "x.aifc"}) {
        platform.alert.shown.clear();
        EXPECT_FALSE(save("/s/" + name)) << name;
        ASSERT_EQ(platform.alert.shown.size(), 1U) << name;
        EXPECT_EQ(platform.alert.shown[0].title, "ZEMO: Error:");
        EXPECT_EQ(platform.alert.shown[0].button, "OK");
        EXPECT_NE(platform.alert.shown[0].message.find(".caf"), std::string::npos);
    }
    EXPECT_TRUE(platform.operations.calls.empty());
    EXPECT_TRUE(platform.files.files.empty());
}

/// Room in the address space that nobody may read or write.
class ForbiddenBlock {
public:
    explicit ForbiddenBlock(std::size_t size)
        : size_(size),
          place_(::mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1,
                        0)) {}
    ForbiddenBlock(const ForbiddenBlock&) = delete;
    ForbiddenBlock& operator=(const ForbiddenBlock&) = delete;
    ~ForbiddenBlock() { ::munmap(place_, size_); }

    bool isThere() const { return place_ != MAP_FAILED; }
    std::span<std::byte> bytes(std::size_t size) const {
        return {static_cast<std::byte*>(place_), size};
    }

private:
    std::size_t size_;
    void* place_;
};

TEST_F(SaveAsAudioFile, ASoundThatAnAiffCCannotHoldIsRefusedBeforeAnythingIsTouched) {
    // Sizes are 32 bits wide and count what follows them: all but the first 8 of 72 header bytes
    // and the data. The last multiple of 4 that fits leaves one word less than the first refused.
    constexpr std::size_t kFirstTooLarge = 0xFFFFFFFF - 72 - (0xFFFFFFFF - 72) % 4 + 4;
    const ForbiddenBlock block(kFirstTooLarge + 8);
    ASSERT_TRUE(block.isThere());
    for (const std::size_t size : {kFirstTooLarge, kFirstTooLarge + 4}) {
        platform.alert.shown.clear();
        EXPECT_FALSE(saveAsAudioFile(FileUrl("/s/x.aif"), block.bytes(size)));
        ASSERT_EQ(platform.alert.shown.size(), 1U);
        EXPECT_NE(platform.alert.shown[0].message.find("AIFF-C"), std::string::npos);
        EXPECT_NE(platform.alert.shown[0].message.find(".caf"), std::string::npos);
    }
    EXPECT_TRUE(platform.operations.calls.empty());
}

TEST_F(SaveAsAudioFile, TheLargestAiffCSaysItsSizesInThirtyTwoBits) {
    constexpr std::uint64_t kLargest = (0xFFFFFFFFULL - 72) / 4 * 4;
    static_assert(kLargest <= kMostAiffCBytes && kLargest + 4 > kMostAiffCBytes);
    const auto header = aiffCHeader(streamFormat, kLargest);
    ASSERT_EQ(header.size(), 72U);
    const auto bytesAt = [&](std::size_t at) {
        return Bytes(header.begin() + static_cast<long>(at),
                     header.begin() + static_cast<long>(at) + 4);
    };
    EXPECT_EQ(bytesAt(4), big(kLargest + 64, 4));
    EXPECT_EQ(bytesAt(34), big(kLargest / 4, 4));
    EXPECT_EQ(bytesAt(60), big(kLargest + 8, 4));
}

TEST_F(SaveAsAudioFile, ACafSaysItsSizeInSixtyFourBits) {
    const std::uint64_t bytes = (std::uint64_t{1} << 40) + 20;
    const auto header = zemo::cafHeader(streamFormat, bytes);
    ASSERT_EQ(header.size(), 68U);
    EXPECT_EQ(Bytes(header.begin() + 56, header.begin() + 64), big(bytes + 4, 8));
}

// There and back ----------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, ASavedSoundOpensAsItWasAndTwoZerosLonger) {
    std::mt19937 random(7);
    for (const std::size_t count : {1U, 2U, 3U, 255U, 1024U, 4095U, 100001U}) {
        Words words(count);
        std::generate(words.begin(), words.end(), random);
        for (const std::string extension : kExtensions) {
            loadWords(words);
            EXPECT_TRUE(save("/s/x." + extension));
            emptyBuffer();
            EXPECT_STREQ(openSoundFile(FileUrl("/s/x." + extension)), "OK");
            EXPECT_TRUE(soundWords() == withPair(words)) << count << " " << extension;
            EXPECT_TRUE(slackIsZero());
        }
    }
}

TEST_F(SaveAsAudioFile, ASavedSoundIsRefusedAtAnotherRate) {
    loadSound(three);
    for (const std::string extension : kExtensions) {
        R = 48000.0;
        EXPECT_TRUE(save("/s/x." + extension));
        R = std::nextafter(48000.0, 1e6);
        EXPECT_STREQ(openSoundFile(FileUrl("/s/x." + extension)), "KO");
    }
}

// The older writer --------------------------------------------------------------------------

TEST_F(SaveAsAudioFile, TheOlderWriterWritesTheSoundWithoutTheExtraPair) {
    loadSound(three);
    EXPECT_TRUE(classicsaveAsAudioFile(FileUrl("/s/x.caf")));
    EXPECT_EQ(file("/s/x.caf"), expectedCaf(wordsOf(three)));
}

TEST_F(SaveAsAudioFile, TheOlderWriterWritesACafWhateverTheExtension) {
    loadSound(three);
    for (const char* path : {"/s/x.aif", "/s/x", "/s/x.wav"}) {
        EXPECT_TRUE(classicsaveAsAudioFile(FileUrl(path)));
        EXPECT_EQ(file(path), expectedCaf(wordsOf(three)));
    }
    EXPECT_TRUE(platform.alert.shown.empty());
}

TEST_F(SaveAsAudioFile, TheOlderWriterSetsTheSharedFormat) {
    loadSound(three);
    streamFormat = {};
    EXPECT_TRUE(classicsaveAsAudioFile(FileUrl("/s/x.caf")));
    EXPECT_EQ(streamFormat.mSampleRate, 48000.0);
    EXPECT_EQ(streamFormat.mFormatID, platform::fourCharCode("lpcm"));
    EXPECT_EQ(streamFormat.mFormatFlags, 41U);
    EXPECT_EQ(streamFormat.mBytesPerPacket, 4U);
    EXPECT_EQ(streamFormat.mFramesPerPacket, 1U);
    EXPECT_EQ(streamFormat.mBytesPerFrame, 4U);
    EXPECT_EQ(streamFormat.mChannelsPerFrame, 1U);
    EXPECT_EQ(streamFormat.mBitsPerChannel, 32U);
}

TEST_F(SaveAsAudioFile, TheOlderWritersTraceLinesComeInTheirOrder) {
    loadSound(three);
    platform.trace.all.clear();
    EXPECT_TRUE(classicsaveAsAudioFile(FileUrl("/s/x.CAF")));
    EXPECT_TRUE(classicsaveAsAudioFile(FileUrl("/s/x.aif")));
    EXPECT_EQ(platform.trace.all, (std::vector<std::string>{
                                      "log: \nthePath = /s/x.CAF\n",
                                      "log: \nURL = file:///s/x.CAF\n",
                                      "log: \nfile extension: CAF\n",
                                      "log: \nSize in bytes = 12",
                                      "log: \nthePath = /s/x.aif\n",
                                      "log: \nURL = file:///s/x.aif\n",
                                      "log: \nSize in bytes = 12",
                                  }));
}

} // namespace
} // namespace zemo::test
