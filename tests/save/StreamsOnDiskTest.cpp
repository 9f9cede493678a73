#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>

#include "SavesOnDisk.h"
#include "files/AtomicFile.h"
#include "platform/Progress.h"

/// Targets that are no regular files, through the real system calls.
namespace zemo::test {
namespace {

TEST_F(SaveOnDisk, ANamedPipeIsWrittenToOnceSomebodyReadsIt) {
    const fs::path path = folder / "x.caf";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const std::vector<std::byte> body(std::size_t{1} << 20, std::byte{7}); // more than a pipe holds
    WriteOutcome outcome;
    std::jthread writer([&] { outcome = writeAtomically(path, kOld, body); });
    const int reader = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    Bytes got;
    Bytes block(4096);
    for (ssize_t count = 1; count > 0;) {
        count = ::read(reader, block.data(), block.size());
        got.insert(got.end(), block.begin(), block.begin() + std::max<ssize_t>(count, 0));
    }
    writer.join();
    ::close(reader);
    EXPECT_TRUE(outcome.done());
    EXPECT_EQ(got.size(), kOld.size() + body.size());
    EXPECT_TRUE(std::equal(kOld.begin(), kOld.end(), got.begin()));
    EXPECT_TRUE(fs::is_fifo(path));
    EXPECT_EQ(names(), Names{"x.caf"});
}

TEST_F(SaveOnDisk, ANamedPipeThatNobodyReadsIsWaitedForUntilTheWorkIsToStop) {
    const fs::path path = folder / "x.caf";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    class Impatient final : public platform::PosixFileOperations {
    public:
        explicit Impatient(platform::Progress& progress) : progress_(progress) {}

    private:
        void awaitStream(int descriptor) override {
            PosixFileOperations::awaitStream(descriptor);
            progress_.requestStop();
        }
        platform::Progress& progress_;
    };
    platform::Progress progress;
    const platform::ProgressScope scope(&progress);
    Impatient impatient(progress);
    platform::services().fileOperations = &impatient;
    EXPECT_TRUE(writeAtomically(path, kOld, {}).cancelled);
    EXPECT_TRUE(fs::is_fifo(path));
}

TEST_F(SaveOnDisk, ADeviceTakesWhatIsWritten) {
    EXPECT_TRUE(writeAtomically("/dev/null", kOld, {}).done());
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(writeAtomically("/dev/full", kOld, {}).writeError, ENOSPC);
}

/// Whatever they are called, and however they are reached: what is open for appending is appended
/// to, and nothing is put in the place of a link under /proc.
TEST_F(SaveOnDisk, DescriptorsAreWrittenToWhereTheyStand) {
    const fs::path path = oldFile("notes");
    const int notes = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    ASSERT_GE(notes, 0);
    const std::string number = std::to_string(notes);
    fs::create_symlink("/dev/fd/" + number, folder / "link");
    Bytes expected = kOld;
    for (const std::string& name :
         {"/dev/fd/" + number, "/proc/self/fd/" + number, "/proc/thread-self/fd/" + number,
          "/proc/" + std::to_string(::getpid()) + "/fd/" + number, (folder / "link").string()}) {
        EXPECT_TRUE(writeAtomically(name, kNew, {}).done()) << name;
        expected = join({expected, kNew});
        EXPECT_EQ(contentOf(path), expected) << name;
    }
    ::close(notes);
    EXPECT_EQ(names(), (Names{"link", "notes"}));
    EXPECT_EQ(writeAtomically("/dev/fd/" + number, kNew, {}).createError, EBADF);
}

/// Another process's: it is opened, and what is in it stays.
TEST_F(SaveOnDisk, TheDescriptorOfAnotherProcessIsAppendedTo) {
    const fs::path path = oldFile("notes");
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const pid_t other = ::fork();
    if (other == 0) {
        const int notes = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        ::dup3(notes, 99, O_CLOEXEC);
        [[maybe_unused]] const ssize_t written = ::write(ends[1], "x", 1);
        ::pause();
        std::_Exit(0);
    }
    char ready = 0;
    ASSERT_EQ(::read(ends[0], &ready, 1), 1);
    const std::string name = "/proc/" + std::to_string(other) + "/fd/99";
    EXPECT_TRUE(writeAtomically(name, kNew, {}).done());
    EXPECT_TRUE(fs::is_symlink(name));
    ::kill(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(contentOf(path), join({kOld, kNew}));
    EXPECT_EQ(names(), Names{"notes"});
}

} // namespace
} // namespace zemo::test
