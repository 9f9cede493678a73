#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <gtest/gtest.h>

#include "SavedFiles.h"
#include "files/AtomicFile.h"
#include "files/AudioFileWriter.h"
#include "platform_linux/LinuxServices.h"
#include "support/FakePlatform.h"

/// Saving through the real system calls, into a folder of its own.
namespace zemo::test {
namespace {

namespace fs = std::filesystem;

const Bytes kOld = counting(50);
const Bytes kNew = expectedCaf({0x3E800000, 0xBF000000, 0x3F800000, 0, 0});

Bytes contentOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::uint32_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

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
    fs::path folder;
};

using Names = std::vector<std::string>;

/// Root may write everything, so the test that asks for refusals is somebody else.
void becomeAnybody() {
    constexpr unsigned kNobody = 65534;
    if (::geteuid() == 0 && (::setresgid(kNobody, kNobody, kNobody) != 0 ||
                             ::setresuid(kNobody, kNobody, kNobody) != 0)) {
        std::_Exit(99);
    }
    ::prctl(PR_SET_DUMPABLE, 1); // the leak checker looks at its own process
}

TEST_F(SaveOnDisk, ANewFileIsWrittenWhole) {
    EXPECT_TRUE(save(folder / "x.caf"));
    EXPECT_EQ(contentOf(folder / "x.caf"), kNew);
    EXPECT_EQ(names(), Names{"x.caf"});
}

/// There a file may have the descriptor 0.
TEST_F(SaveOnDisk, WithoutAStandardInputFilesAreWrittenAndClosedAllTheSame) {
    const int kept = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);
    EXPECT_TRUE(save(folder / "x.caf"));
    {
        AtomicFile unfinished;
        EXPECT_EQ(unfinished.create(folder / "y.caf"), 0);
        EXPECT_NE(::fcntl(STDIN_FILENO, F_GETFD), -1);
    }
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1);
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
    EXPECT_EQ(contentOf(folder / "x.caf"), kNew);
    EXPECT_EQ(names(), std::vector<std::string>{"x.caf"});
}

TEST_F(SaveOnDisk, ANewFileHasThePermissionsThatTheUserGivesNewFiles) {
    const mode_t before = ::umask(027);
    EXPECT_TRUE(save(folder / "x.caf"));
    ::umask(before);
    EXPECT_EQ(modeOf(folder / "x.caf"), 0640U);
}

TEST_F(SaveOnDisk, AnOldFileIsReplacedAndKeepsItsPermissions) {
    for (const std::uint32_t mode : {0600U, 0640U, 0644U, 0666U, 0755U}) {
        const fs::path path = oldFile("x.caf");
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        EXPECT_TRUE(save(path));
        EXPECT_EQ(contentOf(path), kNew);
        EXPECT_EQ(modeOf(path), mode);
        EXPECT_EQ(names(), Names{"x.caf"});
    }
}

TEST_F(SaveOnDisk, AnOldFileKeepsItsOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "Only root can make a file of somebody else.";
    }
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::chown(path.c_str(), 1234, 2345), 0);
    EXPECT_TRUE(save(path));
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 2345U);
}

TEST_F(SaveOnDisk, WhoHasTheOldFileOpenGoesOnReadingIt) {
    const fs::path path = oldFile("x.caf");
    std::ifstream reader(path, std::ios::binary);
    EXPECT_TRUE(save(path));
    const Bytes read{std::istreambuf_iterator<char>(reader), std::istreambuf_iterator<char>()};
    EXPECT_EQ(read, kOld);
}

// Links -------------------------------------------------------------------------------------

TEST_F(SaveOnDisk, AnAbsoluteLinkIsFollowedAndStays) {
    oldFile("real.caf");
    fs::create_symlink(folder / "real.caf", folder / "link.caf");
    EXPECT_TRUE(save(folder / "link.caf"));
    EXPECT_TRUE(fs::is_symlink(folder / "link.caf"));
    EXPECT_EQ(contentOf(folder / "real.caf"), kNew);
    EXPECT_EQ(names(), (Names{"link.caf", "real.caf"}));
}

TEST_F(SaveOnDisk, ARelativeLinkCountsFromItsOwnFolder) {
    fs::create_directories(folder / "a");
    fs::create_directories(folder / "b");
    oldFile("b/real.caf");
    fs::create_symlink("../b/real.caf", folder / "a" / "link.caf");
    EXPECT_TRUE(save(folder / "a" / "link.caf"));
    EXPECT_TRUE(fs::is_symlink(folder / "a" / "link.caf"));
    EXPECT_EQ(contentOf(folder / "b" / "real.caf"), kNew);
}

