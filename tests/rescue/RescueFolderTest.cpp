#include "rescue/RescueFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "Rescues.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;
using rescue::CopyFile;
using rescue::RescueFolder;
using rescue::soundNameOf;

class RescueFolders : public RescueTest {
protected:
    static void write(const fs::path& file) { std::ofstream(file) << "a sound"; }

    static fs::path placeOf(const RescueFolder& folder) {
        return folder.pathFor("x.caf").value_or("").parent_path();
    }
    static void writeCopy(const RescueFolder& folder, const std::string& sound) {
        write(folder.pathFor(folder.nameFor(sound)).value());
    }
    static std::vector<std::string> namesOf(const RescueFolder& folder) {
        std::vector<std::string> names;
        for (const CopyFile& copy : folder.copies()) {
            names.push_back(copy.name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    /// A folder with a copy in it, whose program has ended.
    fs::path leave(const std::string& name,
                   fs::file_time_type time = fs::file_time_type::clock::now()) {
        const auto folder = RescueFolder::make(root_);
        writeCopy(*folder, name);
        fs::last_write_time(placeOf(*folder) / name, time);
        return placeOf(*folder);
    }
    /// What was left there is not taken, and stays.
    void expectLeftAlone(const fs::path& file) {
        EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
        EXPECT_TRUE(fs::exists(file)) << file;
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

// Who may be there --------------------------------------------------------------------------------

TEST_F(RescueFolders, AreMadeForTheUserAlone) {
    const auto folder = RescueFolder::make(root_);
    ASSERT_TRUE(folder);
    for (const fs::path& path : {root_.parent_path(), root_, placeOf(*folder)}) {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all) << path;
    }
}

TEST_F(RescueFolders, AreMadeWithEveryFolderThatIsMissingAboveThem) {
    const fs::path state = folder_ / "home" / ".local" / "state";
    EXPECT_TRUE(RescueFolder::takeAbandoned(state / "zemo" / "rescue").empty());
    EXPECT_FALSE(fs::exists(folder_ / "home")) << "looking makes none";
    EXPECT_TRUE(RescueFolder::make(state / "zemo" / "rescue"));
    for (const fs::path& path : {folder_ / "home", folder_ / "home" / ".local", state}) {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all) << path;
    }
    write(folder_ / "file");
    EXPECT_FALSE(RescueFolder::make(folder_ / "file" / "state" / "zemo" / "rescue"));
}

TEST_F(RescueFolders, AreNotMadeNowhere) {
    EXPECT_FALSE(RescueFolder::make({}));
    EXPECT_TRUE(RescueFolder::takeAbandoned({}).empty());
}

TEST_F(RescueFolders, CannotBeMadeWhereAFileIsInTheWay) {
    write(folder_ / "zemo");
    EXPECT_FALSE(RescueFolder::make(root_));
}

TEST_F(RescueFolders, AreNeitherMadeNorTakenInARootThatOthersMayUse) {
    const fs::path left = leave("bell.caf") / "bell.caf";
    for (const auto perms :
         {fs::perms::group_read, fs::perms::group_write, fs::perms::group_exec,
          fs::perms::others_read, fs::perms::others_write, fs::perms::others_exec}) {
        fs::permissions(root_, fs::perms::owner_all | perms);
        EXPECT_FALSE(RescueFolder::make(root_));
        expectLeftAlone(left);
    }
    fs::permissions(root_, fs::perms::owner_all);
    EXPECT_EQ(RescueFolder::takeAbandoned(root_).size(), 1U);
}

TEST_F(RescueFolders, AreNotMadeWhereOthersMayPutAnotherRootInTheRootsPlace) {
    fs::create_directories(root_);
    fs::permissions(root_, fs::perms::owner_all);
    fs::permissions(root_.parent_path(), fs::perms::owner_all | fs::perms::others_write);
    EXPECT_FALSE(RescueFolder::make(root_));
    fs::permissions(root_.parent_path(), fs::perms::owner_all | fs::perms::others_read);
    EXPECT_TRUE(RescueFolder::make(root_));
}

TEST_F(RescueFolders, AreNeitherMadeNorTakenInTheRootOfAnother) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root gives folders away";
    }
    const fs::path left = leave("bell.caf") / "bell.caf";
    for (const fs::path& path : {root_, root_.parent_path()}) {
        ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
        EXPECT_FALSE(RescueFolder::make(root_));
        expectLeftAlone(left);
        ASSERT_EQ(::chown(path.c_str(), 0, 0), 0);
    }
}

TEST_F(RescueFolders, AreNeitherMadeNorTakenThroughALink) {
    const fs::path left = leave("bell.caf") / "bell.caf";
    for (const fs::path& path : {root_, root_.parent_path()}) {
        const fs::path moved = folder_ / "moved";
        fs::rename(path, moved);
        fs::create_directory_symlink(moved, path);
        EXPECT_FALSE(RescueFolder::make(root_));
        expectLeftAlone(left);
        fs::remove(path);
        fs::rename(moved, path);
    }
}

TEST_F(RescueFolders, MayBeReachedByALinkOfTheUsersOwn) {
    const fs::path link = folder_ / "link";
    fs::create_directory(folder_ / "state");
    fs::create_directory_symlink(folder_ / "state", link);
    EXPECT_TRUE(RescueFolder::make(link / "zemo" / "rescue"));
}

// Taking them -------------------------------------------------------------------------------------

TEST_F(RescueFolders, AreAbandonedOnlyOnceTheirProgramHasEnded) {
    {
        const auto folder = RescueFolder::make(root_);
        writeCopy(*folder, "bell.caf");
        writeCopy(*folder, "bell.caf");
        EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
    }
    const auto found = RescueFolder::takeAbandoned(root_);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(namesOf(found[0]), (std::vector<std::string>{"bell.caf", "bell.caf~2.caf"}));
}

TEST_F(RescueFolders, AreTakenByOneProgramOnly) {
    leave("bell.caf");
    const auto found = RescueFolder::takeAbandoned(root_);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
}

TEST_F(RescueFolders, TellWhenTheirCopiesWereWrittenAndHowLargeTheyAre) {
    const auto then = fs::file_time_type::clock::now() - std::chrono::hours(2);
    leave("bell.caf", then);
    const auto found = RescueFolder::takeAbandoned(root_);
    ASSERT_EQ(found.size(), 1U);
    const CopyFile copy = found[0].copies().at(0);
    EXPECT_EQ(copy.bytes, 7U);
    const auto age = std::chrono::system_clock::now() - copy.time;
    EXPECT_GT(age, std::chrono::minutes(119));
    EXPECT_LT(age, std::chrono::minutes(121));
}

TEST_F(RescueFolders, AreTakenWithTheLatestCopiesWhereThereAreManyAndTheOthersStay) {
    const auto now = fs::file_time_type::clock::now();
    const std::size_t count = RescueFolder::kMostTaken + 2;
    for (std::size_t i = 0; i < count; ++i) {
        leave(std::to_string(i) + ".caf", now - std::chrono::minutes(i));
    }
    {
        std::vector<std::string> names;
        const auto found = RescueFolder::takeAbandoned(root_);
        for (const RescueFolder& folder : found) {
            names.push_back(namesOf(folder).at(0));
        }
        EXPECT_EQ(names.size(), RescueFolder::kMostTaken);
        EXPECT_EQ(std::count(names.begin(), names.end(), "64.caf"), 0);
        EXPECT_EQ(std::count(names.begin(), names.end(), "65.caf"), 0);
        EXPECT_EQ(RescueFolder::takeAbandoned(root_).size(), 2U);
    }
    EXPECT_EQ(copies().size(), count);
}

TEST_F(RescueFolders, WithoutACopyAreRemovedWithWhatIsHalfWritten) {
    fs::create_directories(root_);
    fs::permissions(root_, fs::perms::owner_all);
    fs::create_directory(root_ / "0zEmpt");
    {
        const auto folder = RescueFolder::make(root_);
        write(placeOf(*folder) / ".zemo-0123456789abcdef");
    }
    EXPECT_TRUE(RescueFolder::takeAbandoned(root_).empty());
    EXPECT_TRUE(isRootEmpty());
}

// What is not ours --------------------------------------------------------------------------------

TEST_F(RescueFolders, ThatSomebodyElsePutThereStay) {
    leave("bell.caf");
    const fs::path mine = root_ / "mine";
    fs::create_directory(mine);
    fs::create_directory(root_ / "my_Own"); // as long as ours, but for its letters
    fs::create_directory(root_ / "myOwn1");
    write(root_ / "myOwn1" / "bell.caf"); // without a lock
    write(root_ / "notes.caf");
    EXPECT_EQ(RescueFolder::takeAbandoned(root_).size(), 1U);
    EXPECT_TRUE(fs::exists(mine)); // no name of ours, though it is empty
    EXPECT_TRUE(fs::exists(root_ / "my_Own"));
    EXPECT_EQ(copies().size(), 3U);
}

TEST_F(RescueFolders, OfAnotherOrOpenToOthersAreNotTaken) {
    const fs::path place = leave("bell.caf");
    fs::permissions(place, fs::perms::owner_all | fs::perms::others_read);
    expectLeftAlone(place / "bell.caf");
    fs::permissions(place, fs::perms::owner_all);
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(place.c_str(), 65534, 65534), 0);
        expectLeftAlone(place / "bell.caf");
    }
}

