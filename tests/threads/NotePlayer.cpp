#include "NotePlayer.h"

#include <chrono>
#include <cstring>

namespace zemo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename Number> void append(Bytes& list, Number number) {
    const std::size_t at = list.size();
    list.resize(at + sizeof number);
    std::memcpy(list.data() + at, &number, sizeof number);
}

void appendPacket(Bytes& list, const Bytes& data, std::mt19937& random) {
    append(list, std::uint64_t{random()});
    append(list, static_cast<std::uint16_t>(data.size()));
    list.insert(list.end(), data.begin(), data.end());
}

Bytes anyData(std::mt19937& random) {
    const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
    const auto status = static_cast<std::uint8_t>(0x90U | (random() % 3));
    if (random() % 2 == 0) {
        return {status, byte(), static_cast<std::uint8_t>(random() % 128)};
    }
    Bytes data(random() % 6);
    for (std::uint8_t& each : data) {
        each = byte();
    }
    return data;
}

/// Half of them as they should be; of the others one thing is wrong.
Bytes anyList(std::mt19937& random) {
    Bytes list;
    const auto packets = static_cast<std::uint32_t>(random() % 4);
    append(list, packets);
    for (std::uint32_t i = 0; i < packets; ++i) {
        appendPacket(list, anyData(random), random);
    }
    switch (random() % 6) {
    case 0: // more packets than there are
        list[random() % 4] = static_cast<std::uint8_t>(random());
        break;
    case 1: // cut off
        list.resize(random() % list.size());
        break;
    case 2: // any byte another one
        list[random() % list.size()] = static_cast<std::uint8_t>(random());
        break;
    default:
        break;
    }
    return list;
}

} // namespace

NotePlayer::NotePlayer(std::uint32_t seed) {
    midiDelegate = this;
    thread_ = std::thread([this, seed] { run(seed); });
}

NotePlayer::~NotePlayer() {
    ended_ = true;
    thread_.join();
    midiDelegate = nullptr;
}

void NotePlayer::run(std::uint32_t seed) {
    std::mt19937 random(seed);
    while (!ended_) {
        const Bytes list = anyList(random);
        midiReadProc({list.data(), list.size()}, nullptr, nullptr);
        lists_.fetch_add(1, std::memory_order_relaxed);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 1000));
    }
}

} // namespace zemo::test
