#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace zemo::overview {

inline constexpr float kFloorDecibels = -120.0F;

/// How loud a sound is by time and frequency, as a picture that costs the same whatever the sound's
/// length.
///
/// Each column is the mean power of up to four frames under a Hann window, of about a twelfth of a
/// second each (4096 samples at 48 kHz). The frequency axis is logarithmic, as hearing is. A row
/// that covers several of a frame's frequencies shows the loudest of them; one between two of them
/// lies on the line through both, in decibels.
class Spectrogram {
public:
    struct Size {
        std::size_t columns = 1200; ///< at most: short sounds have fewer, see stepSamples
        std::size_t rows = 512;
    };

    /// [worker] `rate` in hertz. 0 dB is a sine of amplitude 1; samples that are not finite count
    /// as 0, those beyond 2^40 as that. Null when there is no memory or no such rate, or when this
    /// thread's work is asked to stop: it looks before every frame.
    static std::shared_ptr<const Spectrogram> build(std::span<const float> samples, double rate,
                                                    Size most = {1200, 512});

    std::size_t columns() const noexcept { return columns_; }
    std::size_t rows() const noexcept { return rows_; } ///< the first one is the lowest
    float decibels(std::size_t column, std::size_t row) const noexcept {
        return levels_[column * rows_ + row]; ///< at least kFloorDecibels
    }
    double lowestFrequency() const noexcept { return lowest_; }   ///< of the first row's lower edge
    double highestFrequency() const noexcept { return highest_; } ///< of the last row's upper edge
    /// How far up the picture a frequency lies: 0 at the lower edge, 1 at the upper one.
    double heightOf(double frequency) const noexcept;

    /// [any] The frame's length at that rate, a power of two.
    static std::size_t frameSamples(double rate) noexcept;
    /// [any] The least distance of two columns.
    static std::size_t stepSamples(double rate) noexcept {
        return std::max<std::size_t>(frameSamples(rate) / 32, 1);
    }

private:
    Spectrogram(std::size_t count, double rate, Size most);

    std::size_t columns_;
    std::size_t rows_;
    double lowest_;
    double highest_;
    std::vector<float> levels_; ///< column by column
};

} // namespace zemo::overview
