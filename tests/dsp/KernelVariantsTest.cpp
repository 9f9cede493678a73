#include <algorithm>
#include <random>

#include "PlainForms.h"
#include "Variants.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/EvenSpline.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"

/// Every variant of every kernel beside the plain form, bit for bit.
namespace zemo::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStride = 29; ///< between lengths: the sanitizers' builds are slow
constexpr std::size_t kLarge = 50021;
#else
constexpr std::size_t kStride = 1;
constexpr std::size_t kLarge = 200023;
#endif

/// 0 to 2000, each once in a build without sanitizers.
std::vector<std::size_t> shortLengths() {
    std::vector<std::size_t> lengths;
    for (std::size_t length = 0; length <= 2000; length += length < 40 ? 1 : kStride) {
        lengths.push_back(length);
    }
    return lengths;
}

Sound amOf(const Sound& sound, float cf, float index, double rate) {
    Sound result(sound.size(), 7.0F);
    dsp::amplitudeModulate(sound, result, cf, index, rate);
    return result;
}

Sound pmOf(const Sound& sound, float cf, float index, float lpf, double rate) {
    Sound result(sound.size(), 7.0F);
    const auto envelope = dsp::blockEnvelope(sound, dsp::envelopeBlockLength(lpf, rate));
    dsp::phaseModulate(sound, result, envelope, cf, index, rate);
    return result;
}

struct Ssb {
    Sound result;
    std::array<double, 513> line{};
};

Ssb ssbOf(const Sound& sound, bool upper, float cf, float index, double rate) {
    Ssb ssb{Sound(sound.size(), 7.0F)};
    dsp::singleSideband(sound, ssb.result, upper ? dsp::Sideband::Upper : dsp::Sideband::Lower, cf,
                        index, rate, ssb.line);
    return ssb;
}

Sound plainSsb(const Sound& sound, bool upper, float cf, float index, double rate) {
    plain::Hilbert hilbert;
    return plain::singleSideband(sound, upper, cf, index, rate, hilbert);
}

std::size_t newLength(const Sound& sound, float ratio, double rate) {
    return static_cast<std::size_t>(
        dsp::resampledLength(static_cast<std::int64_t>(sound.size()), ratio, rate));
}

Sound resampledOf(const Sound& sound, float ratio, double rate) {
    Sound result(newLength(sound, ratio, rate), 7.0F);
    dsp::resample(sound, result, ratio, rate);
    return result;
}

Sound plainResampled(const Sound& sound, float ratio, double rate) {
    return plain::resampled(sound, newLength(sound, ratio, rate), ratio, rate);
}

/// Noise with silence, a spike, denormals and both zeros in it.
Sound eventful(std::size_t count, std::uint32_t seed, float peak = 1.0F) {
    Sound sound = noise(count, seed, peak);
    std::mt19937 random(seed);
    for (std::size_t k = 0; k + 700 < count; k += 2000) {
        const std::size_t from = k + random() % 700;
        const auto first = sound.begin() + static_cast<std::ptrdiff_t>(from);
        const auto last = sound.end() - first > 900 ? first + 900 : sound.end();
        const float fill = k % 4000 == 0 ? 0.0F : -0.0F;
        std::fill(first, last, fill);
        sound[from] = kTiniest * static_cast<float>(1 + random() % 1000);
    }
    return sound;
}

TEST(KernelVariants, ThereAreSeveralOnAProcessorOfToday) {
    EXPECT_GE(instructionSets().size(), 1U);
    RecordProperty("instruction_sets", static_cast<int>(instructionSets().size()));
}

TEST(KernelVariants, AmOfEveryShortLength) {
    for (const std::size_t length : shortLengths()) {
        const Sound sound = noise(length, static_cast<std::uint32_t>(length));
        const float cf = 0.37F * static_cast<float>(length * length % 60000);
        const Sound expected = plain::amplitudeModulation(sound, cf, 0.7F, 44100.0);
        for (const std::int64_t set : instructionSets()) {
            const Variant variant(set, 1);
            ASSERT_TRUE(sameBits(amOf(sound, cf, 0.7F, 44100.0), expected))
                << length << " " << variant.name();
        }
    }
}

