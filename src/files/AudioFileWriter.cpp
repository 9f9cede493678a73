#include "files/AudioFileWriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>

#include "files/AudioFileLayout.h"
#include "files/CAByteOrder.h"
#include "files/FixFlags.h"
#include "files/PostError.h"
#include "files/SoundLoader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "platform/Pieces.h"
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
constexpr std::size_t kCopiedAtATime = std::size_t{1} << 22U; ///< bytes

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

bool refuseForMemory() {
    postNoMemoryToSave();
    return false;
}

/// Whether the file was closed without error, and not cancelled. Any other failure ends the process
/// here, the unfinished file removed and the old one as it was.
bool finish(const WriteOutcome& outcome) {
    CheckError(outcome.createError, "Format error: ");
    CheckError(outcome.writeError, "File writing error: ");
    return outcome.done();
}

/// What is to be written: the bytes of `body` and behind them those of `tail`.
struct SavedBlock {
    std::span<const std::byte> body;
    std::span<const std::byte> tail;

    std::size_t size() const { return body.size() + tail.size(); }
};

/// Whether the file is there in the end. The words are put into the file's order by `bringInOrder`
/// as a part of the long work.
bool saveBlock(const FileUrl& url, const SavedBlock& block,
               const std::function<void(std::uint32_t fileType)>& bringInOrder) {
    const std::size_t bytes = block.size();
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
    if (fileType == kFileTypeAiffC && bytes > kMostAiffCBytes) {
        return refuse("The sound is too large for AIFF-C, which ends at 4 GiB: "
                      "save it as .caf instead.");
    }
    WriteOutcome outcome;
    platform::runLongWork([&] {
        bringInOrder(fileType);
        outcome = writeAtomically(url.path(), headerFor(fileType, dataFormat, bytes), block.body,
                                  block.tail);
    });
    return finish(outcome);
}

/// The bytes of a held sound into a block of the same samples and the pair.
void copyHeld(const HeldSound& sound, std::span<std::byte> copy) {
    const auto from = std::as_bytes(sound.readable());
    platform::forEachStretch(from.size(), kCopiedAtATime,
                             [&](std::size_t first, std::size_t count) {
                                 std::memcpy(copy.data() + first, from.data() + first, count);
                             });
    std::fill(copy.begin() + static_cast<std::ptrdiff_t>(from.size()), copy.end(), std::byte{0});
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

HeldSound HeldSound::take() {
    HeldSound sound;
    sound.block_ = heldSound();
    sound.count_ = fBuffersize.load();
    sound.pair_ = std::min(kExtraSamples, slackSamples());
    return sound;
}

bool saveAsAudioFile(const FileUrl& url, std::span<std::byte> block) {
    const auto bringInOrder = [&](std::uint32_t fileType) {
        if (fileType == kFileTypeAiffC) {
            platform::expectStages(2);
            swapWords(block);
        }
    };
    return platform::unlessOutOfMemory(
        [&] {
            return saveBlock(url, {block, {}}, bringInOrder);
        },
        refuseForMemory);
}

namespace {

bool saveHeld(const FileUrl& url, const HeldSound& sound) {
    const std::size_t bytes = bytesOf(sound.count() + kExtraSamples);
    if (isCafExtension(url.pathExtension())) {
        // A sound without slack behind it gets zeros: nothing past its end is read.
        const std::array<float, kExtraSamples> zeros{};
        const auto body = std::as_bytes(sound.readable());
        const auto tail = std::as_bytes(std::span(zeros)).first(bytes - body.size());
        return saveBlock(url, {body, tail}, [](std::uint32_t /*fileType*/) {});
    }
    const SampleBlock copy = allocateUnsetSamples(sound.count());
    if (copy == nullptr) {
        return refuseForMemory();
    }
    const std::span block(reinterpret_cast<std::byte*>(copy.get()), bytes);
    return saveBlock(url, {block, {}}, [&](std::uint32_t /*fileType*/) {
        platform::expectStages(3);
        copyHeld(sound, block);
        swapWords(block);
    });
}

} // namespace

bool saveHeldSound(const FileUrl& url, const HeldSound& sound) {
    return platform::unlessOutOfMemory([&] { return saveHeld(url, sound); }, refuseForMemory);
}

bool saveSound(const FileUrl& url) {
    return saveHeldSound(url, HeldSound::take());
}

WriteOutcome writeExactCopy(const std::string& path, const HeldSound& sound) {
    platform::AudioStreamBasicDescription dataFormat;
    std::uint32_t fileType = 0;
    setFormat(&dataFormat, &fileType, "caf", R);
    const auto bytes = std::as_bytes(sound.samples());
    return writeAtomically(path, cafHeader(dataFormat, bytes.size()), bytes);
}

namespace {

bool saveClassically(const FileUrl& url) {
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

} // namespace

bool classicsaveAsAudioFile(const FileUrl& url) {
    return platform::unlessOutOfMemory([&] { return saveClassically(url); }, refuseForMemory);
}

} // namespace zemo
