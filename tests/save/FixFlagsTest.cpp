#include "files/FixFlags.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace zemo::test {
namespace {

using platform::AudioStreamBasicDescription;
using platform::fourCharCode;

/// A record in which every field is told apart from every value that it may be given.
AudioStreamBasicDescription untouched() {
    return {.mSampleRate = -1.0,
            .mFormatID = 91,
            .mFormatFlags = 92,
            .mBytesPerPacket = 93,
            .mFramesPerPacket = 94,
            .mBytesPerFrame = 95,
            .mChannelsPerFrame = 96,
            .mBitsPerChannel = 97,
            .mReserved = 98};
}

struct Filled {
    AudioStreamBasicDescription format = untouched();
    std::uint32_t fileType = 99;
};

Filled filledFor(const std::string& extension, double rate = 44100.5) {
    Filled result;
    setFormat(&result.format, &result.fileType, extension, rate);
    return result;
}

void expectMonoFloatAt(double rate, const AudioStreamBasicDescription& format) {
    EXPECT_EQ(format.mSampleRate, rate);
    EXPECT_EQ(format.mFormatID, fourCharCode("lpcm"));
    EXPECT_EQ(format.mBytesPerPacket, 4U);
    EXPECT_EQ(format.mFramesPerPacket, 1U);
    EXPECT_EQ(format.mBytesPerFrame, 4U);
    EXPECT_EQ(format.mChannelsPerFrame, 1U);
    EXPECT_EQ(format.mBitsPerChannel, 32U);
    EXPECT_EQ(format.mReserved, 0U);
}

TEST(SetFormat, CafIsNativePackedNonInterleavedFloat) {
    for (const char* extension : {"caf", "CAF"}) {
        const Filled filled = filledFor(extension);
        expectMonoFloatAt(44100.5, filled.format);
        EXPECT_EQ(filled.format.mFormatFlags, 1U + 8U + 32U) << extension;
        EXPECT_EQ(filled.fileType, 0x63616666U) << extension;
    }
}

TEST(SetFormat, AiffCIsBigEndianPackedFloat) {
    for (const char* extension : {"aif", "AIF"}) {
        const Filled filled = filledFor(extension);
        expectMonoFloatAt(44100.5, filled.format);
        EXPECT_EQ(filled.format.mFormatFlags, 1U + 2U + 8U) << extension;
        EXPECT_EQ(filled.fileType, 0x41494643U) << extension;
    }
}

TEST(SetFormat, TheRateIsKeptToTheLastBit) {
    for (const double rate : {8000.0, 44100.0, 48000.0, 96000.0, 1.0 / 3.0, 1e300}) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(filledFor("aif", rate).format.mSampleRate),
                  std::bit_cast<std::uint64_t>(rate));
    }
}

TEST(SetFormat, ItReturnsTheRecordThatItFills) {
    Filled filled;
    EXPECT_EQ(setFormat(&filled.format, &filled.fileType, "caf", 1.0), &filled.format);
    EXPECT_EQ(setFormat(&filled.format, &filled.fileType, "wav", 1.0), &filled.format);
}

TEST(SetFormat, AnyOtherExtensionSetsNeitherTheFileTypeNorTheFlags) {
    for (const char* extension :
         {"", "Caf", "cAF", "caff", "ca", " caf", "caf ", ".caf", "aiff", "AIFF", "Aif", "aifc"}) {
        const Filled filled = filledFor(extension);
        EXPECT_EQ(filled.fileType, 99U) << extension;
        EXPECT_EQ(filled.format.mFormatFlags, 92U) << extension;
        expectMonoFloatAt(44100.5, filled.format);
    }
}

