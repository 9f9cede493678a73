#include "overview/OverviewBuilder.h"

#include <new>
#include <system_error>

namespace zemo::overview {

void OverviewBuilder::stop() {
    if (progress_ != nullptr) {
        progress_->requestStop();
    }
    finish();
}

void OverviewBuilder::finish() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

std::uint64_t OverviewBuilder::rebuild(std::span<const float> samples, double rate) {
    stop();
    const std::uint64_t number = ++number_;
    try {
        progress_ = std::make_unique<platform::Progress>();
        thread_ = std::jthread([this, samples, rate, number, progress = progress_.get()] {
            const platform::ProgressScope scope(progress);
            build(samples, rate, number);
        });
    } catch (const std::exception&) { // no memory or no thread: no picture
        taker_({.build = number, .isComplete = true});
    }
    return number;
}

/// Asked to stop, it tells nothing more.
void OverviewBuilder::build(std::span<const float> samples, double rate,
                            std::uint64_t number) const {
    try {
        Overview overview{.build = number, .wave = WavePyramid::build(samples)};
        overview.isComplete = overview.wave == nullptr;
        if (platform::isStopRequested()) {
            return;
        }
        taker_(overview);
        if (overview.isComplete) {
            return;
        }
        overview.spectrogram = Spectrogram::build(samples, rate);
        overview.isComplete = true;
        if (!platform::isStopRequested()) {
            taker_(overview);
        }
    } catch (const std::bad_alloc&) { // the taker's; there is nobody to tell
    }
}

} // namespace zemo::overview
