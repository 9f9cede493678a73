#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "platform/Clock.h"
#include "platform/FileOperations.h"
#include "platform/FileStream.h"
#include "platform/Memory.h"
#include "platform/SystemVersion.h"
#include "platform/TraceLog.h"
#include "platform/Workers.h"

namespace zemo::platform {

class SteadyClock final : public Clock {
public:
    std::chrono::nanoseconds now() override;
    void sleepFor(std::chrono::nanoseconds time) override;
};

/// The minor number of the running kernel's release: 1 for "6.1.0-18-amd64".
class KernelVersion final : public SystemVersion {
public:
    std::int32_t minorVersion() override;

    /// [any] The number after the first dot of `release`; 0 when there is none.
    static std::int32_t minorOf(const std::string& release);
};

class LinuxMemory final : public Memory {
public:
    void preferLargePages(void* block, std::size_t bytes) override;
    std::uint64_t availableBytes() override;
    bool isGranted(std::size_t bytes) override;
};

class ThreadWorkers final : public Workers {
public:
    explicit ThreadWorkers(unsigned count = 0); ///< 0: one for each core, up to 16
    unsigned count() const override { return count_; }
    void run(unsigned most, const Work& work) override;

private:
    unsigned count_;
};

/// Whether pipes, devices and descriptors of this process (/dev/stdin) can be opened for reading.
enum class Streams : std::uint8_t {
    Refused,
    Read, ///< to their end, before anything is done with them
};

/// A stream is read once and kept in memory: whenever its path is opened again it is the same. One
/// that would leave the system less than 256 MiB is refused with ENOMEM.
class PosixFileSystem final : public FileSystem {
public:
    explicit PosixFileSystem(Streams streams = Streams::Refused) : streams_(streams) {}
    ~PosixFileSystem() override;

    std::unique_ptr<FileStream> openForReading(const std::string& path, int& error) override;

private:
    int openStream(const std::string& path);

    Streams streams_;
    std::map<std::string, int> read_; ///< the descriptors of what was read, by path
};

class PosixFileOperations : public FileOperations {
public:
    int followLinks(const std::string& path, std::string& target) override;
    int inspect(const std::string& path, FileStatus& status) override;
    int createNameless(const std::string& folder, NewFileAccess access) override;
    int create(const std::string& path, NewFileAccess access) override;
    int openStream(const std::string& path) override;
    void awaitStream(int descriptor) override;
    int copyAttributes(const std::string& like, int descriptor) override;
    long write(int descriptor, const void* bytes, std::size_t count) override;
    long writeAt(int descriptor, std::uint64_t offset, const void* bytes,
                 std::size_t count) override;
    void beginSync(int descriptor, std::uint64_t from, std::uint64_t bytes) override;
    int finishSync(int descriptor, std::uint64_t from, std::uint64_t bytes) override;
    int sync(int descriptor) override;
    int closeDuplicate(int descriptor) override;
    int close(int descriptor) override;
    int link(int descriptor, const std::string& path) override;
    int linkOver(int descriptor, const std::string& hidden, const std::string& path) override;
    int rename(const std::string& from, const std::string& to) override;
    int syncFolder(const std::string& folder) override;
    int remove(const std::string& path) override;
    std::uint64_t uniqueNumber() override;
};

/// Standard output, standard error, and syslog, which also repeats on standard error.
class SystemTrace final : public TraceLog {
public:
    explicit SystemTrace(const char* programName); ///< the name must outlive the object
    ~SystemTrace() override;

    /// From now on everything for standard output goes to standard error: the sound goes there.
    void leaveStandardOutput() { output_ = stderr; }

    void print(std::string_view text) override;
    int printResult(std::string_view text) override;
    void printError(std::string_view text) override;
    void log(std::string_view text) override;

private:
    std::FILE* output_ = stdout;
};

} // namespace zemo::platform
