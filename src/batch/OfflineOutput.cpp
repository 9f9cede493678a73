#include "batch/OfflineOutput.h"

namespace zemo::batch {

void OfflineOutput::renderInto(std::vector<float>& sound, std::uint32_t frames) {
    const std::size_t start = sound.size();
    sound.resize(start + frames);
    platform::RenderActionFlags flags = 0;
    const platform::AudioTimeStamp time{static_cast<double>(start)};
    platform::AudioBufferList data{
        1, {{1, frames * static_cast<std::uint32_t>(sizeof(float)), sound.data() + start}}};
    callback_(context_, &flags, &time, 0, frames, &data);
}

platform::AudioOutputComponent*
OfflineOutput::findNext(const platform::AudioComponentDescription& /*wanted*/) {
    return this;
}

platform::Status OfflineOutput::newInstance(platform::AudioOutputUnit*& unit) {
    unit = this;
    return platform::kNoError;
}

platform::Status OfflineOutput::setRenderCallback(platform::RenderCallback callback,
                                                  void* context) {
    callback_ = callback;
    context_ = context;
    return platform::kNoError;
}

platform::Status OfflineOutput::sampleRate(double& hertz) {
    hertz = rate_;
    return platform::kNoError;
}

platform::Status OfflineOutput::start() {
    running_ = true;
    return platform::kNoError;
}

platform::Status OfflineOutput::stop() {
    running_ = false;
    return platform::kNoError;
}

} // namespace zemo::batch
