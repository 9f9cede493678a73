#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include <gtest/gtest.h>

#include "SavesOnDisk.h"
#include "files/AtomicFile.h"

/// Who may do what with a file that is saved, on a real disk.
namespace zemo::test {
namespace {

/// An entry of an access list as the system keeps it: a tag, rights and whose they are.
struct ListEntry {
    std::uint16_t tag;
    std::uint16_t rights;
    std::uint32_t whose = UINT32_MAX;
};
constexpr std::uint16_t kOwner = 1;
constexpr std::uint16_t kUser = 2;
constexpr std::uint16_t kOwningGroup = 4;
constexpr std::uint16_t kMask = 0x10;
constexpr std::uint16_t kOthers = 0x20;
constexpr unsigned kSomebody = 54321;
constexpr const char* kAccessList = "system.posix_acl_access";

Bytes little(std::uint64_t value, std::size_t bytes) {
    Bytes result = big(value, bytes);
    std::reverse(result.begin(), result.end());
    return result;
}

std::string listOf(const std::vector<ListEntry>& entries) {
    Bytes bytes = little(2, 4);
    for (const ListEntry& entry : entries) {
        bytes =
            join({bytes, little(entry.tag, 2), little(entry.rights, 2), little(entry.whose, 4)});
    }
    return {bytes.begin(), bytes.end()};
}

/// The owner may do all, somebody may read and write, the owning group and all others nothing.
std::string listForSomebody() {
    return listOf(
        {{kOwner, 7}, {kUser, 6, kSomebody}, {kOwningGroup, 0}, {kMask, 6}, {kOthers, 0}});
}

bool setAttribute(const fs::path& path, const char* name, const std::string& value) {
    return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

/// Empty where there is none.
std::string attribute(const fs::path& path, const char* name) {
    std::string value(4096, '\0');
    const ssize_t size = ::getxattr(path.c_str(), name, value.data(), value.size());
    value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return value;
}

/// Everything about a file's rights, on either kind of disk.
class AttributesOnDisk : public SaveOnDisk, public testing::WithParamInterface<bool> {
protected:
    AttributesOnDisk() {
        if (!GetParam()) {
            platform::services().fileOperations = &hiddenNames;
        }
    }
};

/// For the test that makes a file of somebody else, or ends as somebody else.
bool isRoot() {
    return ::geteuid() == 0;
}

TEST_P(AttributesOnDisk, TheModeIsKept) {
    for (const std::uint32_t mode : {0600U, 0400U, 0640U, 0604U, 0666U, 0755U, 0711U, 02750U}) {
        const fs::path path = oldFile("x.caf");
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        if (mode != 0400U || isRoot()) {
            EXPECT_TRUE(save(path));
            EXPECT_EQ(contentOf(path), kNew);
        }
        EXPECT_EQ(modeOf(path), mode);
        EXPECT_EQ(names(), Names{"x.caf"});
        fs::remove(path);
    }
}

/// While the program writes, nobody else can open what there is of a private file, and without a
/// name nobody at all finds it.
TEST_P(AttributesOnDisk, APrivateFileIsPrivateAtEveryStep) {
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    const mode_t before = ::umask(0);
    AtomicFile file;
    std::size_t most = 0;
    const auto look = [&] {
        std::size_t found = 0;
        for (const auto& entry : fs::directory_iterator(folder)) {
            EXPECT_EQ(modeOf(entry.path()), 0600U) << entry.path();
            ++found;
        }
        most = std::max(most, found);
    };
    ASSERT_EQ(file.create(path), 0);
    look();
    ASSERT_EQ(file.write(kNew.data(), kNew.size()), 0);
    look();
    ASSERT_EQ(file.flush(), 0);
    look();
    ASSERT_EQ(file.close(), 0);
    look();
    ASSERT_EQ(file.replaceTarget(), 0);
    look();
    ::umask(before);
    EXPECT_EQ(most, GetParam() ? 1U : 2U);
    EXPECT_EQ(contentOf(path), kNew);
}

TEST_P(AttributesOnDisk, WhatTheOwnerClosesWhileItIsSavedStaysClosed) {
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    AtomicFile file;
    ASSERT_EQ(file.create(path), 0);
    ASSERT_EQ(file.write(kNew.data(), kNew.size()), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    ASSERT_EQ(file.flush(), 0);
    ASSERT_EQ(file.close(), 0);
    ASSERT_EQ(file.replaceTarget(), 0);
    EXPECT_EQ(modeOf(path), 0600U);
}

TEST_P(AttributesOnDisk, TheOwnerAndTheGroupAreKeptWhereTheyCanBeHad) {
    if (!isRoot()) {
        GTEST_SKIP() << "Only root can make a file of somebody else.";
    }
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::chown(path.c_str(), 1234, 2345), 0);
    ASSERT_EQ(::chmod(path.c_str(), 06770), 0);
    EXPECT_TRUE(save(path));
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 2345U);
    EXPECT_EQ(modeOf(path), 06770U);
}

/// The group's bits would be another group's.
TEST_P(AttributesOnDisk, WithoutTheOldGroupItsRightsAreDropped) {
    if (!isRoot()) {
        GTEST_SKIP() << "Only root can make a file of a group that somebody else is not in.";
    }
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::chown(path.c_str(), kNobody, 2345), 0);
    ASSERT_EQ(::chmod(path.c_str(), 02674), 0);
    EXPECT_EXIT((becomeAnybody(), std::_Exit(save(path) ? 0 : 1)), testing::ExitedWithCode(0), "");
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_gid, kNobody);
    EXPECT_EQ(modeOf(path), 0604U);
    EXPECT_EQ(contentOf(path), kNew);
}

