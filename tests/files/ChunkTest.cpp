#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "files/AiffChunks.h"
#include "files/CafChunks.h"
#include "files_test/SoundFiles.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using platform::fourCharCode;

/// A file in memory with a reader at its start.
class BytesToRead {
public:
    explicit BytesToRead(const Bytes& bytes) : stream_(opened(bytes)), reader(*stream_, 0) {}

private:
    std::unique_ptr<platform::FileStream> opened(const Bytes& bytes) {
        files_.files["x"] = bytes;
        int error = 0;
        return files_.openForReading("x", error);
    }

    MemoryFileSystem files_;
    std::unique_ptr<platform::FileStream> stream_;

public:
    ByteReader reader;
};

double decoded(std::uint16_t signAndExponent, std::uint64_t mantissa) {
    return BytesToRead(extended(signAndExponent, mantissa)).reader.extended80();
}

template <typename Chunk> Bytes written(const Chunk& chunk) {
    ByteWriter out;
    chunk.write(out);
    return out.bytes();
}

constexpr std::uint64_t kOne = 0x8000000000000000; ///< the mantissa's leading one

// Numbers -----------------------------------------------------------------------------------

TEST(ByteReader, NumbersAreReadMostSignificantByteFirst) {
    BytesToRead file(counting(18));
    EXPECT_EQ(file.reader.u16(), 0x0102);
    EXPECT_EQ(file.reader.u32(), 0x03040506U);
    EXPECT_EQ(file.reader.u64(), 0x0708090A0B0C0D0EU);
    EXPECT_EQ(file.reader.u32(), 0x0F101112U);
    EXPECT_EQ(file.reader.offset(), 18U);
    EXPECT_FALSE(file.reader.failed());
}

TEST(ByteReader, NegativeNumbersAreTwosComplement) {
    BytesToRead file(join({big(0xFFFFFFFE, 4), big(UINT64_MAX - 2, 8)}));
    EXPECT_EQ(file.reader.i32(), -2);
    EXPECT_EQ(file.reader.i64(), -3);
}

TEST(ByteReader, AReadPastTheEndFailsForGoodGivesZeroAndMovesNothing) {
    BytesToRead file(counting(5));
    file.reader.u16();
    EXPECT_EQ(file.reader.u32(), 0U);
    EXPECT_TRUE(file.reader.failed());
    EXPECT_EQ(file.reader.offset(), 2U);
    EXPECT_EQ(file.reader.u16(), 0U) << "two bytes would be there";
    EXPECT_EQ(file.reader.offset(), 2U);
}

TEST(ByteReader, AReadAcrossTheLargestOffsetFails) {
    MemoryFileSystem files;
    files.files["x"] = counting(16);
    int error = 0;
    const auto stream = files.openForReading("x", error);
    ByteReader reader(*stream, UINT64_MAX);
    EXPECT_EQ(reader.u64(), 0U);
    EXPECT_TRUE(reader.failed());
}

// The 80-bit rate ---------------------------------------------------------------------------

TEST(Extended80, TheRatesOfTheTradeAreExact) {
    EXPECT_EQ(decoded(0x400B, 0xFA00000000000000), 8000.0);
    EXPECT_EQ(decoded(0x400D, 0xAC44000000000000), 22050.0);
    EXPECT_EQ(decoded(0x400E, 0xAC44000000000000), 44100.0);
    EXPECT_EQ(decoded(0x400E, 0xBB80000000000000), 48000.0);
    EXPECT_EQ(decoded(0x400F, 0xBB80000000000000), 96000.0);
    EXPECT_EQ(decoded(0x4010, 0xBB80000000000000), 192000.0);
}

TEST(Extended80, AHalfHertzIsKept) {
    EXPECT_EQ(decoded(0x400E, 0xAC44800000000000), 44100.5);
}

TEST(Extended80, EveryWholeNumberOfHertzIsExact) {
    for (std::uint64_t hertz = 1; hertz <= 400000; hertz += 7) {
        const int exponent = static_cast<int>(std::bit_width(hertz)) - 1;
        EXPECT_EQ(decoded(static_cast<std::uint16_t>(0x3FFF + exponent), hertz << (63 - exponent)),
                  static_cast<double>(hertz));
    }
}

