#pragma once

#include <complex>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/FakePlatform.h"

namespace zemo::test {

using Sound = std::vector<float>;
using Series = std::vector<double>;

inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kLargest = std::numeric_limits<float>::max();
inline constexpr float kTiniest = std::numeric_limits<float>::denorm_min();
inline constexpr double kPi = 3.14159265358979323846;

/// Evenly distributed in -peak..peak; the same for the same seed everywhere.
Sound noise(std::size_t count, std::uint32_t seed, float peak = 1.0F);
/// amplitude * cos(2 pi frequency i / rate).
Sound tone(std::size_t count, double frequency, double rate, double amplitude = 1.0);
/// `background` with one other sample at `place`.
Sound withSample(Sound background, std::size_t place, float sample);

/// The amplitude of the component at `frequency` (of the rate) in samples [from, from + count),
/// under a Blackman window.
double amplitudeAt(const Sound& sound, double frequency, std::size_t from, std::size_t count);

/// Equal to the last bit, any NaN being equal to any other.
testing::AssertionResult sameBits(const Sound& left, const Sound& right);
testing::AssertionResult sameBits(const Series& left, const Series& right);

bool allFinite(const Sound& sound);

/// The largest difference, in shares of the larger peak.
double worstShare(const Sound& left, const Sound& right);

/// The fakes, and every state that outlives a run as it is when the program starts.
class DspTest : public testing::Test {
protected:
    DspTest();
    ~DspTest() override;

    FakePlatform platform_;
};

/// What a named function makes of `sound` at `rate`.
template <typename Function> Sound run(const Sound& sound, double rate, Function function);

/// Zeroes hilbert_xv, xv, yv, firxv and dbp.
void forgetRuns();

} // namespace zemo::test

#include "playback/SharedState.h"

template <typename Function>
zemo::test::Sound zemo::test::run(const Sound& sound, double rate, Function function) {
    R = rate;
    loadSound(sound);
    EXPECT_FALSE(function().has_value());
    return currentSound();
}
