#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include "SoundModel.h"
#include "platform/FileStream.h"
#include "platform_linux/LinuxServices.h"
#include "rescue/RescueKeeper.h"

namespace zemo::test {

/// A folder on the disk, for what is saved and for rescue copies. Everything else that is opened
/// comes out of memory.
class StressedDisk final : public platform::FileSystem {
public:
    explicit StressedDisk(platform::FileSystem& memory);
    ~StressedDisk() override;

    const std::filesystem::path& folder() const noexcept { return folder_; }
    std::unique_ptr<platform::FileStream> openForReading(const std::string& path,
                                                         int& error) override;

private:
    platform::FileSystem& memory_;
    platform::PosixFileSystem posix_;
    platform::PosixFileOperations operations_;
    std::filesystem::path folder_;
};

/// The program's keeper of rescue copies, and what its copy has to be. All [main].
class KeptCopy {
public:
    explicit KeptCopy(std::filesystem::path root);

    /// The copy is to be of the sound as it is now, which is `sound`.
    void keep(const Samples& sound);
    void drop();
    /// Waits for the keeper. Empty when the copy is the sound that it has to be; or what is wrong.
    std::string wrong();

private:
    std::filesystem::path root_;
    Samples kept_;
    rescue::CopyNumber copy_ = rescue::kNoCopy;
    std::atomic<bool> hasFailed_{false};
    rescue::RescueKeeper keeper_;
};

} // namespace zemo::test