TEST_F(RescueFolders, ThatAreLinksAreNotTaken) {
    const fs::path place = leave("bell.caf");
    fs::rename(place, folder_ / "moved");
    fs::create_directory_symlink(folder_ / "moved", place);
    expectLeftAlone(folder_ / "moved" / "bell.caf");
    EXPECT_TRUE(fs::is_symlink(place));
}

TEST_F(RescueFolders, WhoseLocksAreNoFilesOfOursAreNotTaken) {
    const fs::path place = leave("bell.caf");
    fs::remove(place / ".lock");
    write(folder_ / "victim");
    fs::create_symlink(folder_ / "victim", place / ".lock");
    expectLeftAlone(place / "bell.caf");
    fs::remove(place / ".lock");
    ASSERT_EQ(::mkfifo((place / ".lock").c_str(), 0600), 0);
    expectLeftAlone(place / "bell.caf");
    EXPECT_TRUE(fs::exists(folder_ / "victim"));
}

TEST_F(RescueFolders, TakeNoLinkAndNoFolderForACopy) {
    const auto folder = RescueFolder::make(root_);
    write(folder_ / "diary.caf");
    fs::create_symlink(folder_ / "diary.caf", placeOf(*folder) / "link.caf");
    fs::create_directory(placeOf(*folder) / "folder.caf");
    write(placeOf(*folder) / "notes.txt");
    write(placeOf(*folder) / ".hidden.caf");
    writeCopy(*folder, "bell.caf");
    EXPECT_EQ(namesOf(*folder), std::vector<std::string>{"bell.caf"});
    EXPECT_FALSE(folder->copy("link.caf"));
}

