#include "SampleChain.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/Memory.h"
#include "platform/Progress.h"
#include "platform/Services.h"

namespace zemo {
namespace {

constexpr std::size_t kFirst = std::size_t{1} << 14; ///< samples
constexpr std::size_t kMost = std::size_t{1} << 22;
/// What is left to the rest of the system. The blocks are handed over before they are touched, so
/// that a system out of memory would say nothing and end the program.
constexpr std::uint64_t kReserve = std::uint64_t{1} << 28;

bool isThere(std::uint64_t bytes) {
    platform::Memory* const memory = platform::services().memory;
    return memory == nullptr || memory->availableBytes() >= bytes + kReserve;
}

} // namespace

std::span<float> SampleChain::room() {
    if ((links_.empty() || used_ == links_.back().size) && !grow()) {
        return {};
    }
    const Link& last = links_.back();
    return {last.samples.get() + used_, last.size - used_};
}

bool SampleChain::grow() {
    const std::size_t size = std::clamp(full_ + used_, kFirst, kMost);
    if (size == kMost && !isThere(size * sizeof(float))) {
        return false;
    }
    SampleBlock samples = allocateUnsetSamples(static_cast<std::int64_t>(size));
    if (samples == nullptr) {
        return false;
    }
    links_.push_back({std::move(samples), size});
    full_ += std::exchange(used_, 0);
    return true;
}

SampleBlock SampleChain::join() {
    const std::int64_t all = count();
    SampleBlock joined = allocateUnsetSamples(all);
    if (joined != nullptr) {
        float* next = joined.get();
        for (Link& link : links_) {
            if (platform::isStopRequested()) {
                break;
            }
            const std::size_t size = &link == &links_.back() ? used_ : link.size;
            std::memcpy(next, link.samples.get(), size * sizeof(float));
            link.samples.reset();
            next += size;
        }
    }
    links_.clear();
    full_ = used_ = 0;
    return joined;
}

} // namespace zemo