TEST_F(SaveOnDisk, AChainOfLinksIsFollowedToItsEnd) {
    oldFile("real.caf");
    fs::create_symlink("real.caf", folder / "1.caf");
    fs::create_symlink(folder / "1.caf", folder / "2.caf");
    fs::create_symlink("2.caf", folder / "3.caf");
    EXPECT_TRUE(save(folder / "3.caf"));
    EXPECT_EQ(contentOf(folder / "real.caf"), kNew);
    EXPECT_EQ(names(), (Names{"1.caf", "2.caf", "3.caf", "real.caf"}));
}

TEST_F(SaveOnDisk, ALinkToNothingMakesItsTarget) {
    fs::create_symlink("absent.caf", folder / "link.caf");
    EXPECT_TRUE(save(folder / "link.caf"));
    EXPECT_TRUE(fs::is_symlink(folder / "link.caf"));
    EXPECT_EQ(contentOf(folder / "absent.caf"), kNew);
}

TEST_F(SaveOnDisk, ALinkedFolderIsGoneThrough) {
    fs::create_directories(folder / "real");
    fs::create_symlink("real", folder / "linked");
    EXPECT_TRUE(save(folder / "linked" / "x.caf"));
    EXPECT_EQ(contentOf(folder / "real" / "x.caf"), kNew);
}

TEST_F(SaveOnDisk, TheKindOfFileIsThatOfTheNameThatTheUserChose) {
    fs::create_symlink("real.aif", folder / "link.caf");
    EXPECT_TRUE(save(folder / "link.caf"));
    EXPECT_EQ(contentOf(folder / "real.aif"), kNew);
}

TEST_F(SaveOnDisk, LinksInACircleAreRefused) {
    fs::create_symlink("b.caf", folder / "a.caf");
    fs::create_symlink("a.caf", folder / "b.caf");
    EXPECT_EXIT(save(folder / "a.caf"), testing::ExitedWithCode(1), "");
    EXPECT_EQ(names(), (Names{"a.caf", "b.caf"}));
}

// What is refused ---------------------------------------------------------------------------

TEST_F(SaveOnDisk, AFolderIsNotReplaced) {
    fs::create_directories(folder / "x.caf");
    EXPECT_EXIT(save(folder / "x.caf"), testing::ExitedWithCode(1), "");
    EXPECT_TRUE(fs::is_directory(folder / "x.caf"));
    EXPECT_EQ(names(), Names{"x.caf"});
}

TEST_F(SaveOnDisk, APipeIsNotReplacedNorWaitedFor) {
    ASSERT_EQ(::mkfifo((folder / "x.caf").c_str(), 0666), 0);
    EXPECT_EXIT(save(folder / "x.caf"), testing::ExitedWithCode(1), "");
    EXPECT_TRUE(fs::is_fifo(folder / "x.caf"));
}

TEST_F(SaveOnDisk, AFileThatTheUserMayNotWriteIsLeftAlone) {
    const fs::path path = oldFile("x.caf");
    fs::permissions(path, fs::perms::owner_read | fs::perms::others_read);
    EXPECT_EXIT((becomeAnybody(), save(path)), testing::ExitedWithCode(1), "");
    EXPECT_EQ(contentOf(path), kOld);
    EXPECT_EQ(names(), Names{"x.caf"});
}

TEST_F(SaveOnDisk, AFolderThatTheUserMayNotWriteIsLeftAlone) {
    const fs::path path = oldFile("x.caf");
    fs::permissions(path, fs::perms::owner_all | fs::perms::others_all);
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read |
                                fs::perms::others_exec);
    EXPECT_EXIT((becomeAnybody(), save(path)), testing::ExitedWithCode(1), "");
    EXPECT_EQ(contentOf(path), kOld);
    EXPECT_EQ(names(), Names{"x.caf"});
}

TEST_F(SaveOnDisk, AFolderThatIsNotThereIsNotMade) {
    EXPECT_EXIT(save(folder / "absent" / "x.caf"), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(save(oldFile("file") / "x.caf"), testing::ExitedWithCode(1), "");
    EXPECT_EQ(names(), Names{"file"});
}

TEST_F(SaveOnDisk, AFileThatMayNotGrowAsLargeIsTakenAway) {
    const fs::path path = oldFile("x.caf");
    const auto saveWithLittleRoom = [&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit room{70, 70};
        ::setrlimit(RLIMIT_FSIZE, &room);
        save(path);
    };
    EXPECT_EXIT(saveWithLittleRoom(), testing::ExitedWithCode(1), "");
    EXPECT_EQ(contentOf(path), kOld);
    EXPECT_EQ(names(), Names{"x.caf"});
}

TEST_F(SaveOnDisk, NoTwoTemporaryNamesAreAlike) {
    std::set<std::uint64_t> numbers;
    for (int i = 0; i < 10000; ++i) {
        numbers.insert(operations.uniqueNumber());
    }
    EXPECT_EQ(numbers.size(), 10000U);
}

} // namespace
} // namespace zemo::test
