#pragma once

#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SavedFiles.h"
#include "files/AudioFileWriter.h"
#include "platform_linux/LinuxServices.h"
#include "support/FakePlatform.h"

/// Saving through the real system calls, into a folder of its own.
namespace zemo::test {

namespace fs = std::filesystem;

inline const Bytes kOld = counting(50);
inline const Bytes kNew = expectedCaf({0x3E800000, 0xBF000000, 0x3F800000, 0, 0});

inline Bytes contentOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::uint32_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

/// The system without nameless files.
class HiddenNames final : public platform::PosixFileOperations {
    int createNameless(const std::string& /*folder*/, platform::NewFileAccess /*access*/) override {
        return -EOPNOTSUPP;
    }
};

class SaveOnDisk : public testing::Test {
protected:
    SaveOnDisk() {
        std::string pattern = fs::temp_directory_path() / "zemo-save-XXXXXX";
        EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        fs::permissions(folder, fs::perms::all);
        platform::services().fileOperations = &operations;
        platform.launch(48000.0);
        loadSound({0.25F, -0.5F, 1.0F});
    }
    ~SaveOnDisk() override {
        std::error_code ignored;
        fs::permissions(folder, fs::perms::all, ignored);
        fs::remove_all(folder, ignored);
    }

    fs::path oldFile(const std::string& name) const {
        std::ofstream(folder / name, std::ios::binary)
            .write(std::string(kOld.begin(), kOld.end()).data(),
                   static_cast<std::streamsize>(kOld.size()));
        return folder / name;
    }
    static bool save(const fs::path& path) {
        SoundCopy copy = SoundCopy::take();
        return saveAsAudioFile(FileUrl(path), copy.bytes());
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder)) {
            found.push_back(entry.path().filename());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    FakePlatform platform;
    platform::PosixFileOperations operations;
    HiddenNames hiddenNames;
    fs::path folder;
};

using Names = std::vector<std::string>;

inline constexpr unsigned kNobody = 65534;

/// Root may write everything, so the test that asks for refusals is somebody else.
inline void becomeAnybody() {
    if (::geteuid() == 0 && (::setresgid(kNobody, kNobody, kNobody) != 0 ||
                             ::setresuid(kNobody, kNobody, kNobody) != 0)) {
        std::_Exit(99);
    }
    ::prctl(PR_SET_DUMPABLE, 1); // the leak checker looks at its own process
}

} // namespace zemo::test
