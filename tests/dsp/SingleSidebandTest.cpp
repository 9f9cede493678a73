#include "dsp/SingleSideband.h"

#include <algorithm>
#include <cmath>

#include "PlainForms.h"
#include "dsp/HilbertTransformer.h"

namespace zemo::test {
namespace {

using SingleSideband = DspTest;

Sound ssb(const Sound& sound, bool upper, float cf, float index, double rate) {
    return run(sound, rate, [&] { return ssbmBuffer(upper, cf, index); });
}

float peakOf(const Sound& sound) {
    float peak = 0.0F;
    for (const float x : sound) {
        peak = std::max(peak, std::fabs(x));
    }
    return peak;
}

/// The two sidebands of a 1 kHz tone on a 5 kHz carrier, once the delay lines are full.
struct Sidebands {
    double lower;
    double upper;
};

Sidebands sidebands(bool upper, double rate) {
    const Sound result = ssb(tone(20000, 1000.0, rate, 0.5), upper, 5000.0F, 1.0F, rate);
    return {amplitudeAt(result, 4000.0 / rate, 1024, 16384),
            amplitudeAt(result, 6000.0 / rate, 1024, 16384)};
}

double decibels(double ratio) {
    return 20.0 * std::log10(ratio);
}

TEST_F(SingleSideband, TheUpperSettingYieldsTheSumOfTheFrequencies) {
    EXPECT_NEAR(sidebands(true, 44100.0).upper, 0.5, 1e-3);
}

TEST_F(SingleSideband, TheLowerSettingYieldsTheDifferenceOfTheFrequencies) {
    EXPECT_NEAR(sidebands(false, 44100.0).lower, 0.5, 1e-3);
}

TEST_F(SingleSideband, TheImageIsRejectedBy60DecibelsAt44100And48000) {
    for (const double rate : {44100.0, 48000.0}) {
        const Sidebands upper = sidebands(true, rate);
        const Sidebands lower = sidebands(false, rate);
        const double upperRejection = decibels(upper.upper / upper.lower);
        const double lowerRejection = decibels(lower.lower / lower.upper);
        EXPECT_GT(upperRejection, 60.0) << rate;
        EXPECT_GT(lowerRejection, 60.0) << rate;
        RecordProperty("upper_at_" + std::to_string(static_cast<int>(rate)),
                       std::to_string(upperRejection));
        RecordProperty("lower_at_" + std::to_string(static_cast<int>(rate)),
                       std::to_string(lowerRejection));
    }
}

TEST_F(SingleSideband, At88200TheImageStaysAtAThird) {
    // I and twice Q: the sidebands are 3/2 and 1/2 of the tone.
    const Sidebands both = sidebands(true, 88200.0);
    EXPECT_NEAR(both.lower / both.upper, 1.0 / 3.0, 1e-3);
}

TEST_F(SingleSideband, At96000BothSidebandsAreThereAlike) {
    for (const bool upper : {false, true}) {
        const Sidebands both = sidebands(upper, 96000.0);
        EXPECT_NEAR(both.lower, 0.25, 1e-3);
        EXPECT_NEAR(both.upper, 0.25, 1e-3);
    }
}

TEST_F(SingleSideband, WithoutATableItIsTheDelayedInputTimesTheCosine) {
    const Sound sound = noise(1000, 10, 0.9F);
    for (const double rate : {96000.0, 22050.0}) {
        const Sound result = ssb(sound, true, 700.0F, 1.0F, rate);
        double p = 0.0;
        for (std::size_t i = 0; i < sound.size(); ++i) {
            p += 6.283185307179586 * 700.0 / rate;
            const double delayed = i < 256 ? 0.0 : static_cast<double>(sound[i - 256]);
            EXPECT_EQ(result[i], static_cast<float>(delayed * std::cos(p)));
            p -= p >= 6.283185307179586 ? 6.283185307179586 : 0.0;
        }
    }
}

TEST_F(SingleSideband, TheWetPartLagsTheDryOneBy256Samples) {
    Sound sound(1000, 0.0F);
    sound[100] = 1.0F;
    const Sound result = ssb(sound, true, 1.0F, 0.5F, 96000.0);
    for (std::size_t i = 0; i < result.size(); ++i) {
        const float expected = i == 100 || i == 356 ? 0.5F : 0.0F;
        EXPECT_NEAR(result[i], expected, 1e-3F) << i;
    }
}

TEST_F(SingleSideband, TheCarrierStepsBeforeItsFirstUse) {
    Sound sound(300, 0.0F);
    sound[0] = 1.0F;
    const Sound result = ssb(sound, true, 1000.0F, 1.0F, 96000.0);
    EXPECT_NEAR(static_cast<double>(result[256]), std::cos(257.0 * 2.0 * kPi * 1000.0 / 96000.0),
                1e-6);
}

TEST_F(SingleSideband, AWetPeakUpToOneIsNotTouched) {
    const Sound sound(600, 0.25F);
    const Sound result = ssb(sound, true, 0.001F, 1.0F, 96000.0);
    EXPECT_NEAR(peakOf(result), 0.25F, 1e-6F);
}

TEST_F(SingleSideband, AWetPeakAboveOneBecomesExactlyOne) {
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0}) {
        EXPECT_EQ(peakOf(ssb(noise(2000, 11, 3.0F), true, 1234.0F, 1.0F, rate)), 1.0F) << rate;
    }
}

