#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <vector>

#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

using Bytes = std::vector<unsigned char>;

class PosixFiles : public testing::Test {
protected:
    PosixFiles() : folder_(testing::TempDir() + "zemo-files-" + std::to_string(::getpid())) {
        std::filesystem::create_directories(folder_);
    }
    ~PosixFiles() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string& name) const { return folder_ + "/" + name; }

    std::string write(const std::string& name, const Bytes& bytes) const {
        std::ofstream file(path(name), std::ios::binary);
        std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
        return path(name);
    }

    /// The error number of an attempt that must fail.
    int refusal(const std::string& name) {
        int error = 0;
        EXPECT_EQ(files_.openForReading(name, error), nullptr) << name;
        return error;
    }

    std::unique_ptr<FileStream> open(const std::string& name) {
        int error = 0;
        return files_.openForReading(name, error);
    }

    static Bytes counting(std::size_t count) {
        Bytes bytes(count);
        std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
        return bytes;
    }

    std::string folder_;
    PosixFileSystem files_;
};

TEST_F(PosixFiles, AnAbsentFileIsRefused) {
    EXPECT_EQ(refusal(path("nothing")), ENOENT);
    EXPECT_EQ(refusal(""), ENOENT);
}

TEST_F(PosixFiles, AFolderIsRefused) {
    EXPECT_EQ(refusal(folder_), EISDIR);
}

TEST_F(PosixFiles, APathThroughAFileIsRefused) {
    EXPECT_EQ(refusal(write("file", {1}) + "/inside"), ENOTDIR);
}

TEST_F(PosixFiles, APipeWithoutAWriterIsRefusedAtOnce) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(refusal(path("pipe")), EINVAL);
}

TEST_F(PosixFiles, APipeWithAWriterIsRefused) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    const int writer = ::open(path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    EXPECT_EQ(refusal(path("pipe")), EINVAL);
    ::close(writer);
}

TEST_F(PosixFiles, ADeviceIsRefused) {
    EXPECT_EQ(refusal("/dev/zero"), EINVAL);
    EXPECT_EQ(refusal("/dev/null"), EINVAL);
}

TEST_F(PosixFiles, AForbiddenFileIsRefused) {
    constexpr uid_t kNobody = 65534;
    const std::string name = write("secret", {1});
    ASSERT_EQ(::chmod(name.c_str(), 0), 0);
    const uid_t user = ::geteuid();
    if (user == 0) { // nothing is forbidden to root
        ASSERT_EQ(::seteuid(kNobody), 0);
    }
    EXPECT_EQ(refusal(name), EACCES);
    ASSERT_EQ(::seteuid(user), 0);
}

TEST_F(PosixFiles, ALinkLeadsToItsFile) {
    std::filesystem::create_symlink(write("file", {1, 2, 3}), path("link"));
    const auto stream = open(path("link"));
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->size(), 3U);
}

TEST_F(PosixFiles, AnEmptyFileHasNoBytes) {
    const auto stream = open(write("empty", {}));
    ASSERT_NE(stream, nullptr);
    unsigned char byte = 7;
    EXPECT_EQ(stream->size(), 0U);
    EXPECT_EQ(stream->readAt(0, &byte, 1), 0U);
    EXPECT_EQ(byte, 7);
}

TEST_F(PosixFiles, EveryPieceIsReadFromItsPlace) {
    const Bytes bytes = counting(200);
    const auto stream = open(write("file", bytes));
    ASSERT_NE(stream, nullptr);
    for (std::size_t offset = 0; offset <= bytes.size(); offset += 23) {
        for (std::size_t count = 0; offset + count <= bytes.size(); count += 17) {
            Bytes read(count);
            ASSERT_EQ(stream->readAt(offset, read.data(), count), count);
            ASSERT_TRUE(std::equal(read.begin(), read.end(),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(offset)));
        }
    }
}

TEST_F(PosixFiles, AReadAcrossTheEndFallsShort) {
    const auto stream = open(write("file", counting(10)));
    ASSERT_NE(stream, nullptr);
    Bytes read(8, 99);
    EXPECT_EQ(stream->readAt(6, read.data(), read.size()), 4U);
    EXPECT_EQ(read, Bytes({6, 7, 8, 9, 99, 99, 99, 99}));
}

TEST_F(PosixFiles, AReadPastTheEndReadsNothing) {
    const auto stream = open(write("file", counting(10)));
    ASSERT_NE(stream, nullptr);
    unsigned char byte = 0;
    EXPECT_EQ(stream->readAt(10, &byte, 1), 0U);
    EXPECT_EQ(stream->readAt(UINT64_MAX, &byte, 1), 0U);
}

TEST_F(PosixFiles, AFileThatShrinksAfterItWasOpenedFallsShort) {
    const std::string name = write("file", counting(100));
    const auto stream = open(name);
    ASSERT_NE(stream, nullptr);
    ASSERT_EQ(::truncate(name.c_str(), 30), 0);
    Bytes read(100);
    EXPECT_EQ(stream->size(), 100U) << "as it was when it was opened";
    EXPECT_EQ(stream->readAt(0, read.data(), read.size()), 30U);
}

TEST_F(PosixFiles, AFileThatGrowsAfterItWasOpenedKeepsItsSize) {
    const std::string name = write("file", counting(10));
    const auto stream = open(name);
    ASSERT_NE(stream, nullptr);
    ASSERT_EQ(::truncate(name.c_str(), 100), 0);
    Bytes read(100);
    EXPECT_EQ(stream->readAt(0, read.data(), read.size()), 10U);
}

TEST_F(PosixFiles, AFileOfMoreThan4GiBIsReadWhereItIsAsked) {
    constexpr std::uint64_t size = (std::uint64_t{5} << 30) + 3;
    const std::string name = path("huge");
    const int descriptor = ::open(name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    ASSERT_GE(descriptor, 0);
    if (::ftruncate(descriptor, static_cast<off_t>(size)) != 0) {
        ::close(descriptor);
        GTEST_SKIP() << "this file system holds no file of 5 GiB";
    }
    const std::array<char, 3> end{'e', 'n', 'd'};
    EXPECT_EQ(::pwrite(descriptor, end.data(), 3, static_cast<off_t>(size - 3)), 3);
    ::close(descriptor);

    const auto stream = open(name);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->size(), size);
    std::array<char, 5> read{};
    EXPECT_EQ(stream->readAt(size - 4, read.data(), read.size()), 4U);
    EXPECT_EQ(std::string(read.data(), 4), std::string("\0end", 4));
}

TEST_F(PosixFiles, ADroppedStreamClosesItsDescriptor) {
    const std::string name = write("file", {1});
    const auto descriptors = [] {
        std::ptrdiff_t count = 0;
        for ([[maybe_unused]] const auto& each :
             std::filesystem::directory_iterator("/proc/self/fd")) {
            ++count;
        }
        return count;
    };
    const auto before = descriptors();
    for (int i = 0; i < 10; ++i) {
        open(name);
        refusal(folder_);
    }
    EXPECT_EQ(descriptors(), before);
}

} // namespace
} // namespace zemo::platform