TEST_F(RescueFolders, GiveNoPathOnceTheyAreElsewhere) {
    const auto folder = RescueFolder::make(root_);
    const fs::path place = placeOf(*folder);
    EXPECT_EQ(folder->pathFor("bell.caf"), place / "bell.caf");
    fs::rename(place, folder_ / "moved");
    EXPECT_EQ(folder->pathFor("bell.caf"), std::nullopt);
    fs::create_directory_symlink(folder_ / "moved", place);
    EXPECT_EQ(folder->pathFor("bell.caf"), std::nullopt);
    fs::remove(place);
    fs::create_directory(place);
    EXPECT_EQ(folder->pathFor("bell.caf"), std::nullopt) << "it is another one";
}

// Removing ----------------------------------------------------------------------------------------

TEST_F(RescueFolders, AreGoneOnceTheirLastCopyIsRemoved) {
    auto folder = RescueFolder::make(root_);
    writeCopy(*folder, "bell.caf");
    writeCopy(*folder, "drum.caf");
    folder->remove("bell.caf");
    EXPECT_FALSE(folder->removeIfEmpty());
    EXPECT_EQ(namesOf(*folder), std::vector<std::string>{"drum.caf"});
    folder->remove("drum.caf");
    EXPECT_TRUE(folder->removeIfEmpty());
    EXPECT_TRUE(isRootEmpty());
}

