#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "files/FileUrl.h"
#include "playback/SoundExchange.h"

namespace zemo {

/// A copy of the sound as it is saved, taken when the user asks for the save: its samples and the
/// two values behind them.
class SoundCopy {
public:
    /// [main] The current sound. Empty when there is none, or no memory for the copy.
    static SoundCopy take();

    bool empty() const noexcept { return size_ == 0; }
    std::span<std::byte> bytes() noexcept {
        return {reinterpret_cast<std::byte*>(block_.get()), size_};
    }

private:
    SampleBlock block_; ///< its slack holds the extra pair
    std::size_t size_ = 0;
};

/// [any] Whether a sound can be saved under that extension: "caf", "CAF", "aif", "AIF".
bool isSavedExtension(const std::string& extension);

/// [main] Writes a block of native 32-bit floats as a mono file at R hertz: CAF or AIFF-C by the
/// URL's extension. For AIFF-C the block's words are reversed in place. True when the file was
/// closed without error. An extension of another kind, or a block that is too large for AIFF-C, is
/// refused with an alert; when the file cannot be created or written the process ends through
/// CheckError, the old file as it was.
bool saveAsAudioFile(const FileUrl& url, std::span<std::byte> block);

/// [main] The same for the sound as it is now, while nothing else can change it: without a copy
/// where the sound can be written from its place (CAF, the pair behind it). False, after an alert,
/// also when there is no memory for a copy.
bool saveSound(const FileUrl& url);

/// [main] The older writer: the sound as it stands, without the pair behind it, as CAF whatever the
/// extension. Nothing calls it.
bool classicsaveAsAudioFile(const FileUrl& url);

} // namespace zemo
