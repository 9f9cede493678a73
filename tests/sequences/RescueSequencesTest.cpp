// Sequences of what a person may do, at random, each of which ends with a kill. Afterwards every
// sound is accounted for: it is in a file, or its copy is there and is offered by the next program.
//     ZEMO_RESCUE_SEQUENCES=10000 ZEMO_RESCUE_SEED=7 rescue_sequences_test
// A sequence is one program or two, one after the other, each a process that kills itself. The
// program itself is started as  rescue_sequences_test --live FOLDER SEED.
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <string>

#include "Accounts.h"
#include "Person.h"
#include "rescue/RescueFolder.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDeeds[] = {"open",           "open what was saved",
                                  "open nothing",   "open what is refused",
                                  "import",         "transform",
                                  "cancel",         "Revert",
                                  "save",           "save later",
                                  "export exactly", "export rounded",
                                  "restore",        "discard"};

std::uint64_t numberIn(const char* variable, std::uint64_t otherwise) {
    const char* const text =
        std::getenv(variable); // NOLINT(concurrency-mt-unsafe): no other thread yet
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// One program's life, in a process of its own. It ends with a kill, or by saying what is wrong.
int live(int argc, char** argv) {
    QApplication application(argc, argv);
    const fs::path folder = argv[2];
    const auto seed = static_cast<std::uint32_t>(std::strtoul(argv[3], nullptr, 10));
    std::mt19937 random(seed);
    Person person(folder, seed + 1);
    const auto deeds = 3 + static_cast<std::uint32_t>(random() % 20);
    for (std::uint32_t i = 0; i < deeds && person.wrong().empty(); ++i) {
        person.doSomething();
    }
    const bool isSettled = random() % 2 == 0;
    if (isSettled && person.wrong().empty()) {
        person.settle();
    }
    if (!person.wrong().empty()) {
        std::cout << person.wrong() << std::endl;
        return EXIT_FAILURE;
    }
    person.account(isSettled).write(folder / "account");
    ::kill(::getpid(), SIGKILL);
    return EXIT_FAILURE;
}

/// Whether the process ended by its own kill.
bool startLife(const char* program, const fs::path& folder, std::uint32_t seed) {
    const std::string number = std::to_string(seed);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(program, program, "--live", folder.c_str(), number.c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

struct Totals {
    std::uint64_t kills = 0;
    std::uint64_t settled = 0;
    std::uint64_t kept = 0;
    std::uint64_t underWay = 0; ///< copies that a kill came before
    std::map<std::string, int> deeds;
};

/// What is wrong with what a killed program has left; empty: nothing.
std::string accountFor(const fs::path& folder, Totals& totals) {
    const fs::path root = folder / "zemo" / "rescue";
    const Account account = Account::read(folder / "account");
    const std::vector<KeptSound> kept = keptSounds(root);
    ++totals.kills;
    totals.settled += account.isSettled ? 1 : 0;
    totals.kept += kept.size();
    totals.underWay += account.unsaved.size() - std::min(account.unsaved.size(), kept.size());
    for (const auto& [deed, count] : account.deeds) {
        totals.deeds[deed] += count;
    }
    if (const std::string wrong = wrongWith(account, kept); !wrong.empty()) {
        return wrong;
    }
    std::size_t found = 0;
    for (const rescue::RescueFolder& left : rescue::RescueFolder::takeAbandoned(root)) {
        found += left.copies().size();
    }
    return found == kept.size() ? "" : "the next program finds another number of copies";
}

/// What is wrong; empty: nothing.
std::string playSequence(const char* program, std::uint32_t seed, Totals& totals) {
    std::string folder = fs::temp_directory_path() / "zemo-sequence-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr) {
        return "no folder can be made";
    }
    const std::uint32_t lives = 1 + seed % 2;
    for (std::uint32_t life = 0; life < lives; ++life) {
        if (!startLife(program, folder, seed * 2 + life)) {
            return "life " + std::to_string(life) + " in " + folder + " has ended by itself";
        }
        if (const std::string wrong = accountFor(folder, totals); !wrong.empty()) {
            return wrong + ", after life " + std::to_string(life) + " in " + folder;
        }
    }
    fs::remove_all(folder);
    return {};
}

int playSequences(const char* program) {
    const std::uint64_t count = numberIn("ZEMO_RESCUE_SEQUENCES", 24);
    const std::uint64_t seed = numberIn("ZEMO_RESCUE_SEED", 17);
    std::cout << "ZEMO_RESCUE_SEQUENCES=" << count << " ZEMO_RESCUE_SEED=" << seed << std::endl;
    Totals totals;
    int failures = 0;
    for (std::uint64_t i = 0; i < count && failures < 10; ++i) {
        const auto own = static_cast<std::uint32_t>(seed * 1000003 + i);
        if (const std::string wrong = playSequence(program, own, totals); !wrong.empty()) {
            std::cout << "FAILED: sequence " << i << ": " << wrong << std::endl;
            ++failures;
        }
    }
    std::cout << count << " sequences, " << totals.kills << " kills, " << totals.settled
              << " of them with every copy written; " << totals.kept << " copies found, "
              << totals.underWay << " under way when the kill came\n";
    for (const char* const deed : kDeeds) {
        std::cout << std::setw(8) << totals.deeds[deed] << "  " << deed << "\n";
        if (totals.deeds[deed] == 0) {
            std::cout << "FAILED: nobody did this: " << deed << "\n";
            ++failures;
        }
    }
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace
} // namespace zemo::test

int main(int argc, char** argv) {
    if (argc == 4 && std::strcmp(argv[1], "--live") == 0) {
        return zemo::test::live(argc, argv);
    }
    return zemo::test::playSequences(argv[0]);
}
