#include "ExampleSounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace zemo::examples {
namespace {

constexpr double kTwoPi = 6.283185307179586;

struct Partial {
    double ratio;  ///< of the bell's nominal frequency
    double offset; ///< hertz; pairs a little apart beat slowly
    double level;
    double lifetime; ///< of the whole bell's
};

constexpr std::array kPartials{
    Partial{0.56, 0.0, 1.0, 1.0},  Partial{0.56, 1.0, 0.67, 0.9},   Partial{0.92, 0.0, 1.0, 0.65},
    Partial{0.92, 1.7, 1.8, 0.55}, Partial{1.19, 0.0, 2.67, 0.325}, Partial{1.7, 0.0, 1.67, 0.35},
    Partial{2.0, 0.0, 1.46, 0.25}, Partial{2.74, 0.0, 1.33, 0.2},   Partial{3.0, 0.0, 1.33, 0.15},
    Partial{3.76, 0.0, 1.0, 0.1},  Partial{4.07, 0.0, 1.33, 0.075},
};

std::vector<float> scaledToPeak(const std::vector<double>& sound, double peak) {
    double largest = 0.0;
    for (const double sample : sound) {
        largest = std::max(largest, std::fabs(sample));
    }
    std::vector<float> result;
    result.reserve(sound.size());
    for (const double sample : sound) {
        result.push_back(static_cast<float>(sample * peak / largest));
    }
    return result;
}

void addPartial(std::vector<double>& sound, const Partial& partial, double nominal,
                double seconds) {
    const double step = kTwoPi * (nominal * partial.ratio + partial.offset) / kBellRate;
    const double attack = 0.004 * kBellRate;
    const double decay = 6.9 / (seconds * partial.lifetime * kBellRate); // to -60 dB
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const auto t = static_cast<double>(i);
        sound[i] +=
            partial.level * std::min(1.0, t / attack) * std::exp(-decay * t) * std::sin(step * t);
    }
}

/// Noise that is the same everywhere: the minimal standard generator of Park and Miller.
class Noise {
public:
    double next() {
        state_ = state_ * 48271U % 2147483647U;
        return static_cast<double>(state_) / 1073741823.5 - 1.0;
    }

private:
    std::uint64_t state_ = 20260;
};

struct Pluck {
    double frequency; ///< hertz
    double start;     ///< seconds
};

constexpr std::array kArpeggio{
    Pluck{146.83, 0.0}, Pluck{220.0, 0.22}, Pluck{293.66, 0.44}, Pluck{349.23, 0.66},
    Pluck{440.0, 0.88}, Pluck{587.33, 1.1}, Pluck{698.46, 1.32}, Pluck{880.0, 1.54},
};

/// A delay line of one period, averaged as it goes round; an all-pass fills in the fraction.
void addPluck(std::vector<double>& sound, const Pluck& pluck, Noise& noise) {
    const double period = kHarpRate / pluck.frequency - 0.5;
    const auto length = static_cast<std::size_t>(period);
    const double fraction = period - static_cast<double>(length);
    const double tuning = (1.0 - fraction) / (1.0 + fraction);
    std::vector<double> line(length);
    double soft = 0.0;
    for (double& sample : line) {
        soft += 0.35 * (noise.next() - soft);
        sample = soft;
    }
    double previous = 0.0;
    double tuned = 0.0;
    double before = 0.0;
    std::size_t at = 0;
    for (auto i = static_cast<std::size_t>(pluck.start * kHarpRate); i < sound.size(); ++i) {
        const double out = line[at];
        sound[i] += out;
        const double averaged = 0.4985 * (out + previous);
        previous = out;
        tuned = tuning * averaged + before - tuning * tuned;
        before = averaged;
        line[at] = tuned;
        at = (at + 1) % length;
    }
}

void fadeOut(std::vector<double>& sound, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i) {
        sound[sound.size() - 1 - i] *= static_cast<double>(i) / static_cast<double>(samples);
    }
}

} // namespace

std::vector<float> bell() {
    constexpr double kSeconds = 3.0;
    std::vector<double> sound(static_cast<std::size_t>(kSeconds * kBellRate));
    for (const Partial& partial : kPartials) {
        addPartial(sound, partial, 392.0, kSeconds);
    }
    fadeOut(sound, 4410);
    return scaledToPeak(sound, 0.8);
}

std::vector<float> harp() {
    constexpr double kSeconds = 3.5;
    std::vector<double> sound(static_cast<std::size_t>(kSeconds * kHarpRate));
    Noise noise;
    for (const Pluck& pluck : kArpeggio) {
        addPluck(sound, pluck, noise);
    }
    fadeOut(sound, 9600);
    return scaledToPeak(sound, 0.8);
}

} // namespace zemo::examples
