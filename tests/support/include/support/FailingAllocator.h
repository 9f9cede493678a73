#pragma once

#include <cstddef>
#include <cstdint>

/// The memory of the whole process, made to run out at will: every way to get a block, of the
/// program's own rooms and of the libraries that it uses. For programs that link
/// zemo_failing_allocator.
namespace zemo::test {

/// Which requests fail, counted from the moment in which the object is made, over all threads.
struct MemoryFault {
    static constexpr std::size_t kNone = SIZE_MAX;

    std::size_t after = kNone;    ///< so many are granted before
    bool forGood = false;         ///< all later ones fail as well, else that one alone
    std::size_t atLeastBytes = 0; ///< smaller ones are neither counted nor refused
    const char* sparing = "";     ///< nor are those of libraries with these words in their names
};

/// For as long as it lives memory fails like that.
class FailingMemory {
public:
    explicit FailingMemory(const MemoryFault& fault);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory() { end(); }

    void end() noexcept; ///< from now on there is memory again

    std::size_t asked() const noexcept; ///< requests so far, at most those before end()
    bool hasFailed() const noexcept;    ///< whether any of them was refused
};

/// For as long as it lives this thread's requests are neither counted nor refused: those of a fake,
/// which in the program would not be there.
class SparedMemory {
public:
    SparedMemory() noexcept;
    SparedMemory(const SparedMemory&) = delete;
    SparedMemory& operator=(const SparedMemory&) = delete;
    ~SparedMemory();
};

/// How many blocks are held now, over all threads. Not under the sanitizers, which have requests of
/// their own.
long heldBlocks() noexcept;

/// How many bytes these have, likewise. The same request may get up to 16 more another time.
long heldBytes() noexcept;

} // namespace zemo::test