TEST(KernelVariants, AmOfLongSoundsAndLargePhases) {
    const Sound sound = eventful(kLarge, 1);
    for (const float cf : {0.0F, 1e-30F, 1.0F, 440.0F, 19999.9F, 3e6F, 1e12F, kLargest}) {
        const Sound expected = plain::amplitudeModulation(sound, cf, 1.3F, 48000.0);
        underEveryVariant(
            [&] { ASSERT_TRUE(sameBits(amOf(sound, cf, 1.3F, 48000.0), expected)) << cf; });
    }
}

TEST(KernelVariants, PmOfEveryShortLength) {
    for (const std::size_t length : shortLengths()) {
        const Sound sound = noise(length, static_cast<std::uint32_t>(length) + 7);
        const double rate = 32.0 + static_cast<double>(length % 977);
        const float index = 0.01F * static_cast<float>(length % 1000);
        const Sound expected = plain::phaseModulation(sound, 11.0F, index, 32.0F, rate);
        for (const std::int64_t set : instructionSets()) {
            const Variant variant(set, 1);
            ASSERT_TRUE(sameBits(pmOf(sound, 11.0F, index, 32.0F, rate), expected))
                << length << " " << variant.name();
        }
    }
}

TEST(KernelVariants, PmOfLongSoundsAndLargePhases) {
    const Sound sound = eventful(kLarge, 2);
    for (const float index : {0.0F, 1.0F, 50.0F, 1e9F, kLargest}) {
        const Sound expected = plain::phaseModulation(sound, 2500.0F, index, 9.0F, 48000.0);
        underEveryVariant([&] {
            ASSERT_TRUE(sameBits(pmOf(sound, 2500.0F, index, 9.0F, 48000.0), expected)) << index;
        });
    }
}

TEST(KernelVariants, SsbOfEveryShortLength) {
    for (const std::size_t length : shortLengths()) {
        const float peak = length % 2 == 0 ? 0.2F : 1.0F; // the loud ones are scaled
        const Sound sound = noise(length, static_cast<std::uint32_t>(length) + 9, peak);
        const bool upper = length % 3 == 0;
        const Sound expected = plainSsb(sound, upper, 777.7F, 0.8F, 44100.0);
        for (const std::int64_t set : instructionSets()) {
            const Variant variant(set, 1);
            ASSERT_TRUE(sameBits(ssbOf(sound, upper, 777.7F, 0.8F, 44100.0).result, expected))
                << length << " " << variant.name();
        }
    }
}

TEST(KernelVariants, SsbOfLongSounds) {
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0}) {
        for (const float peak : {0.1F, 1.0F}) {
            const Sound sound = eventful(kLarge / 4, 3, peak);
            const Sound expected = plainSsb(sound, true, 1234.5F, 1.0F, rate);
            underEveryVariant([&] {
                ASSERT_TRUE(sameBits(ssbOf(sound, true, 1234.5F, 1.0F, rate).result, expected))
                    << rate << " " << peak;
            });
        }
    }
}

TEST(KernelVariants, SsbOfAPeakThatManySamplesShare) {
    Sound sound(40000);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        sound[i] = i % 96 < 48 ? 1.0F : -1.0F;
    }
    const Sound expected = plainSsb(sound, false, 500.0F, 1.0F, 48000.0);
    underEveryVariant([&] {
        ASSERT_TRUE(sameBits(ssbOf(sound, false, 500.0F, 1.0F, 48000.0).result, expected));
    });
}

TEST(KernelVariants, SsbOfCarriersFarBeyondTheRate) {
    const Sound sound = noise(5000, 4, 0.5F);
    for (const float cf : {-1000.0F, 1e5F, 1e14F, kInfinity}) {
        const Sound expected = plainSsb(sound, true, cf, 0.5F, 44100.0);
        underEveryVariant([&] {
            ASSERT_TRUE(sameBits(ssbOf(sound, true, cf, 0.5F, 44100.0).result, expected)) << cf;
        });
    }
}

