#include "files/SoundLoader.h"

#include <cstring>

#include "files/AudioFileReader.h"
#include "files/Normalize.h"
#include "files/RawFileReader.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

void log(const std::string& text) {
    platform::services().trace->log(text);
}

} // namespace

bool isAudioFileExtension(const std::string& extension) {
    return extension == "caf" || extension == "CAF" || extension == "aif" || extension == "AIF";
}

OpenResult openByExtension(const FileUrl& url, bool swapRaw) {
    if (isAudioFileExtension(url.pathExtension())) {
        log("\nHere we have a Audio File, we need a special opening routine for that\n");
        const char* const result = openSoundFile(url);
        return {.isAudioFile = true, .loaded = std::strcmp(result, "OK") == 0, .status = result};
    }
    // The first line of a file may read like any of the other results; a new block tells. It is
    // made before the old one is freed, so its address is another.
    const float* const before = fBuffer.load();
    const char* const result = openFile(url.path().c_str(), swapRaw);
    const bool loaded = fBuffer.load() != before && fBuffersize.load() > 0;
    OpenResult opened{.loaded = loaded, .status = std::string("Raw data file: ") + result};
    log(opened.status);
    return opened;
}

void finishOpening(const std::string& lastPath, float* maxval, bool force) {
    log(lastPath);
    log(platform::format("%ld floats", fBuffersize.load()));
    float* const samples = fBuffer.load();
    const std::int64_t count = fBuffersize.load();
    // A refused file leaves the old sound, perhaps in mid-play: it plays on unless it is scaled.
    if (isSounding() && (force || signedPeak(samples, count) >= 1.0F)) {
        fallIdle();
    }
    normalize(samples, count, maxval, force);
}

} // namespace zemo
