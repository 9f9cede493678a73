#include "dsp/HarmonicStrips.h"

#include <cmath>
#include <memory>

#include "PlainForms.h"
#include "Variants.h"
#include "platform_linux/LinuxServices.h"

namespace zemo::test {
namespace {

using dsp::StripPlan;
using dsp::StripReport;
using plain::Hd;

/// So short that sounds of some hundred samples have strips, and guesses fail.
constexpr StripPlan kShortStrips{.runUp = 16, .filterRunUp = 0, .shortest = 16, .longest = 32};
/// Long enough for most guesses at slopes up to 0.6.
constexpr StripPlan kGoodStrips{.runUp = 128, .filterRunUp = 32, .shortest = 16, .longest = 64};

class HarmonicStrips : public DspTest {
protected:
    void setWorkers(unsigned count) {
        workers_ = std::make_unique<platform::ThreadWorkers>(count);
        platform::services().workers = workers_.get();
    }

    /// Compares samples and histories with the plain form's, for a high-pass that has run before.
    StripReport check(const Sound& sound, const Hd& hd, const StripPlan& plan) {
        plain::HighPass filter{0.25F, -0.125F};
        const Sound expected = plain::harmonics(sound, hd, filter);
        std::array<float, 3> inputs{9.0F, 9.0F, 0.25F};
        std::array<float, 3> outputs{9.0F, 9.0F, -0.125F};
        Sound result(sound.size());
        const HdSettings settings{hd.two,      hd.four,  false,  hd.attack, hd.scale,
                                  hd.hpSelect, hd.slope, hd.mix, hd.knee,   hd.comp};
        const StripReport report =
            dsp::addHarmonicsInStrips(sound, result, settings, inputs, outputs, plan);
        EXPECT_TRUE(sameBits(result, expected)) << describe(hd) << " length " << sound.size();
        if (hd.hpSelect > 0) {
            checkHistories(sound, hd.hpSelect, inputs, outputs);
        } else {
            EXPECT_EQ(inputs, (std::array<float, 3>{9.0F, 9.0F, 0.25F}));
            EXPECT_EQ(outputs, (std::array<float, 3>{9.0F, 9.0F, -0.125F}));
        }
        return report;
    }

private:
    static std::string describe(const Hd& hd) {
        testing::Message text;
        text << (hd.two ? "2 " : "") << (hd.four ? "4 " : "") << "attack " << hd.attack << " scale "
             << hd.scale << " high-pass " << hd.hpSelect << " slope " << hd.slope << " mix "
             << hd.mix << " knee " << hd.knee << " comp " << hd.comp;
        return text.GetString();
    }

    static void checkHistories(const Sound& sound, std::int32_t hpSelect,
                               const std::array<float, 3>& inputs,
                               const std::array<float, 3>& outputs) {
        plain::HighPass filter{0.25F, -0.125F};
        const Sound filtered = filter(sound, hpSelect - 1);
        const float gain = hpSelect == 2 ? 1.106008476F : 1.051663921F;
        Sound in{0.0F, 0.0F, 0.25F};
        Sound out{0.0F, 0.0F, -0.125F};
        for (std::size_t i = 0; i < sound.size(); ++i) {
            in.push_back(sound[i] / gain);
            out.push_back(filtered[i]);
        }
        EXPECT_TRUE(sameBits(Sound(inputs.begin(), inputs.end()), Sound(in.end() - 3, in.end())));
        EXPECT_TRUE(
            sameBits(Sound(outputs.begin(), outputs.end()), Sound(out.end() - 3, out.end())));
    }

