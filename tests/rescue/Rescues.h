#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <vector>

#include "platform_linux/LinuxServices.h"
#include "rescue/RescueKeeper.h"
#include "support/FakePlatform.h"

namespace zemo::test {

/// Tests with a state folder on the disk, and sounds to be kept there.
class RescueTest : public testing::Test {
protected:
    RescueTest();
    ~RescueTest() override;

    /// Makes a sound of so many samples, each of that value, the current one.
    static void makeSound(std::int64_t count, float sample);
    /// The samples of the file, as Open reads them, and the sound as it was; nothing when the file
    /// is refused.
    static std::vector<float> read(const std::filesystem::path& file);
    /// All copies under the root.
    std::vector<std::filesystem::path> copies() const;
    /// The first sample of each copy under the root, the least first.
    std::vector<float> firstSamples() const;
    /// Whether there is nothing at all under the root.
    bool isRootEmpty() const;

    FakePlatform platform_;
    platform::PosixFileOperations operations_;
    platform::PosixFileSystem fileSystem_;
    std::filesystem::path folder_;
    std::filesystem::path root_;
};

/// What a keeper has told so far.
struct Told {
    std::mutex mutex;
    std::vector<rescue::FoundCopy> found;
    std::vector<rescue::KeeperState> states;
    std::vector<rescue::CopyNumber> gone;

    rescue::RescueEvents events();
    rescue::KeeperState lastState();
    std::vector<rescue::FoundCopy> foundSoFar();
    std::vector<rescue::CopyNumber> goneSoFar();
};

} // namespace zemo::test
