#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Memory.h"
#include "platform/Services.h"
#include "platform_linux/Descriptors.h"
#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

/// A system whose memory runs out as it is asked for it.
class WaningMemory final : public Memory {
public:
    explicit WaningMemory(std::uint64_t bytes) : left_(bytes) {}
    int questions = 0;

private:
    void preferLargePages(void* /*block*/, std::size_t /*bytes*/) override {}
    std::uint64_t availableBytes() override {
        ++questions;
        return left_ -= std::uint64_t{1} << 20;
    }
    std::uint64_t left_;
};

class StreamReading : public testing::Test {
protected:
    StreamReading() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
    ~StreamReading() override {
        services() = before_;
        for (const int end : ends) {
            if (end >= 0) {
                ::close(end);
            }
        }
    }

    void write(const std::string& text) const {
        EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void end() { ::close(std::exchange(ends[1], -1)); }
    std::string path() const { return "/dev/fd/" + std::to_string(ends[0]); }

    std::string contentOf(const std::string& name) {
        int error = 0;
        const auto stream = files.openForReading(name, error);
        if (stream == nullptr) {
            return "error " + std::to_string(error);
        }
        std::string content(stream->size(), '?');
        EXPECT_EQ(stream->readAt(0, content.data(), content.size()), content.size());
        return content;
    }

    PosixFileSystem files{Streams::Read};
    std::array<int, 2> ends{};

private:
    Services before_ = services();
};

TEST_F(StreamReading, APipeIsReadToItsEndOnce) {
    write("one ");
    write("two");
    end();
    EXPECT_EQ(contentOf(path()), "one two");
    EXPECT_EQ(contentOf(path()), "one two");
}

TEST_F(StreamReading, APipeOfManyMebibytesIsReadWhole) {
    const std::string block(std::size_t{1} << 20, 'b');
    std::jthread writer([&] {
        for (int i = 0; i < 5; ++i) {
            write(block);
        }
        end();
    });
    EXPECT_EQ(contentOf(path()).size(), 5 * block.size());
}

/// Somebody may never stop writing.
TEST_F(StreamReading, APipeThatWouldTakeTheMemoryOfOthersIsRefused) {
    constexpr std::uint64_t kReserve = std::uint64_t{1} << 28;
    WaningMemory memory(kReserve + (std::uint64_t{6} << 20));
    services().memory = &memory;
    int error = 0;
    EXPECT_EQ(files.openForReading("/dev/zero", error), nullptr);
    EXPECT_EQ(error, ENOMEM);
    EXPECT_GE(memory.questions, 5);
    services().memory = nullptr;
    write("still there");
    end();
    EXPECT_EQ(contentOf(path()), "still there");
}

TEST_F(StreamReading, AnEmptyPipeIsAnEmptyFile) {
    end();
    EXPECT_EQ(contentOf(path()), "");
    EXPECT_EQ(contentOf("/dev/null"), "");
}

TEST_F(StreamReading, ADescriptorThatIsNotOpenIsRefused) {
    EXPECT_EQ(contentOf("/dev/fd/1000"), "error " + std::to_string(EBADF));
    EXPECT_EQ(contentOf("/dev/fd/"), "error " + std::to_string(EISDIR));
    EXPECT_EQ(contentOf("/dev/fd/x"), "error " + std::to_string(ENOENT));
}

TEST_F(StreamReading, ADescriptorThatCannotBeReadIsRefused) {
    EXPECT_EQ(contentOf("/dev/fd/" + std::to_string(ends[1])), "error " + std::to_string(EBADF));
    const int folder = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(contentOf("/proc/self/fd/" + std::to_string(folder)),
              "error " + std::to_string(EISDIR));
    ::close(folder);
}

TEST_F(StreamReading, ANamedPipeIsWaitedFor) {
    const std::string folder = testing::TempDir() + "zemo-pipe-" + std::to_string(::getpid());
    std::filesystem::create_directories(folder);
    const std::string name = folder + "/pipe";
    ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    std::jthread writer([&] {
        const int pipe = ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
        EXPECT_EQ(::write(pipe, "late", 4), 4);
        ::close(pipe);
    });
    EXPECT_EQ(contentOf(name), "late");
    std::filesystem::remove_all(folder);
}

TEST(OwnDescriptor, IsKnownByItsNames) {
    EXPECT_EQ(ownDescriptor("/dev/stdin"), 0);
    EXPECT_EQ(ownDescriptor("/dev/stdout"), 1);
    EXPECT_EQ(ownDescriptor("/dev/stderr"), 2);
    EXPECT_EQ(ownDescriptor("/dev/fd/17"), 17);
    EXPECT_EQ(ownDescriptor("/proc/self/fd/0"), 0);
    for (const char* const other :
         {"", "-", "stdin", "/dev/null", "/dev/fd", "/dev/fd/", "/dev/fd/-1", "/dev/fd/1x",
          "/dev/fd/99999999999", "/proc/1/fd/1", "/dev/stdout/", "x/dev/stdout"}) {
        EXPECT_FALSE(ownDescriptor(other)) << other;
    }
}

} // namespace
} // namespace zemo::platform
