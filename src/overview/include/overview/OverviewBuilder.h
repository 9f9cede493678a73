#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <thread>

#include "overview/Spectrogram.h"
#include "overview/WavePyramid.h"
#include "platform/Progress.h"

namespace zemo::overview {

/// The pictures of one sound.
struct Overview {
    std::uint64_t build = 0;                          ///< what rebuild() gave
    std::shared_ptr<const WavePyramid> wave{};        ///< null: there was no memory for it
    std::shared_ptr<const Spectrogram> spectrogram{}; ///< null: none yet, or none at all
    bool isComplete = false;                          ///< nothing follows
};

/// Makes the pictures of the sound on a thread of its own, which reads the sound in place.
class OverviewBuilder {
public:
    /// [worker] Takes each result: the wave as soon as it is there, then everything. It may come
    /// while stop() waits, so the number of the build tells whether it is still wanted.
    using Taker = std::function<void(const Overview&)>;

    explicit OverviewBuilder(Taker taker) : taker_(std::move(taker)) {}
    OverviewBuilder(const OverviewBuilder&) = delete;
    OverviewBuilder& operator=(const OverviewBuilder&) = delete;
    ~OverviewBuilder() { stop(); }

    /// [main] Leaves off and returns when the sound is not read any more, which takes less than
    /// 5 ms. To be called before the sound is changed or freed.
    void stop();

    /// [main] Begins anew, and gives the number of this build. The samples stay as they are until
    /// stop() or the next rebuild().
    std::uint64_t rebuild(std::span<const float> samples, double rate);

    /// [main] Waits for the end of what is under way.
    void finish();

private:
    void build(std::span<const float> samples, double rate, std::uint64_t number) const;

    Taker taker_;
    std::uint64_t number_ = 0;
    std::unique_ptr<platform::Progress> progress_; ///< of the build under way; outlives its thread
    std::jthread thread_;
};

} // namespace zemo::overview
