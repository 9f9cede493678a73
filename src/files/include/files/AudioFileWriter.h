#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "files/AtomicFile.h"
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

/// The sound as it was when the user asked for the save, held without a copy.
class HeldSound {
public:
    /// [main] The current sound. Empty when there is none.
    static HeldSound take();

    bool empty() const noexcept { return count_ == 0; }
    std::int64_t count() const noexcept { return count_; }
    const SampleBlock& block() const noexcept { return block_; }
    /// [any] The samples alone.
    std::span<const float> samples() const noexcept {
        return {block_.get(), static_cast<std::size_t>(count_)};
    }
    /// [any] The samples and what may be read of the pair behind them.
    std::span<const float> readable() const noexcept {
        return {block_.get(), static_cast<std::size_t>(count_ + pair_)};
    }

private:
    SampleBlock block_;
    std::int64_t count_ = 0;
    std::int64_t pair_ = 0; ///< 0 to 2
};

/// [any] Whether a sound can be saved under that extension: "caf", "CAF", "aif", "AIF".
bool isSavedExtension(const std::string& extension);

/// [main] Writes a block of native 32-bit floats as a mono file at R hertz: CAF or AIFF-C by the
/// URL's extension. For AIFF-C the block's words are reversed in place. True when the file was
/// closed without error. Long work; false as well when it was cancelled. An extension of another
/// kind, a block that is too large for AIFF-C, or a lack of memory is refused with an alert; when
/// the file cannot be created or written the process ends through CheckError, the old file as it
/// was.
bool saveAsAudioFile(const FileUrl& url, std::span<std::byte> block);

/// [main] The same for a sound that is held: without a copy where it can be written from its place
/// (CAF).
bool saveHeldSound(const FileUrl& url, const HeldSound& sound);

/// [main] The same for the sound as it is now.
bool saveSound(const FileUrl& url);

/// [worker] Writes the sound itself, without the pair behind it, as CAF at R hertz: what is read
/// from that file is this sound. Quietly: no trace, no alert, no end of the process.
WriteOutcome writeExactCopy(const std::string& path, const HeldSound& sound);

/// [main] The older writer: the sound as it stands, without the pair behind it, as CAF whatever the
/// extension. Nothing calls it.
bool classicsaveAsAudioFile(const FileUrl& url);

} // namespace zemo
