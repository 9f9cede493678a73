#include "RateConverter.h"

#include <soxr.h>

namespace zemo {

void RateConverter::Delete::operator()(soxr* converter) const noexcept {
    ::soxr_delete(converter);
}

/// In double precision throughout; floats are rounded once, at the end.
RateConverter::RateConverter(double from, double to) {
    const soxr_io_spec_t types = ::soxr_io_spec(SOXR_FLOAT64_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = ::soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t run = ::soxr_runtime_spec(1);
    converter_.reset(::soxr_create(from, to, 1, nullptr, &types, &quality, &run));
}

bool RateConverter::convert(std::span<const double> samples, SampleChain& chain) {
    while (!samples.empty()) {
        const std::span<float> room = chain.room();
        std::size_t taken = 0;
        std::size_t made = 0;
        if (room.empty() || ::soxr_process(converter_.get(), samples.data(), samples.size(), &taken,
                                           room.data(), room.size(), &made) != nullptr) {
            return false;
        }
        chain.advance(made);
        samples = samples.subspan(taken);
    }
    return true;
}

bool RateConverter::finish(SampleChain& chain) {
    std::size_t made = 1;
    while (made > 0) {
        const std::span<float> room = chain.room();
        if (room.empty() || ::soxr_process(converter_.get(), nullptr, 0, nullptr, room.data(),
                                           room.size(), &made) != nullptr) {
            return false;
        }
        chain.advance(made);
    }
    return true;
}

} // namespace zemo
