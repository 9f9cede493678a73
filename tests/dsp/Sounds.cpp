#include "Sounds.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

#include "dsp/Filters.h"
#include "dsp/HilbertTransformer.h"

namespace zemo::test {
namespace {

template <typename Bits, typename Number>
testing::AssertionResult compareBits(const std::vector<Number>& left,
                                     const std::vector<Number>& right) {
    if (left.size() != right.size()) {
        return testing::AssertionFailure() << "lengths " << left.size() << " and " << right.size();
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        const bool bothNaN = std::isnan(left[i]) && std::isnan(right[i]);
        if (!bothNaN && std::bit_cast<Bits>(left[i]) != std::bit_cast<Bits>(right[i])) {
            return testing::AssertionFailure()
                   << "at " << i << " of " << left.size() << ": " << testing::PrintToString(left[i])
                   << " and " << testing::PrintToString(right[i]);
        }
    }
    return testing::AssertionSuccess();
}

} // namespace

Sound noise(std::size_t count, std::uint32_t seed, float peak) {
    std::mt19937 bits(seed);
    Sound sound(count);
    for (float& sample : sound) {
        const auto whole = static_cast<std::int32_t>(bits() >> 8U) - 0x800000;
        sample = peak * (static_cast<float>(whole) / 8388608.0F);
    }
    return sound;
}

Sound tone(std::size_t count, double frequency, double rate, double amplitude) {
    Sound sound(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double turns = frequency * static_cast<double>(i) / rate;
        sound[i] = static_cast<float>(amplitude * std::cos(2.0 * kPi * turns));
    }
    return sound;
}

Sound withSample(Sound background, std::size_t place, float sample) {
    background.at(place) = sample;
    return background;
}

double amplitudeAt(const Sound& sound, double frequency, std::size_t from, std::size_t count) {
    std::complex<double> sum = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double place = 2.0 * kPi * static_cast<double>(i) / static_cast<double>(count);
        const double weight = 0.42 - 0.5 * std::cos(place) + 0.08 * std::cos(2.0 * place);
        const double angle = -2.0 * kPi * frequency * static_cast<double>(i);
        sum += weight * static_cast<double>(sound.at(from + i)) * std::polar(1.0, angle);
        weights += weight;
    }
    return 2.0 * std::abs(sum) / weights;
}

testing::AssertionResult sameBits(const Sound& left, const Sound& right) {
    return compareBits<std::uint32_t>(left, right);
}

testing::AssertionResult sameBits(const Series& left, const Series& right) {
    return compareBits<std::uint64_t>(left, right);
}

bool allFinite(const Sound& sound) {
    return std::all_of(sound.begin(), sound.end(), [](float x) { return std::isfinite(x); });
}

double worstShare(const Sound& left, const Sound& right) {
    EXPECT_EQ(left.size(), right.size());
    double peak = 0.0;
    double worst = 0.0;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
        const auto a = static_cast<double>(left[i]);
        const auto b = static_cast<double>(right[i]);
        peak = std::max({peak, std::fabs(a), std::fabs(b)});
        worst = std::max(worst, std::fabs(a - b));
    }
    return worst / peak;
}

DspTest::DspTest() {
    forgetRuns();
}

DspTest::~DspTest() {
    forgetRuns();
}

void forgetRuns() {
    hilbert_xv.fill(0.0);
    xv.fill(0.0F);
    yv.fill(0.0F);
    firxv.fill(0.0F);
    dbp = false;
}

} // namespace zemo::test
