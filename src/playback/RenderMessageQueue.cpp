#include "playback/RenderMessageQueue.h"

namespace zemo {

static_assert((RenderMessageQueue::kCapacity & (RenderMessageQueue::kCapacity - 1)) == 0);

bool RenderMessageQueue::push(const Message& message, std::size_t room) noexcept ZEMO_NONBLOCKING {
    const std::size_t written = written_.load(std::memory_order_relaxed);
    if (written - read_.load(std::memory_order_acquire) >= room) {
        return false;
    }
    ring_[written % kCapacity] = message;
    written_.store(written + 1, std::memory_order_release);
    return true;
}

void RenderMessageQueue::pushImportant(const Message& message) noexcept ZEMO_NONBLOCKING {
    if (!push(message, kCapacity)) {
        dropped_.fetch_add(1, std::memory_order_relaxed);
    }
}

void RenderMessageQueue::updateValue(float level) noexcept ZEMO_NONBLOCKING {
    push({.kind = Kind::UpdateValue, .level = level}, kCapacity - kReserved);
}

void RenderMessageQueue::repeatUpdateValue(float level,
                                           std::uint32_t times) noexcept ZEMO_NONBLOCKING {
    push({.kind = Kind::UpdateValue, .level = level, .times = times}, kCapacity - kReserved);
}

void RenderMessageQueue::resetMeter() noexcept ZEMO_NONBLOCKING {
    pushImportant({.kind = Kind::ResetMeter});
}

void RenderMessageQueue::resetPlayTitle() noexcept ZEMO_NONBLOCKING {
    pushImportant({.kind = Kind::ResetPlayTitle});
}

void RenderMessageQueue::traceIdleCycle(std::int32_t left) noexcept ZEMO_NONBLOCKING {
    pushImportant({.kind = Kind::Idle, .count = left});
}

void RenderMessageQueue::traceMissingBuffer() noexcept ZEMO_NONBLOCKING {
    pushImportant({.kind = Kind::NoBuffer});
}

std::size_t RenderMessageQueue::drain(RenderDelegate& receiver) {
    // Only what is waiting now: a busy producer cannot keep the interface thread here.
    const std::size_t written = written_.load(std::memory_order_acquire);
    const std::size_t first = read_.load(std::memory_order_relaxed);
    for (std::size_t next = first; next != written; ++next) {
        const Message message = ring_[next % kCapacity];
        read_.store(next + 1, std::memory_order_release);
        deliver(message, receiver);
    }
    return written - first;
}

void RenderMessageQueue::deliver(const Message& message, RenderDelegate& receiver) {
    switch (message.kind) {
    case Kind::UpdateValue:
        return receiver.repeatUpdateValue(message.level, message.times);
    case Kind::ResetMeter:
        return receiver.resetMeter();
    case Kind::ResetPlayTitle:
        return receiver.resetPlayTitle();
    case Kind::Idle:
        return receiver.traceIdleCycle(message.count);
    case Kind::NoBuffer:
        return receiver.traceMissingBuffer();
    }
}

} // namespace zemo
