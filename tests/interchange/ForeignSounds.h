#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "files_test/SoundFiles.h"
#include "platform/FileStream.h"
#include "platform/LongWork.h"
#include "platform/Memory.h"

namespace zemo::test {

/// A WAV file of one channel of 32-bit floats, given as bit patterns.
Bytes wavOf(std::uint32_t rate, const std::vector<std::uint32_t>& words);
/// One that is not by the program: `frames` frames of zeros in 16 bits.
Bytes wavOfZeros(std::uint16_t channels, std::uint32_t rate, std::size_t frames);
std::vector<std::uint32_t> wordsOf(const std::vector<float>& samples);
std::vector<float> sine(double rate, double hertz, std::size_t count);

/// Small files of every kind, as other programs wrote them, by their names.
const std::map<std::string, Bytes>& foreignFiles();

/// One file, whose reads can be made to fail.
class OneFile final : public platform::FileSystem {
public:
    explicit OneFile(Bytes bytes) : bytes_(std::move(bytes)) {}

    /// Called before every read with how many there were before it; false: it brings nothing.
    std::function<bool(std::size_t index)> mayRead;
    std::size_t reads = 0;

    std::unique_ptr<platform::FileStream> openForReading(const std::string& path,
                                                         int& error) override;

private:
    friend class OneFileStream;
    Bytes bytes_;
};

/// A system that has no memory to give.
class NoMemory final : public platform::Memory {
public:
    void preferLargePages(void* /*block*/, std::size_t bytes) override { asked += bytes; }
    std::uint64_t availableBytes() override { return available; }

    std::uint64_t available = 0;
    std::size_t asked = 0; ///< bytes in blocks that are worth large pages
};

/// Does the work, and says that the user has cancelled it.
class CancelledWork final : public platform::LongWork {
    bool run(const Work& work, platform::Cancel /*cancel*/) override {
        work();
        return false;
    }
    void pause(std::chrono::microseconds /*duration*/) override {}
};

} // namespace zemo::test
