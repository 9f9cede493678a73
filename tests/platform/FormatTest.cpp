#include "platform/Format.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "platform/FourCharCode.h"
#include "platform/StreamDescription.h"

namespace zemo::platform {
namespace {

TEST(Format, IsWhatPrintfWouldPrint) {
    EXPECT_EQ(format("%d of %s, %.2f%%\n", 3, "five", 60.0), "3 of five, 60.00%\n");
}

TEST(Format, OfAnEmptyTextIsEmpty) {
    EXPECT_EQ(format("%s", ""), "");
}

TEST(Format, HasNoLongestResult) {
    for (const std::size_t length : {1U, 15U, 16U, 255U, 256U, 100000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(format("<%s>", text.c_str()), "<" + text + ">");
    }
}

TEST(Format, ATextThatIsInsertedIsNoFormatItself) {
    EXPECT_EQ(format("%s", "100% %s %n"), "100% %s %n");
}

TEST(FourCharCode, HasTheFirstCharacterHighest) {
    EXPECT_EQ(fourCharCode("lpcm"), 0x6C70636DU);
    EXPECT_EQ(fourCharCode("    "), 0x20202020U);
}

TEST(FourCharCode, TakesCharactersAsUnsignedBytes) {
    EXPECT_EQ(fourCharCode("\xFF\x80\x01\x7F"), 0xFF80017FU);
}

TEST(StreamDescription, HasFortyBytes) {
    EXPECT_EQ(sizeof(AudioStreamBasicDescription), 40U);
}

TEST(StreamDescription, TheFlagsOfPackedNonInterleavedFloatAre41) {
    EXPECT_EQ(kIsFloat | kIsPacked | kIsNonInterleaved, 41);
}

} // namespace
} // namespace zemo::platform
