#include <cmath>

#include "PlainForms.h"
#include "dsp/AmplitudeModulation.h"

namespace zemo::test {
namespace {

using AmplitudeModulation = DspTest;

Sound am(const Sound& sound, float cf, float index, double rate) {
    return run(sound, rate, [&] { return amBuffer(cf, index); });
}

TEST_F(AmplitudeModulation, IndexZeroLeavesTheSoundAsItIs) {
    const Sound sound = noise(3000, 1);
    EXPECT_EQ(am(sound, 440.0F, 0.0F, 44100.0), sound);
}

TEST_F(AmplitudeModulation, IndexOneOnAConstantOneIsTheSineOfThePhase) {
    const Sound result = am(Sound(40, 1.0F), 700.0F, 1.0F, 44100.0);
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double phase = 2.0 * kPi * 700.0 * static_cast<double>(i) / 44100.0;
        EXPECT_NEAR(static_cast<double>(result[i]), std::sin(phase), 1e-6);
    }
}

TEST_F(AmplitudeModulation, AboveIndexOneTheDryPartIsInverted) {
    // The carrier's sine is 0 at sample 0, so only the dry part is there.
    EXPECT_EQ(am({0.5F}, 100.0F, 3.0F, 44100.0), Sound{-1.0F});
}

TEST_F(AmplitudeModulation, ThePhaseIsSetBackOnceAndNoMore) {
    // A step of 3 radians: 0, 3 and 6 are below 2 pi, 9 and 15 are set back once, 15 stays above.
    const auto cf = static_cast<float>(3.0 * 44100.0 / (2.0 * kPi));
    const auto w = static_cast<float>(static_cast<double>(cf) * 6.283185307179586 / 44100.0);
    const Sound result = am(Sound(6, 1.0F), cf, 1.0F, 44100.0);
    for (std::size_t i = 0; i < 6; ++i) {
        const float product = static_cast<float>(i) * w;
        const float phase =
            i < 3 ? product : static_cast<float>(static_cast<double>(product) - 6.283185307179586);
        EXPECT_EQ(result[i], plain::sine(phase)) << i;
    }
}

TEST_F(AmplitudeModulation, AgreesWithThePlainFormToTheBit) {
    const Sound sound = noise(20000, 2, 1.5F);
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0, 22050.0}) {
        for (const float cf : {0.001F, 440.0F, 15000.0F, 1e6F, 3e38F}) {
            for (const float index : {0.0F, 0.3F, 1.0F, 7.5F, 1e30F}) {
                EXPECT_TRUE(sameBits(am(sound, cf, index, rate),
                                     plain::amplitudeModulation(sound, cf, index, rate)))
                    << rate << " " << cf << " " << index;
            }
        }
    }
}

TEST_F(AmplitudeModulation, TheKernelMayWriteOverItsInput) {
    Sound sound = noise(1000, 3);
    const Sound expected = plain::amplitudeModulation(sound, 440.0F, 0.7F, 48000.0);
    dsp::amplitudeModulate(sound, sound, 440.0F, 0.7F, 48000.0);
    EXPECT_TRUE(sameBits(sound, expected));
}

TEST_F(AmplitudeModulation, RingModulationLeavesTheSumAndTheDifferenceOnly) {
    const Sound sound = tone(16384, 1000.0, 48000.0);
    const Sound result = am(sound, 5000.0F, 1.0F, 48000.0);
    EXPECT_NEAR(amplitudeAt(result, 4000.0 / 48000.0, 0, result.size()), 0.5, 1e-4);
    EXPECT_NEAR(amplitudeAt(result, 6000.0 / 48000.0, 0, result.size()), 0.5, 1e-4);
    EXPECT_LT(amplitudeAt(result, 1000.0 / 48000.0, 0, result.size()), 1e-4);
    EXPECT_LT(amplitudeAt(result, 5000.0 / 48000.0, 0, result.size()), 1e-4);
}

} // namespace
} // namespace zemo::test
