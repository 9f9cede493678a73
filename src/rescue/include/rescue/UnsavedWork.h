#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/AudioFileWriter.h"
#include "rescue/RescueKeeper.h"

namespace zemo::rescue {

/// A sound's block of samples, known without being held. Blocks of samples stay as they are, but
/// for the scaling that follows an opening, so it tells one sound from another, also where an
/// address comes again.
class SoundIdentity {
public:
    SoundIdentity() = default; ///< no sound
    explicit SoundIdentity(const SampleBlock& block) : block_(block) {}
    explicit SoundIdentity(const HeldSound& sound) : block_(sound.block()) {}
    /// [main] The sound as it is now.
    static SoundIdentity now() { return SoundIdentity(HeldSound::take()); }

    bool isNone() const noexcept { return *this == SoundIdentity(); }
    friend bool operator==(const SoundIdentity& one, const SoundIdentity& other) noexcept {
        return !one.block_.owner_before(other.block_) && !other.block_.owner_before(one.block_);
    }

private:
    std::weak_ptr<float> block_;
};

/// A sound that can be reached by its copy only.
struct LostSound {
    CopyNumber copy = kNoCopy;
    std::string name;
    std::optional<std::chrono::system_clock::time_point> leftAt = {}; ///< by an earlier program
};

/// Knows the sounds that a user can reach (the sound itself and the one that Revert would bring
/// back) by their names, and which of them stand in no file: those that a transformation made and
/// that nobody saved. It has the keeper keep a copy of each of these; of one that cannot be reached
/// any more the copy stays, and is offered. All [main].
///
/// A name is a file's, as the file system has it.
class UnsavedWork {
public:
    /// Until then nothing is kept or offered. The keeper is used for as long as this lives.
    void keepWith(RescueKeeper& keeper) { keeper_ = &keeper; }

    // Every change of the sound is told once it is done: with the sound `before` it, where it may
    // be another one now, and with the one that Revert would bring back now.
    /// A file of that name was opened, or refused.
    void opened(const SoundIdentity& before, const SoundIdentity& reverted,
                const std::string& name);
    /// The sound was scaled, perhaps: in its block only where it was not unsaved. What comes of it
    /// is as unsaved as it was.
    void scaled(const SoundIdentity& before, const SoundIdentity& reverted);
    /// A transformation has made a sound of it, or has not.
    void transformed(const SoundIdentity& before, const SoundIdentity& reverted);
    /// The sound and the one behind Revert have changed places.
    void exchanged(const SoundIdentity& reverted);
    /// A lost sound is going to be the sound again; what it takes the place of is lost as the last
    /// in line, so that restoring one after the other comes to every one of them.
    void willRestore() { isRestoring_ = true; }
    /// It is, out of its copy, which stays until it is saved; or nothing came of it.
    void restored(const LostSound& from, const SoundIdentity& reverted);
    void notRestored() { isRestoring_ = false; }

    /// That sound stands in a file of that name now, which is its own from now on.
    void saved(const HeldSound& sound, const std::string& name);
    /// The same of a file that is no home to it: it keeps its name.
    void exported(const HeldSound& sound);

    /// Of the sound as it is now; empty when nobody told.
    const std::string& name() const;
    bool isUnsaved() const;

    /// The lost sounds in the order in which they are offered: the one that was lost last first,
    /// then those that programs have left which have ended, the latest first, then those in whose
    /// place others were restored.
    const std::vector<LostSound>& lost() const noexcept { return lost_; }
    void found(const std::vector<FoundCopy>& copies);
    /// Nobody wants the copy of that lost sound.
    void discard(CopyNumber copy);
    /// There is no copy of that lost sound any more.
    void forget(CopyNumber copy);

    /// An unsaved sound of which there is no copy on the disk.
    struct Unkept {
        HeldSound sound;
        std::string name;
    };
    /// The first of them: the sound itself, the one behind Revert, or a lost one.
    std::optional<Unkept> unkept() const;

private:
    struct KnownSound {
        SoundIdentity identity;
        std::string name;
        bool isUnsaved = false;
        CopyNumber copy = kNoCopy;
        bool isLost = false;
    };

    KnownSound* known(const SoundIdentity& identity);
    const KnownSound* known(const SoundIdentity& identity) const;
    void addNow(const std::string& name, bool isUnsaved);
    void update(const SoundIdentity& reverted);
    void setLost(KnownSound& sound, bool isLost);
    void markSaved(const HeldSound& sound);
    std::optional<Unkept> unkept(const KnownSound& sound) const;

    RescueKeeper* keeper_ = nullptr;
    std::vector<KnownSound> known_; ///< those that can be reached, and lost ones of this program
    std::vector<LostSound> lost_;
    bool isRestoring_ = false;
};

} // namespace zemo::rescue
