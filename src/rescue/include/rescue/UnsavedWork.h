#pragma once

#include <memory>
#include <string>

#include "files/AudioFileWriter.h"
#include "rescue/RescueKeeper.h"

namespace zemo::rescue {

/// A sound's block of samples, known without being held. Blocks of samples stay as they are, but
/// for the scaling that follows an opening, so it tells one sound from another, also where an
/// address comes again.
class SoundIdentity {
public:
    SoundIdentity() = default; ///< no sound
    explicit SoundIdentity(const HeldSound& sound) : block_(sound.block()) {}
    /// [main] The sound as it is now.
    static SoundIdentity now() { return SoundIdentity(HeldSound::take()); }

    friend bool operator==(const SoundIdentity& one, const SoundIdentity& other) noexcept {
        return !one.block_.owner_before(other.block_) && !other.block_.owner_before(one.block_);
    }

private:
    std::weak_ptr<float> block_;
};

/// Knows which sound would be lost with the program, and has the keeper keep a copy of that one: of
/// one that a transformation made and that nobody saved. All [main].
class UnsavedWork {
public:
    /// Until then nothing is kept. The keeper is used for as long as this lives.
    void keepWith(RescueKeeper& keeper) { keeper_ = &keeper; }

    /// The sound may have come from a file in the place of `before`. What was unsaved until then is
    /// kept until more unsaved work takes its place.
    void opened(const SoundIdentity& before);
    /// The sound may have been scaled, in its block or in a copy in the place of `before`. It is as
    /// unsaved as it was: of unsaved work a new copy is made.
    void scaled(const SoundIdentity& before, const std::string& name);
    /// A transformation or Revert may have put another sound in the place of `before`. A sound that
    /// stands in a file, as after a Revert of all there was, needs no copy, and neither does then
    /// the one that was taken back.
    void changed(const SoundIdentity& before, const std::string& name);
    /// That sound stands in a file now.
    void saved(const HeldSound& sound);
    /// The sound has come out of the rescue copy in `folder`, which stays until it is saved.
    void restored(RescueFolder folder);

private:
    void dropCopy();

    RescueKeeper* keeper_ = nullptr;
    SoundIdentity inFile_; ///< the last sound that was known to stand in a file
    SoundIdentity kept_;   ///< the sound of the copy
};

} // namespace zemo::rescue
