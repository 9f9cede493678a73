#pragma once

#include <cstdint>
#include <vector>

/// The shared sound as bit patterns, so that every NaN is told apart.
namespace zemo::test {

std::vector<std::uint32_t> soundWords();
/// Whether the samples of slack behind the sound are all zero, bit for bit.
bool slackIsZero();
/// From now on memory that nobody has set is not zero by chance.
void dirtyFreshMemory();

} // namespace zemo::test
