#include "files/SoundLoader.h"

#include <cstring>

#include "files/AudioFileReader.h"
#include "files/Normalize.h"
#include "files/PostError.h"
#include "files/RawFileReader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
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

} // namespace

bool isAudioFileExtension(const std::string& extension) {
    return extension == "caf" || extension == "CAF" || extension == "aif" || extension == "AIF";
}

OpenResult openByExtension(const FileUrl& url, bool swapRaw) {
    if (isAudioFileExtension(url.pathExtension())) {
        log("\nHere we have a Audio File, we need a special opening routine for that\n");
        const char* const result = openSoundFile(url);
        return {.isAudioFile = true,
                .loaded = std::strcmp(result, "OK") == 0,
                .cancelled = result == kReadingCancelled,
                .status = result};
    }
    // The first line of a file may read like any of the other results; a new block tells. It is
    // made before the old one is freed, so its address is another.
    const float* const before = fBuffer.load();
    const char* const result = openFile(url.path().c_str(), swapRaw);
    if (result == kReadingCancelled) {
        return {.cancelled = true, .status = result};
    }
    const bool loaded = fBuffer.load() != before && fBuffersize.load() > 0;
    OpenResult opened{.loaded = loaded, .status = std::string("Raw data file: ") + result};
    log(opened.status);
    return opened;
}

void finishOpening(const std::string& lastPath, float* maxval, bool force) {
    log(lastPath);
    log(platform::format("%ld floats", fBuffersize.load()));
    // A refused file leaves the old sound, perhaps in mid-play or held by a save: it plays on and
    // stays in its place unless it is scaled.
    if (!force && isNormalized(maxval)) {
        return;
    }
    fallIdle();
    if (!ensureSoundIsWritable()) {
        postTooLarge();
        return;
    }
    platform::runLongWork([&] { normalize(fBuffer.load(), fBuffersize.load(), maxval, force); },
                          platform::Cancel::NotAllowed);
}

} // namespace zemo
