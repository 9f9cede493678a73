#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "files/AtomicFile.h"

struct sf_private_tag;

namespace zemo {

/// Writes one channel of 24 bits into a file in the making. [main], [worker]
class FlacWriter {
public:
    static constexpr std::uint32_t kHighestRate = 655350; ///< hertz
    /// Above 65535 Hz a frame's header counts in tens.
    static constexpr bool canHold(std::uint32_t rate) noexcept {
        return rate <= UINT16_MAX || (rate <= kHighestRate && rate % 10 == 0);
    }
    static constexpr std::int64_t kMostSamples = (std::int64_t{1} << 36) - 1;

    FlacWriter(AtomicFile& file, std::uint32_t rate); ///< may throw bad_alloc, as the others
    FlacWriter(const FlacWriter&) = delete;
    FlacWriter& operator=(const FlacWriter&) = delete;
    ~FlacWriter();

    /// Each returns 0 or the system's error number; EIO also where the encoder gives up.
    int write(std::span<const float> samples); ///< none of them a NaN
    int finish();

    std::int64_t clipped() const noexcept { return clipped_; }

private:
    friend struct SinkCalls;
    struct Sink {
        AtomicFile* file;
        std::uint64_t position = 0;
        std::uint64_t size = 0;
        int error = 0;
    };

    Sink sink_;
    sf_private_tag* file_ = nullptr;
    std::vector<int> steps_;
    std::int64_t clipped_ = 0;
};

} // namespace zemo
