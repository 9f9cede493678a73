#pragma once

#include <cstdint>
#include <string>

#include "files/FileUrl.h"
#include "platform/Error.h"

/// The sound as a file that other programs read.
namespace zemo {

/// What was exported.
struct Exported {
    std::string format;       ///< as a person calls it
    std::int64_t clipped = 0; ///< samples beyond full scale, which FLAC does not hold
};

/// [any] Whether a sound can be exported under that extension: "wav", "WAV", "flac", "FLAC".
bool isExportedExtension(const std::string& extension);

/// [main] Writes the sound at R hertz, which must be a whole number: as WAV with 32-bit floats or
/// as FLAC with 24 bits, by the URL's extension. NaN samples become 0. The same sound gives the
/// same bytes. The work is long work and can be cancelled. After an error the old file is as it
/// was.
platform::Result<Exported> exportSound(const FileUrl& url);

} // namespace zemo
