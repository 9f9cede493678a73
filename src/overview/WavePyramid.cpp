#include "overview/WavePyramid.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <new>

#include "platform/Progress.h"

namespace zemo::overview {
namespace {

constexpr std::int64_t kFineBuckets = 65536;  ///< as many as this, or buckets of kLargest
constexpr std::int64_t kLargest = 256;        ///< samples
constexpr std::size_t kBranching = 4;         ///< buckets in one of the next level
constexpr std::int64_t kBetweenLooks = 16384; ///< samples, or buckets
constexpr std::size_t kLanes = 8;
constexpr std::uint32_t kMagnitude = 0x7fffffffU;
constexpr std::uint32_t kOne =
    0x3f800000U; ///< the bits of 1.0F; those of magnitudes keep their order
constexpr std::uint32_t kInfinity = 0x7f800000U;

struct Counts {
    std::int64_t beyond = 0;
    std::int64_t notFinite = 0;
};

float rootMean(double squares, std::int64_t samples) {
    return static_cast<float>(std::sqrt(squares / static_cast<double>(samples)));
}

std::uint32_t magnitudeBits(float x) noexcept {
    return std::bit_cast<std::uint32_t>(x) & kMagnitude;
}

/// Any samples, one by one.
WaveColumn scanPlainly(std::span<const float> samples, Counts& counts) {
    WaveColumn column;
    double squares = 0.0;
    for (const float x : samples) {
        if (magnitudeBits(x) >= kInfinity) {
            column.notFinite = true;
            ++counts.notFinite;
            continue;
        }
        if (magnitudeBits(x) > kOne) {
            column.beyond = true;
            ++counts.beyond;
        }
        column.low = std::min(column.low, x);
        column.high = std::max(column.high, x);
        squares += static_cast<double>(x) * static_cast<double>(x);
    }
    column.rms = rootMean(squares, static_cast<std::int64_t>(samples.size()));
    return column;
}

/// Whole groups of lanes, which compile to vectors. False: there is more in them than this sees.
bool scanInLanes(std::span<const float> samples, WaveColumn& column) {
    std::array<float, kLanes> low{};
    std::array<float, kLanes> high{};
    std::array<double, kLanes> squares{};
    std::array<std::uint32_t, kLanes> odd{};
    std::copy_n(samples.begin(), kLanes, low.begin());
    high = low;
    for (std::size_t i = 0; i < samples.size(); i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float x = samples[i + lane];
            low[lane] = x < low[lane] ? x : low[lane];
            high[lane] = x > high[lane] ? x : high[lane];
            squares[lane] += static_cast<double>(x) * static_cast<double>(x);
            odd[lane] |= kOne - magnitudeBits(x); // negative, so its top bit is set, beyond 1
        }
    }
    std::uint32_t anyOdd = 0;
    double sum = 0.0;
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        column.low = std::min(column.low, low[lane]);
        column.high = std::max(column.high, high[lane]);
        sum += squares[lane];
        anyOdd |= odd[lane];
    }
    column.rms = rootMean(sum, static_cast<std::int64_t>(samples.size()));
    return anyOdd <= kMagnitude;
}

WaveColumn scanBucket(std::span<const float> samples, Counts& counts) {
    WaveColumn column;
    if (samples.size() % kLanes == 0 && scanInLanes(samples, column)) {
        return column;
    }
    return scanPlainly(samples, counts);
}

/// Several columns made one.
class Sum {
public:
    void add(const WaveColumn& column, std::int64_t samples) {
        column_.low = std::min(column_.low, column.low);
        column_.high = std::max(column_.high, column.high);
        column_.beyond = column_.beyond || column.beyond;
        column_.notFinite = column_.notFinite || column.notFinite;
        squares_ += static_cast<double>(column.rms) * static_cast<double>(column.rms) *
                    static_cast<double>(samples);
        samples_ += samples;
    }

    WaveColumn total() {
        if (samples_ > 0) {
            column_.rms = rootMean(squares_, samples_);
        }
        return column_;
    }

private:
    WaveColumn column_;
    double squares_ = 0.0;
    std::int64_t samples_ = 0;
};

} // namespace

