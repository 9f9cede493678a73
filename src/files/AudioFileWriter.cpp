#include "files/AudioFileWriter.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "files/AtomicFile.h"
#include "files/AudioFileLayout.h"
#include "files/CAByteOrder.h"
#include "files/FixFlags.h"
#include "files/PostError.h"
#include "files/SoundLoader.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/CheckError.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

using platform::format;

/// The sound is followed by its first two slack values. The pair is deliberate.
constexpr std::int64_t kExtraSamples = 2;

void log(const std::string& text) {
    platform::services().trace->log(text);
}

void logPlace(const FileUrl& url) {
    log("\nthePath = " + url.path() + "\n");
    log("\nURL = " + FileUrl(url.path()).absoluteString() + "\n");
}

void logExtension(const std::string& extension) {
    log("\nfile extension: " + extension + "\n");
}

bool isCafExtension(const std::string& extension) {
    return extension == "caf" || extension == "CAF";
}

/// In 32 bits: of a size beyond them the line shows the rest.
void logSize(std::size_t bytes) {
    log(format("\nSize in bytes = %u", static_cast<std::uint32_t>(bytes)));
}

std::size_t bytesOf(std::int64_t samples) {
    return static_cast<std::size_t>(samples) * sizeof(float);
}

std::vector<std::uint8_t> headerFor(std::uint32_t fileType,
                                    const platform::AudioStreamBasicDescription& dataFormat,
                                    std::size_t bytes) {
    return fileType == kFileTypeAiffC ? aiffCHeader(dataFormat, bytes)
                                      : cafHeader(dataFormat, bytes);
}

bool refuse(const char* sentence) {
    PostError(sentence);
    return false;
}

/// Whether the file was closed without error. Any other failure ends the process here, the
/// unfinished file removed and the old one as it was.
bool finish(const WriteOutcome& outcome) {
    CheckError(outcome.createError, "Format error: ");
    CheckError(outcome.writeError, "File writing error: ");
    return outcome.closeError == 0;
}

/// The bytes of `body` and behind them those of `tail`, as one block.
bool saveBlock(const FileUrl& url, std::span<std::byte> body, std::span<std::byte> tail) {
    const std::size_t bytes = body.size() + tail.size();
    logPlace(url);
    const std::string extension = url.pathExtension();
    log(format("data length = %lu bytes\n", bytes));
    platform::AudioStreamBasicDescription dataFormat;
    std::uint32_t fileType = 0;
    setFormat(&dataFormat, &fileType, extension, R);
    if (fileType == 0) {
        return refuse("ZEMO saves .caf and .aif files: choose one of these extensions.");
    }
    logExtension(extension);
    logSize(bytes);
    if (fileType == kFileTypeAiffC) {
        if (bytes > kMostAiffCBytes) {
            return refuse("The sound is too large for AIFF-C, which ends at 4 GiB: "
                          "save it as .caf instead.");
        }
        swapWords(body);
        swapWords(tail);
    }
    return finish(writeAtomically(url.path(), headerFor(fileType, dataFormat, bytes), body, tail));
}

} // namespace

SoundCopy SoundCopy::take() {
    SoundCopy copy;
    const std::int64_t count = fBuffersize.load();
    if (count <= 0) {
        return copy;
    }
    copy.block_ = allocateUnsetSamples(count);
    if (copy.block_ != nullptr) {
        // A sound without slack behind it gets zeros: nothing past its end is read.
        const std::int64_t readable = count + std::min(kExtraSamples, slackSamples());
        std::memcpy(copy.block_.get(), fBuffer.load(), bytesOf(readable));
        copy.size_ = bytesOf(count + kExtraSamples);
    }
    return copy;
}

bool isSavedExtension(const std::string& extension) {
    return isAudioFileExtension(extension);
}

bool saveAsAudioFile(const FileUrl& url, std::span<std::byte> block) {
    return saveBlock(url, block, {});
}

bool saveSound(const FileUrl& url) {
    if (isCafExtension(url.pathExtension())) {
        // A sound without slack behind it gets zeros: nothing past its end is read.
        const std::int64_t readable = std::min(kExtraSamples, slackSamples());
        std::array<float, kExtraSamples> zeros{};
        const auto samples =
            std::span(fBuffer.load(), static_cast<std::size_t>(fBuffersize.load() + readable));
        return saveBlock(url, std::as_writable_bytes(samples),
                         std::as_writable_bytes(std::span(zeros)).subspan(bytesOf(readable)));
    }
    SoundCopy copy = SoundCopy::take();
    return copy.empty() ? refuse("There is not enough memory to save the sound.")
                        : saveAsAudioFile(url, copy.bytes());
}

bool classicsaveAsAudioFile(const FileUrl& url) {
    logPlace(url);
    const std::string extension = url.pathExtension();
    if (isCafExtension(extension)) {
        logExtension(extension);
    }
    std::uint32_t fileType = 0;
    setFormat(&streamFormat, &fileType, "caf", R);
    const std::span samples(fBuffer.load(), static_cast<std::size_t>(fBuffersize.load()));
    logSize(samples.size_bytes());
    return finish(writeAtomically(url.path(), cafHeader(streamFormat, samples.size_bytes()),
                                  std::as_bytes(samples)));
}

} // namespace zemo