    std::unique_ptr<platform::ThreadWorkers> workers_;
};

/// The combination of that number, of many.
Hd combination(std::uint32_t number) {
    const auto pick = [&](std::uint32_t choices) {
        const std::uint32_t choice = number % choices;
        number /= choices;
        return choice;
    };
    const std::array slopes{0.6, 0.9, 0.995, 0.998};
    const std::array amounts{0.0F, 0.5F, 1.0F};
    const std::array attacks{0, 5, 100, 700};
    Hd hd;
    hd.hpSelect = static_cast<std::int32_t>(pick(3));
    hd.four = pick(2) == 1;
    hd.slope = slopes.at(pick(4));
    hd.attack = attacks.at(pick(4));
    hd.scale = pick(2) == 1;
    hd.knee = amounts.at(pick(3));
    hd.mix = amounts.at((pick(3) + 1) % 3);
    hd.comp = amounts.at((pick(3) + 2) % 3);
    hd.two = pick(3) != 1;
    return hd;
}
constexpr std::uint32_t kCombinations = 3U * 2 * 4 * 4 * 2 * 3 * 3 * 3 * 3;

TEST_F(HarmonicStrips, EveryLengthIsThePlainFormsToTheBit) {
    underEveryVariant([&] {
        const Sound sound = noise(2000, 1, 1.5F);
        std::uint32_t number = 0;
        for (std::size_t length = 0; length <= 2000; length += length < 300 ? 1 : 17) {
            const Sound head(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length));
            check(head, combination(number), length % 2 == 0 ? kShortStrips : kGoodStrips);
            number = (number + 1009) % kCombinations;
        }
    });
}

TEST_F(HarmonicStrips, EverySettingIsThePlainFormsToTheBit) {
    const Sound sound = noise(900, 2, 0.8F);
    for (const std::int64_t set : instructionSets()) {
        const Variant variant(set, 2);
        for (std::uint32_t number = 0; number < kCombinations; number += 37) {
            check(sound, combination(number), number % 2 == 0 ? kShortStrips : kGoodStrips);
        }
    }
}

TEST_F(HarmonicStrips, LongSoundsAreThePlainFormsToTheBit) {
    const Sound sound = noise(1000003, 3);
    for (const unsigned workers : {1U, 2U, 3U}) {
        setWorkers(workers);
        const Hd hd{.four = true,
                    .attack = 500,
                    .scale = true,
                    .hpSelect = static_cast<std::int32_t>(workers - 1),
                    .slope = 0.995,
                    .mix = 0.5F,
                    .knee = 0.5F,
                    .comp = 0.5F};
        HdSettings settings;
        settings.slope = hd.slope;
        settings.hpSelect = hd.hpSelect;
        const StripReport report = check(sound, hd, dsp::planStrips(settings));
        EXPECT_GE(report.strips, 16U);
        EXPECT_LE(report.redone, sound.size() / 10);
    }
}

TEST_F(HarmonicStrips, AGoodGuessNeedsNoRedoing) {
    setWorkers(2);
    const StripReport report =
        check(noise(20000, 4), {.four = true, .slope = 0.6}, {256, 0, 16, 512});
    EXPECT_GE(report.strips, 32U);
    EXPECT_EQ(report.failed, 0U);
    EXPECT_EQ(report.redone, 0U);
}

TEST_F(HarmonicStrips, AFailedGuessIsRedoneOnlyUntilTheStatesMeet) {
    setWorkers(1);
    const StripReport report = check(noise(200000, 5), {.slope = 0.9}, {16, 0, 16, 12000});
    EXPECT_EQ(report.failed, report.strips);
    EXPECT_GT(report.redone, 0U);
    EXPECT_LE(report.redone, report.strips * 1000);
}

TEST_F(HarmonicStrips, GuessesThatMeetNowhereAreRedoneThroughout) {
    setWorkers(2);
    const StripReport report = check(noise(5000, 6), {.four = true, .slope = 0.998}, kShortStrips);
    EXPECT_EQ(report.failed, report.strips);
    EXPECT_GE(report.redone, 4900U);
}

TEST_F(HarmonicStrips, APoleOnTheCircleIsDoneInOne) {
    for (const double slope : {1.0, 1.5, -0.5, std::nan(""), 0.9999}) {
        HdSettings settings;
        settings.slope = slope;
        const StripReport report =
            check(noise(3000, 7), {.four = true, .slope = slope}, dsp::planStrips(settings));
        EXPECT_EQ(report.strips, 0U) << slope;
    }
}

TEST_F(HarmonicStrips, WhatIsNoNumberIsTheSameAtEveryPlace) {
    underEveryVariant([&] {
        const Sound sound = noise(700, 8);
        std::uint32_t number = 0;
        for (std::size_t place = 0; place < sound.size(); place += 11) {
            for (const float odd : {kNaN, kInfinity, -kInfinity, kLargest}) {
                check(withSample(sound, place, odd), combination(number), kShortStrips);
                number = (number + 1013) % kCombinations;
            }
        }
    });
}

TEST_F(HarmonicStrips, OneNaNLateInTheSoundReachesTheFourthFromItsFirstSample) {
    setWorkers(2);
    for (const std::int32_t hpSelect : {0, 1}) {
        const Hd hd{.two = false, .four = true, .hpSelect = hpSelect, .slope = 0.6};
        for (const std::size_t place : {0UL, 100UL, 2500UL, 4999UL}) {
            check(withSample(noise(5000, 9), place, kNaN), hd, kGoodStrips);
        }
    }
}

/// Noise between silences, the last of them long enough for denormal numbers at slopes up to 0.9.
Sound withPauses(std::size_t length) {
    Sound sound = noise(length, 10);
    std::fill(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length / 5), 0.0F);
    std::fill(sound.begin() + static_cast<std::ptrdiff_t>(length / 3),
              sound.begin() + static_cast<std::ptrdiff_t>(length / 2), -0.0F);
    std::fill(sound.begin() + static_cast<std::ptrdiff_t>(length / 2),
              sound.begin() + static_cast<std::ptrdiff_t>(length * 9 / 10), 0.0F);
    return sound;
}

