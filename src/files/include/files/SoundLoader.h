#pragma once

#include <string>

#include "files/FileUrl.h"

namespace zemo {

/// The result of a reader whose user has cancelled it, told from other texts by its address. The
/// sound is as it was.
inline constexpr char kReadingCancelled[] = "Cancelled";

/// What became of a file that was chosen in the open panel.
struct OpenResult {
    bool isAudioFile = false; ///< by its extension
    bool loaded = false;      ///< the sound is now that of the file
    bool cancelled = false;   ///< the sound is as it was, and is to stay so
    std::string status;       ///< "OK", "KO", or "Raw data file: " and the raw reader's result
};

/// [any] Whether an extension goes to the audio reader: "caf", "CAF", "aif", "AIF", nothing else.
/// "aiff" is read as raw data, header included; that is not to be widened.
bool isAudioFileExtension(const std::string& extension);

/// [main] Sends the file to the reader for its extension. Without memory for it an alert says so,
/// and the sound is as it was.
OpenResult openByExtension(const FileUrl& url, bool swapRaw);

/// [main] What follows every confirmed panel, also after a refused file: logs the last path (none
/// when empty) and the sound's length and normalizes the sound, which falls idle first when that
/// changes it. False, after an alert and with the sound as it was, when there is no memory for
/// that.
bool finishOpening(const std::string& lastPath, float* maxval, bool force);

} // namespace zemo