TEST(KernelVariants, SsbGoesOnWithTheDelayLineOfTheRunBefore) {
    plain::Hilbert hilbert;
    std::array<std::array<double, 513>, 2> lines{};
    for (const std::size_t length : {700UL, 100UL, 513UL, 16385UL, 1UL}) {
        const Sound sound = noise(length, static_cast<std::uint32_t>(length));
        const Sound expected = plain::singleSideband(sound, true, 99.0F, 1.0F, 48000.0, hilbert);
        const auto before = lines[0];
        underEveryVariant([&] {
            lines[0] = before;
            Sound result(length);
            dsp::singleSideband(sound, result, dsp::Sideband::Upper, 99.0F, 1.0F, 48000.0,
                                lines[0]);
            ASSERT_TRUE(sameBits(result, expected)) << length;
        });
    }
}

TEST(KernelVariants, ResamplingOfEveryShortLength) {
    const std::vector<float> ratios{0.91875F, 2.0F, 0.3F, 1.0F, 1.7F, 0.5F};
    for (const std::size_t length : shortLengths()) {
        const float ratio = ratios[length % ratios.size()];
        const Sound sound = noise(length, static_cast<std::uint32_t>(length) + 3);
        if (length < 4 || newLength(sound, ratio, 44100.0) == 0) {
            continue;
        }
        const Sound expected = plainResampled(sound, ratio, 44100.0);
        for (const std::int64_t set : instructionSets()) {
            const Variant variant(set, 1);
            ASSERT_TRUE(sameBits(resampledOf(sound, ratio, 44100.0), expected))
                << length << " " << variant.name();
        }
    }
}

TEST(KernelVariants, ResamplingAcrossTheBordersOfGroups) {
    constexpr std::size_t kGroup = 8192;
    for (const std::size_t length :
         {kGroup - 1, kGroup, kGroup + 1, kGroup + 64, kGroup + 66, 2 * kGroup + 65,
          2 * kGroup + 66, 2 * kGroup + 67, 3 * kGroup, 3 * kGroup + 1, 5 * kGroup + 12}) {
        const Sound sound = eventful(length, static_cast<std::uint32_t>(length));
        const Sound expected = plainResampled(sound, 0.7F, 48000.0);
        underEveryVariant(
            [&] { ASSERT_TRUE(sameBits(resampledOf(sound, 0.7F, 48000.0), expected)) << length; });
    }
}

TEST(KernelVariants, ResamplingByEveryKindOfRatio) {
    const Sound sound = noise(30011, 5);
    for (const double rate : {44100.0, 48000.0, 88200.0, 96000.0, 7.0, 1e6 / 3.0}) {
        for (const float ratio : {1.0F, 2.0F, 4.0F, 3.0F, 0.5F, 0.25F, 1.5F, 2.0F / 3.0F, 0.001F,
                                  1.0F + 0x1p-23F, 1.0F - 0x1p-24F, 1.0F + 0x1p-15F, 7.3F}) {
            const Sound expected = plainResampled(sound, ratio, rate);
            for (const std::int64_t set : instructionSets()) {
                const Variant variant(set, 2);
                ASSERT_TRUE(sameBits(resampledOf(sound, ratio, rate), expected))
                    << rate << " " << ratio << " " << variant.name();
            }
        }
    }
}

TEST(KernelVariants, ResamplingBeyondTheFloats) {
    const Sound sound = noise(20000, 8, kLargest);
    const Sound expected = plainResampled(sound, 1.7F, 48000.0);
    EXPECT_FALSE(allFinite(expected));
    underEveryVariant([&] { ASSERT_TRUE(sameBits(resampledOf(sound, 1.7F, 48000.0), expected)); });
}

TEST(KernelVariants, ResamplingOfALongSound) {
    const Sound sound = eventful(kLarge, 6);
    for (const float ratio : {0.91875F, 1.088435374F}) {
        const Sound expected = plainResampled(sound, ratio, 48000.0);
        underEveryVariant(
            [&] { ASSERT_TRUE(sameBits(resampledOf(sound, ratio, 48000.0), expected)) << ratio; });
    }
}

