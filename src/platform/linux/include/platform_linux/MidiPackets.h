#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/MidiInput.h"

namespace zemo::platform {

/// [midi] Hands one message to `read`, as a list of one packet. `time` in nanoseconds.
class MidiPacketSender {
public:
    void setReader(MidiReadProc read, void* context) {
        read_ = read;
        context_ = context;
    }
    void send(std::uint64_t time, std::span<const std::uint8_t> message, void* sourceContext);

private:
    MidiReadProc read_ = nullptr;
    void* context_ = nullptr;
    std::vector<std::uint8_t> list_;
};

} // namespace zemo::platform
