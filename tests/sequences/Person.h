#pragma once

#include <QString>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Accounts.h"
#include "UseModel.h"
#include "platform_linux/LinuxServices.h"
#include "support/WindowUnderTest.h"

namespace zemo::test {

/// Uses the program's window at random, over the real disk, and compares it after each deed with
/// what it should be. What an earlier program has left in the folder is there.
class Person {
public:
    Person(std::filesystem::path folder, std::uint32_t seed);

    /// Does one thing. What is wrong afterwards is in wrong().
    void doSomething();
    /// Waits until the copies on the disk are those that they should be.
    void settle();
    const std::string& wrong() const { return wrong_; }
    /// What becomes of a program that is killed now.
    Account account(bool isSettled) const;

private:
    using Deed = void (Person::*)();

    // Deeds.
    void open();
    void openSaved();
    void openNothing();
    void openRefused();
    void import();
    void transform();
    void cancelWork();
    void revert();
    void save();
    void saveLater();
    void exportExactly();
    void exportRounded();
    void restore();
    void discard();

    std::string newName();
    std::filesystem::path newFile(const std::string& name);
    std::vector<float> newSamples();
    void press(const std::function<void()>& fill);
    void chooseTransformation();
    bool saveAs(const std::string& name, const std::function<void()>& meanwhile);
    const ModelSound* offered() const;
    void discardLeft();
    void check();
    void checkOffer();
    void expect(bool isTrue, const std::string& what);
    bool waitUntil(const std::function<bool()>& condition);
    QString label(const char* name) const;
    QString titleOf(const std::string& name) const;

    std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(random_()) % end; }
    bool oneIn(std::uint32_t count) { return below(count) == 0; }

    std::filesystem::path folder_;
    std::mt19937 random_;
    platform::PosixFileOperations operations_;
    platform::PosixFileSystem fileSystem_;
    WindowUnderTest zemo_; ///< writes copies to the end
    UseModel model_;
    std::vector<std::filesystem::path> saved_;
    std::map<std::string, int> deeds_;
    std::string deed_;
    std::string wrong_;
    int files_ = 0;
};

} // namespace zemo::test
