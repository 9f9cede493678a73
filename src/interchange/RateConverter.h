#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "SampleChain.h"

struct soxr;

namespace zemo {

/// A stream of samples from one rate to another, band-limited, without delay. [worker]
class RateConverter {
public:
    RateConverter(double from, double to); ///< hertz
    bool isReady() const noexcept { return converter_ != nullptr; }

    /// Appends what `samples` become to `chain`. False: there is no memory. May throw bad_alloc.
    bool convert(std::span<const double> samples, SampleChain& chain);
    bool finish(SampleChain& chain); ///< the same for what is still to come

private:
    struct Delete {
        void operator()(soxr* converter) const noexcept;
    };
    std::unique_ptr<soxr, Delete> converter_;
};

} // namespace zemo
