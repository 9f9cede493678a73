#include "files/RawFileReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <system_error>

#include "files/CAByteOrder.h"
#include "files/FixFlags.h"
#include "files/PostError.h"
#include "files/SoundLoader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "platform/Progress.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

using platform::FileStream;
using platform::format;

constexpr std::size_t kPieceBytes = std::size_t{1} << 22U;

platform::TraceLog& trace() {
    return *platform::services().trace;
}

/// NaN samples stay in the sound: the values pass through stripeNaN and its results are discarded.
/// This is required, and not to be turned into a replacement.
void passThroughStripeNaN(std::span<const float> samples) {
    for (const float sample : samples) {
        static_cast<void>(stripeNaN(sample));
    }
}

/// All values there are, in pieces; the rest is zero.
void readSamples(FileStream& stream, std::span<float> samples, bool swap) {
    platform::expectStages(swap ? 2 : 1);
    platform::beginStage(samples.size_bytes() / kPieceBytes + 1);
    auto* const bytes = reinterpret_cast<std::byte*>(samples.data());
    std::size_t read = 0;
    for (std::size_t piece = kPieceBytes; piece == kPieceBytes;) {
        if (platform::isStopRequested()) {
            return;
        }
        piece =
            stream.readAt(read, bytes + read, std::min(kPieceBytes, samples.size_bytes() - read));
        passThroughStripeNaN(samples.subspan(read / sizeof(float), piece / sizeof(float)));
        read += piece;
        platform::pieceDone();
    }
    std::memset(bytes + read, 0, samples.size_bytes() - read);
    if (swap) {
        swapSamples(
            samples.first(swappedBytes(static_cast<std::int64_t>(samples.size())) / sizeof(float)));
    }
}

/// The first line, newline included when it fits, into the one line buffer of the program.
const char* readFirstLine(FileStream& stream) {
    static std::array<char, 1008> line;
    const std::size_t read = stream.readAt(0, line.data(), kFirstLineBytes - 1);
    if (read == 0) {
        return "No text";
    }
    const auto* const newline = static_cast<const char*>(std::memchr(line.data(), '\n', read));
    const std::size_t length =
        newline != nullptr ? static_cast<std::size_t>(newline - line.data()) + 1 : read;
    line[length] = '\0';
    return line.data();
}

const char* refuseForMemory() {
    postTooLarge();
    return "error";
}

const char* loadAndDescribe(FileStream& stream, const char* path, bool swap) {
    const std::int64_t count = getSize(&stream, path);
    if (count == 0) {
        emptyBuffer();
        return "size_error";
    }
    SampleBlock block = allocateUnsetSamples(count);
    if (block == nullptr) {
        return refuseForMemory();
    }
    const std::span samples(block.get(), static_cast<std::size_t>(count));
    const bool done = platform::runLongWork([&] { readSamples(stream, samples, swap); });
    if (!done) {
        return kReadingCancelled;
    }
    const char* const line = readFirstLine(stream);
    const std::string said = format("S = %s\n", line);
    trace().print("Buffer read!\n");
    replaceBuffer(std::move(block), count);
    trace().print(said);
    return line;
}

const char* reportUnopened(int error) {
    const std::string said = format("error: %s\n", std::generic_category().message(error).c_str());
    const std::string line = format("S = %s\n", "error");
    emptyBuffer();
    trace().printError(said);
    trace().print(line);
    return "error";
}

} // namespace

std::int64_t getSize(FileStream* stream, const char* path) {
    if (stream == nullptr) {
        return 0;
    }
    const std::uint64_t count = stream->size() / sizeof(float);
    trace().print(format("File %s: %zu\t values\n\n", path, static_cast<std::size_t>(count)));
    return static_cast<std::int64_t>(count);
}

const char* openFile(const char* path, bool swap) {
    return platform::unlessOutOfMemory(
        [&] {
            int error = 0;
            const auto stream = platform::services().fileSystem->openForReading(path, error);
            return stream != nullptr ? loadAndDescribe(*stream, path, swap) : reportUnopened(error);
        },
        refuseForMemory);
}

} // namespace zemo
