#include "files/SoundLoader.h"

#include <cstring>
#include <utility>

#include "files/AudioFileReader.h"
#include "files/Normalize.h"
#include "files/PostError.h"
#include "files/RawFileReader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

void log(const std::string& text) {
    platform::services().trace->log(text);
}

/// Whether normalize would leave the samples as they are; then it is done with the peak's record.
bool isNormalized(float* maxval) {
    platform::runLongWork([&] { *maxval = signedPeak(fBuffer.load(), fBuffersize.load()); },
                          platform::Cancel::NotAllowed);
    return static_cast<double>(*maxval) < 1.0;
}

OpenResult openAudio(const FileUrl& url) {
    log("\nHere we have a Audio File, we need a special opening routine for that\n");
    const char* const result = openSoundFile(url);
    return {.isAudioFile = true,
            .loaded = std::strcmp(result, "OK") == 0,
            .cancelled = result == kReadingCancelled,
            .status = result};
}

OpenResult openRaw(const FileUrl& url, bool swapRaw) {
    std::string status = "Raw data file: ";
    status.reserve(status.size() + kFirstLineBytes); // once the sound is new there is no way back
    // The first line of a file may read like any of the other results; a new block tells. It is
    // made before the old one is freed, so its address is another.
    const float* const before = fBuffer.load();
    const char* const result = openFile(url.path().c_str(), swapRaw);
    if (result == kReadingCancelled) {
        return {.cancelled = true, .status = result};
    }
    const bool loaded = fBuffer.load() != before && fBuffersize.load() > 0;
    log(status.append(result));
    return {.loaded = loaded, .status = std::move(status)};
}

/// Whether there was the memory for it.
bool normalizeSound(float* maxval, bool force) {
    // A refused file leaves the old sound, perhaps in mid-play or held by a save: it plays on and
    // stays in its place unless it is scaled.
    if (!force && isNormalized(maxval)) {
        return true;
    }
    fallIdle();
    if (!ensureSoundIsWritable()) {
        return false;
    }
    const SoundWithheld sound; // a play can be begun meanwhile
    platform::runLongWork([&] { normalize(fBuffer.load(), sound.count(), maxval, force); },
                          platform::Cancel::NotAllowed);
    return true;
}

} // namespace

bool isAudioFileExtension(const std::string& extension) {
    return extension == "caf" || extension == "CAF" || extension == "aif" || extension == "AIF";
}

OpenResult openByExtension(const FileUrl& url, bool swapRaw) {
    bool isAudioFile = false;
    return platform::unlessOutOfMemory(
        [&] {
            isAudioFile = isAudioFileExtension(url.pathExtension());
            return isAudioFile ? openAudio(url) : openRaw(url, swapRaw);
        },
        [&] {
            postTooLarge();
            return OpenResult{.isAudioFile = isAudioFile, .status = isAudioFile ? "KO" : "error"};
        });
}

bool finishOpening(const std::string& lastPath, float* maxval, bool force) {
    log(lastPath);
    platform::unlessOutOfMemory([] { log(platform::format("%ld floats", fBuffersize.load())); },
                                [] {}); // the sound is worth more than the line
    const bool done = platform::unlessOutOfMemory([&] { return normalizeSound(maxval, force); },
                                                  [] { return false; });
    if (!done) {
        postTooLarge();
    }
    return done;
}

} // namespace zemo