TEST_F(HarmonicStrips, SilenceAndItsDenormalsAreThePlainFormsToTheBit) {
    underEveryVariant([&] {
        std::uint32_t number = 0;
        for (const std::size_t length : {1000U, 40000U}) {
            for (int i = 0; i < (length < 2000 ? 24 : 2); ++i) {
                check(withPauses(length), combination(number), kGoodStrips);
                number = (number + 1009) % kCombinations;
            }
        }
    });
}

TEST_F(HarmonicStrips, SilenceIsCopiedNotRedone) {
    setWorkers(2);
    const Hd hd{.four = true, .slope = 0.6, .mix = 0.5F, .knee = 0.5F, .comp = 0.5F};
    Sound sound = noise(400000, 11);
    std::fill(sound.begin() + 100000, sound.end(), 0.0F);
    const StripReport report = check(sound, hd, {256, 0, 16, 4096});
    EXPECT_GT(report.failed, 0U);
    EXPECT_LE(report.redone, 30000U);
}

TEST_F(HarmonicStrips, ATonesWholePeriodsAreCopiedNotRedone) {
    setWorkers(2);
    Sound sound(300000);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        sound[i] = static_cast<float>(0.8 * std::sin(2.0 * kPi * static_cast<double>(i % 48) / 48));
    }
    for (const std::int32_t hpSelect : {0, 1, 2}) {
        for (const double slope : {0.9, 0.98}) {
            const Hd hd{.four = true, .hpSelect = hpSelect, .slope = slope, .knee = 0.5F};
            const StripReport report = check(sound, hd, {4096, 2048, 16, 32768});
            EXPECT_LE(report.redone, 150000U) << hpSelect << " " << slope;
        }
    }
}

/// So quiet behind its start that the fourth's blocker gets a constant, but not the second's.
Sound quietNoise(std::size_t length) {
    Sound sound = noise(length, 12, 1e-5F);
    sound.at(300) = 1.0F;
    for (float& sample : sound) {
        sample = sample == 0.0F ? 1e-6F : sample;
    }
    return sound;
}
const Hd kQuiet{.four = true, .slope = 0.6, .mix = 0.5F, .knee = 0.5F, .comp = 0.5F};

