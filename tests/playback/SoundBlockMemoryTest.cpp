#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "playback/SoundExchange.h"
#include "support/FakePlatform.h"

/// While it is set, no memory is given to anything but the C library's functions.
static constinit bool isRefused = false;

void* operator new(std::size_t bytes) {
    void* const block = isRefused ? nullptr : std::malloc(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    std::free(block);
}

namespace zemo::test {
namespace {

/// What `allocate` gives while a block's samples are to be had, but not its count of owners.
template <typename Allocate> SampleBlock withoutMemoryForTheOwners(const Allocate& allocate) {
    isRefused = true;
    SampleBlock block = allocate();
    isRefused = false;
    return block;
}

TEST(SoundBlockMemory, WithoutMemoryForItsOwnersThereIsNoBlock) {
    const FakePlatform platform;
    EXPECT_EQ(withoutMemoryForTheOwners([] { return allocateSamples(10); }), nullptr);
    EXPECT_EQ(withoutMemoryForTheOwners([] { return allocateUnsetSamples(10); }), nullptr);
}

TEST(SoundBlockMemory, NoSamplesAreNoBlock) {
    EXPECT_EQ(ownSamples(nullptr), nullptr);
}

} // namespace
} // namespace zemo::test