std::shared_ptr<const WavePyramid> WavePyramid::build(std::span<const float> samples) {
    try {
        const std::shared_ptr<WavePyramid> made(
            new WavePyramid(static_cast<std::int64_t>(samples.size())));
        if (!made->scan(samples)) {
            return nullptr;
        }
        return made->stack() ? made : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

WavePyramid::WavePyramid(std::int64_t count) : count_(count) {
    while (bucketSamples_ < kLargest && bucketSamples_ * kFineBuckets < count) {
        bucketSamples_ *= 2;
    }
}

/// The lowest level. It grows as it is filled, so that no long stretch of memory is touched at
/// once.
bool WavePyramid::scan(std::span<const float> samples) {
    const auto bucket = static_cast<std::size_t>(bucketSamples_);
    Level& level = levels_.emplace_back();
    level.reserve((samples.size() + bucket - 1) / bucket);
    Counts counts;
    for (std::size_t first = 0; first < samples.size(); first += bucket) {
        if (first % kBetweenLooks == 0 && platform::isStopRequested()) {
            return false;
        }
        level.push_back(
            scanBucket(samples.subspan(first, std::min(bucket, samples.size() - first)), counts));
    }
    beyondCount_ = counts.beyond;
    notFiniteCount_ = counts.notFinite;
    return true;
}

bool WavePyramid::stack() {
    while (levels_.back().size() > 1) {
        const std::size_t below = levels_.size() - 1;
        const std::size_t size = levels_[below].size();
        Level level;
        level.reserve((size + kBranching - 1) / kBranching);
        for (std::size_t first = 0; first < size; first += kBranching) {
            if (first % kBetweenLooks == 0 && platform::isStopRequested()) {
                return false;
            }
            Sum sum;
            for (std::size_t i = first; i < std::min(first + kBranching, size); ++i) {
                sum.add(levels_[below][i], samplesOf(below, i));
            }
            level.push_back(sum.total());
        }
        levels_.push_back(std::move(level));
    }
    return true;
}

/// The last bucket of a level may have fewer than the others.
std::int64_t WavePyramid::samplesOf(std::size_t level, std::size_t index) const noexcept {
    const std::int64_t size = bucketSamples_ << (2 * level);
    return std::min(size, count_ - static_cast<std::int64_t>(index) * size);
}

std::vector<WaveColumn> WavePyramid::columns(double first, double samplesPerColumn,
                                             std::size_t count) const {
    const auto bound = [&](std::size_t column) {
        const double at = std::floor(first + static_cast<double>(column) * samplesPerColumn);
        return static_cast<std::int64_t>(std::clamp(at, -1.0, static_cast<double>(count_) + 1.0));
    };
    std::vector<WaveColumn> result(count);
    std::int64_t begin = bound(0);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t end = bound(i + 1);
        result[i] = stretch(begin, std::max(end, begin + 1));
        begin = end;
    }
    return result;
}

/// At each level only what is not in whole buckets of the next one, on either side.
template <typename Visit>
void WavePyramid::visitBuckets(std::int64_t first, std::int64_t end, const Visit& visit) const {
    first = std::max<std::int64_t>(first, 0);
    end = std::min(end, count_);
    if (first >= end) {
        return;
    }
    auto from = static_cast<std::size_t>(first / bucketSamples_);
    auto to = static_cast<std::size_t>((end + bucketSamples_ - 1) / bucketSamples_);
    for (std::size_t level = 0; from < to; ++level) {
        const bool isTop = level + 1 == levels_.size();
        for (; from < to && (isTop || from % kBranching != 0); ++from) {
            visit(level, from);
        }
        for (; from < to && to % kBranching != 0; --to) {
            visit(level, to - 1);
        }
        from /= kBranching;
        to /= kBranching;
    }
}

WaveColumn WavePyramid::stretch(std::int64_t first, std::int64_t end) const {
    Sum sum;
    visitBuckets(first, end, [&](std::size_t level, std::size_t index) {
        sum.add(levels_[level][index], samplesOf(level, index));
    });
    return sum.total();
}

std::size_t WavePyramid::bucketsRead(std::int64_t first, std::int64_t end) const {
    std::size_t read = 0;
    visitBuckets(first, end, [&](std::size_t, std::size_t) { ++read; });
    return read;
}

float WavePyramid::peak() const noexcept {
    if (levels_.back().empty() || !levels_.back().front().hasFinite()) {
        return 0.0F;
    }
    const WaveColumn& all = levels_.back().front();
    return std::max(std::fabs(all.low), std::fabs(all.high));
}

std::size_t WavePyramid::bytes() const noexcept {
    std::size_t columns = 0;
    for (const Level& level : levels_) {
        columns += level.capacity();
    }
    return columns * sizeof(WaveColumn);
}

} // namespace zemo::overview
