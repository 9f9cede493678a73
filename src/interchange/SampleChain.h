#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "playback/SoundExchange.h"

namespace zemo {

/// Samples whose number nobody knows beforehand: blocks of growing size, put together at the end.
/// No more is ever asked for than is there already, one block apart. [main], [worker]
class SampleChain {
public:
    /// Where the next samples go; empty when there is no memory for any. May throw bad_alloc.
    std::span<float> room();
    void advance(std::size_t count) { used_ += count; } ///< so many of the room are set now

    std::int64_t count() const noexcept { return static_cast<std::int64_t>(full_ + used_); }

    /// All of them in one block, the chain's own given back one after the other; null when there is
    /// no memory for it. Not all of them when the work is asked to stop. The chain is empty then.
    SampleBlock join();

private:
    struct Link {
        SampleBlock samples;
        std::size_t size = 0;
    };

    bool grow();

    std::vector<Link> links_;
    std::size_t full_ = 0; ///< samples in all links but the last
    std::size_t used_ = 0; ///< samples in the last
};

} // namespace zemo