TEST(Extended80, TheSignBitNegates) {
    EXPECT_EQ(decoded(0xC00E, 0xAC44000000000000), -44100.0);
}

TEST(Extended80, ZeroKeepsItsSign) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(decoded(0x0000, 0)), 0U);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(decoded(0x8000, 0)), kOne);
}

TEST(Extended80, AMantissaOfTheDoublesWidthIsExact) {
    EXPECT_EQ(decoded(0x3FFF, kOne | 0x800), 1.0 + std::numeric_limits<double>::epsilon());
}

TEST(Extended80, ATieRoundsToTheEvenDouble) {
    const double epsilon = std::numeric_limits<double>::epsilon();
    EXPECT_EQ(decoded(0x3FFF, kOne | 0x400), 1.0);
    EXPECT_EQ(decoded(0x3FFF, kOne | 0xC00), 1.0 + 2 * epsilon);
}

TEST(Extended80, JustAboveATieRoundsUp) {
    EXPECT_EQ(decoded(0x3FFF, kOne | 0x401), 1.0 + std::numeric_limits<double>::epsilon());
}

TEST(Extended80, TheLargestDoubleIsExactAndHalfAStepMoreIsInfinite) {
    EXPECT_EQ(decoded(0x43FE, 0xFFFFFFFFFFFFF800), std::numeric_limits<double>::max());
    EXPECT_EQ(decoded(0x43FE, 0xFFFFFFFFFFFFFBFF), std::numeric_limits<double>::max());
    EXPECT_EQ(decoded(0x43FE, 0xFFFFFFFFFFFFFC00), INFINITY);
    EXPECT_EQ(decoded(0x7FFE, kOne), INFINITY);
}

TEST(Extended80, TheSmallestDoubleIsExactAndHalfOfItIsZero) {
    const int tiniest = 16383 - 1074;
    EXPECT_EQ(decoded(tiniest, kOne), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(decoded(tiniest - 1, kOne), 0.0);
    EXPECT_EQ(decoded(0x0000, UINT64_MAX), 0.0);
}

TEST(Extended80, ANumberBelowTheNormalDoublesIsRoundedOnceOnly) {
    // 2.5 + 2^-62 steps of the smallest double: to the nearest, 3; by way of 53 bits, a tie and 2.
    EXPECT_EQ(decoded(16383 - 1073, 0xA000000000000001),
              3 * std::numeric_limits<double>::denorm_min());
}

TEST(Extended80, ANumberWithoutItsLeadingOneHasTheValueThatItsBitsSay) {
    EXPECT_EQ(decoded(0x3FFF, kOne >> 3), 0.125);
}

TEST(Extended80, TheHighestExponentIsInfinityOrNoNumber) {
    EXPECT_EQ(decoded(0x7FFF, kOne), INFINITY);
    EXPECT_EQ(decoded(0xFFFF, kOne), -INFINITY);
    EXPECT_EQ(decoded(0x7FFF, 0), INFINITY);
    EXPECT_TRUE(std::isnan(decoded(0x7FFF, 0xC000000000000000)));
    EXPECT_TRUE(std::isnan(decoded(0x7FFF, kOne | 1)));
}

TEST(Extended80, NineBytesAreNotEnough) {
    BytesToRead file(zeros(9));
    file.reader.extended80();
    EXPECT_TRUE(file.reader.failed());
}

TEST(Extended80, WhatIsWrittenIsReadBackForEveryKindOfDouble) {
    std::mt19937_64 random(80);
    for (int i = 0; i < 20000; ++i) {
        std::uint64_t bits = random();
        if (i % 4 == 0) {
            bits &= 0x800FFFFFFFFFFFFF; // zero or below the normal numbers
        }
        const auto number = std::bit_cast<double>(bits);
        ByteWriter out;
        out.extended80(number);
        const double back = BytesToRead(out.bytes()).reader.extended80();
        if (std::isnan(number)) {
            EXPECT_TRUE(std::isnan(back));
        } else {
            EXPECT_EQ(std::bit_cast<std::uint64_t>(back), bits) << number;
        }
    }
}

TEST(Extended80, ZeroAndWhatIsNoNumberAreWrittenInTheirForms) {
    const auto written = [](double number) {
        ByteWriter out;
        out.extended80(number);
        return out.bytes();
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(written(0.0), extended(0, 0));
    EXPECT_EQ(written(-0.0), extended(0x8000, 0));
    EXPECT_EQ(written(kInfinity), extended(0x7FFF, 0));
    EXPECT_EQ(written(-kInfinity), extended(0xFFFF, 0));
    EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN()),
              extended(0x7FFF, 0xC000000000000000));
}

