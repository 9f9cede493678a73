#include "files/AudioFileWriter.h"

#include <algorithm>
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

/// In 32 bits: of a size beyond them the line shows the rest.
void logSize(std::size_t bytes) {
    log(format("\nSize in bytes = %u", static_cast<std::uint32_t>(bytes)));
}

void* copyOfSound(std::size_t bytes) {
    auto* const block = static_cast<std::byte*>(std::calloc(bytes, 1));
    const std::int64_t count = fBuffersize.load();
    // A sound without slack behind it gets zeros: nothing past its end is read.
    const std::int64_t readable = count + std::min(kExtraSamples, slackSamples());
    if (block != nullptr) {
        std::memcpy(block, fBuffer.load(), static_cast<std::size_t>(readable) * sizeof(float));
    }
    return block;
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

} // namespace

SoundCopy SoundCopy::take() {
    SoundCopy copy;
    const std::int64_t count = fBuffersize.load();
    if (count <= 0) {
        return copy;
    }
    const std::size_t bytes = static_cast<std::size_t>(count + kExtraSamples) * sizeof(float);
    copy.block_.reset(static_cast<std::byte*>(copyOfSound(bytes)));
    copy.size_ = copy.block_ != nullptr ? bytes : 0;
    return copy;
}

bool isSavedExtension(const std::string& extension) {
    return isAudioFileExtension(extension);
}

bool saveAsAudioFile(const FileUrl& url, std::span<std::byte> block) {
    logPlace(url);
    const std::string extension = url.pathExtension();
    log(format("data length = %lu bytes\n", block.size()));
    platform::AudioStreamBasicDescription dataFormat;
    std::uint32_t fileType = 0;
    setFormat(&dataFormat, &fileType, extension, R);
    if (fileType == 0) {
        return refuse("ZEMO saves .caf and .aif files: choose one of these extensions.");
    }
    logExtension(extension);
    logSize(block.size());
    if (fileType == kFileTypeAiffC) {
        if (block.size() > kMostAiffCBytes) {
            return refuse("The sound is too large for AIFF-C, which ends at 4 GiB: "
                          "save it as .caf instead.");
        }
        swapWords(block);
    }
    return finish(
        writeAtomically(url.path(), headerFor(fileType, dataFormat, block.size()), block));
}

bool classicsaveAsAudioFile(const FileUrl& url) {
    logPlace(url);
    const std::string extension = url.pathExtension();
    if (extension == "caf" || extension == "CAF") {
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
