#include "platform_linux/LinuxServices.h"

#include <gtest/gtest.h>

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

TEST(KernelVersion, IsTheNumberAfterTheFirstDot) {
    EXPECT_EQ(KernelVersion::minorOf("6.1.0-18-amd64"), 1);
    EXPECT_EQ(KernelVersion::minorOf("5.15.0"), 15);
    EXPECT_EQ(KernelVersion::minorOf("4.19"), 19);
    EXPECT_EQ(KernelVersion::minorOf("6.10-rc3"), 10);
    EXPECT_EQ(KernelVersion::minorOf("6.0.9"), 0);
}

TEST(KernelVersion, IsZeroWhereThereIsNoSuchNumber) {
    for (const char* const release : {"", "6", "6.", "6.x", ".", "6.99999999999999"}) {
        EXPECT_EQ(KernelVersion::minorOf(release), 0) << release;
    }
}

TEST(KernelVersion, IsThatOfTheRunningKernel) {
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    int major = -1;
    int minor = -1;
    ASSERT_EQ(std::sscanf(names.release, "%d.%d", &major, &minor), 2);
    EXPECT_EQ(KernelVersion().minorVersion(), minor);
}

TEST(LinuxMemory, HasSomeLeftButNotMoreThanTheMachineHas) {
    const auto pages = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES));
    const auto pageBytes = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    LinuxMemory memory;
    EXPECT_GT(memory.availableBytes(), 0U);
    EXPECT_LE(memory.availableBytes(), pages * pageBytes);
}

TEST(SteadyClock, NeverGoesBack) {
    SteadyClock clock;
    auto last = clock.now();
    for (int i = 0; i < 1000; ++i) {
        const auto now = clock.now();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(SteadyClock, SleepsAtLeastAsLongAsAsked) {
    SteadyClock clock;
    const auto before = clock.now();
    clock.sleepFor(3ms);
    EXPECT_GE(clock.now() - before, 3ms);
}

TEST(SystemTrace, PrintsToStandardOutputAsItStands) {
    SystemTrace trace("zemo-test");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    trace.print("no line end");
    trace.print(" 100% %s %n\n");
    trace.print("");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "no line end 100% %s %n\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(SystemTrace, PrintsErrorsToStandardErrorAsTheyStand) {
    SystemTrace trace("zemo-test");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    trace.printError("Error: 100% (-50)\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: 100% (-50)\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(SystemTrace, IsWrittenBeforeAnEndThatWritesNothingMore) {
    const std::string path = testing::TempDir() + "zemo-trace-" + std::to_string(::getpid());
    EXPECT_EXIT(
        {
            if (std::freopen(path.c_str(), "w", stdout) == nullptr) {
                ::_exit(1);
            }
            SystemTrace("zemo-test").print("the last words");
            ::_exit(3);
        },
        testing::ExitedWithCode(3), "");
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(line, "the last words");
    std::filesystem::remove(path);
}

TEST(SystemTrace, RepeatsTheSystemLogOnStandardErrorInOneLine) {
    SystemTrace trace("zemo-test");
    testing::internal::CaptureStderr();
    trace.log("val = 0.5 100% %s\n");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("val = 0.5 100% %s\n"), std::string::npos) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
}

} // namespace
} // namespace zemo::platform