/// Each flag by itself: bits 1 float, 2 big-endian, 4 signed integer, 8 packed, 16 aligned high,
/// 32 non-interleaved.
TEST(CalculateLPCMFlags, EveryCombinationHasTheBitsOfItsProperties) {
    int combinations = 0;
    for (const std::uint32_t valid : {24U, 32U}) {
        for (const std::uint32_t total : {24U, 32U}) {
            for (int properties = 0; properties < 8; ++properties) {
                const bool isFloat = (properties & 1) != 0;
                const bool isBigEndian = (properties & 2) != 0;
                const bool isNonInterleaved = (properties & 4) != 0;
                std::set<std::uint32_t> expected{isFloat ? 1U : 4U, valid == total ? 8U : 16U};
                if (isBigEndian) {
                    expected.insert(2U);
                }
                if (isNonInterleaved) {
                    expected.insert(32U);
                }
                std::set<std::uint32_t> found;
                const std::uint32_t flags =
                    CalculateLPCMFlags(valid, total, isFloat, isBigEndian, isNonInterleaved);
                for (int bit = 0; bit < 32; ++bit) {
                    if ((flags & (1U << bit)) != 0) {
                        found.insert(1U << bit);
                    }
                }
                EXPECT_EQ(found, expected) << valid << " of " << total << ", " << properties;
                ++combinations;
            }
        }
    }
    EXPECT_EQ(combinations, 32);
}

TEST(CalculateLPCMFlags, TheWrittenFormatsHaveTheFlagsOfTheirTable) {
    EXPECT_EQ(CalculateLPCMFlags(32, 32, true, false, true), filledFor("caf").format.mFormatFlags);
    EXPECT_EQ(CalculateLPCMFlags(32, 32, true, true, false), filledFor("aif").format.mFormatFlags);
}

TEST(FixAifFlags, ThirtyTwoBitsGiveEleven) {
    AudioStreamBasicDescription format = untouched();
    format.mBitsPerChannel = 32;
    EXPECT_EQ(fixAifFlags(format), 11U);
}

TEST(FixAifFlags, NothingButTheBitsOfTheFormatIsAsked) {
    EXPECT_EQ(fixAifFlags(untouched()), 11U);
    EXPECT_EQ(fixAifFlags({}), 11U);
}

TEST(DiscardExtensions, ExactlyTheExtensionsOfTheListAreDiscarded) {
    const std::set<std::string> list{"wav", "WAV", "wv",   "WV",   "wma",  "WMA", "mp3", "MP3",
                                     "ra",  "RA",  "au",   "AU",   "vox",  "VOX", "ogg", "OGG",
                                     "m4a", "M4A", "flac", "FLAC", "aiff", "AIFF"};
    for (const std::string& extension : list) {
        EXPECT_TRUE(discardExtensions(extension)) << extension;
        for (const std::string& near :
             {extension + " ", " " + extension, "." + extension, extension + extension,
              extension.substr(1), extension.substr(0, extension.size() - 1)}) {
            EXPECT_EQ(discardExtensions(near), list.count(near) > 0) << near;
        }
    }
}

TEST(DiscardExtensions, MixedCaseIsNotDiscarded) {
    for (const char* extension : {"Wav", "wAV", "Mp3", "Flac", "Aiff", "aIFF", "Ogg"}) {
        EXPECT_FALSE(discardExtensions(extension)) << extension;
    }
}

TEST(DiscardExtensions, WhatTheProgramReadsOrWritesIsNotDiscarded) {
    for (const char* extension : {"", "caf", "CAF", "aif", "AIF", "f32", "txt", "raw"}) {
        EXPECT_FALSE(discardExtensions(extension)) << extension;
    }
}

TEST(StripeNaN, EveryNaNBecomesZero) {
    for (const std::uint32_t word : {0x7FC00000U, 0xFFC00000U, 0x7F800001U, 0xFFFFFFFFU}) {
        const float stripped = stripeNaN(std::bit_cast<float>(word));
        EXPECT_EQ(std::bit_cast<std::uint32_t>(stripped), 0U) << word;
    }
}

TEST(StripeNaN, EverythingElseStaysBitForBit) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float value :
         {0.0F, -0.0F, 1.0F, -1.5F, kInfinity, -kInfinity, std::numeric_limits<float>::denorm_min(),
          std::numeric_limits<float>::max()}) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(stripeNaN(value)),
                  std::bit_cast<std::uint32_t>(value));
    }
}

} // namespace
} // namespace zemo::test