TEST(Extended80, TheRatesOfTheTradeAreWrittenAsOthersWriteThem) {
    ByteWriter out;
    out.extended80(44100.0);
    EXPECT_EQ(out.bytes(), extended(0x400E, 0xAC44000000000000));
}

TEST(Extended80, InfinityIsReadBackAsInfinity) {
    ByteWriter out;
    out.extended80(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(BytesToRead(out.bytes()).reader.extended80(), -INFINITY);
}

// CAF ---------------------------------------------------------------------------------------

TEST(CafChunks, TheFileHeaderIsAsInTheFormatsDocument) {
    EXPECT_EQ(written(caf::FileHeader()), cafHeader());
}

TEST(CafChunks, AFileHeaderIsReadAsItWasWritten) {
    BytesToRead file(written(caf::FileHeader{0x01020304, 0x0506, 0x0708}));
    const auto back = caf::FileHeader::parse(file.reader);
    EXPECT_EQ(back.fileType, 0x01020304U);
    EXPECT_EQ(back.fileVersion, 0x0506);
    EXPECT_EQ(back.fileFlags, 0x0708);
    EXPECT_EQ(file.reader.offset(), caf::FileHeader::kBytes);
}

TEST(CafChunks, AChunkHeaderIsReadAsItWasWritten) {
    for (const std::int64_t size : {INT64_C(0), INT64_C(-1), INT64_MAX, INT64_MIN, INT64_C(36)}) {
        BytesToRead file(written(caf::ChunkHeader{fourCharCode("data"), size}));
        const auto back = caf::ChunkHeader::parse(file.reader);
        EXPECT_EQ(back.chunkType, fourCharCode("data"));
        EXPECT_EQ(back.chunkSize, size);
        EXPECT_EQ(file.reader.offset(), caf::ChunkHeader::kBytes);
    }
}

TEST(CafChunks, TheAudioDescriptionIsAsInTheFormatsDocument) {
    const caf::AudioDescription description{96000.5, fourCharCode("lpcm"), 2, 6, 1, 2, 24};
    const Bytes expected = cafDescriptionChunk({96000.5, "lpcm", 2, 6, 1, 2, 24});
    EXPECT_EQ(join({cafChunk("desc", 32, {}), written(description)}), expected);
}

TEST(CafChunks, AnAudioDescriptionIsReadAsItWasWritten) {
    BytesToRead file(written(caf::AudioDescription{44100.5, 1, 2, 3, 4, 5, 6}));
    const auto back = caf::AudioDescription::parse(file.reader);
    EXPECT_EQ(back.sampleRate, 44100.5);
    EXPECT_EQ(back.formatID, 1U);
    EXPECT_EQ(back.formatFlags, 2U);
    EXPECT_EQ(back.bytesPerPacket, 3U);
    EXPECT_EQ(back.framesPerPacket, 4U);
    EXPECT_EQ(back.channelsPerFrame, 5U);
    EXPECT_EQ(back.bitsPerChannel, 6U);
    EXPECT_EQ(file.reader.offset(), caf::AudioDescription::kBytes);
}

TEST(CafChunks, TheDataChunksEditCountIsReadAsItWasWritten) {
    BytesToRead file(written(caf::AudioData{0xFEDCBA98}));
    EXPECT_EQ(caf::AudioData::parse(file.reader).editCount, 0xFEDCBA98U);
    EXPECT_EQ(file.reader.offset(), caf::AudioData::kBytes);
}

TEST(CafChunks, APacketTableIsReadAsItWasWritten) {
    BytesToRead file(written(caf::PacketTable{INT64_MAX, -2, -3, INT32_MAX}));
    const auto back = caf::PacketTable::parse(file.reader);
    EXPECT_EQ(back.numberPackets, INT64_MAX);
    EXPECT_EQ(back.numberValidFrames, -2);
    EXPECT_EQ(back.primingFrames, -3);
    EXPECT_EQ(back.remainderFrames, INT32_MAX);
    EXPECT_EQ(file.reader.offset(), caf::PacketTable::kBytes);
}

// AIFF --------------------------------------------------------------------------------------

TEST(AiffChunks, AFormHeaderIsReadAsItWasWritten) {
    BytesToRead file(written(aiff::FormHeader{1, 0xFFFFFFFF, 3}));
    const auto back = aiff::FormHeader::parse(file.reader);
    EXPECT_EQ(back.chunkType, 1U);
    EXPECT_EQ(back.chunkSize, 0xFFFFFFFFU);
    EXPECT_EQ(back.formType, 3U);
    EXPECT_EQ(file.reader.offset(), aiff::FormHeader::kBytes);
}

TEST(AiffChunks, AChunkHeaderIsReadAsItWasWritten) {
    BytesToRead file(written(aiff::ChunkHeader{fourCharCode("SSND"), 0xFFFFFFFF}));
    const auto back = aiff::ChunkHeader::parse(file.reader);
    EXPECT_EQ(back.chunkType, fourCharCode("SSND"));
    EXPECT_EQ(back.chunkSize, 0xFFFFFFFFU);
    EXPECT_EQ(file.reader.offset(), aiff::ChunkHeader::kBytes);
}

TEST(AiffChunks, TheFormatVersionIsThatOfMay1990) {
    EXPECT_EQ(written(aiff::FormatVersion()), big(0xA2805140, 4));
}

TEST(AiffChunks, TheCommonChunkIsAsInTheFormatsDocument) {
    const aiff::Common common{1, 5, 32, 48000.0, fourCharCode("fl32")};
    const Bytes whole = join({text("COMM"), big(24, 4), written(common)});
    EXPECT_EQ(whole, aiffCommonChunk({.frames = 5}));
}

TEST(AiffChunks, ACommonChunkIsReadAsItWasWritten) {
    BytesToRead file(written(aiff::Common{2, 0xFEDCBA98, 24, 44100.5, fourCharCode("sowt")}));
    const auto back = aiff::Common::parse(file.reader, true);
    EXPECT_EQ(back.numChannels, 2);
    EXPECT_EQ(back.numSampleFrames, 0xFEDCBA98U);
    EXPECT_EQ(back.sampleSize, 24);
    EXPECT_EQ(back.sampleRate, 44100.5);
    EXPECT_EQ(back.compressionType, fourCharCode("sowt"));
    EXPECT_EQ(file.reader.offset(), aiff::Common::kBytesAiffC);
}

TEST(AiffChunks, OfAnUnknownCompressionNothingIsSaidButItsName) {
    const aiff::Common common{.numChannels = 2, .compressionType = fourCharCode("zzzz")};
    EXPECT_FALSE(common.isCompressionKnown());
    EXPECT_EQ(common.streamDescription().mFormatID, fourCharCode("zzzz"));
    EXPECT_EQ(common.streamDescription().mBytesPerPacket, 0U);
    EXPECT_EQ(common.streamDescription().mFramesPerPacket, 0U);
    EXPECT_EQ(common.sourceBitDepth(), 0);
}

TEST(AiffChunks, ACommonChunkOfAnAiffHasNoCompression) {
    BytesToRead file(written(aiff::Common{2, 9, 24, 8000.0, fourCharCode("sowt")}));
    const auto back = aiff::Common::parse(file.reader, false);
    EXPECT_EQ(back.sampleRate, 8000.0);
    EXPECT_EQ(back.compressionType, fourCharCode("NONE"));
    EXPECT_EQ(file.reader.offset(), aiff::Common::kBytesAiff);
}

TEST(AiffChunks, TheSoundDataHeadIsReadAsItWasWritten) {
    BytesToRead file(written(aiff::SoundData{7, 0xFFFFFFFF}));
    const auto back = aiff::SoundData::parse(file.reader);
    EXPECT_EQ(back.offset, 7U);
    EXPECT_EQ(back.blockSize, 0xFFFFFFFFU);
    EXPECT_EQ(file.reader.offset(), aiff::SoundData::kBytes);
}

} // namespace
} // namespace zemo::test
