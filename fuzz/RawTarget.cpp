#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "Target.h"
#include "files/RawFileReader.h"
#include "files_test/SoundChecks.h"
#include "files_test/SoundFiles.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

using zemo::fuzz::require;
using zemo::test::Bytes;

namespace {

/// The first byte of an input: bit 0 swaps, bit 1 lets reads fail in the middle of the file.
struct Input {
    Bytes file;
    bool swap = false;
    std::size_t readable = 0;
};

Input parsed(const std::uint8_t* data, std::size_t size) {
    const unsigned options = size > 0 ? data[0] : 0U;
    Input input;
    input.file.assign(data + std::min<std::size_t>(size, 1), data + size);
    input.swap = (options & 1U) != 0;
    input.readable = (options & 2U) != 0 ? input.file.size() / 2 : input.file.size();
    return input;
}

std::string firstLineOf(const Bytes& readable) {
    if (readable.empty()) {
        return "No text";
    }
    std::string line(readable.begin(), readable.end());
    line.resize(std::min<std::size_t>(line.size(), 999));
    line.resize(std::min(line.size(),
                         line.find('\n') == std::string::npos ? line.size() : line.find('\n') + 1));
    return line.substr(0, line.find('\0'));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zemo::test::dirtyFreshMemory();
    const Input input = parsed(data, size);
    const std::size_t count = input.file.size() / 4;
    zemo::test::FakePlatform platform;
    platform.files.files["/x"] = input.file;
    platform.files.readableBytes = input.readable;
    const std::string result = zemo::openFile("/x", input.swap);

    require(zemo::fBuffersize.load() == static_cast<std::int64_t>(count),
            "a sample for every four bytes");
    if (count == 0) {
        require(result == "size_error", "fewer than four bytes are a size error");
        require(zemo::fBuffer.load() == nullptr, "a size error empties the sound");
        return 0;
    }
    const Bytes readable(input.file.begin(),
                         input.file.begin() + static_cast<std::ptrdiff_t>(input.readable));
    const auto words = zemo::test::wordsOf(readable, count);
    require(zemo::test::soundWords() == (input.swap ? zemo::test::reversed(words) : words),
            "the samples are the file's words");
    require(zemo::test::slackIsZero(), "the slack is zero");
    require(result == firstLineOf(readable), "the result is the first line");
    require(platform.alert.shown.empty(), "no alert");
    return 0;
}
