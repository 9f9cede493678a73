#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace zemo::dsp {

/// [any] Memory for the vectors of each worker, aligned for them. std::bad_alloc when there is
/// none.
class Scratch {
public:
    Scratch(unsigned workers, std::size_t doubles)
        : stride_((doubles + kAlignment - 1) / kAlignment * kAlignment),
          memory_(workers * stride_ + kAlignment) {}

    double* of(unsigned worker) {
        void* start = memory_.data();
        std::size_t room = memory_.size() * sizeof(double);
        constexpr std::size_t kBytes = kAlignment * sizeof(double);
        return static_cast<double*>(std::align(kBytes, sizeof(double), start, room)) +
               worker * stride_;
    }

private:
    static constexpr std::size_t kAlignment = 16; // doubles: two lines of the cache

    std::size_t stride_;
    std::vector<double> memory_;
};

} // namespace zemo::dsp
