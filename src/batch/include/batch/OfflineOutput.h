#pragma once

#include <cstdint>
#include <vector>

#include "platform/AudioOutput.h"

namespace zemo::batch {

/// The output that is not there: it has a rate, and makes its render calls when it is told to.
class OfflineOutput final : public platform::AudioOutputService,
                            private platform::AudioOutputComponent,
                            public platform::AudioOutputUnit {
public:
    explicit OfflineOutput(double rate) : rate_(rate) {}

    /// [main] One render call of `frames` frames, appended to `sound`.
    void renderInto(std::vector<float>& sound, std::uint32_t frames);

    platform::AudioOutputComponent*
    findNext(const platform::AudioComponentDescription& wanted) override;
    platform::Status setRenderCallback(platform::RenderCallback callback, void* context) override;
    platform::Status sampleRate(double& hertz) override;
    platform::Status
    setStreamFormat(const platform::AudioStreamBasicDescription& /*format*/) override {
        return platform::kNoError;
    }
    platform::Status initialize() override { return platform::kNoError; }
    platform::Status start() override;
    platform::Status stop() override;
    bool isRunning() const noexcept override { return running_; }
    bool attend() override { return running_; }
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }

private:
    platform::Status newInstance(platform::AudioOutputUnit*& unit) override;

    double rate_;
    platform::RenderCallback callback_ = nullptr;
    void* context_ = nullptr;
    bool running_ = false;
};

} // namespace zemo::batch
