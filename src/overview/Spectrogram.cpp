#include "overview/Spectrogram.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <new>
#include <numbers>

#include "platform/Progress.h"

namespace zemo::overview {
namespace {

constexpr double kLowestHeard = 20.0;        ///< hertz
constexpr std::size_t kMostFrames = 4;       ///< in a column
constexpr float kLoudest = 1099511627776.0F; ///< 2^40: no sum of squares of these overflows

struct FreePlan {
    void operator()(kiss_fftr_cfg plan) const noexcept { kiss_fftr_free(plan); }
};
using Plan = std::unique_ptr<kiss_fftr_state, FreePlan>;

float tamed(float x) {
    return std::isfinite(x) ? std::clamp(x, -kLoudest, kLoudest) : 0.0F;
}

float inDecibels(double power) {
    const double least = std::pow(10.0, static_cast<double>(kFloorDecibels) / 10.0);
    return power <= least ? kFloorDecibels : static_cast<float>(10.0 * std::log10(power));
}

/// The spectra of a sound's frames.
class Analyser {
public:
    Analyser(std::span<const float> samples, std::size_t frame)
        : samples_(samples),
          plan_(kiss_fftr_alloc(static_cast<int>(frame), 0, nullptr, nullptr)),
          window_(frame),
          frame_(frame),
          spectrum_(frame / 2 + 1) {
        if (plan_ == nullptr) {
            throw std::bad_alloc();
        }
        for (std::size_t i = 0; i < frame; ++i) {
            const double turn = static_cast<double>(i) / static_cast<double>(frame);
            window_[i] = static_cast<float>(0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * turn));
        }
        scale_ =
            4.0 / static_cast<double>(frame); // the window's mean is 1/2, a sine has two halves
    }

    std::size_t bins() const { return spectrum_.size(); }

    /// The mean power of that many frames spread over a stretch. False: asked to stop.
    bool average(double first, double length, std::size_t frames, std::span<double> powers) {
        std::fill(powers.begin(), powers.end(), 0.0);
        const double share = 1.0 / static_cast<double>(frames);
        for (std::size_t i = 0; i < frames; ++i) {
            if (platform::isStopRequested()) {
                return false;
            }
            add(first + (static_cast<double>(i) + 0.5) * share * length, share, powers);
        }
        return true;
    }

private:
    /// Adds the power of the frame around `centre` to `powers`, in `share` of it.
    void add(double centre, double share, std::span<double> powers) {
        const auto first =
            static_cast<std::ptrdiff_t>(centre) - static_cast<std::ptrdiff_t>(window_.size() / 2);
        for (std::size_t i = 0; i < window_.size(); ++i) {
            const std::ptrdiff_t at = first + static_cast<std::ptrdiff_t>(i);
            const bool inside = at >= 0 && at < static_cast<std::ptrdiff_t>(samples_.size());
            frame_[i] = inside ? tamed(samples_[static_cast<std::size_t>(at)]) * window_[i] : 0.0F;
        }
        kiss_fftr(plan_.get(), frame_.data(), spectrum_.data());
        for (std::size_t bin = 0; bin < spectrum_.size(); ++bin) {
            const double real = static_cast<double>(spectrum_[bin].r) * scale_;
            const double imaginary = static_cast<double>(spectrum_[bin].i) * scale_;
            powers[bin] += share * (real * real + imaginary * imaginary);
        }
    }

    std::span<const float> samples_;
    Plan plan_;
    std::vector<float> window_;
    std::vector<float> frame_;
    std::vector<kiss_fft_cpx> spectrum_;
    double scale_ = 0.0;
};

/// Where a row lies among the spectrum's bins: from `first` to `last`, or between these two.
struct Row {
    std::size_t first = 0;
    std::size_t last = 0;
    float part = -1.0F; ///< of the way from first to last; negative: the loudest of them
};

std::vector<Row> placeRows(const Spectrogram& picture, double binsPerHertz, std::size_t bins) {
    const double ratio = picture.highestFrequency() / picture.lowestFrequency();
    const auto place = [&](double row) {
        const double part = row / static_cast<double>(picture.rows());
        return picture.lowestFrequency() * std::pow(ratio, part) * binsPerHertz;
    };
    const auto bin = [bins](double at) {
        return std::min(static_cast<std::size_t>(std::max(at, 0.0)), bins - 1);
    };
    std::vector<Row> rows(picture.rows());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const double below = place(static_cast<double>(i));
        const double above = place(static_cast<double>(i) + 1.0);
        if (above - below >= 1.0) {
            rows[i] = {bin(std::ceil(below)), bin(std::floor(above))};
        } else {
            const double middle = place(static_cast<double>(i) + 0.5);
            rows[i] = {bin(std::floor(middle)), bin(std::floor(middle) + 1.0),
                       static_cast<float>(middle - std::floor(middle))};
        }
    }
    return rows;
}

float levelOf(const Row& row, std::span<const float> decibels) {
    if (row.part >= 0.0F) {
        return decibels[row.first] + row.part * (decibels[row.last] - decibels[row.first]);
    }
    const auto from = decibels.begin() + static_cast<std::ptrdiff_t>(row.first);
    return *std::max_element(from, decibels.begin() + static_cast<std::ptrdiff_t>(row.last) + 1);
}

} // namespace

std::size_t Spectrogram::frameSamples(double rate) noexcept {
    return std::bit_ceil(static_cast<std::size_t>(std::clamp(rate / 16.0, 256.0, 16384.0)));
}

Spectrogram::Spectrogram(std::size_t count, double rate, Size most)
    : columns_(std::clamp<std::size_t>(count / stepSamples(rate), 1, most.columns)),
      rows_(most.rows),
      lowest_(std::min(kLowestHeard, rate / 200.0)),
      highest_(rate / 2.0),
      levels_(columns_ * rows_, kFloorDecibels) {}

double Spectrogram::heightOf(double frequency) const noexcept {
    return std::log(frequency / lowest_) / std::log(highest_ / lowest_);
}

std::shared_ptr<const Spectrogram> Spectrogram::build(std::span<const float> samples, double rate,
                                                      Size most) {
    if (!(rate > 0.0) || !std::isfinite(rate) || samples.empty() || most.columns == 0 ||
        most.rows == 0) {
        return nullptr;
    }
    try {
        const std::shared_ptr<Spectrogram> made(new Spectrogram(samples.size(), rate, most));
        const std::size_t frame = frameSamples(rate);
        Analyser analyser(samples, frame);
        const std::vector<Row> rows =
            placeRows(*made, static_cast<double>(frame) / rate, analyser.bins());
        const double step =
            static_cast<double>(samples.size()) / static_cast<double>(made->columns_);
        const auto frames = static_cast<std::size_t>(
            std::clamp(step / static_cast<double>(frame), 1.0, static_cast<double>(kMostFrames)));
        std::vector<double> powers(analyser.bins());
        std::vector<float> decibels(analyser.bins());
        for (std::size_t column = 0; column < made->columns_; ++column) {
            const double first = static_cast<double>(column) * step;
            if (!analyser.average(first, step, frames, powers)) {
                return nullptr;
            }
            std::transform(powers.begin(), powers.end(), decibels.begin(), inDecibels);
            for (std::size_t row = 0; row < rows.size(); ++row) {
                made->levels_[column * made->rows_ + row] = levelOf(rows[row], decibels);
            }
        }
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace zemo::overview
