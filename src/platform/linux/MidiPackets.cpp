#include "platform_linux/MidiPackets.h"

#include <algorithm>
#include <cstring>

namespace zemo::platform {
namespace {

template <typename Number> void append(std::vector<std::uint8_t>& list, Number number) {
    const std::size_t start = list.size();
    list.resize(start + sizeof number);
    std::memcpy(list.data() + start, &number, sizeof number);
}

} // namespace

void MidiPacketSender::send(std::uint64_t time, std::span<const std::uint8_t> message,
                            void* sourceContext) {
    if (read_ == nullptr) {
        return;
    }
    // A longer message, as system-exclusive ones are, is cut: its first bytes tell what it is.
    const auto length = static_cast<std::uint16_t>(std::min<std::size_t>(message.size(), 0xFFFF));
    list_.clear();
    append(list_, std::uint32_t{1});
    append(list_, time);
    append(list_, length);
    list_.insert(list_.end(), message.begin(), message.begin() + length);
    read_({list_.data(), list_.size()}, context_, sourceContext);
}

} // namespace zemo::platform
