#pragma once

#include "platform/AudioOutput.h"
#include "platform_linux/RenderFeed.h"

namespace zemo::test {

/// The part of a real output that runs on the audio thread. The test is the device: it asks `feed`
/// for frames.
class FeedOutput final : public platform::AudioOutputUnit {
public:
    FeedOutput(platform::RenderCallback callback, void* context) {
        feed.setCallback(callback, context);
    }
    platform::Status setRenderCallback(platform::RenderCallback, void*) override { return 0; }
    platform::Status sampleRate(double&) override { return 0; }
    platform::Status setStreamFormat(const platform::AudioStreamBasicDescription&) override {
        return 0;
    }
    platform::Status initialize() override { return 0; }
    platform::Status start() override {
        if (!feed.resume()) {
            feed.begin();
        }
        return 0;
    }
    platform::Status stop() override {
        feed.askStop();
        return 0;
    }
    bool isRunning() const noexcept override {
        return feed.phase() == platform::RenderFeed::Phase::Rendering;
    }
    bool attend() override { return isRunning(); }
    bool takeFailure() override { return false; }
    std::string notice() const override { return {}; }

    platform::RenderFeed feed;
};

} // namespace zemo::test