TEST_F(HarmonicStrips, WhatIsLeftInTheFourthsBlockerIsUnheardInQuietPassages) {
    underEveryVariant([&] {
        const StripReport report = check(quietNoise(20000), kQuiet, kGoodStrips);
        EXPECT_GE(report.unheard, 100U);
        EXPECT_LE(report.redone, 3000U);
    });
}

TEST_F(HarmonicStrips, AZeroInAQuietPassageHasItsSign) {
    setWorkers(2);
    Hd hd = kQuiet;
    hd.two = false; // the second would hide it
    for (std::size_t loud = 300; loud < 308; ++loud) {
        const Sound sound = withSample(quietNoise(8000), loud, -1.0F);
        for (std::size_t place = 4000; place < 8000; place += place < 7990 ? 331 : 1) {
            check(withSample(sound, place, -0.0F), hd, kGoodStrips);
        }
        for (std::size_t place = 7800; place < 8000; place += 7) {
            check(withSample(sound, place, -0.0F), hd, kGoodStrips);
        }
    }
    hd.mix = 1.0F; // all of the passage is zeros
    check(quietNoise(20000), hd, kGoodStrips);
}

TEST_F(HarmonicStrips, AfterAQuietPassageTheStateIsKnownAgain) {
    underEveryVariant([&] {
        Sound sound = quietNoise(20000);
        const Sound loud = noise(20000, 14);
        std::copy(loud.begin() + 9000, loud.begin() + 9600, sound.begin() + 9000);
        std::fill(sound.begin() + 14000, sound.begin() + 17000, 0.0F);
        std::copy(loud.begin() + 17000, loud.begin() + 17100, sound.begin() + 17000);
        check(sound, kQuiet, kGoodStrips);
        check(sound, kQuiet, kShortStrips);
    });
}

TEST_F(HarmonicStrips, QuietSoundsAreThePlainFormsToTheBit) {
    underEveryVariant([&] {
        for (const float peak : {1e-5F, 1e-9F, 1e-42F}) {
            // One loud sample, so that the driver stays quiet.
            const Sound sound = withSample(noise(4000, 12, peak), 1234, 1.0F);
            for (std::uint32_t bits = 0; bits < 16; ++bits) {
                check(sound,
                      {.two = (bits & 1U) != 0,
                       .four = (bits & 2U) != 0,
                       .scale = true,
                       .hpSelect = (bits & 4U) != 0 ? 1 : 0,
                       .slope = 0.6,
                       .mix = (bits & 8U) != 0 ? 0.5F : 1.0F,
                       .knee = 0.5F,
                       .comp = 0.5F},
                      kGoodStrips);
            }
        }
    });
}

TEST_F(HarmonicStrips, ADecayToNothingIsThePlainFormsToTheBit) {
    underEveryVariant([&] {
        Sound sound = noise(30000, 13);
        double level = 1.0;
        for (float& sample : sound) {
            sample *= static_cast<float>(level);
            level *= 0.994;
        }
        for (const double slope : {0.6, 0.9, 0.98}) {
            check(sound,
                  {.four = true,
                   .scale = true,
                   .slope = slope,
                   .mix = 0.5F,
                   .knee = 0.5F,
                   .comp = 0.5F},
                  kGoodStrips);
        }
    });
}

TEST_F(HarmonicStrips, ThePeakIsTheSameAtEveryPlaceAndLength) {
    underEveryVariant([&] {
        for (std::size_t length = 0; length < 70; ++length) {
            for (std::size_t place = 0; place < length; ++place) {
                const Sound sound = withSample(Sound(length, kNaN), place, -0.75F);
                EXPECT_EQ(dsp::peakMagnitude(sound), 0.75F);
            }
            EXPECT_EQ(dsp::peakMagnitude(Sound(length, kNaN)), 0.0F);
            EXPECT_EQ(dsp::peakMagnitude(Sound(length, -kInfinity)), length > 0 ? kInfinity : 0.0F);
        }
    });
}

} // namespace
} // namespace zemo::test