TEST(KernelVariants, ARunUpThatIsTooShortIsNoticedAtEveryLengthOfIt) {
    const Sound sound = noise(60000, 7);
    Sound result(newLength(sound, 0.9F, 44100.0));
    const Sound expected = plainResampled(sound, 0.9F, 44100.0);
    const dsp::EvenGrids grids{.samples = sound.data(),
                               .knots = static_cast<std::int64_t>(sound.size()),
                               .output = result.data(),
                               .points = static_cast<std::int64_t>(result.size()),
                               .rate = 44100.0,
                               .ratio = 0.9F};
    underEveryVariant([&] {
        for (const std::int64_t runUp : {2, 4, 8, 16, 20}) {
            EXPECT_EQ(dsp::splineOnEvenGrids(grids, runUp), dsp::SplineOutcome::BordersDiffer)
                << runUp;
        }
        for (const std::int64_t runUp : {24, 32, 40, 48, 64, 200, 5000, 60000}) {
            if (dsp::splineOnEvenGrids(grids, runUp) == dsp::SplineOutcome::Exact) {
                EXPECT_TRUE(sameBits(result, expected)) << runUp;
            } else {
                EXPECT_LT(runUp, 64);
            }
        }
        dsp::resample(sound, result, 0.9F, 44100.0, 2);
        EXPECT_TRUE(sameBits(result, expected)) << "after longer and longer ones";
    });
}

// Samples that are not finite ------------------------------------------------------------------

class KernelsOfNonFinite : public testing::TestWithParam<float> {};

TEST_P(KernelsOfNonFinite, AmAtEveryAlignment) {
    for (std::size_t place = 0; place < 40; ++place) {
        const Sound sound = withSample(noise(45, 1), place, GetParam());
        const Sound expected = plain::amplitudeModulation(sound, 500.0F, 0.5F, 44100.0);
        underEveryVariant(
            [&] { ASSERT_TRUE(sameBits(amOf(sound, 500.0F, 0.5F, 44100.0), expected)) << place; });
    }
}

TEST_P(KernelsOfNonFinite, PmAtEveryAlignment) {
    for (std::size_t place = 0; place < 40; ++place) {
        const Sound sound = withSample(noise(45, 1), place, GetParam());
        const Sound expected = plain::phaseModulation(sound, 50.0F, 0.5F, 32.0F, 640.0);
        underEveryVariant([&] {
            ASSERT_TRUE(sameBits(pmOf(sound, 50.0F, 0.5F, 32.0F, 640.0), expected)) << place;
        });
    }
}

TEST_P(KernelsOfNonFinite, SsbAtEveryAlignmentAndAcrossBorders) {
    std::vector<std::size_t> places{15870, 16127, 16383, 16384, 16390, 17000};
    for (std::size_t place = 0; place<66; place += kStride> 1 ? 11 : 1) {
        places.push_back(place);
    }
    for (const std::size_t place : places) {
        const std::size_t length = place < 1000 ? 900 : 17500;
        const Sound sound = withSample(noise(length, 1), place, GetParam());
        const Sound expected = plainSsb(sound, true, 500.0F, 0.5F, 48000.0);
        for (const std::int64_t set : instructionSets()) {
            const Variant variant(set, 2);
            ASSERT_TRUE(sameBits(ssbOf(sound, true, 500.0F, 0.5F, 48000.0).result, expected))
                << place << " " << variant.name();
        }
    }
}

TEST_P(KernelsOfNonFinite, ResamplingGivesNaNEverywhereWhereverItIs) {
    constexpr std::size_t kCount = 20000;
    for (const std::size_t place : {0UL, 1UL, 2UL, 63UL, 1024UL, 8191UL, 8192UL, 12345UL,
                                    kCount - 3, kCount - 2, kCount - 1}) {
        const Sound sound = withSample(noise(kCount, 1), place, GetParam());
        const Sound expected = plainResampled(sound, 0.9F, 44100.0);
        ASSERT_TRUE(
            std::all_of(expected.begin(), expected.end(), [](float x) { return std::isnan(x); }));
        underEveryVariant(
            [&] { ASSERT_TRUE(sameBits(resampledOf(sound, 0.9F, 44100.0), expected)) << place; });
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, KernelsOfNonFinite, testing::Values(kNaN, kInfinity, -kInfinity));

} // namespace
} // namespace zemo::test
