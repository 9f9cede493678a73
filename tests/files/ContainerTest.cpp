#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "files/AudioFile.h"
#include "files_test/SoundFiles.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using platform::ErrorCategory;
using platform::fourCharCode;
using Described = platform::Result<ContainerDescription>;

Described describe(const Bytes& bytes) {
    MemoryFileSystem files;
    files.files["x"] = bytes;
    int error = 0;
    return describeContainer(*files.openForReading("x", error));
}

ContainerDescription described(const Bytes& bytes) {
    const Described result = describe(bytes);
    EXPECT_TRUE(result) << (result ? "" : result.error().sentence);
    return result ? result.value() : ContainerDescription{};
}

/// The audio bytes that the description points at.
Bytes audioOf(const Bytes& file) {
    const ContainerDescription description = described(file);
    const auto first = file.begin() + static_cast<std::ptrdiff_t>(description.dataOffset);
    return {first, first + static_cast<std::ptrdiff_t>(description.dataBytes)};
}

Bytes repeated(const Bytes& bytes, std::size_t times) {
    Bytes all;
    for (std::size_t i = 0; i < times; ++i) {
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
}

bool isTaken(const Bytes& file) {
    return static_cast<bool>(describe(file));
}

const Bytes kTwelve = counting(12); ///< three packets of four bytes

// CAF: what the description becomes ---------------------------------------------------------

TEST(CafContainer, AMonoLittleEndianFloatFileIsReportedFieldByField) {
    const auto found = described(cafFile({.rate = 44100.5}, kTwelve));
    EXPECT_EQ(found.format.mSampleRate, 44100.5);
    EXPECT_EQ(found.format.mFormatID, fourCharCode("lpcm"));
    EXPECT_EQ(found.format.mFormatFlags, platform::kIsFloat | platform::kIsPacked);
    EXPECT_EQ(found.format.mBytesPerPacket, 4U);
    EXPECT_EQ(found.format.mFramesPerPacket, 1U);
    EXPECT_EQ(found.format.mBytesPerFrame, 4U);
    EXPECT_EQ(found.format.mChannelsPerFrame, 1U);
    EXPECT_EQ(found.format.mBitsPerChannel, 32U);
    EXPECT_EQ(found.format.mReserved, 0U);
    EXPECT_EQ(found.sourceBitDepth, -32);
    EXPECT_EQ(found.packetCount, 3U);
    EXPECT_EQ(found.dataOffset, 8U + 12 + 32 + 12 + 4);
    EXPECT_EQ(found.dataBytes, 12U);
}

TEST(CafContainer, WithoutTheLittleEndianBitTheDataIsBigEndian) {
    EXPECT_EQ(described(cafFile({.flags = 1}, kTwelve)).format.mFormatFlags,
              platform::kIsFloat | platform::kIsBigEndian | platform::kIsPacked);
}

TEST(CafContainer, WithoutTheFloatBitTheDataIsSignedIntegers) {
    const auto found = described(cafFile({.flags = 2}, kTwelve));
    EXPECT_EQ(found.format.mFormatFlags, platform::kIsSignedInteger | platform::kIsPacked);
    EXPECT_EQ(found.sourceBitDepth, 32);
}

TEST(CafContainer, FewerBitsThanTheirBytesHoldAreAlignedHigh) {
    const auto found = described(
        cafFile({.flags = 2, .bytesPerPacket = 4, .framesPerPacket = 1, .bits = 24}, kTwelve));
    EXPECT_EQ(found.format.mFormatFlags, platform::kIsSignedInteger | platform::kIsAlignedHigh);
    EXPECT_EQ(found.sourceBitDepth, 24);
}

TEST(CafContainer, SixtyFourBitFloatsHaveADepthOfMinusSixtyFour) {
    const auto found = described(cafFile({.bytesPerPacket = 8, .bits = 64}, counting(17)));
    EXPECT_EQ(found.sourceBitDepth, -64);
    EXPECT_EQ(found.packetCount, 2U);
}

TEST(CafContainer, WhatIsNotLinearPcmKeepsItsFlagsAndHasADepthOfZero) {
    const auto found = described(cafFile(
        {.formatID = "ulaw", .flags = 0x1A, .bytesPerPacket = 1, .framesPerPacket = 1, .bits = 32},
        kTwelve));
    EXPECT_EQ(found.format.mFormatID, fourCharCode("ulaw"));
    EXPECT_EQ(found.format.mFormatFlags, 0x1AU);
    EXPECT_EQ(found.format.mBytesPerFrame, 0U);
    EXPECT_EQ(found.format.mBitsPerChannel, 32U);
    EXPECT_EQ(found.sourceBitDepth, 0);
    EXPECT_EQ(found.packetCount, 12U);
}

// CAF: where the data lies ------------------------------------------------------------------

Bytes cafWithDataSize(std::int64_t size, const Bytes& after) {
    return join({cafHeader(), cafDescriptionChunk({}), cafChunk("data", size, after)});
}

TEST(CafContainer, ADataSizeOfMinusOneRunsToTheEnd) {
    EXPECT_EQ(audioOf(cafWithDataSize(-1, join({zeros(4), kTwelve}))), kTwelve);
}

TEST(CafContainer, ADataSizePastTheEndIsClipped) {
    for (const std::int64_t size : {INT64_C(17), INT64_C(0xFFFFFFFF), INT64_MAX}) {
        EXPECT_EQ(audioOf(cafWithDataSize(size, join({zeros(4), kTwelve}))), kTwelve) << size;
    }
}

TEST(CafContainer, AnyOtherNegativeDataSizeIsRefused) {
    for (const std::int64_t size : {INT64_C(-2), INT64_MIN}) {
        EXPECT_FALSE(describe(cafWithDataSize(size, join({zeros(4), kTwelve})))) << size;
    }
}

TEST(CafContainer, ANegativeSizeOfAnotherChunkEndsTheWalkButNotTheFile) {
    const Bytes after = cafChunk("free", -1, zeros(8));
    const Bytes file = join({cafFile({}, kTwelve), after});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(CafContainer, DataOfFewerBytesThanItsEditCountIsEmpty) {
    for (std::size_t bytes = 0; bytes <= 4; ++bytes) {
        const auto found =
            described(join({cafHeader(), cafDescriptionChunk({}), cafChunk("data", zeros(bytes))}));
        EXPECT_EQ(found.dataBytes, 0U);
        EXPECT_EQ(found.packetCount, 0U);
    }
}

TEST(CafContainer, AnIncompleteLastPacketIsNotCounted) {
    for (std::size_t bytes = 0; bytes <= 12; ++bytes) {
        EXPECT_EQ(described(cafFile({}, counting(bytes))).packetCount, bytes / 4);
    }
}

TEST(CafContainer, TheDescriptionMayFollowTheData) {
    const Bytes file = join({cafHeader(), cafDataChunk(kTwelve), cafDescriptionChunk({})});
    EXPECT_EQ(audioOf(file), kTwelve);
    EXPECT_EQ(described(file).packetCount, 3U);
}

TEST(CafContainer, UnknownChunksBeforeBetweenAndAfterAreSkipped) {
    const Bytes other = cafChunk("free", counting(10));
    const Bytes file = join(
        {cafHeader(), other, cafDescriptionChunk({}), other, other, cafDataChunk(kTwelve), other});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(CafContainer, NoPadByteFollowsAChunkOfOddLength) {
    const Bytes file = join({cafHeader(), cafChunk("info", counting(7)), cafDescriptionChunk({}),
                             cafChunk("strg", counting(1)), cafDataChunk(kTwelve)});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(CafContainer, OfTwoDescriptionsTheFirstCounts) {
    const Bytes file = join({cafHeader(), cafDescriptionChunk({.rate = 1.0}),
                             cafDescriptionChunk({.rate = 2.0}), cafDataChunk(kTwelve)});
    EXPECT_EQ(described(file).format.mSampleRate, 1.0);
}

TEST(CafContainer, OfTwoDataChunksTheFirstCounts) {
    const Bytes file = join(
        {cafHeader(), cafDescriptionChunk({}), cafDataChunk(kTwelve), cafDataChunk(counting(40))});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(CafContainer, ADescriptionLongerThanItsFieldsIsTaken) {
    Bytes longer = cafDescriptionChunk({});
    longer[11] = 40; // the last byte of the chunk's size
    const Bytes file = join({cafHeader(), longer, zeros(8), cafDataChunk(kTwelve)});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(CafContainer, ADescriptionShorterThanItsFieldsIsNone) {
    const Bytes file = join({cafHeader(), cafChunk("desc", zeros(31)), cafDataChunk(kTwelve)});
    EXPECT_FALSE(describe(file));
}

// CAF: packets of varying size --------------------------------------------------------------

Bytes variablePackets(std::int64_t said, const Bytes& table, const Bytes& data) {
    const CafDescription description{
        .formatID = "aac ", .flags = 0, .bytesPerPacket = 0, .framesPerPacket = 1024, .bits = 0};
    return join({cafHeader(), cafDescriptionChunk(description),
                 cafChunk("pakt", join({big(static_cast<std::uint64_t>(said), 8), big(0, 8),
                                        big(0, 4), big(0, 4), table})),
                 cafDataChunk(data)});
}

TEST(CafContainer, PacketsOfVaryingSizeAreCountedByTheirTable) {
    EXPECT_EQ(described(variablePackets(3, counting(3), counting(30))).packetCount, 3U);
}

TEST(CafContainer, ATableNeverCountsMorePacketsThanItHasEntries) {
    EXPECT_EQ(described(variablePackets(INT64_MAX, counting(5), counting(30))).packetCount, 5U);
}

TEST(CafContainer, ATableNeverCountsMorePacketsThanThereAreBytes) {
    EXPECT_EQ(described(variablePackets(5, counting(5), counting(2))).packetCount, 2U);
}

TEST(CafContainer, ANegativeCountInTheTableIsNone) {
    EXPECT_EQ(described(variablePackets(-1, counting(5), counting(30))).packetCount, 0U);
}

TEST(CafContainer, OfTwoTablesTheFirstCounts) {
    const Bytes table =
        cafChunk("pakt", join({big(5, 8), big(0, 8), big(0, 4), big(0, 4), counting(5)}));
    const Bytes file = join({variablePackets(3, counting(3), counting(30)), table});
    EXPECT_EQ(described(file).packetCount, 3U);
}

TEST(CafContainer, ATableShorterThanItsFieldsIsNone) {
    const CafDescription description{.formatID = "aac ", .bytesPerPacket = 0, .bits = 0};
    const auto withTable = [&](const Bytes& table) {
        return described(join({cafHeader(), cafDescriptionChunk(description),
                               cafChunk("pakt", table), cafDataChunk(kTwelve)}));
    };
    EXPECT_EQ(withTable(join({big(1, 8), zeros(15)})).packetCount, 0U);
    EXPECT_EQ(withTable(join({big(1, 8), zeros(17)})).packetCount, 1U);
}

TEST(CafContainer, PacketsOfVaryingSizeWithoutATableCannotBeCounted) {
    const CafDescription description{.formatID = "aac ", .bytesPerPacket = 0, .bits = 0};
    EXPECT_EQ(described(cafFile(description, kTwelve)).packetCount, 0U);
}

TEST(CafContainer, APacketOfManyFramesHasItsBytesInEqualParts) {
    const auto found = described(cafFile({.bytesPerPacket = 12, .framesPerPacket = 3}, kTwelve));
    EXPECT_EQ(found.format.mBytesPerFrame, 4U);
    EXPECT_EQ(found.format.mFormatFlags, platform::kIsFloat | platform::kIsPacked);
    EXPECT_EQ(found.packetCount, 1U);
}

// CAF: refusals -----------------------------------------------------------------------------

TEST(CafContainer, AVersionOtherThanOneIsNotSupported) {
    Bytes file = cafFile({}, kTwelve);
    file[5] = 2;
    const Described result = describe(file);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().category, ErrorCategory::NotSupported);
}

TEST(CafContainer, WithoutADescriptionOrDataItIsMalformed) {
    for (const Bytes& file : {cafHeader(), join({cafHeader(), cafDescriptionChunk({})}),
                              join({cafHeader(), cafDataChunk(kTwelve)})}) {
        const Described result = describe(file);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().category, ErrorCategory::Malformed);
    }
}

TEST(CafContainer, ADescriptionOfNoChannelsBytesFramesOrBitsIsMalformed) {
    EXPECT_FALSE(describe(cafFile({.channels = 0}, kTwelve)));
    EXPECT_FALSE(describe(cafFile({.bytesPerPacket = 0}, kTwelve)));
    EXPECT_FALSE(describe(cafFile({.framesPerPacket = 0}, kTwelve)));
    EXPECT_FALSE(describe(cafFile({.bits = 0}, kTwelve)));
    EXPECT_FALSE(describe(cafFile({.bits = 65}, kTwelve)));
}

TEST(CafContainer, ADescriptionOfOneOfEachIsOne) {
    const auto found = described(cafFile({.bytesPerPacket = 1, .bits = 1}, kTwelve));
    EXPECT_EQ(found.packetCount, 12U);
    EXPECT_EQ(found.format.mBitsPerChannel, 1U);
}

TEST(CafContainer, AFileOfNothingButEmptyChunksEnds) {
    Bytes file = cafHeader();
    for (int i = 0; i < 70000; ++i) {
        file.insert(file.end(), {'f', 'r', 'e', 'e', 0, 0, 0, 0, 0, 0, 0, 0});
    }
    EXPECT_FALSE(describe(file));
}

// AIFF: what the common chunk becomes -------------------------------------------------------

TEST(AiffContainer, AMonoBigEndianFloatFileIsReportedFieldByField) {
    const auto found = described(aiffFile({.frames = 3}, kTwelve));
    EXPECT_EQ(found.format.mSampleRate, 48000.0);
    EXPECT_EQ(found.format.mFormatID, fourCharCode("lpcm"));
    EXPECT_EQ(found.format.mFormatFlags,
              platform::kIsFloat | platform::kIsBigEndian | platform::kIsPacked);
    EXPECT_EQ(found.format.mBytesPerPacket, 4U);
    EXPECT_EQ(found.format.mFramesPerPacket, 1U);
    EXPECT_EQ(found.format.mBytesPerFrame, 4U);
    EXPECT_EQ(found.format.mChannelsPerFrame, 1U);
    EXPECT_EQ(found.format.mBitsPerChannel, 32U);
    EXPECT_EQ(found.sourceBitDepth, -32);
    EXPECT_EQ(found.packetCount, 3U);
    EXPECT_EQ(found.dataOffset, 12U + 8 + 24 + 8 + 8);
}

TEST(AiffContainer, AnIntegerOfAnySizeTakesWholeBytesAndIsAlignedHighInThem) {
    for (std::uint16_t bits = 1; bits <= 32; ++bits) {
        const std::uint32_t bytes = (bits + 7U) / 8;
        const auto found =
            described(aiffFile({.frames = 100, .bits = bits, .compression = ""}, counting(25)));
        EXPECT_EQ(found.format.mBitsPerChannel, bits);
        EXPECT_EQ(found.format.mBytesPerPacket, bytes);
        EXPECT_EQ(found.format.mFormatFlags,
                  platform::kIsSignedInteger | platform::kIsBigEndian |
                      (bits == 8 * bytes ? platform::kIsPacked : platform::kIsAlignedHigh));
        EXPECT_EQ(found.sourceBitDepth, bits);
        EXPECT_EQ(found.packetCount, 25 / bytes);
    }
}

TEST(AiffContainer, IntegersOfNoOrMoreThan32BitsAreMalformed) {
    for (const int bits : {0, 33, 64, 65535}) {
        EXPECT_FALSE(describe(aiffFile(
            {.frames = 1, .bits = static_cast<std::uint16_t>(bits), .compression = ""}, kTwelve)))
            << bits;
    }
}

struct CompressionCase {
    const char* type;
    std::uint16_t bitsSaid;
    std::uint32_t flags; ///< without those of what is not linear PCM
    std::uint32_t bytesPerPacket;
    std::uint32_t framesPerPacket;
    std::uint32_t bits;
    std::int32_t depth;
    bool linear;
};

constexpr std::uint32_t kBigInteger =
    platform::kIsBigEndian | platform::kIsSignedInteger | platform::kIsPacked;
constexpr std::uint32_t kLittleInteger = platform::kIsSignedInteger | platform::kIsPacked;
constexpr std::uint32_t kBigFloat =
    platform::kIsBigEndian | platform::kIsFloat | platform::kIsPacked;

constexpr CompressionCase kCompressions[] = {
    {"NONE", 16, kBigInteger, 2, 1, 16, 16, true},
    {"twos", 24, kBigInteger, 3, 1, 24, 24, true},
    {"sowt", 16, kLittleInteger, 2, 1, 16, 16, true},
    {"sowt", 32, kLittleInteger, 4, 1, 32, 32, true},
    {"raw ", 8, platform::kIsBigEndian | platform::kIsPacked, 1, 1, 8, 8, true},
    {"in24", 16, kBigInteger, 3, 1, 24, 24, true},
    {"in32", 16, kBigInteger, 4, 1, 32, 32, true},
    {"42ni", 16, kLittleInteger, 3, 1, 24, 24, true},
    {"23ni", 16, kLittleInteger, 4, 1, 32, 32, true},
    {"fl32", 32, kBigFloat, 4, 1, 32, -32, true},
    {"FL32", 16, kBigFloat, 4, 1, 32, -32, true},
    {"fl64", 64, kBigFloat, 8, 1, 64, -64, true},
    {"FL64", 16, kBigFloat, 8, 1, 64, -64, true},
    {"ulaw", 16, 0, 1, 1, 0, 0, false},
    {"ULAW", 8, 0, 1, 1, 0, 0, false},
    {"alaw", 16, 0, 1, 1, 0, 0, false},
    {"ALAW", 8, 0, 1, 1, 0, 0, false},
    {"ima4", 16, 0, 34, 64, 0, 0, false},
    {"MAC3", 8, 0, 2, 6, 0, 0, false},
    {"MAC6", 8, 0, 1, 6, 0, 0, false},
};

TEST(AiffContainer, EveryCompressionTypeHasItsLayout) {
    for (const CompressionCase& one : kCompressions) {
        const auto found = described(aiffFile(
            {.frames = 1000, .bits = one.bitsSaid, .compression = one.type}, counting(70)));
        const Bytes id = big(found.format.mFormatID, 4);
        EXPECT_EQ(id, text(one.linear ? "lpcm" : one.type)) << one.type;
        EXPECT_EQ(found.format.mFormatFlags, one.flags) << one.type;
        EXPECT_EQ(found.format.mBytesPerPacket, one.bytesPerPacket) << one.type;
        EXPECT_EQ(found.format.mFramesPerPacket, one.framesPerPacket) << one.type;
        EXPECT_EQ(found.format.mBitsPerChannel, one.bits) << one.type;
        EXPECT_EQ(found.sourceBitDepth, one.depth) << one.type;
        EXPECT_EQ(found.packetCount, 70 / one.bytesPerPacket) << one.type;
    }
}

TEST(AiffContainer, EveryChannelAddsToThePacket) {
    EXPECT_EQ(described(aiffFile({.channels = 2, .frames = 9}, kTwelve)).format.mBytesPerPacket,
              8U);
    EXPECT_EQ(described(aiffFile({.channels = 3, .frames = 9, .compression = "ima4"}, kTwelve))
                  .format.mBytesPerPacket,
              3 * 34U);
    EXPECT_EQ(described(aiffFile({.channels = 65535, .frames = 9, .compression = "fl64"}, kTwelve))
                  .format.mBytesPerPacket,
              65535 * 8U);
}

TEST(AiffContainer, AnUnknownCompressionIsNoFormat) {
    for (const char* const compression : {"QDMC", "zzzz", "ULaw"}) {
        const auto found = describe(aiffFile({.frames = 3, .compression = compression}, kTwelve));
        ASSERT_FALSE(found) << compression;
        EXPECT_EQ(found.error().category, platform::ErrorCategory::NotSupported);
        EXPECT_EQ(found.error().sentence, "The AIFF-C file's compression is not known.");
    }
}

TEST(AiffContainer, AnInfiniteRateOrNoNumberIsReportedAsItIs) {
    EXPECT_EQ(
        described(aiffFile({.frames = 3, .rate = extended(0x7FFF, 0)}, kTwelve)).format.mSampleRate,
        INFINITY);
    EXPECT_TRUE(
        std::isnan(described(aiffFile({.frames = 3, .rate = extended(0x7FFF, UINT64_MAX)}, kTwelve))
                       .format.mSampleRate));
}

TEST(AiffContainer, NoChannelsAreMalformed) {
    EXPECT_FALSE(describe(aiffFile({.channels = 0, .frames = 3}, kTwelve)));
}

// AIFF: where the data lies -----------------------------------------------------------------

TEST(AiffContainer, TheOffsetOfTheSoundDataSkipsBytes) {
    const Bytes file = aiffForm(
        "AIFC", {aiffCommonChunk({.frames = 3}), aiffDataChunk(join({zeros(5), kTwelve}), 5)});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(AiffContainer, AnOffsetPastTheSoundDataLeavesNothing) {
    for (const std::uint32_t offset : {12U, 13U, 0xFFFFFFFFU}) {
        const Bytes file =
            aiffForm("AIFC", {aiffCommonChunk({.frames = 3}), aiffDataChunk(kTwelve, offset)});
        EXPECT_EQ(described(file).packetCount, 0U) << offset;
    }
}

TEST(AiffContainer, MoreFramesThanDataCountOnlyWhatIsThere) {
    EXPECT_EQ(described(aiffFile({.frames = 0xFFFFFFFF}, kTwelve)).packetCount, 3U);
}

TEST(AiffContainer, FewerFramesThanDataCountOnlyTheFrames) {
    EXPECT_EQ(described(aiffFile({.frames = 2}, kTwelve)).packetCount, 2U);
}

TEST(AiffContainer, ASoundDataSizePastTheEndIsClipped) {
    for (const std::uint32_t size : {21U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        const Bytes file = aiffForm("AIFC", {aiffCommonChunk({.frames = 9}),
                                             aiffChunk("SSND", size, join({zeros(8), kTwelve}))});
        EXPECT_EQ(audioOf(file), kTwelve) << size;
    }
}

TEST(AiffContainer, SoundDataShorterThanItsHeadIsEmpty) {
    for (std::size_t bytes = 0; bytes < 8; ++bytes) {
        const Bytes file =
            aiffForm("AIFC", {aiffChunk("SSND", counting(bytes)), aiffCommonChunk({.frames = 3})});
        EXPECT_EQ(described(file).packetCount, 0U) << bytes;
    }
}

TEST(AiffContainer, TheFormsOwnSizeIsNotReliedOn) {
    for (const std::uint8_t byte : {std::uint8_t{0}, std::uint8_t{0xFF}}) {
        Bytes file = aiffFile({.frames = 3}, kTwelve);
        std::fill(file.begin() + 4, file.begin() + 8, byte);
        EXPECT_EQ(audioOf(file), kTwelve);
    }
}

TEST(AiffContainer, TheCommonChunkMayFollowTheData) {
    const Bytes file = aiffForm("AIFC", {aiffDataChunk(kTwelve), aiffCommonChunk({.frames = 3})});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(AiffContainer, APadByteFollowsAChunkOfOddLength) {
    const Bytes file =
        aiffForm("AIFC", {aiffChunk("NAME", counting(7)), aiffCommonChunk({.frames = 3}),
                          aiffChunk("AUTH", counting(1)), aiffDataChunk(kTwelve)});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(AiffContainer, SoundDataOfOddLengthIsFollowedByAPadByteToo) {
    const Bytes file =
        aiffForm("AIFF", {aiffDataChunk(counting(5)),
                          aiffCommonChunk({.frames = 9, .bits = 8, .compression = ""})});
    EXPECT_EQ(audioOf(file), counting(5));
}

TEST(AiffContainer, UnknownChunksBeforeBetweenAndAfterAreSkipped) {
    const Bytes other = aiffChunk("ANNO", counting(10));
    const Bytes file = aiffForm("AIFC", {other, aiffCommonChunk({.frames = 3}), other, other,
                                         aiffDataChunk(kTwelve), other});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(AiffContainer, OfTwoCommonChunksTheFirstCounts) {
    const Bytes file = aiffForm("AIFC", {aiffCommonChunk({.frames = 3, .bits = 32}),
                                         aiffCommonChunk({.frames = 3, .compression = "ulaw"}),
                                         aiffDataChunk(kTwelve)});
    EXPECT_EQ(described(file).sourceBitDepth, -32);
}

TEST(AiffContainer, OfTwoSoundDataChunksTheFirstCounts) {
    const Bytes file = aiffForm("AIFC", {aiffCommonChunk({.frames = 9}), aiffDataChunk(kTwelve),
                                         aiffDataChunk(counting(40))});
    EXPECT_EQ(audioOf(file), kTwelve);
}

TEST(AiffContainer, ACommonChunkShorterThanItsFieldsIsNone) {
    EXPECT_FALSE(
        describe(aiffForm("AIFF", {aiffChunk("COMM", zeros(17)), aiffDataChunk(kTwelve)})));
    EXPECT_FALSE(
        describe(aiffForm("AIFC", {aiffChunk("COMM", zeros(21)), aiffDataChunk(kTwelve)})));
}

TEST(AiffContainer, AnAiffOfNoFramesNeedsNoSoundData) {
    const auto found = described(aiffForm("AIFC", {aiffCommonChunk({.frames = 0})}));
    EXPECT_EQ(found.packetCount, 0U);
    EXPECT_EQ(found.dataBytes, 0U);
}

TEST(AiffContainer, AnAiffWithFramesNeedsSoundData) {
    EXPECT_FALSE(describe(aiffForm("AIFC", {aiffCommonChunk({.frames = 1})})));
}

TEST(AiffContainer, AFileOfNothingButEmptyChunksEnds) {
    EXPECT_FALSE(describe(aiffForm("AIFC", {repeated(aiffChunk("ANNO", Bytes()), 70000)})));
}

TEST(AnyContainer, TheFirst65536ChunksAreLookedAt) {
    for (const std::size_t others : {65534U, 65535U}) {
        const Bytes ofCaf = repeated(cafChunk("free", Bytes()), others);
        const Bytes ofAiff = repeated(aiffChunk("ANNO", Bytes()), others);
        EXPECT_EQ(isTaken(join({cafHeader(), ofCaf, cafDescriptionChunk({}), cafDataChunk({})})),
                  others == 65534);
        EXPECT_EQ(isTaken(aiffForm(
                      "AIFC", {ofAiff, aiffCommonChunk({.frames = 3}), aiffDataChunk(kTwelve)})),
                  others == 65534);
    }
}

// Any content -------------------------------------------------------------------------------

TEST(AnyContainer, WhatIsNeitherCafNorAiffIsNotSupported) {
    for (const Bytes& file :
         {Bytes(), text("RIFF\0\0\0\0WAVE"), aiffForm("8SVX", {}), text("FORM"), counting(100)}) {
        const Described result = describe(file);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().category, ErrorCategory::NotSupported);
        EXPECT_FALSE(result.error().sentence.empty());
        EXPECT_EQ(result.error().offset, 0U);
    }
}

/// One file of every shape that the walkers know.
std::vector<Bytes> seedFiles() {
    return {
        join({cafHeader(), cafDescriptionChunk({}), cafChunk("free", counting(7)),
              cafDataChunk(counting(21))}),
        join({cafHeader(), cafDataChunk(counting(9)), cafDescriptionChunk({.flags = 1})}),
        cafWithDataSize(-1, counting(30)),
        variablePackets(4, counting(4), counting(25)),
        cafFile({.flags = 2, .bytesPerPacket = 3, .bits = 24}, counting(20)),
        aiffFile({.frames = 4}, counting(16)),
        aiffForm("AIFF", {aiffChunk("NAME", counting(3)),
                          aiffCommonChunk({.frames = 7, .bits = 16, .compression = ""}),
                          aiffDataChunk(counting(15), 1)}),
        aiffForm("AIFC", {aiffDataChunk(counting(68)),
                          aiffCommonChunk({.frames = 2, .compression = "ima4"})}),
    };
}

TEST(AnyContainer, CutOffAtAnyByteItNeverCountsMoreThanIsThere) {
    for (const Bytes& seed : seedFiles()) {
        ASSERT_TRUE(describe(seed));
        for (std::size_t length = 0; length <= seed.size(); ++length) {
            const Bytes cut(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(length));
            const Described result = describe(cut);
            if (result) {
                const ContainerDescription& found = result.value();
                EXPECT_LE(found.dataOffset + found.dataBytes, length);
                EXPECT_LE(found.packetCount * found.format.mBytesPerPacket, found.dataBytes);
                EXPECT_LE(found.packetCount, found.dataBytes);
            }
        }
    }
}

TEST(AnyContainer, CutOffInsideItsDataItKeepsThePacketsBefore) {
    for (const Bytes& whole : {cafFile({}, kTwelve), aiffFile({.frames = 3}, kTwelve)}) {
        for (std::size_t missing = 0; missing <= 12; ++missing) {
            const Bytes cut(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing));
            EXPECT_EQ(described(cut).packetCount, (12 - missing) / 4);
        }
    }
}

TEST(AnyContainer, AnAiffInAnotherKindOfFileIsNone) {
    Bytes file = aiffFile({.frames = 3}, kTwelve);
    file[0] = 'R'; // of FORM
    const Described result = describe(file);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().category, ErrorCategory::NotSupported);
}

TEST(AnyContainer, WhatIsWrongWithItIsSaid) {
    const std::vector<std::pair<Bytes, std::string>> wrong{
        {cafHeader(), "The CAF file has no audio description or no audio data."},
        {cafFile({.channels = 0}, kTwelve), "The CAF file's audio description is wrong."},
        {aiffForm("AIFC", {}), "The AIFF file has no common chunk."},
        {aiffForm("AIFC", {aiffCommonChunk({.frames = 3})}), "The AIFF file has no sound data."},
        {aiffFile({.channels = 0, .frames = 3}, kTwelve), "The AIFF file's common chunk is wrong."},
    };
    for (const auto& [file, sentence] : wrong) {
        const Described result = describe(file);
        ASSERT_FALSE(result) << sentence;
        EXPECT_EQ(result.error().category, ErrorCategory::Malformed);
        EXPECT_EQ(result.error().sentence, sentence);
    }
}

TEST(AudioFile, NothingIsStoredBehindTheBytesAskedForWhateverFollowsThemInTheFile) {
    constexpr std::size_t kPiece = std::size_t{1} << 22U;
    FakePlatform platform;
    platform.files.files["/x.caf"] = cafFile({}, Bytes(3 * kPiece, 1));
    auto opened = AudioFile::open("/x.caf");
    ASSERT_TRUE(opened);
    for (const std::size_t count : {std::size_t{5}, kPiece - 1, kPiece, kPiece + 1}) {
        Bytes bytes(4 * kPiece);
        EXPECT_EQ(opened.value().readBytes(0, count, bytes.data()), count);
        EXPECT_EQ(static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), 1)), count);
    }
}

/// The disk fails in the middle piece of three.
TEST(AudioFile, TheBytesBehindTheFirstThatCannotBeReadDoNotCount) {
    constexpr std::size_t kPiece = std::size_t{1} << 22U;
    FakePlatform platform;
    const Bytes samples(3 * kPiece);
    const Bytes file = cafFile({}, samples);
    platform.files.files["/x.caf"] = file;
    platform.files.unreadableByte = file.size() - samples.size() + kPiece + 1000;
    auto opened = AudioFile::open("/x.caf");
    ASSERT_TRUE(opened);
    Bytes bytes(samples.size());
    EXPECT_EQ(opened.value().readBytes(0, bytes.size(), bytes.data()), kPiece + 1000);
}

TEST(AudioFile, AReadOutsideTheAudioBytesGivesNothing) {
    FakePlatform platform;
    platform.files.files["/x.caf"] = join({cafFile({}, kTwelve), cafChunk("free", counting(50))});
    auto opened = AudioFile::open("/x.caf");
    ASSERT_TRUE(opened);
    Bytes bytes(30);
    EXPECT_EQ(opened.value().readBytes(0, 30, bytes.data()), 12U);
    EXPECT_EQ(opened.value().readBytes(10, 30, bytes.data()), 2U);
    EXPECT_TRUE(std::equal(kTwelve.begin() + 10, kTwelve.end(), bytes.begin()));
    EXPECT_EQ(opened.value().readBytes(12, 1, bytes.data()), 0U);
    EXPECT_EQ(opened.value().readBytes(UINT64_MAX, 1, bytes.data()), 0U);
}

TEST(AudioFile, TheFileFormatPropertyHasFourBytesAndCannotBeSet) {
    FakePlatform platform;
    platform.files.files["/x.caf"] = cafFile({}, kTwelve);
    const auto opened = AudioFile::open("/x.caf");
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened.value().fileFormatInfo().size, 4U);
    EXPECT_FALSE(opened.value().fileFormatInfo().writable);
}

TEST(AudioFile, AFileThatCannotBeOpenedSaysWhy) {
    FakePlatform platform;
    const auto opened = AudioFile::open("/absent.caf");
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().category, ErrorCategory::CannotOpen);
    EXPECT_EQ(opened.error().sentence, "The file cannot be opened: No such file or directory.");
}

} // namespace
} // namespace zemo::test
