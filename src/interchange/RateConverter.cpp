#include "RateConverter.h"

#include <algorithm>

#include <soxr.h>

#include "LibraryMemory.h"
#include "platform/Progress.h"

namespace zemo {
namespace {

constexpr std::size_t kMostAtOnce = std::size_t{1} << 15; ///< samples that are made without a look

} // namespace

void RateConverter::Delete::operator()(soxr* converter) const noexcept {
    ::soxr_delete(converter);
}

/// In double precision throughout; floats are rounded once, at the end.
RateConverter::RateConverter(double from, double to) {
    requireRoomForLibraries();
    const soxr_io_spec_t types = ::soxr_io_spec(SOXR_FLOAT64_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = ::soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t run = ::soxr_runtime_spec(1);
    converter_.reset(::soxr_create(from, to, 1, nullptr, &types, &quality, &run));
}

std::optional<RateConverter::Counts> RateConverter::step(std::span<const double> samples,
                                                         SampleChain& chain) {
    requireRoomForLibraries();
    std::span<float> room = chain.room();
    room = room.first(std::min(room.size(), kMostAtOnce));
    const double* const from = samples.empty() ? nullptr : samples.data(); // null: no more come
    Counts counts;
    if (room.empty() || ::soxr_process(converter_.get(), from, samples.size(), &counts.taken,
                                       room.data(), room.size(), &counts.made) != nullptr) {
        return std::nullopt;
    }
    chain.advance(counts.made);
    return counts;
}

bool RateConverter::convert(std::span<const double> samples, SampleChain& chain) {
    while (!samples.empty() && !platform::isStopRequested()) {
        const auto counts = step(samples, chain);
        if (!counts) {
            return false;
        }
        samples = samples.subspan(counts->taken);
    }
    return true;
}

bool RateConverter::finish(SampleChain& chain) {
    std::size_t made = 1;
    while (made > 0 && !platform::isStopRequested()) {
        const auto counts = step({}, chain);
        if (!counts) {
            return false;
        }
        made = counts->made;
    }
    return true;
}

} // namespace zemo
