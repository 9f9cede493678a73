#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "files/AudioFileWriter.h"
#include "rescue/RescueFolder.h"

namespace zemo::rescue {

/// What a copy is known by, for as long as the program lives.
using CopyNumber = std::uint64_t;
inline constexpr CopyNumber kNoCopy = 0;

/// A sound that is to have a copy on the disk, or has one.
struct RescueCopy {
    enum class State : std::uint8_t { Wanted, Failed, Written, Dropped };

    State state = State::Wanted;
    std::string soundName = {};
    std::chrono::system_clock::time_point time = {}; ///< of its order; of a found one, of its file
    HeldSound sound = {};                            ///< until it is written
    bool isLost = false;                             ///< the sound can be reached by this copy only
    bool mayRemoveOthers = false;                    ///< the user knew that when it was asked for
    std::shared_ptr<RescueFolder> folder = {};       ///< once it is written, as the two below
    std::string file = {};
    std::uint64_t bytes = 0;
};

/// How much room copies may take up. Only those of lost sounds are removed for want of it.
struct RescueLimits {
    std::uint64_t mostBytes = std::uint64_t{8} << 30U; ///< of all copies on the disk
    std::uint64_t partsOfFree = 10; ///< and one of so many parts of what is free on the disk
    /// Of lost sounds in memory, whose copies are yet to be written or cannot be; but one of them
    /// may be larger.
    std::uint64_t mostHeldBytes = std::uint64_t{256} << 20U;
};

/// All the copies of a program, the rules which is next and which has to go. Nothing in it waits or
/// touches the disk.
class RescueCopies {
public:
    using State = RescueCopy::State;
    using Node = std::map<CopyNumber, RescueCopy>::node_type; ///< one that was taken out

    CopyNumber add(RescueCopy copy);
    RescueCopy* find(CopyNumber number);
    const RescueCopy* find(CopyNumber number) const;
    Node takeOut(CopyNumber number) { return copies_.extract(number); }

    /// The one with the least number in that state, so the first that was asked for; kNoCopy when
    /// there is none.
    CopyNumber first(State state) const;
    /// That of the lost sound with the earliest time among those in that state.
    CopyNumber oldestLost(State state) const;
    /// The one that has to go, where lost sounds that cannot be written take up too much memory.
    CopyNumber tooMuchHeld(const RescueLimits& limits) const;
    /// Whether lost sounds that are yet to be written take up too much memory.
    bool isBehind(const RescueLimits& limits) const;
    /// Those that could not be written are wanted once more.
    void retry();

    bool has(State state) const { return first(state) != kNoCopy; }
    std::uint64_t bytesOnDisk() const;
    /// The folder of any copy that is written; null when none is.
    std::shared_ptr<RescueFolder> anyFolder() const;

private:
    struct Held {
        std::uint64_t bytes = 0;
        int sounds = 0;
    };
    Held lostInMemory(State state) const;

    std::map<CopyNumber, RescueCopy> copies_;
    CopyNumber last_ = kNoCopy;
};

} // namespace zemo::rescue
