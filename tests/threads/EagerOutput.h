#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "SoundBook.h"
#include "platform/AudioOutput.h"
#include "platform_linux/RenderFeed.h"

namespace zemo::test {

/// An output whose audio thread makes one render call after the other for as long as it may, and
/// judges the frames of each.
class EagerOutput final : public platform::AudioOutputService,
                          public platform::AudioOutputComponent,
                          public platform::AudioOutputUnit {
public:
    /// Polite: requests of any length while it runs, by way of the program's own RenderFeed, whose
    /// delivery is judged as well. Rude: calls of any length, also when it was stopped; it says
    /// that it does not run but is not at its end either, so that every exchange of the sound meets
    /// calls under way.
    enum class Manners : std::uint8_t { Polite, Rude };

    EagerOutput(SoundBook& book, std::uint32_t seed);
    EagerOutput(const EagerOutput&) = delete;
    EagerOutput& operator=(const EagerOutput&) = delete;
    ~EagerOutput() override;

    void setManners(Manners manners); ///< [main] other ones only with the unit stopped

    // [any]
    std::uint64_t calls() const noexcept { return calls_.load(std::memory_order_relaxed); }
    std::uint64_t callsWithSound() const noexcept {
        return callsWithSound_.load(std::memory_order_relaxed);
    }
    std::string firstWrong() const;

    AudioOutputComponent* findNext(const platform::AudioComponentDescription& wanted) override;
    platform::Status newInstance(AudioOutputUnit*& unit) override;
    platform::Status setRenderCallback(platform::RenderCallback callback, void* context) override;
    platform::Status sampleRate(double& hertz) override;
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription& format) override;
    platform::Status initialize() override { return 0; }
    platform::Status start() override;
    platform::Status stop() override;
    bool isRunning() const noexcept override;
    bool attend() override;
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }

private:
    static platform::Status render(void* context, platform::RenderActionFlags* flags,
                                   const platform::AudioTimeStamp* time, std::uint32_t bus,
                                   std::uint32_t frames, platform::AudioBufferList* data);
    void run(std::uint32_t seed);
    void ask(float* frames, std::uint32_t count);
    void judgeDelivery(const float* frames, std::uint32_t count);
    void complain(const std::string& wrong);
    void hush();

    SoundBook& book_;
    platform::RenderFeed feed_;
    platform::RenderCallback callback_ = nullptr;
    void* context_ = nullptr;
    Manners manners_ = Manners::Polite; ///< changes while nothing is asked
    std::atomic<bool> asking_{false};   ///< the device asks for frames
    std::atomic<bool> inside_{false};   ///< it is at it
    std::atomic<bool> ended_{false};
    std::atomic<std::uint64_t> calls_{0};
    std::atomic<std::uint64_t> callsWithSound_{0};
    std::uint32_t silent_ = 0;    ///< audio thread only: calls since the last sound
    std::vector<float> rendered_; ///< and not delivered yet; the audio thread's while it asks
    mutable std::mutex mutex_;    ///< taken on the audio thread only when all is lost
    std::string firstWrong_;
    std::thread thread_;
};

} // namespace zemo::test
