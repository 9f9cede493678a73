#include "rescue/RescueFolder.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "Rescues.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;
using rescue::RescueFolder;

class RescueFolders : public RescueTest {
protected:
    static void write(const fs::path& file) { std::ofstream(file) << "a sound"; }

    /// A folder with a copy in it, whose program has ended.
    void leave(const std::string& name,
               fs::file_time_type time = fs::file_time_type::clock::now()) {
        const auto folder = RescueFolder::make(root_);
        ASSERT_TRUE(folder);
        const fs::path file = folder->fileFor(name);
        write(file);
        fs::last_write_time(file, time);
    }
};

class Environment {
public:
    explicit Environment(const char* state, const char* home) {
        set("XDG_STATE_HOME", state);
        set("HOME", home);
    }

private:
    static void set(const char* name, const char* text) {
        if (text == nullptr) {
            ::unsetenv(name);
        } else {
            ::setenv(name, text, 1);
        }
    }
};

TEST(RescueRoot, IsUnderTheStateFolderOfTheEnvironment) {
    const Environment variables("/state", "/home/zoe");
    EXPECT_EQ(rescue::rescueRoot(), "/state/zemo/rescue");
}

TEST(RescueRoot, IsUnderTheHomeFolderOtherwiseAlsoWhenTheStateFolderIsRelative) {
    for (const char* const state : {static_cast<const char*>(nullptr), "", "state"}) {
        const Environment variables(state, "/home/zoe");
        EXPECT_EQ(rescue::rescueRoot(), "/home/zoe/.local/state/zemo/rescue");
    }
}

TEST(RescueRoot, IsNowhereWithoutAHome) {
    for (const char* const home : {static_cast<const char*>(nullptr), "", "zoe"}) {
        const Environment variables(nullptr, home);
        EXPECT_EQ(rescue::rescueRoot(), std::nullopt);
    }
}

TEST_F(RescueFolders, AreMadeForTheUserAlone) {
    const auto folder = RescueFolder::make(root_);
    ASSERT_TRUE(folder);
    for (const fs::path& path : {root_, folder->fileFor("a").parent_path()}) {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
    }
}

TEST_F(RescueFolders, CannotBeMadeWhereAFileIsInTheWay) {
    write(folder_ / "zemo");
    EXPECT_FALSE(RescueFolder::make(root_));
}

TEST_F(RescueFolders, AreAbandonedOnlyOnceTheirProgramHasEnded) {
    {
        const auto folder = RescueFolder::make(root_);
        write(folder->fileFor("bell"));
        EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
    }
    const auto found = RescueFolder::takeAbandoned(root_);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].copy().filename(), "bell.caf");
}

TEST_F(RescueFolders, AreTakenByOneProgramOnly) {
    leave("bell");
    const auto found = RescueFolder::takeAbandoned(root_);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
}

TEST_F(RescueFolders, ComeTheLatestCopyFirst) {
    const auto now = fs::file_time_type::clock::now();
    leave("second", now - std::chrono::hours(2));
    leave("first", now - std::chrono::hours(1));
    leave("third", now - std::chrono::hours(3));
    std::vector<std::string> names;
    for (const RescueFolder& folder : RescueFolder::takeAbandoned(root_)) {
        names.push_back(folder.copy().stem());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(RescueFolders, WithoutACopyAreRemovedWithWhatIsHalfWritten) {
    fs::create_directories(root_ / "empty");
    {
        const auto folder = RescueFolder::make(root_);
        write(folder->fileFor("x").parent_path() / ".zemo-0123456789abcdef");
    }
    EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueFolders, ThatSomebodyElsePutThereStay) {
    fs::create_directories(root_ / "mine");
    write(root_ / "mine" / "bell.caf");
    write(root_ / "notes.caf");
    EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
    EXPECT_EQ(copies().size(), 2U);
}

TEST_F(RescueFolders, AreNotLookedForOutsideByALink) {
    fs::create_directories(root_ / "link");
    write(folder_ / "victim");
    fs::create_symlink(folder_ / "victim", root_ / "link" / ".lock");
    EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
    EXPECT_TRUE(fs::exists(folder_ / "victim"));
}

TEST_F(RescueFolders, AreGoneOnceTheyAreRemoved) {
    auto folder = RescueFolder::make(root_);
    write(folder->fileFor("bell"));
    folder->remove();
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueFolders, KeepOneCopyOfTheLatestName) {
    auto folder = RescueFolder::make(root_);
    write(folder->fileFor("bell"));
    write(folder->fileFor("drum"));
    folder->removeCopiesBut(folder->fileFor("drum"));
    folder->look();
    EXPECT_EQ(folder->copy().filename(), "drum.caf");
    EXPECT_EQ(copies().size(), 1U);
}

TEST_F(RescueFolders, NameACopyAfterItsSound) {
    const auto folder = RescueFolder::make(root_);
    const auto name = [&](const std::string& sound) {
        return folder->fileFor(sound).filename().string();
    };
    EXPECT_EQ(name("bell.caf"), "bell.caf");
    EXPECT_EQ(name("bell.2.wav"), "bell.2.caf");
    EXPECT_EQ(name("Glöckchen"), "Glöckchen.caf");
    for (const std::string& odd : {std::string(), std::string(".bell"), std::string(".."),
                                   std::string("a\nb"), std::string(250, 'a')}) {
        EXPECT_EQ(name(odd), "sound.caf") << odd;
    }
    EXPECT_EQ(folder->fileFor("../../bell").parent_path(), folder->fileFor("x").parent_path());
}

} // namespace
} // namespace zemo::test