TEST_F(RescueFolders, AreNotRemovedWithWhatIsNotOurs) {
    auto folder = RescueFolder::make(root_);
    const fs::path thesis = placeOf(*folder) / "thesis.txt";
    write(thesis);
    writeCopy(*folder, "bell.caf");
    folder->remove("bell.caf");
    folder->remove("thesis.txt");
    EXPECT_TRUE(folder->removeIfEmpty()) << "nothing of ours is left";
    EXPECT_TRUE(fs::exists(thesis));
    folder.reset();
    expectLeftAlone(thesis);
}

TEST_F(RescueFolders, RemoveALinkAndNotWhatItPointsTo) {
    auto folder = RescueFolder::make(root_);
    write(folder_ / "diary.caf");
    fs::create_symlink(folder_ / "diary.caf", placeOf(*folder) / "bell.caf");
    folder->remove("bell.caf");
    EXPECT_TRUE(fs::exists(folder_ / "diary.caf"));
}

// Names -------------------------------------------------------------------------------------------

TEST_F(RescueFolders, NameACopyAfterItsSoundAndTellItAgain) {
    const auto folder = RescueFolder::make(root_);
    const std::vector<std::pair<std::string, std::string>> names{
        {"bell.caf", "bell.caf"},
        {"bell.wav", "bell.wav~1.caf"},
        {"bell.2.aif", "bell.2.aif~1.caf"},
        {"bell.CAF", "bell.CAF~1.caf"},
        {"Glöckchen", "Glöckchen~1.caf"},
        {"bell~1.caf", "bell~1.caf~1.caf"}, // as it stands it would be "bell"
        {"bell~.caf", "bell~.caf"},
        {"~1.caf", "~1.caf"},
        {"x.caf~3.caf", "x.caf~3.caf~1.caf"},
        {"\xFF\xFE not UTF-8", "\xFF\xFE not UTF-8~1.caf"},
    };
    for (const auto& [sound, file] : names) {
        EXPECT_EQ(folder->nameFor(sound), file);
        EXPECT_EQ(soundNameOf(file), sound);
    }
    const std::string longest(240, 'a');
    EXPECT_EQ(soundNameOf(folder->nameFor(longest)), longest);
}

TEST_F(RescueFolders, GiveSoundsOfOneNameFilesOfTheirOwn) {
    const auto folder = RescueFolder::make(root_);
    const std::vector<std::string> files{"bell.caf", "bell.caf~2.caf", "bell.caf~3.caf"};
    for (const std::string& file : files) {
        EXPECT_EQ(folder->nameFor("bell.caf"), file);
        EXPECT_EQ(soundNameOf(file), "bell.caf");
        writeCopy(*folder, "bell.caf");
    }
    fs::create_symlink("/dev/null", placeOf(*folder) / "drum.caf");
    EXPECT_EQ(folder->nameFor("drum.caf"), "drum.caf~2.caf") << "a link has a name, too";
}

TEST_F(RescueFolders, CallASoundByAnotherNameWhereItsOwnIsNoPartOfAFilesName) {
    const auto folder = RescueFolder::make(root_);
    for (const std::string& odd :
         {std::string(), std::string(".bell"), std::string(".."), std::string("a\nb"),
          std::string("../../bell.caf"), std::string(241, 'a')}) {
        EXPECT_EQ(folder->nameFor(odd), "sound.caf") << odd;
    }
}

} // namespace
} // namespace zemo::test
