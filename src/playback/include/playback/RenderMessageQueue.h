#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/RealTime.h"
#include "playback/Delegate.h"

namespace zemo {

/// The render callback's messages on their way to the interface thread: a fixed ring, wait-free
/// on both sides, one producer (the audio thread) and one consumer (the main thread).
///
/// Redraw requests (updateValue) carry nothing that the next one does not, so they are dropped
/// when the last `kReserved` places are reached; all other messages have these to themselves.
class RenderMessageQueue final : public RenderDelegate {
public:
    static constexpr std::size_t kCapacity = 4096; ///< messages; a power of two
    static constexpr std::size_t kReserved = 1024;

    void updateValue(float level) noexcept ZEMO_NONBLOCKING override; ///< [audio][rt]
    /// [audio][rt] Takes one place.
    void repeatUpdateValue(float level, std::uint32_t times) noexcept ZEMO_NONBLOCKING override;
    void resetMeter() noexcept ZEMO_NONBLOCKING override;                      ///< [audio][rt]
    void resetPlayTitle() noexcept ZEMO_NONBLOCKING override;                  ///< [audio][rt]
    void traceIdleCycle(std::int32_t left) noexcept ZEMO_NONBLOCKING override; ///< [audio][rt]
    void traceMissingBuffer() noexcept ZEMO_NONBLOCKING override;              ///< [audio][rt]

    /// [main] Hands every waiting message to `receiver`, oldest first. Returns how many places
    /// they took.
    std::size_t drain(RenderDelegate& receiver);

    /// [any][rt] Messages other than redraw requests that found no room. Stays 0 in practice.
    std::uint64_t dropped() const noexcept ZEMO_NONBLOCKING {
        return dropped_.load(std::memory_order_relaxed);
    }

private:
    enum class Kind : std::uint8_t { UpdateValue, ResetMeter, ResetPlayTitle, Idle, NoBuffer };
    struct Message {
        Kind kind = Kind::UpdateValue;
        float level = 0.0F;
        std::int32_t count = 0;
        std::uint32_t times = 1;
    };

    bool push(const Message& message, std::size_t room) noexcept ZEMO_NONBLOCKING;
    void pushImportant(const Message& message) noexcept ZEMO_NONBLOCKING;
    static void deliver(const Message& message, RenderDelegate& receiver);

    std::array<Message, kCapacity> ring_{};
    alignas(64) std::atomic<std::size_t> written_{0};
    alignas(64) std::atomic<std::size_t> read_{0};
    std::atomic<std::uint64_t> dropped_{0};
};

} // namespace zemo
