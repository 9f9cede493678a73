#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "PlainForms.h"
#include "Variants.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"

/// The kernels beside the plain forms on sounds and parameters by chance: noise, tones of whole
/// and of broken periods, squares, constants, clicks, alternations and steps, at levels from -120
/// to 12 dB, with silent and faint stretches.
namespace zemo::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 6;
#else
constexpr int kRounds = 100;
#endif

class Chance {
public:
    explicit Chance(unsigned seed) : random_(seed) {}

    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }
    double oneOf(std::initializer_list<double> choices) {
        return *(choices.begin() + below(choices.size()));
    }

    Sound sound(std::size_t count) {
        const std::size_t kind = below(7);
        const double amplitude = std::pow(10.0, between(-6.0, 0.6));
        const double frequency =
            below(3) == 0 ? 1.0 / static_cast<double>(2 + below(200)) : between(1e-4, 0.5);
        Sound sound(count);
        for (std::size_t i = 0; i < count; ++i) {
            sound[i] =
                static_cast<float>(amplitude * sample(kind, frequency * static_cast<double>(i)));
        }
        for (std::size_t cuts = below(4); cuts > 0; --cuts) {
            const std::size_t from = below(count);
            const auto gain =
                below(2) == 0 ? 0.0F : static_cast<float>(std::pow(10.0, between(-30, 0)));
            std::transform(sound.begin() + static_cast<std::ptrdiff_t>(from),
                           sound.begin() +
                               static_cast<std::ptrdiff_t>(std::min(count, from + below(3000))),
                           sound.begin() + static_cast<std::ptrdiff_t>(from),
                           [gain](float x) { return gain * x; });
        }
        return sound;
    }

private:
    double sample(std::size_t kind, double turns) {
        switch (kind) {
        case 0:
            return between(-1.0, 1.0);
        case 1:
            return std::cos(2.0 * kPi * turns);
        case 2:
            return std::fmod(turns, 1.0) < 0.5 ? 1.0 : -1.0;
        case 3:
            return 1.0;
        case 4:
            return below(500) == 0 ? 1.0 : 0.0;
        case 5:
            return std::fmod(turns, 2.0) < 1.0 ? 0.25 : 1.0;
        default:
            return std::round(between(-4.0, 4.0)) / 4.0;
        }
    }

    std::mt19937 random_;
};

class KernelsOnRandomSounds : public testing::Test {
protected:
    /// Calls check(chance, rate) for every round, each with its own seed.
    template <typename Check> static void inEveryRound(const Check& check) {
        const Variant variant(instructionSets().front(), 2); // the best that there is
        for (int round = 0; round < kRounds; ++round) {
            SCOPED_TRACE(round);
            Chance chance(static_cast<unsigned>(round));
            check(chance, chance.oneOf({44100.0, 48000.0, 88200.0, 96000.0, 22050.0}));
        }
    }
};

TEST_F(KernelsOnRandomSounds, Ssb) {
    inEveryRound([](Chance& chance, double rate) {
        const Sound sound = chance.sound(1 + chance.below(40000));
        const bool upper = chance.below(2) == 0;
        const auto cf = static_cast<float>(chance.below(4) == 0
                                               ? rate / static_cast<double>(1 + chance.below(64))
                                               : chance.between(0.1, 20000.0));
        const auto index = static_cast<float>(chance.between(0.0, 1.5));
        plain::Hilbert hilbert;
        const Sound expected = plain::singleSideband(sound, upper, cf, index, rate, hilbert);
        Sound result(sound.size());
        std::array<double, 513> line{};
        dsp::singleSideband(sound, result, upper ? dsp::Sideband::Upper : dsp::Sideband::Lower, cf,
                            index, rate, line);
        EXPECT_TRUE(sameBits(result, expected)) << cf << " " << index << " " << rate;
    });
}

TEST_F(KernelsOnRandomSounds, Resampling) {
    inEveryRound([](Chance& chance, double rate) {
        const Sound sound = chance.sound(256 + chance.below(60000));
        const auto ratio =
            static_cast<float>(chance.below(3) == 0 ? static_cast<double>(1 + chance.below(8)) /
                                                          static_cast<double>(1 + chance.below(8))
                                                    : std::exp(chance.between(-1.5, 1.5)));
        const auto length = static_cast<std::size_t>(
            dsp::resampledLength(static_cast<std::int64_t>(sound.size()), ratio, rate));
        Sound result(length);
        dsp::resample(sound, result, ratio, rate);
        EXPECT_TRUE(sameBits(result, plain::resampled(sound, length, ratio, rate)))
            << ratio << " " << rate;
    });
}

TEST_F(KernelsOnRandomSounds, AmAndPm) {
    inEveryRound([](Chance& chance, double rate) {
        const Sound sound = chance.sound(1 + chance.below(100000));
        const auto cf = static_cast<float>(std::exp(chance.between(-5.0, 12.0)));
        const auto index = static_cast<float>(std::exp(chance.between(-5.0, 8.0)));
        const auto lpf = static_cast<float>(chance.between(4.0, 32.0));
        Sound result(sound.size());
        dsp::amplitudeModulate(sound, result, cf, index, rate);
        EXPECT_TRUE(sameBits(result, plain::amplitudeModulation(sound, cf, index, rate)))
            << cf << " " << index << " " << rate;
        const auto envelope = dsp::blockEnvelope(sound, dsp::envelopeBlockLength(lpf, rate));
        dsp::phaseModulate(sound, result, envelope, cf, index, rate);
        EXPECT_TRUE(sameBits(result, plain::phaseModulation(sound, cf, index, lpf, rate)))
            << cf << " " << index << " " << lpf << " " << rate;
    });
}

} // namespace
} // namespace zemo::test
