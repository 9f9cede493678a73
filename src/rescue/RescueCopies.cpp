#include "rescue/RescueCopies.h"

#include <algorithm>
#include <utility>

namespace zemo::rescue {

CopyNumber RescueCopies::add(RescueCopy copy) {
    copies_.emplace(last_ + 1, std::move(copy));
    return ++last_;
}

RescueCopy* RescueCopies::find(CopyNumber number) {
    const auto found = copies_.find(number);
    return found == copies_.end() ? nullptr : &found->second;
}

const RescueCopy* RescueCopies::find(CopyNumber number) const {
    const auto found = copies_.find(number);
    return found == copies_.end() ? nullptr : &found->second;
}

CopyNumber RescueCopies::first(State state) const {
    const auto found = std::find_if(copies_.begin(), copies_.end(), [state](const auto& entry) {
        return entry.second.state == state;
    });
    return found == copies_.end() ? kNoCopy : found->first;
}

CopyNumber RescueCopies::oldestLost(State state) const {
    auto oldest = copies_.end();
    for (auto entry = copies_.begin(); entry != copies_.end(); ++entry) {
        if (entry->second.state == state && entry->second.isLost &&
            (oldest == copies_.end() || entry->second.time < oldest->second.time)) {
            oldest = entry;
        }
    }
    return oldest == copies_.end() ? kNoCopy : oldest->first;
}

RescueCopies::Held RescueCopies::lostInMemory(State state) const {
    Held held;
    for (const auto& [number, copy] : copies_) {
        if (copy.state == state && copy.isLost) {
            held.bytes += copy.sound.samples().size_bytes();
            ++held.sounds;
        }
    }
    return held;
}

CopyNumber RescueCopies::tooMuchHeld(const RescueLimits& limits) const {
    const Held held = lostInMemory(State::Failed);
    const bool isTooMuch = held.sounds > 1 && held.bytes > limits.mostHeldBytes;
    return isTooMuch ? oldestLost(State::Failed) : kNoCopy;
}

bool RescueCopies::isBehind(const RescueLimits& limits) const {
    return lostInMemory(State::Wanted).bytes > limits.mostHeldBytes;
}

void RescueCopies::retry() {
    for (auto& [number, copy] : copies_) {
        if (copy.state == State::Failed) {
            copy.state = State::Wanted;
        }
    }
}

std::uint64_t RescueCopies::bytesOnDisk() const {
    std::uint64_t bytes = 0;
    for (const auto& [number, copy] : copies_) {
        bytes += copy.state == State::Written ? copy.bytes : 0;
    }
    return bytes;
}

std::shared_ptr<RescueFolder> RescueCopies::anyFolder() const {
    const RescueCopy* const copy = find(first(State::Written));
    return copy != nullptr ? copy->folder : nullptr;
}

} // namespace zemo::rescue