TEST_F(SingleSideband, TheWetPartIsScaledBeforeItIsMixed) {
    const Sound sound(600, 4.0F);
    const Sound result = ssb(sound, true, 0.001F, 0.5F, 96000.0);
    EXPECT_NEAR(result[500], 0.5F * 4.0F + 0.5F * 1.0F, 1e-5F);
}

TEST_F(SingleSideband, AnIndexAboveOneBehavesAsOne) {
    const Sound sound = noise(1500, 12);
    const Sound one = ssb(sound, false, 3000.0F, 1.0F, 44100.0);
    forgetRuns();
    EXPECT_TRUE(sameBits(ssb(sound, false, 3000.0F, 17.0F, 44100.0), one));
}

TEST_F(SingleSideband, IndexZeroLeavesTheSoundAsItIs) {
    const Sound sound = noise(1500, 13);
    EXPECT_EQ(ssb(sound, true, 3000.0F, 0.0F, 48000.0), sound);
}

TEST_F(SingleSideband, TheFirst512SamplesStillHearTheRunBefore) {
    const Sound before = noise(700, 14, 0.5F);
    const Sound sound = noise(1500, 15, 0.2F); // quiet: a scaled wet part would change every sample
    const Sound fresh = ssb(sound, true, 3000.0F, 1.0F, 44100.0);
    forgetRuns();
    ssb(before, true, 3000.0F, 1.0F, 44100.0);
    const Sound second = ssb(sound, true, 3000.0F, 1.0F, 44100.0);
    EXPECT_FALSE(sameBits(Sound(second.begin(), second.begin() + 512),
                          Sound(fresh.begin(), fresh.begin() + 512)));
    EXPECT_TRUE(sameBits(Sound(second.begin() + 512, second.end()),
                         Sound(fresh.begin() + 512, fresh.end())));
}

TEST_F(SingleSideband, OnSilenceTheRunBeforeRingsOn) {
    ssb(noise(700, 16), true, 3000.0F, 1.0F, 44100.0);
    const Sound result = ssb(Sound(600, 0.0F), true, 3000.0F, 1.0F, 44100.0);
    EXPECT_GT(peakOf(Sound(result.begin(), result.begin() + 512)), 0.1F);
    EXPECT_EQ(peakOf(Sound(result.begin() + 512, result.end())), 0.0F);
}

TEST_F(SingleSideband, ARunAtASilentRateFillsTheLineForTheNextOne) {
    ssb(noise(700, 17), true, 3000.0F, 1.0F, 96000.0);
    EXPECT_GT(peakOf(ssb(Sound(100, 0.0F), true, 3000.0F, 1.0F, 44100.0)), 0.1F);
}

TEST_F(SingleSideband, AgreesWithThePlainFormToTheBitRunAfterRun) {
    plain::Hilbert hilbert; // goes from run to run, as the program's line does
    std::uint32_t seed = 20;
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0, 22050.0}) {
        for (const float cf : {0.01F, 5000.0F, 60000.0F, 3e38F}) {
            for (const bool upper : {false, true}) {
                const Sound sound = noise(300 + 211 * (seed % 4), seed, 1.2F);
                const float index = static_cast<float>(seed % 5) * 0.3F;
                EXPECT_TRUE(sameBits(ssb(sound, upper, cf, index, rate),
                                     plain::singleSideband(sound, upper, cf, index, rate, hilbert)))
                    << rate << " " << cf << " " << upper;
                ++seed;
            }
        }
    }
}

TEST_F(SingleSideband, AgreesWithThePlainFormAcrossTheBlocksItWorksIn) {
    const Sound sound = noise(17000, 60);
    plain::Hilbert hilbert;
    EXPECT_TRUE(sameBits(ssb(sound, true, 777.0F, 0.9F, 48000.0),
                         plain::singleSideband(sound, true, 777.0F, 0.9F, 48000.0, hilbert)));
}

} // namespace
} // namespace zemo::test
