#include "EagerOutput.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "platform/Format.h"
#include "platform/RealTime.h"
#include "playback/SharedState.h"

namespace zemo::test {
namespace {

constexpr std::uint32_t kMostFrames = 600;
constexpr std::uint32_t kTailFrames = 1000;
constexpr std::uint32_t kMostSilent = 20; ///< calls in a row, in full haste

} // namespace

EagerOutput::EagerOutput(SoundBook& book, std::uint32_t seed) : book_(book) {
    feed_.setCallback(render, this);
    feed_.setTail(kTailFrames);
    thread_ = std::thread([this, seed] { run(seed); });
}

EagerOutput::~EagerOutput() {
    hush();
    ended_ = true;
    thread_.join();
}

void EagerOutput::setManners(Manners manners) {
    if (manners == manners_) {
        return; // perhaps in the tail of a play, which is still asked for
    }
    hush();
    manners_ = manners;
    asking_ = manners == Manners::Rude;
}

std::string EagerOutput::firstWrong() const {
    const std::lock_guard lock(mutex_);
    return firstWrong_;
}

platform::AudioOutputComponent*
EagerOutput::findNext(const platform::AudioComponentDescription& /*wanted*/) {
    return this;
}

platform::Status EagerOutput::newInstance(AudioOutputUnit*& unit) {
    unit = this;
    return 0;
}

platform::Status EagerOutput::setRenderCallback(platform::RenderCallback callback, void* context) {
    callback_ = callback;
    context_ = context;
    return 0;
}

platform::Status EagerOutput::sampleRate(double& hertz) {
    hertz = 48000.0;
    return 0;
}

platform::Status
EagerOutput::setStreamFormat(const platform::AudioStreamBasicDescription& /*format*/) {
    return 0;
}

platform::Status EagerOutput::start() {
    if (manners_ == Manners::Polite && !feed_.resume()) {
        hush();
        rendered_.clear();
        feed_.begin();
    }
    return 0;
}

platform::Status EagerOutput::stop() {
    if (manners_ == Manners::Rude) {
        return 0;
    }
    if (platform::insideRealTime()) {
        feed_.askStop();
        return 0;
    }
    feed_.halt(); // the device may still ask; it gets silence
    hush();
    return 0;
}

bool EagerOutput::isRunning() const noexcept {
    return feed_.phase() == platform::RenderFeed::Phase::Rendering;
}

bool EagerOutput::attend() {
    if (manners_ == Manners::Rude) {
        return true;
    }
    if (isRunning()) {
        asking_ = true;
        return true;
    }
    if (feed_.phase() == platform::RenderFeed::Phase::Drained) {
        hush();
        feed_.end();
    }
    return feed_.phase() != platform::RenderFeed::Phase::Idle;
}

/// Returns when the device asks for nothing any more, as the end of a stream does.
void EagerOutput::hush() {
    asking_ = false;
    while (inside_) {
        std::this_thread::yield();
    }
}

void EagerOutput::run(std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<float> frames(kMostFrames);
    while (!ended_) {
        if (asking_) {
            inside_ = true;
            if (asking_) {
                // Mostly short, so that many begin and end during one exchange.
                const std::uint32_t most = random() % 4 == 0 ? kMostFrames : 40;
                ask(frames.data(), 1 + static_cast<std::uint32_t>(random() % most));
            }
            inside_ = false;
        } else {
            std::this_thread::yield();
        }
        if (silent_ > kMostSilent) { // the next play is waited for
            std::this_thread::yield();
        }
    }
}

void EagerOutput::ask(float* frames, std::uint32_t count) {
    if (manners_ == Manners::Polite) {
        judgeDelivery(frames, feed_.fill(frames, count));
        return;
    }
    std::fill_n(frames, count, 0.0F);
    platform::RenderActionFlags flags = 0;
    const platform::AudioTimeStamp time{};
    platform::AudioBufferList data{1, {{1, count * 4, frames}}};
    render(this, &flags, &time, 0, count, &data);
}

/// Every frame of every call, in their order and once, then silence; unless the run was halted.
void EagerOutput::judgeDelivery(const float* frames, std::uint32_t count) {
    if (feed_.phase() == platform::RenderFeed::Phase::Idle) {
        return; // start() begins anew
    }
    const std::size_t due = std::min<std::size_t>(count, rendered_.size());
    const bool isRight =
        (due == 0 || std::memcmp(frames, rendered_.data(), due * sizeof(float)) == 0) &&
        std::all_of(frames + due, frames + count, [](float f) { return f == 0.0F; });
    rendered_.erase(rendered_.begin(), rendered_.begin() + static_cast<std::ptrdiff_t>(due));
    if (!isRight) {
        complain(platform::format("%u frames that the device got are not those that were rendered",
                                  count));
    }
}

void EagerOutput::complain(const std::string& wrong) {
    const std::lock_guard lock(mutex_);
    firstWrong_ = firstWrong_.empty() ? wrong : firstWrong_;
}

platform::Status EagerOutput::render(void* context, platform::RenderActionFlags* flags,
                                     const platform::AudioTimeStamp* time, std::uint32_t bus,
                                     std::uint32_t frames, platform::AudioBufferList* data) {
    auto& self = *static_cast<EagerOutput*>(context);
    const std::int64_t oldest = self.book_.enter();
    const auto position = static_cast<std::int64_t>(bufferPlayer.readPosition.load());
    const platform::Status status = self.callback_(self.context_, flags, time, bus, frames, data);
    const auto* const heard = static_cast<const float*>(data->mBuffers[0].mData);
    const std::string wrong = self.book_.judge(oldest, position, heard, frames);
    if (!wrong.empty()) {
        self.complain(wrong);
    }
    if (self.manners_ == Manners::Polite) {
        self.rendered_.insert(self.rendered_.end(), heard, heard + frames);
    }
    const bool sounds = std::any_of(heard, heard + frames, [](float f) { return f != 0.0F; });
    self.silent_ = sounds ? 0 : self.silent_ + 1;
    self.callsWithSound_.fetch_add(sounds ? 1 : 0, std::memory_order_relaxed);
    self.calls_.fetch_add(1, std::memory_order_relaxed);
    return status;
}

} // namespace zemo::test
