// All the threads of the program at once, at random. Worth most under the thread sanitizer; what is
// heard and what becomes of the sound proves the same without it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>

#include "StressedProgram.h"

namespace zemo::test {
namespace {

constexpr std::uint64_t kCalls = 150'000;
constexpr std::uint64_t kFewestDeeds = 1000; ///< however fast the calls are

std::uint64_t numberIn(const char* variable, std::uint64_t otherwise) {
    const char* const text =
        std::getenv(variable); // NOLINT(concurrency-mt-unsafe): no other thread yet
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

void print(const StressedProgram& program) {
    std::cout << program.calls() << " render calls, " << program.callsWithSound() << " with sound; "
              << program.midiLists() << " MIDI lists, " << program.notes() << " presses of play; "
              << program.cancelled() << " pieces of work cancelled\n";
    for (const auto& [what, count] : program.done()) {
        std::cout << std::setw(8) << count << "  " << what << "\n";
    }
}

TEST(ThreadsUnderStress, EveryCallIsOfOneSoundAndEverySoundIsTheOneThatWasAskedFor) {
    const std::uint64_t calls = numberIn("ZEMO_STRESS_CALLS", kCalls);
    const std::uint64_t seed = numberIn("ZEMO_STRESS_SEED", 20);
    std::cout << "ZEMO_STRESS_CALLS=" << calls << " ZEMO_STRESS_SEED=" << seed << std::endl;
    StressedProgram program(static_cast<std::uint32_t>(seed));
    std::uint64_t deeds = 0;
    while ((program.calls() < calls || deeds < kFewestDeeds) && program.wrong().empty()) {
        program.doSomething();
        ++deeds;
    }
    EXPECT_TRUE(program.comeToRest());
    EXPECT_EQ(program.wrong(), "");
    print(program);
    EXPECT_GT(program.callsWithSound(), calls / 200);
    EXPECT_GT(program.notes(), 100U);
    EXPECT_GT(program.cancelled(), 0U);
    for (const char* what : {"open", "import", "save", "Revert", "resample", "AM", "lower sideband",
                             "upper sideband", "FM", "HD", "rescue copy", "rest"}) {
        EXPECT_GT(program.done().count(what), 0U) << what;
    }
}

} // namespace
} // namespace zemo::test
