#include <algorithm>
#include <cmath>
#include <functional>

#include "PlainForms.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/Filters.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/HilbertTransformer.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"

/// Sounds that no loudspeaker has heard. A finite sound becomes a finite one, except in the cases
/// of docs/DSP.md: the sweeps below show that there are no others, the laws that these are some.
namespace zemo::test {
namespace {

using Robustness = DspTest;
using NonFinite = DspTest;
using plain::Hd;

constexpr float kSmallestNormal = std::numeric_limits<float>::min();

const std::vector<double> kRates{44100.0, 48000.0, 88200.0, 96000.0, 22050.0, 400.0, 1e6};
const std::vector<float> kCarriers{kTiniest, 1e-10F, 440.0F, 1e9F, 1e30F, kLargest};
const std::vector<float> kIndexes{0.0F, kTiniest, 0.5F, 1.0F, 1e10F, kLargest};

std::vector<Sound> finiteSounds() {
    std::vector<Sound> sounds;
    for (const float peak : {0.0F, kTiniest, 1e-40F, kSmallestNormal, 1e-30F, 1e-20F, 1.0F, 1e8F,
                             1e18F, 1e25F, 1e37F, kLargest}) {
        for (const std::size_t count : {1UL, 3UL, 4UL, 250UL}) {
            Sound turning(count, peak);
            for (std::size_t i = 1; i < count; i += 2) {
                turning[i] = -peak;
            }
            sounds.push_back(turning);
            sounds.push_back(noise(count, 1, peak));
            sounds.push_back(Sound(count, -peak));
            sounds.push_back(withSample(Sound(count, 0.0F), count / 2, peak));
        }
    }
    return sounds;
}

std::vector<Sound> nonFiniteSounds() {
    std::vector<Sound> sounds;
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        for (const std::size_t count : {1UL, 3UL, 4UL, 250UL}) {
            sounds.push_back(Sound(count, bad));
            sounds.push_back(withSample(noise(count, 2), 0, bad));
            sounds.push_back(withSample(noise(count, 3), count - 1, bad));
        }
    }
    return sounds;
}

std::vector<Sound> allSounds() {
    std::vector<Sound> sounds = finiteSounds();
    const std::vector<Sound> others = nonFiniteSounds();
    sounds.insert(sounds.end(), others.begin(), others.end());
    return sounds;
}

double peakOf(const Sound& sound) {
    return static_cast<double>(dsp::peakMagnitude(sound));
}

bool overflows(double magnitude) {
    return magnitude > 0.999 * static_cast<double>(kLargest);
}

/// The phase that the carrier alone reaches.
double lastPhase(const Sound& sound, float cf, double rate) {
    return static_cast<double>(sound.size()) * static_cast<double>(cf) * 2.0 * kPi / rate;
}

TEST_F(Robustness, AmOverflowsOnlyInItsPhaseAndItsProducts) {
    for (const Sound& sound : allSounds()) {
        for (const double rate : kRates) {
            for (const float cf : kCarriers) {
                for (const float index : kIndexes) {
                    const Sound result = run(sound, rate, [&] { return amBuffer(cf, index); });
                    ASSERT_EQ(result.size(), sound.size());
                    const auto i = static_cast<double>(index);
                    const bool excused = !allFinite(sound) ||
                                         overflows(lastPhase(sound, cf, rate)) ||
                                         overflows(peakOf(sound) * (std::fabs(1.0 - i) + i));
                    ASSERT_TRUE(excused || allFinite(result))
                        << peakOf(sound) << " " << rate << " " << cf << " " << index;
                }
            }
        }
    }
}

TEST_F(Robustness, SsbOfAFiniteSoundAfterFiniteSoundsIsFinite) {
    for (const Sound& sound : allSounds()) {
        for (const double rate : {44100.0, 48000.0, 88200.0, 400.0}) {
            for (const float cf : {kTiniest, 440.0F, kLargest}) {
                for (const float index : {0.0F, 0.5F, kLargest}) {
                    const Sound result =
                        run(sound, rate, [&] { return ssbmBuffer(cf > 1.0F, cf, index); });
                    ASSERT_EQ(result.size(), sound.size());
                    ASSERT_TRUE(!allFinite(sound) || allFinite(result))
                        << peakOf(sound) << " " << rate << " " << cf << " " << index;
                    if (!allFinite(sound)) {
                        forgetRuns();
                    }
                }
            }
        }
    }
}

TEST_F(Robustness, PmOverflowsOnlyInItsPhaseAndItsLevels) {
    for (const Sound& sound : allSounds()) {
        for (const double rate : kRates) {
            for (const float cf : kCarriers) {
                for (const float index : kIndexes) {
                    const Sound result =
                        run(sound, rate, [&] { return pmBuffer(cf, index, 32.0F); });
                    ASSERT_EQ(result.size(), sound.size());
                    const double peak = peakOf(sound);
                    const bool levels = peak < 1e-22 || peak > 1e18;
                    // A single sample before the last block may be all that there is of it.
                    const bool silentUpToTheLastBlock = std::all_of(
                        sound.begin(), sound.begin() + static_cast<long>(sound.size()) / 2,
                        [](float x) { return std::fabs(x) < 1e-22F; });
                    const bool excused =
                        !allFinite(sound) || levels || silentUpToTheLastBlock ||
                        overflows(lastPhase(sound, cf, rate) + static_cast<double>(index) * peak);
                    ASSERT_TRUE(excused || allFinite(result))
                        << peak << " " << rate << " " << cf << " " << index;
                }
            }
        }
    }
}

/// The cases in which the processor's result may leave the finite numbers.
bool isExcused(const Sound& sound, const Hd& settings, const Sound& unscaled) {
    const double peak = peakOf(sound);
    if (!allFinite(sound)) {
        return true;
    }
    // The divisor, in floats.
    const float over = (dsp::peakMagnitude(sound) - settings.knee) * settings.comp;
    if (settings.hpSelect == 0 && settings.knee + over == 0.0F) {
        return true;
    }
    if (settings.hpSelect > 0 && peak > (settings.four ? 1e8 : 1e18)) {
        return true;
    }
    const double highest = static_cast<double>(*std::max_element(unscaled.begin(), unscaled.end()));
    return settings.scale &&
           (highest <= 0.0 || overflows(peak / highest * std::max(peakOf(unscaled), 1.0)));
}

std::vector<Hd> hdSettings() {
    std::vector<Hd> settings;
    for (const std::int32_t hpSelect : {0, 1, 2}) {
        for (const float knee : {0.0F, kTiniest, 0.5F, 1.0F}) {
            for (const float comp : {0.2F, 1.0F}) {
                for (const unsigned flags : {1U, 2U, 3U}) {
                    for (const float mix : {0.0F, 0.5F, 1.0F}) {
                        settings.push_back({.two = (flags & 1U) != 0,
                                            .four = (flags & 2U) != 0,
                                            .attack = 100,
                                            .hpSelect = hpSelect,
                                            .slope = 0.998,
                                            .mix = mix,
                                            .knee = knee,
                                            .comp = comp});
                    }
                }
            }
        }
    }
    return settings;
}

Sound processed(const Sound& sound, const Hd& s) {
    forgetRuns();
    return run(sound, 44100.0, [&] {
        return hd(s.two, s.four, true, s.attack, s.scale, s.hpSelect, s.slope, s.mix, s.knee,
                  s.comp);
    });
}

TEST_F(Robustness, HdOverflowsOnlyInItsDivisorItsHighPassAndItsScaling) {
    for (const Sound& sound : allSounds()) {
        for (Hd settings : hdSettings()) {
            const Sound unscaled = processed(sound, settings);
            ASSERT_EQ(unscaled.size(), sound.size());
            const auto told = [&] {
                return testing::Message()
                       << peakOf(sound) << " " << sound.size() << " " << settings.hpSelect << " "
                       << settings.knee << " " << settings.comp << " " << settings.mix;
            };
            ASSERT_TRUE(isExcused(sound, settings, unscaled) || allFinite(unscaled)) << told();
            settings.scale = true;
            const Sound scaled = processed(sound, settings);
            ASSERT_EQ(scaled.size(), sound.size());
            ASSERT_TRUE(isExcused(sound, settings, unscaled) || allFinite(scaled)) << told();
        }
    }
}

TEST_F(Robustness, HdTakesAnySettingsWithoutMindingThem) {
    const Sound sound = noise(200, 4);
    for (const std::int32_t number : {INT32_MIN, -1, 0, 257, INT32_MAX}) {
        for (const float odd : {kNaN, kInfinity, -kInfinity, -kLargest, kLargest}) {
            const Sound result = run(sound, 44100.0, [&] {
                return hd(true, true, true, number, true, number, static_cast<double>(odd), odd,
                          odd, odd);
            });
            EXPECT_EQ(result.size(), sound.size());
        }
    }
}

TEST_F(Robustness, AmAndSsbAndPmTakeAnyNumbersWithoutMindingThem) {
    const Sound sound = noise(200, 5);
    for (const double rate : {44100.0, 0.0, -1.0, static_cast<double>(kNaN), 1e308, 1e-308}) {
        for (const float odd : {kNaN, kInfinity, -kInfinity, -kLargest, kLargest}) {
            R = rate;
            loadSound(sound);
            EXPECT_FALSE(amBuffer(odd, odd).has_value());
            EXPECT_FALSE(ssbmBuffer(true, odd, odd).has_value());
            for (const float lpf : {odd, kTiniest, 4.0F}) {
                pmBuffer(odd, odd, lpf);
            }
            EXPECT_EQ(currentSound().size(), sound.size());
        }
    }
}

TEST_F(Robustness, ResamplingOverflowsOnlyWhereTheSplineOvershoots) {
    for (const Sound& sound : allSounds()) {
        for (const double rate : kRates) {
            for (const float ratio : {0.004F, 0.5F, 1.0F, 2.7F, 40.0F}) {
                const auto count = static_cast<std::int64_t>(sound.size());
                const std::int32_t length = dsp::resampledLength(count, ratio, rate);
                if (count < 3 || length == 0) {
                    continue;
                }
                const Sound result = run(sound, rate, [&] { return resampleBuffer(ratio); });
                ASSERT_EQ(result.size(), static_cast<std::size_t>(length));
                const bool excused = !allFinite(sound) || overflows(8.0 * peakOf(sound));
                ASSERT_TRUE(excused || allFinite(result)) << peakOf(sound) << " " << ratio;
            }
        }
    }
}

TEST_F(Robustness, ASoundWithoutSamplesStaysOne) {
    R = 44100.0;
    EXPECT_FALSE(amBuffer(440.0F, 1.0F).has_value());
    EXPECT_FALSE(ssbmBuffer(true, 440.0F, 1.0F).has_value());
    EXPECT_FALSE(pmBuffer(440.0F, 1.0F, 4.0F).has_value());
    EXPECT_FALSE(hd(true, true, true, 100, true, 1, 0.9, 0.5F, 0.5F, 0.5F).has_value());
    EXPECT_FALSE(resampleBuffer(2.0F).has_value());
    EXPECT_EQ(fBuffersize.load(), 0);
}

TEST_F(Robustness, DenormalSamplesAreNotFlushed) {
    R = 44100.0;
    const Sound sound{kTiniest, 3.0F * kTiniest, -kTiniest};
    loadSound(sound);
    ASSERT_FALSE(amBuffer(440.0F, 0.0F).has_value());
    EXPECT_TRUE(sameBits(currentSound(), sound));
    ASSERT_FALSE(resampleBuffer(1.0F).has_value());
    EXPECT_TRUE(sameBits(currentSound(), {kTiniest, 3.0F * kTiniest}));
}

TEST_F(NonFinite, AmHasNoSineOfAPhaseBeyondTheFloats) {
    const Sound result = run(Sound(10000, 1.0F), 44100.0, [] { return amBuffer(kLargest, 1.0F); });
    EXPECT_TRUE(std::isfinite(result[7000]));
    EXPECT_TRUE(std::isnan(result[7100]));
}

TEST_F(NonFinite, AmOverflowsWhereTheDryPartTimesTheIndexDoes) {
    const Sound result = run({1e20F}, 44100.0, [] { return amBuffer(440.0F, 1e20F); });
    EXPECT_FALSE(std::isfinite(result[0]));
}

TEST_F(NonFinite, ANaNLivesOnIn512SamplesOfTheNextSsbRun) {
    run({kNaN}, 44100.0, [] { return ssbmBuffer(true, 440.0F, 1.0F); });
    const Sound result =
        run(Sound(600, 0.5F), 44100.0, [] { return ssbmBuffer(true, 440.0F, 1.0F); });
    for (std::size_t i = 0; i < result.size(); ++i) {
        EXPECT_EQ(std::isnan(result[i]), i < 512) << i;
    }
}

TEST_F(NonFinite, AnInfinitySilencesTheWholeWetPart) {
    const Sound result = run(withSample(Sound(900, 0.5F), 0, kInfinity), 44100.0,
                             [] { return ssbmBuffer(true, 440.0F, 1.0F); });
    for (std::size_t i = 513; i < result.size(); ++i) {
        EXPECT_EQ(result[i], 0.0F) << i; // divided by the infinite peak
    }
}

TEST_F(NonFinite, PmOfSoundsWhoseSquaresVanishIsNaNAsOfSilence) {
    for (const float quiet : {0.0F, kTiniest, 1e-30F, 1e-23F}) {
        const Sound result =
            run(Sound(250, quiet), 400.0, [] { return pmBuffer(44.0F, 1.0F, 4.0F); });
        for (std::size_t i = 0; i < 250; ++i) {
            ASSERT_EQ(std::isnan(result[i]), i < 200) << i; // blocks of 100
        }
    }
}

TEST_F(NonFinite, PmOfASoundThatIsHeardInItsLastBlockOnlyIsNaN) {
    const Sound result = run(withSample(Sound(250, 0.0F), 220, 0.5F), 400.0,
                             [] { return pmBuffer(44.0F, 1.0F, 4.0F); });
    EXPECT_TRUE(std::isnan(result[0]));
    EXPECT_EQ(result[220], 0.0F);
}

TEST_F(NonFinite, PmOfSoundsWhoseSquaresOverflowIsNaNAtTheirBlocks) {
    const Sound result = run(withSample(Sound(550, 0.5F), 250, 1e20F), 400.0,
                             [] { return pmBuffer(44.0F, 0.0F, 4.0F); });
    for (std::size_t i = 0; i < 550; ++i) {
        // The block itself and the one before, which rises to it; all others are 0 beside it.
        ASSERT_EQ(std::isnan(result[i]), i >= 100 && i < 300) << i;
        ASSERT_TRUE(std::isnan(result[i]) || result[i] == 0.0F) << i;
    }
}

TEST_F(NonFinite, PmHasNoSineOfAPhaseBeyondTheFloats) {
    const Sound result = run(withSample(Sound(250, 0.5F), 10, 1e10F), 400.0,
                             [] { return pmBuffer(44.0F, 1e30F, 4.0F); });
    EXPECT_TRUE(std::isnan(result[10]));
    EXPECT_TRUE(std::isfinite(result[11]));
}

TEST_F(NonFinite, HdDividesByZeroWherePeakTimesCompressionVanishes) {
    for (const float quiet : {0.0F, kTiniest, 2.0F * kTiniest}) {
        const Sound result = run(Sound(10, quiet), 44100.0, [] {
            return hd(true, false, false, 100, false, 0, 0.9, 0.5F, 0.0F, 0.2F);
        });
        EXPECT_TRUE(std::isnan(result[5])) << quiet;
    }
}

TEST_F(NonFinite, HdDividesByZeroWhereAQuietPeakIsLostBesideTheKneeAtCompressionOne) {
    for (const float quiet : {0.0F, 1e-10F}) {
        const Sound result = run(Sound(10, quiet), 44100.0, [] {
            return hd(true, false, false, 100, false, 0, 0.9, 0.5F, 1.0F, 1.0F);
        });
        EXPECT_TRUE(std::isnan(result[5])) << quiet;
    }
}

TEST_F(NonFinite, HdBehindItsHighPassOverflowsOnEnormousSounds) {
    for (const bool four : {false, true}) {
        const Sound result = run(noise(300, 6, four ? 1e10F : 1e20F), 44100.0, [&] {
            return hd(true, four, false, 100, false, 1, 0.9, 0.5F, 0.5F, 0.5F);
        });
        EXPECT_FALSE(allFinite(result)) << four;
    }
}

TEST_F(NonFinite, HdScalesBeyondTheFloatsWhereTheHighestSampleIsNextToNothing) {
    const Sound result = run({kTiniest, -1.0F}, 44100.0, [] {
        return hd(true, false, false, 100, true, 0, 0.9, 0.0F, 1.0F, 1.0F);
    });
    EXPECT_EQ(result, (Sound{kInfinity, -kInfinity}));
}

TEST_F(NonFinite, ResamplingOverflowsBetweenTheLargestNumbers) {
    const Sound result =
        run({0.0F, kLargest, kLargest, 0.0F}, 44100.0, [] { return resampleBuffer(2.0F); });
    EXPECT_EQ(result[3], kInfinity);
}

TEST_F(NonFinite, OneNaNMakesAllOfAResampledSoundNaN) {
    // The spline is one system over the whole sound.
    for (const float x :
         run(withSample(noise(100, 7), 50, kNaN), 44100.0, [] { return resampleBuffer(1.5F); })) {
        EXPECT_TRUE(std::isnan(x));
    }
}

TEST_F(NonFinite, ANaNStaysAtItsPlaceInAm) {
    const Sound result =
        run(withSample(noise(100, 9), 50, kNaN), 44100.0, [] { return amBuffer(440.0F, 0.5F); });
    for (std::size_t i = 0; i < result.size(); ++i) {
        EXPECT_EQ(std::isnan(result[i]), i == 50) << i;
    }
}

TEST_F(NonFinite, ANaNSpoilsItsBlockAndTheOneBeforeInPm) {
    const Sound result = run(withSample(noise(550, 10), 250, kNaN), 400.0,
                             [] { return pmBuffer(44.0F, 1.0F, 4.0F); });
    for (std::size_t i = 0; i < result.size(); ++i) {
        EXPECT_EQ(std::isnan(result[i]), i >= 100 && i < 300) << i;
    }
}

TEST_F(NonFinite, ANaNSpoilsAllAfterItInHdAndWithTheFourthAllBeforeItToo) {
    for (const bool four : {false, true}) {
        const Sound result = run(withSample(noise(300, 11), 150, kNaN), 44100.0, [&] {
            return hd(true, four, false, 100, false, 0, 0.9, 0.5F, 0.5F, 0.5F);
        });
        for (std::size_t i = 0; i < result.size(); ++i) {
            EXPECT_EQ(std::isnan(result[i]), four || i >= 150) << four << " " << i;
        }
    }
}

TEST_F(NonFinite, ABadSoundThroughTheHighPassDoesNotSpoilTheNext) {
    const Sound sound = noise(300, 8);
    const auto process = [](const Sound& x) {
        return run(x, 44100.0,
                   [] { return hd(true, true, false, 100, true, 2, 0.9, 0.5F, 0.5F, 0.5F); });
    };
    process(withSample(sound, 299, kNaN));
    EXPECT_TRUE(allFinite(process(sound)));
}

} // namespace
} // namespace zemo::test
