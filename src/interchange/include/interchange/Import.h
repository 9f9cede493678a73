#pragma once

#include <cstdint>
#include <string>

#include "files/FileUrl.h"
#include "platform/Error.h"

/// Sound files of other programs, known by their content and converted to what the sound is: one
/// channel at the output's rate.
namespace zemo {

/// The rates that a sound file may have, in hertz.
inline constexpr double kLowestImportedRate = 1e3;
inline constexpr double kHighestImportedRate = 1e6;
/// The most that a rate is raised or lowered by, as a factor.
inline constexpr double kMostRateChange = 1e3;
inline constexpr int kMostImportedChannels = 256;

/// What a sound file says of itself.
struct SoundFileDescription {
    int channels = 0;
    double rate = 0.0;       ///< hertz
    std::int64_t frames = 0; ///< 0 when it does not say. Not to be relied on
    std::string format;      ///< container and coding, as a person calls them
};

/// What was imported.
struct Imported {
    SoundFileDescription source;
    std::int64_t frames = 0; ///< of the source; the sound has as many at its own rate
    bool incomplete = false; ///< the decoding broke off, or fewer frames came than the file says
};

/// [main] Makes a sound file of any known kind the sound: its channels' mean, at R hertz, not
/// scaled. The work is long work and can be cancelled. After an error the sound is as it was, and
/// what plays plays on.
platform::Result<Imported> importSound(const FileUrl& url);

/// [main], [worker] What the file says of itself; of some kinds this reads all of it.
platform::Result<SoundFileDescription> describeSoundFile(const std::string& path);

/// [main], [worker] Whether importSound knows that kind of file, or has no memory to look.
bool isKnownSoundFile(const std::string& path);

} // namespace zemo
