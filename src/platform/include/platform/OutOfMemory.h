#pragma once

#include <new>

namespace zemo::platform {

/// [any] A room's border: what `work` gives or, where there is no memory for something in it, what
/// `refusal` gives, which must need none. Everything that is exchanged, freed or renamed for good
/// is to come last in the work, with nothing after it that asks for memory.
template <typename Work, typename Refusal>
auto unlessOutOfMemory(const Work& work, const Refusal& refusal) -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return refusal();
    }
}

} // namespace zemo::platform
