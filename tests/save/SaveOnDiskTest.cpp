#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

#include "SavesOnDisk.h"
#include "files/AtomicFile.h"

namespace zemo::test {
namespace {

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

TEST_F(SaveOnDisk, WhoHasTheOldFileOpenGoesOnReadingIt) {
    const fs::path path = oldFile("x.caf");
    std::ifstream reader(path, std::ios::binary);
    EXPECT_TRUE(save(path));
    const Bytes read{std::istreambuf_iterator<char>(reader), std::istreambuf_iterator<char>()};
    EXPECT_EQ(read, kOld);
}

// Names -------------------------------------------------------------------------------------

TEST_F(SaveOnDisk, ANamelessFileTakesTheTargetsNameAndNoOther) {
    const int file = operations.createNameless(folder, platform::NewFileAccess::Default);
    ASSERT_GE(file, 0);
    EXPECT_EQ(names(), Names());
    EXPECT_EQ(operations.link(file, folder / "x"), 0);
    EXPECT_EQ(operations.link(file, folder / "x"), -EEXIST);
    oldFile("y");
    EXPECT_EQ(operations.linkOver(file, folder / "x", folder / "y"), -EEXIST);
    EXPECT_EQ(operations.linkOver(file, folder / "absent" / "z", folder / "y"), -ENOENT);
    EXPECT_EQ(contentOf(folder / "y"), kOld);
    fs::create_directories(folder / "d" / "inside");
    EXPECT_EQ(operations.linkOver(file, folder / "hidden", folder / "d"), -EISDIR);
    EXPECT_EQ(operations.linkOver(file, folder / "hidden", folder / "y"), 0);
    EXPECT_EQ(operations.close(file), 0);
    EXPECT_EQ(contentOf(folder / "y"), Bytes());
    EXPECT_EQ(names(), (Names{"d", "x", "y"}));
}

/// Where no process can be made the file is put in its place by this one.
TEST_F(SaveOnDisk, AFileIsReplacedWithoutAnotherProcess) {
    const fs::path path = oldFile("x.caf");
    const auto saveAlone = [&] {
        const rlimit none{0, 0};
        becomeAnybody();
        std::_Exit(::setrlimit(RLIMIT_NPROC, &none) == 0 && save(path) ? 0 : 1);
    };
    fs::permissions(path, fs::perms::owner_all | fs::perms::others_all);
    EXPECT_EXIT(saveAlone(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(contentOf(path), kNew);
    EXPECT_EQ(names(), Names{"x.caf"});
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
