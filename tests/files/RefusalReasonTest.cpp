#include "files/RefusalReason.h"

#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files_test/SoundFiles.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using Kind = RefusalReason::Kind;

class Refusal : public testing::Test {
protected:
    Refusal() { platform.launch(48000.0); }

    /// The reason, of a file that is refused exactly when there is one.
    RefusalReason reasonFor(const Bytes& bytes) {
        platform.files.files["/a.caf"] = bytes;
        RefusalReason reason = refusalReason(FileUrl("/a.caf"));
        const bool isRefused = std::string(openSoundFile(FileUrl("/a.caf"))) == "KO";
        EXPECT_EQ(isRefused, reason.kind != Kind::None);
        return reason;
    }

    FakePlatform platform;
    Bytes samples = littleFloats({0.25F, 0.5F});
};

TEST_F(Refusal, AFileThatIsTakenHasNoReason) {
    EXPECT_EQ(reasonFor(cafFile({}, samples)).kind, Kind::None);
}

TEST_F(Refusal, AnotherRateIsNamed) {
    const RefusalReason reason = reasonFor(cafFile({.rate = 44100.0}, samples));
    EXPECT_EQ(reason.kind, Kind::Rate);
    EXPECT_EQ(reason.rate, 44100.0);
}

TEST_F(Refusal, TheRateComesBeforeEverythingElse) {
    const CafDescription common{.rate = 96000.0, .flags = 2, .bytesPerPacket = 2, .bits = 16};
    EXPECT_EQ(reasonFor(cafFile(common, samples)).kind, Kind::Rate);
}

TEST_F(Refusal, MoreThanOneChannelIsNamedWithTheirNumber) {
    const RefusalReason reason = reasonFor(cafFile({.bytesPerPacket = 24, .channels = 6}, samples));
    EXPECT_EQ(reason.kind, Kind::Channels);
    EXPECT_EQ(reason.channels, 6U);
}

TEST_F(Refusal, IntegersOf32BitsAreOfAnotherFormat) {
    EXPECT_EQ(reasonFor(cafFile({.flags = 2}, samples)).kind, Kind::Format);
}

TEST_F(Refusal, AnUnknownCompressionSaysSo) {
    const RefusalReason reason =
        reasonFor(aiffFile({.channels = 2, .frames = 3, .compression = "QDMC"}, samples));
    EXPECT_EQ(reason.kind, Kind::Unreadable);
    EXPECT_EQ(reason.sentence, "The AIFF-C file's compression is not known.");
}

TEST_F(Refusal, WhatIsNoContainerSaysWhy) {
    const RefusalReason reason = reasonFor({1, 2, 3});
    EXPECT_EQ(reason.kind, Kind::Unreadable);
    EXPECT_EQ(reason.sentence, "The file is neither CAF nor AIFF.");
}

TEST_F(Refusal, AFileThatIsNotThereSaysSo) {
    const RefusalReason reason = refusalReason(FileUrl("/nowhere.caf"));
    EXPECT_EQ(reason.kind, Kind::Unreadable);
    EXPECT_NE(reason.sentence.find("cannot be opened"), std::string::npos);
}

} // namespace
} // namespace zemo::test
