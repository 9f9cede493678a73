#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "SampleChain.h"

struct soxr;

namespace zemo {

/// A stream of samples from one rate to another, band-limited, without delay. [worker]
class RateConverter {
public:
    RateConverter(double from, double to); ///< hertz. May throw bad_alloc.
    bool isReady() const noexcept { return converter_ != nullptr; }

    /// Appends what `samples` become to `chain`. False: there is no memory. True with less than all
    /// when the work is asked to stop. May throw bad_alloc.
    bool convert(std::span<const double> samples, SampleChain& chain);
    bool finish(SampleChain& chain); ///< the same for what is still to come

private:
    struct Counts {
        std::size_t taken = 0;
        std::size_t made = 0;
    };
    std::optional<Counts> step(std::span<const double> samples, SampleChain& chain);

    struct Delete {
        void operator()(soxr* converter) const noexcept;
    };
    std::unique_ptr<soxr, Delete> converter_;
};

} // namespace zemo