/// Who may write a file need not own it: what replaces it is theirs, with the old rights for
/// others.
TEST_P(AttributesOnDisk, AFileOfSomebodyElsesBecomesTheUsersOwn) {
    if (!isRoot()) {
        GTEST_SKIP() << "Only root can make a file of somebody else.";
    }
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::chown(path.c_str(), 1234, kNobody), 0);
    ASSERT_EQ(::chmod(path.c_str(), 04664), 0);
    EXPECT_EXIT((becomeAnybody(), std::_Exit(save(path) ? 0 : 1)), testing::ExitedWithCode(0), "");
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kNobody);
    EXPECT_EQ(modeOf(path), 0664U);
}

TEST_P(AttributesOnDisk, AnAccessListIsKept) {
    const fs::path path = oldFile("x.caf");
    if (!setAttribute(path, kAccessList, listForSomebody())) {
        GTEST_SKIP() << "There are no access lists here.";
    }
    EXPECT_TRUE(save(path));
    EXPECT_EQ(attribute(path, kAccessList), listForSomebody());
    EXPECT_EQ(modeOf(path), 0760U); // the mask stands where the group's rights are
    EXPECT_EQ(contentOf(path), kNew);
}

TEST_P(AttributesOnDisk, InAnAccessListTheRightsOfAGroupThatCannotBeHadAreDropped) {
    const fs::path path = oldFile("x.caf");
    const auto list = [](std::uint16_t group) {
        return listOf(
            {{kOwner, 6}, {kUser, 6, kSomebody}, {kOwningGroup, group}, {kMask, 6}, {kOthers, 0}});
    };
    if (!isRoot() || !setAttribute(path, kAccessList, list(6))) {
        GTEST_SKIP() << "This needs root, and a disk with access lists.";
    }
    ASSERT_EQ(::chown(path.c_str(), kNobody, 2345), 0);
    EXPECT_EXIT((becomeAnybody(), std::_Exit(save(path) ? 0 : 1)), testing::ExitedWithCode(0), "");
    EXPECT_EQ(attribute(path, kAccessList), list(0));
}

/// The folder's list would let somebody in who could not read the old file.
TEST_P(AttributesOnDisk, TheFoldersAccessListIsNotPutOnAFileThatHadNone) {
    if (!setAttribute(folder, "system.posix_acl_default", listForSomebody())) {
        GTEST_SKIP() << "There are no access lists here.";
    }
    const fs::path path = oldFile("x.caf");
    ASSERT_EQ(::removexattr(path.c_str(), kAccessList), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    EXPECT_TRUE(save(path));
    EXPECT_EQ(attribute(path, kAccessList), "");
    EXPECT_EQ(modeOf(path), 0640U);
}

TEST_P(AttributesOnDisk, ANewFileHasTheFoldersAccessList) {
    if (!setAttribute(folder, "system.posix_acl_default", listForSomebody())) {
        GTEST_SKIP() << "There are no access lists here.";
    }
    oldFile("by hand");
    EXPECT_TRUE(save(folder / "x.caf"));
    EXPECT_NE(attribute(folder / "x.caf", kAccessList), "");
    EXPECT_EQ(attribute(folder / "x.caf", kAccessList), attribute(folder / "by hand", kAccessList));
    EXPECT_EQ(modeOf(folder / "x.caf"), modeOf(folder / "by hand"));
}

TEST_P(AttributesOnDisk, ExtendedAttributesAreKept) {
    const fs::path path = oldFile("x.caf");
    const std::string large(1500, 'l');
    if (!setAttribute(path, "user.origin", "a microphone") ||
        !setAttribute(path, "user.large", large) || !setAttribute(path, "user.empty", "")) {
        GTEST_SKIP() << "There are no extended attributes here.";
    }
    EXPECT_TRUE(save(path));
    EXPECT_EQ(attribute(path, "user.origin"), "a microphone");
    EXPECT_EQ(attribute(path, "user.large"), large);
    EXPECT_EQ(::getxattr(path.c_str(), "user.empty", nullptr, 0), 0);
}

/// They speak of the old content.
TEST_P(AttributesOnDisk, TheRightsOfAProgramAreNotCarriedOver) {
    const fs::path path = oldFile("x.caf");
    const std::string netRaw("\x01\x00\x00\x02\x00\x20\x00\x00\x00\x20\x00\x00"
                             "\x00\x00\x00\x00\x00\x00\x00\x00",
                             20);
    if (!setAttribute(path, "security.capability", netRaw)) {
        GTEST_SKIP() << "Only root gives a program rights.";
    }
    EXPECT_TRUE(save(path));
    EXPECT_EQ(attribute(path, "security.capability"), "");
}

/// As in a folder where somebody may leave files but not look: the file is saved.
TEST_P(AttributesOnDisk, AFolderThatMayNotBeReadTakesASave) {
    fs::permissions(folder, fs::perms::owner_write | fs::perms::owner_exec |
                                fs::perms::others_write | fs::perms::others_exec);
    EXPECT_EXIT((becomeAnybody(), std::_Exit(save(folder / "x.caf") ? 0 : 1)),
                testing::ExitedWithCode(0), "");
    fs::permissions(folder, fs::perms::all);
    EXPECT_EQ(contentOf(folder / "x.caf"), kNew);
    EXPECT_EQ(names(), Names{"x.caf"});
}

INSTANTIATE_TEST_SUITE_P(Disks, AttributesOnDisk, testing::Bool(),
                         [](const auto& test) { return test.param ? "Nameless" : "Hidden"; });

} // namespace
} // namespace zemo::test
