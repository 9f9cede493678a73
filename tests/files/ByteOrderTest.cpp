#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "files/CAByteOrder.h"
#include "files/FixFlags.h"

namespace zemo::test {
namespace {

TEST(CASwap32, TheFourBytesAreReversed) {
    static_assert(CASwap32(0x01020304) == 0x04030201);
    EXPECT_EQ(CASwap32(0xFF000000), 0x000000FFU);
    EXPECT_EQ(CASwap32(0x00FF0000), 0x0000FF00U);
}

TEST(CASwap32, TwiceIsTheWordItself) {
    std::mt19937 random(32);
    for (int i = 0; i < 1000; ++i) {
        const auto word = static_cast<std::uint32_t>(random());
        EXPECT_EQ(CASwap32(CASwap32(word)), word);
    }
}

TEST(CASwapFloat32, OneBecomesTheTinyNumberOfItsReversedBits) {
    const auto tiny = std::bit_cast<float>(0x0000803FU);
    EXPECT_EQ(CASwapFloat32BigToHost(1.0F), tiny);
    EXPECT_EQ(CASwapFloat32HostToBig(1.0F), tiny);
}

TEST(CASwapFloat32, BothDirectionsAreTheSameReversal) {
    std::mt19937 random(64);
    for (int i = 0; i < 1000; ++i) {
        const std::uint32_t word = CASwap32(0x3F000000U | (random() & 0xFFFFFFU));
        const auto sample = std::bit_cast<float>(word);
        if (std::isnan(sample)) {
            continue; // may not pass through a register unchanged
        }
        EXPECT_EQ(std::bit_cast<std::uint32_t>(CASwapFloat32BigToHost(sample)), CASwap32(word));
        EXPECT_EQ(std::bit_cast<std::uint32_t>(CASwapFloat32HostToBig(sample)), CASwap32(word));
    }
}

TEST(SwapSamples, EveryBitPatternPassesThroughNaNsIncluded) {
    // Signalling and quiet NaNs, before the reversal and after it.
    const std::vector<std::uint32_t> words{0x7F800001, 0xFFC12345, 0x0100807F, 0x3F803F80};
    std::vector<float> samples(words.size());
    std::memcpy(samples.data(), words.data(), sizeof(float) * words.size());
    swapSamples(samples);
    std::vector<std::uint32_t> swapped(words.size());
    std::memcpy(swapped.data(), samples.data(), sizeof(float) * words.size());
    EXPECT_EQ(swapped,
              (std::vector<std::uint32_t>{0x0100807F, 0x4523C1FF, 0x7F800001, 0x803F803F}));
}

TEST(SwapSamples, OfNoSamplesNothingIsTouched) {
    float outside = 1.0F;
    swapSamples(std::span(&outside, 0));
    EXPECT_EQ(outside, 1.0F);
}

TEST(StripeNaN, ANaNBecomesZero) {
    for (const float nan : {NAN, -NAN, std::bit_cast<float>(0x7FC00001U)}) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(stripeNaN(nan)), 0U);
    }
}

TEST(StripeNaN, EverythingElseStaysAsItIs) {
    for (const std::uint32_t bits :
         {0x00000000U, 0x80000000U, 0x00000001U, 0x3F800000U, 0x7F800000U, 0xFF800000U}) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(stripeNaN(std::bit_cast<float>(bits))), bits);
    }
}

} // namespace
} // namespace zemo::test
