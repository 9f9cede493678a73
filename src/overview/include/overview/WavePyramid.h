#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace zemo::overview {

/// What a stretch of a sound looks like.
struct WaveColumn {
    float low = std::numeric_limits<float>::infinity();   ///< least and greatest finite sample;
    float high = -std::numeric_limits<float>::infinity(); ///< low > high: there is none
    float rms = 0.0F;       ///< a sample that is not finite counts as 0
    bool beyond = false;    ///< has a finite sample beyond -1..1
    bool notFinite = false; ///< has an infinite sample, or one that is no number

    bool hasFinite() const noexcept { return low <= high; }
};

/// A whole sound in buckets, buckets of four buckets, and so on, so that a picture of it costs the
/// same whatever its length.
///
/// The buckets are of one sample for sounds of up to 65536 samples, of twice as many for those up
/// to twice as long, and never of more than 256: then the pyramid takes 2.1 % of the sound's
/// memory, and never more than 2.8 MB for a shorter one.
class WavePyramid {
public:
    /// [worker] Null when there is no memory, or when this thread's work is asked to stop: it looks
    /// every 16384 samples.
    static std::shared_ptr<const WavePyramid> build(std::span<const float> samples);

    /// [any] Column i shows the samples from first + i * samplesPerColumn on and before the next
    /// column's, at least one; bounds are rounded down. Outside the sound a column is empty. A
    /// column's samples are widened to whole buckets: of these low, high and the flags are exact,
    /// the rms within a millionth.
    std::vector<WaveColumn> columns(double first, double samplesPerColumn, std::size_t count) const;

    /// [any] The same for the samples from `first` to before `end`.
    WaveColumn stretch(std::int64_t first, std::int64_t end) const;

    /// [any] What that costs: how many buckets stretch() adds up, at most six of each level but the
    /// last.
    std::size_t bucketsRead(std::int64_t first, std::int64_t end) const;

    std::int64_t count() const noexcept { return count_; } ///< samples
    std::int64_t bucketSamples() const noexcept { return bucketSamples_; }
    std::int64_t beyondCount() const noexcept { return beyondCount_; }
    std::int64_t notFiniteCount() const noexcept { return notFiniteCount_; }
    float
    peak() const noexcept; ///< the greatest magnitude of a finite sample; 0 when there is none
    std::size_t bytes() const noexcept;

private:
    using Level = std::vector<WaveColumn>;
    explicit WavePyramid(std::int64_t count);
    bool scan(std::span<const float> samples);
    bool stack();
    std::int64_t samplesOf(std::size_t level, std::size_t index) const noexcept;
    template <typename Visit>
    void visitBuckets(std::int64_t first, std::int64_t end, const Visit& visit) const;

    std::int64_t count_ = 0;
    std::int64_t bucketSamples_ = 1;
    std::int64_t beyondCount_ = 0;
    std::int64_t notFiniteCount_ = 0;
    std::vector<Level> levels_; ///< the last one has a single column
};

} // namespace zemo::overview
