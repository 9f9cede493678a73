#include "dsp/PhaseModulation.h"

#include <algorithm>
#include <cmath>

#include "PlainForms.h"

namespace zemo::test {
namespace {

using PhaseModulation = DspTest;

Sound pm(const Sound& sound, float cf, float index, float lpf, double rate) {
    return run(sound, rate, [&] { return pmBuffer(cf, index, lpf); });
}

Sound levelsOf(const std::vector<EnvelopePoint>& envelope) {
    Sound levels;
    for (const EnvelopePoint& point : envelope) {
        levels.push_back(point.val);
    }
    return levels;
}

TEST(EnvelopeRate, IsLimitedTo4And32) {
    EXPECT_EQ(clampedEnvelopeRate(2.0F), 4.0F);
    EXPECT_EQ(clampedEnvelopeRate(-kInfinity), 4.0F);
    EXPECT_EQ(clampedEnvelopeRate(50.0F), 32.0F);
    EXPECT_EQ(clampedEnvelopeRate(kInfinity), 32.0F);
}

TEST(EnvelopeRate, StaysAsItIsWithinItsBounds) {
    for (const float lpf : {4.0F, 4.001F, 17.5F, 31.999F, 32.0F}) {
        EXPECT_EQ(clampedEnvelopeRate(lpf), lpf);
    }
}

TEST(EnvelopeRate, IsTheSlowestForNaN) {
    EXPECT_EQ(clampedEnvelopeRate(kNaN), 4.0F);
}

TEST_F(PhaseModulation, AnOutputRateBelowTheEnvelopesIsRefusedAndNothingChanges) {
    const Sound sound = noise(100, 1);
    loadSound(sound);
    for (const double rate : {3.999, 0.0, -48000.0, static_cast<double>(kNaN)}) {
        R = rate;
        const Refusal refusal = pmBuffer(440.0F, 1.0F, 4.0F);
        ASSERT_TRUE(refusal.has_value()) << rate;
        EXPECT_EQ(refusal->sentence, "The output's rate is below the rate of the envelope.");
        EXPECT_TRUE(sameBits(currentSound(), sound));
    }
    EXPECT_TRUE(platform_.trace.all.empty());
}

TEST_F(PhaseModulation, AnOutputRateEqualToTheEnvelopesIsTaken) {
    R = 4.0;
    EXPECT_FALSE(pmRefusal(4.0F).has_value());
}

TEST_F(PhaseModulation, AnEnvelopeRateThatIsNotAboveZeroIsRefused) {
    R = 48000.0;
    for (const float lpf : {0.0F, -4.0F, kNaN}) {
        EXPECT_TRUE(pmRefusal(lpf).has_value()) << lpf;
    }
}

TEST_F(PhaseModulation, ABlockLongerThanAnyNumberIsABlockLongerThanTheSound) {
    for (const float lpf : {kTiniest, 1e-30F}) {
        EXPECT_EQ(pm(noise(50, 2), 440.0F, 1.0F, lpf, 48000.0), Sound(50, 0.0F));
    }
}

TEST(BlockEnvelope, EveryPointSaysWhereItsBlockBegins) {
    const auto envelope = dsp::blockEnvelope(noise(35, 3), 10);
    ASSERT_EQ(envelope.size(), 4U);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_EQ(envelope[k].count, static_cast<std::int64_t>(10 * k));
        EXPECT_EQ(envelope[k].length, 11);
    }
}

TEST(BlockEnvelope, TheLoudestBlockHasOneHalf) {
    Sound sound(100, 0.1F);
    sound[25] = -0.9F;
    const auto envelope = dsp::blockEnvelope(sound, 10);
    EXPECT_EQ(envelope[2].val, 0.5F);
    // The square roots of 0.1 and of 0.81 + 0.09.
    EXPECT_NEAR(envelope[1].val, 0.5F * std::sqrt(0.1F / 0.9F), 1e-6F);
}

TEST(BlockEnvelope, ClosesAtZero) {
    for (const std::size_t count : {1UL, 9UL, 10UL, 11UL, 19UL, 20UL, 21UL, 95UL, 100UL}) {
        const auto envelope = dsp::blockEnvelope(Sound(count, 0.5F), 10);
        const std::size_t last = (count - 1) / 10;
        EXPECT_FALSE(envelope[last].val > 0.0F) << count;
        if (last > 0) {
            EXPECT_EQ(envelope[last].val, 0.0F) << count;
            EXPECT_EQ(envelope[last - 1].val, 0.5F) << count;
        }
    }
}

TEST(BlockEnvelope, AMultipleOfTheBlockLeavesTheLastPointAtZero) {
    const auto envelope = dsp::blockEnvelope(Sound(30, 0.5F), 10);
    ASSERT_EQ(envelope.size(), 4U);
    EXPECT_EQ(envelope[3].count, 0);
    EXPECT_EQ(envelope[3].val, 0.0F);
    EXPECT_EQ(envelope[3].length, 0);
}

TEST(BlockEnvelope, ASilentSoundGivesNaNAtEveryPoint) {
    for (const EnvelopePoint& point : dsp::blockEnvelope(Sound(35, 0.0F), 10)) {
        EXPECT_TRUE(std::isnan(point.val));
    }
}

TEST(BlockEnvelope, AgreesWithThePlainFormToTheBit) {
    for (const std::size_t count : {1UL, 2UL, 99UL, 100UL, 101UL, 1000UL, 1234UL}) {
        const Sound sound = noise(count, 4, 2.0F);
        for (const std::int64_t block : {1, 2, 7, 50, 100, 5000}) {
            const auto envelope = dsp::blockEnvelope(sound, block);
            const plain::Envelope expected = plain::envelope(sound, block);
            EXPECT_TRUE(sameBits(levelsOf(envelope), expected.levels)) << count << " " << block;
            for (std::size_t k = 0; k < envelope.size(); ++k) {
                EXPECT_EQ(envelope[k].count, expected.counts[k]);
            }
        }
    }
}

TEST_F(PhaseModulation, ASilentSoundBecomesNaNUpToItsLastBlock) {
    const Sound result = pm(Sound(25000, 0.0F), 440.0F, 1.0F, 4.0F, 44100.0);
    for (std::size_t i = 0; i < result.size(); ++i) {
        ASSERT_EQ(std::isnan(result[i]), i < 22050) << i; // blocks of 11025
    }
    EXPECT_EQ(result[22050], 0.0F);
}

TEST_F(PhaseModulation, ASoundShorterThanABlockBecomesAllZeros) {
    for (const std::size_t count : {1UL, 100UL, 11024UL, 11025UL}) {
        EXPECT_EQ(pm(noise(count, 5), 440.0F, 1.0F, 4.0F, 44100.0), Sound(count, 0.0F));
    }
}

TEST_F(PhaseModulation, OneSampleMoreThanABlockIsEnoughToSound) {
    EXPECT_NE(pm(noise(11026, 5), 440.0F, 1.0F, 4.0F, 44100.0), Sound(11026, 0.0F));
}

TEST_F(PhaseModulation, TheLastBlockIsSilentAndTheOneBeforeFallsToIt) {
    const Sound result = pm(Sound(44100, 0.5F), 11025.0F, 0.0F, 4.0F, 44100.0);
    // A carrier of a quarter of the rate has its crests at every fourth sample from 1 on.
    // The envelope holds up to the third block's start, 22050, and is half way down at its middle.
    EXPECT_NEAR(result[22049], 0.5F, 1e-3F);
    EXPECT_NEAR(result[27561], 0.25F, 1e-3F);
    EXPECT_NEAR(result[33073], 0.0F, 1e-3F);
    EXPECT_EQ(Sound(result.begin() + 33075, result.end()), Sound(11025, 0.0F));
}

TEST_F(PhaseModulation, TheResultsPeakIsOneHalf) {
    const Sound result = pm(Sound(60000, 0.25F), 1000.0F, 0.0F, 16.0F, 48000.0);
    float peak = 0.0F;
    for (const float x : result) {
        peak = std::max(peak, std::fabs(x));
    }
    EXPECT_NEAR(peak, 0.5F, 1e-6F);
}

TEST_F(PhaseModulation, IndexZeroGivesAPlainSineUnderTheEnvelope) {
    const double rate = 48000.0;
    const Sound result = pm(Sound(20000, 0.7F), 100.0F, 0.0F, 32.0F, rate);
    for (std::size_t i = 0; i < 10000; ++i) { // far from the falling end
        const double angle = 2.0 * kPi * 100.0 * static_cast<double>(i) / rate;
        ASSERT_NEAR(static_cast<double>(result[i]), 0.5 * std::sin(angle), 1e-5) << i;
    }
}

TEST_F(PhaseModulation, TheDeviationIsTheIndexTimesTheSample) {
    // Without a carrier step, a constant sound holds the phase at index times its value.
    const Sound result = pm(Sound(5000, 0.5F), kTiniest, 3.0F, 32.0F, 48000.0);
    EXPECT_NEAR(static_cast<double>(result[0]), 0.5 * std::sin(1.5), 1e-6);
}

TEST_F(PhaseModulation, BlocksAreCutFromTheRateTruncated) {
    R = 44100.0;
    loadSound(noise(5000, 6));
    dbp = true;
    ASSERT_FALSE(pmBuffer(440.0F, 1.0F, 32.0F).has_value());
    EXPECT_NE(platform_.trace.out.find("envBuf[1].count = 1378\t"), std::string::npos);
}

TEST_F(PhaseModulation, TheDebugFlagTracesEveryPointAfterNormalizing) {
    R = 40.0;
    Sound sound(30, 0.0F);
    sound[5] = 0.5F;
    sound[15] = 0.25F;
    loadSound(sound);
    dbp = true;
    ASSERT_FALSE(pmBuffer(1.0F, 1.0F, 4.0F).has_value());
    EXPECT_EQ(platform_.trace.out, "envBuf[0].count = 0\tenvBuf[0].val = 0.500000\n"
                                   "envBuf[1].count = 10\tenvBuf[1].val = 0.250000\n"
                                   "envBuf[2].count = 20\tenvBuf[2].val = 0.000000\n"
                                   "envBuf[3].count = 0\tenvBuf[3].val = 0.000000\n");
}

TEST_F(PhaseModulation, WithoutTheDebugFlagNothingIsTraced) {
    pm(noise(5000, 7), 440.0F, 1.0F, 32.0F, 44100.0);
    EXPECT_TRUE(platform_.trace.all.empty());
}

TEST_F(PhaseModulation, AgreesWithThePlainFormToTheBit) {
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0, 22050.0}) {
        for (const float lpf : {4.0F, 5.3F, 32.0F}) {
            for (const float cf : {0.01F, 440.0F, 20000.0F, 1e7F, 3e38F}) {
                const Sound sound = noise(40000, 8, 1.1F);
                const float index = cf < 1000.0F ? 2.5F : 1e4F;
                ASSERT_TRUE(sameBits(pm(sound, cf, index, lpf, rate),
                                     plain::phaseModulation(sound, cf, index, lpf, rate)))
                    << rate << " " << lpf << " " << cf;
            }
        }
    }
}

TEST_F(PhaseModulation, AgreesWithThePlainFormAroundEveryBlockBorder) {
    for (std::size_t count = 1; count < 45; ++count) { // blocks of 10
        const Sound sound = noise(count, 9);
        EXPECT_TRUE(sameBits(pm(sound, 3.0F, 2.0F, 4.0F, 40.0),
                             plain::phaseModulation(sound, 3.0F, 2.0F, 4.0F, 40.0)))
            << count;
    }
}

TEST_F(PhaseModulation, ASingleSampleBlockIsTaken) {
    const Sound sound = noise(50, 10);
    EXPECT_TRUE(sameBits(pm(sound, 1.0F, 1.0F, 4.0F, 4.0),
                         plain::phaseModulation(sound, 1.0F, 1.0F, 4.0F, 4.0)));
}

} // namespace
} // namespace zemo::test
