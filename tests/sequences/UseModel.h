#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace zemo::test {

/// Tells one sound's samples from another's; 0: no sound.
using Fingerprint = std::uint64_t;
Fingerprint fingerprintOf(std::span<const float> samples);

/// The sound that is expected.
struct ModelSound {
    std::uint64_t id = 0; ///< 0: no sound; sounds made later have larger ones
    Fingerprint print = 0;
    std::string name = {};
    bool isUnsaved = false;
};

/// What should become of the sounds, whatever a person does: by what a user is promised, and
/// without blocks, threads or files.
class UseModel {
public:
    /// An opening brought a sound of that name; 0: it emptied the window.
    void opened(Fingerprint now, const std::string& name);
    /// A refused opening scaled the sound, if it is another one now.
    void scaled(Fingerprint now);
    void transformed(Fingerprint now);
    void reverted();
    /// That sound was saved as a file of that name; without a name it was exported.
    void saved(std::uint64_t id, const std::string& name);
    void restored(std::uint64_t id);
    void discarded(std::uint64_t id);
    /// A copy is offered that an earlier program left.
    void found(Fingerprint print, const std::string& name);

    const ModelSound& sound() const { return sound_; }
    const ModelSound& revert() const { return revert_; }
    /// The lost sounds of this program, the one that was lost last first.
    const std::vector<ModelSound>& lost() const { return lost_; }
    /// Those that earlier programs left, in any order.
    const std::vector<ModelSound>& left() const { return left_; }
    /// Those in whose place others were restored, the first of them first.
    const std::vector<ModelSound>& displaced() const { return displaced_; }
    /// How many are offered, one after the other: all of these.
    std::size_t offers() const { return lost_.size() + left_.size() + displaced_.size(); }
    /// Every sound that is to have a copy, in the order in which they were made.
    std::vector<ModelSound> unsaved() const;
    /// Every sound whose copy is not wanted any more.
    const std::vector<Fingerprint>& dropped() const { return dropped_; }

private:
    ModelSound make(Fingerprint print, const std::string& name, bool isUnsaved);
    bool isLostNow(const ModelSound& sound) const;
    void lose(const ModelSound& sound);
    bool takeOffer(std::uint64_t id, ModelSound& taken);
    static bool takeOut(std::vector<ModelSound>& sounds, std::uint64_t id, ModelSound& taken);

    std::uint64_t lastId_ = 0;
    ModelSound sound_;
    ModelSound revert_;
    std::vector<ModelSound> lost_;
    std::vector<ModelSound> left_;
    std::vector<ModelSound> displaced_;
    std::vector<Fingerprint> dropped_;
};

} // namespace zemo::test
