#include "rescue/UnsavedWork.h"

#include <algorithm>
#include <utility>

namespace zemo::rescue {
namespace {

const std::string kNameless;

} // namespace

// Changes -----------------------------------------------------------------------------------------

void UnsavedWork::opened(const SoundIdentity& before, const SoundIdentity& reverted,
                         const std::string& name) {
    if (SoundIdentity::now() != before) {
        addNow(name, false);
    }
    update(reverted);
}

void UnsavedWork::scaled(const SoundIdentity& before, const SoundIdentity& reverted) {
    const KnownSound* const from = known(before);
    if (from != nullptr && SoundIdentity::now() != before) {
        addNow(std::string(from->name), from->isUnsaved);
    }
    update(reverted);
}

void UnsavedWork::transformed(const SoundIdentity& before, const SoundIdentity& reverted) {
    if (SoundIdentity::now() != before) {
        const KnownSound* const from = known(before);
        addNow(from != nullptr ? std::string(from->name) : kNameless, true);
    }
    update(reverted);
}

void UnsavedWork::exchanged(const SoundIdentity& reverted) {
    update(reverted);
}

void UnsavedWork::restored(const LostSound& from, const SoundIdentity& reverted) {
    isRestoring_ = false;
    forget(from.copy);
    addNow(from.name, false);
    if (KnownSound* const sound = known(SoundIdentity::now())) {
        sound->name = from.name;
        sound->isUnsaved = true;
        sound->copy = from.copy;
        keeper_->setLost(from.copy, false);
    }
    update(reverted);
}

/// A sound that has just come. One that is known already stays what it is.
void UnsavedWork::addNow(const std::string& name, bool isUnsaved) {
    const SoundIdentity now = SoundIdentity::now();
    if (now.isNone() || known(now) != nullptr) {
        return;
    }
    known_.push_back({.identity = now, .name = name, .isUnsaved = isUnsaved});
    if (isUnsaved && keeper_ != nullptr) {
        known_.back().copy = keeper_->keep(HeldSound::take(), name);
    }
}

/// What cannot be reached any more is lost if it is unsaved, and of no interest otherwise.
void UnsavedWork::update(const SoundIdentity& reverted) {
    const SoundIdentity now = SoundIdentity::now();
    for (KnownSound& sound : known_) {
        setLost(sound, sound.identity != now && sound.identity != reverted);
    }
    known_.erase(std::remove_if(
                     known_.begin(), known_.end(),
                     [](const KnownSound& sound) { return sound.isLost && sound.copy == kNoCopy; }),
                 known_.end());
}

void UnsavedWork::setLost(KnownSound& sound, bool isLost) {
    if (sound.isLost == isLost) {
        return;
    }
    sound.isLost = isLost;
    if (sound.copy == kNoCopy) {
        return;
    }
    keeper_->setLost(sound.copy, isLost);
    if (isLost) {
        lost_.insert(isRestoring_ ? lost_.end() : lost_.begin(),
                     {.copy = sound.copy, .name = sound.name});
    } else {
        std::erase_if(lost_, [&](const LostSound& lost) { return lost.copy == sound.copy; });
    }
}

// Files -------------------------------------------------------------------------------------------

void UnsavedWork::saved(const HeldSound& sound, const std::string& name) {
    if (KnownSound* const saved = known(SoundIdentity(sound))) {
        saved->name = name;
    }
    markSaved(sound);
}

void UnsavedWork::exported(const HeldSound& sound) {
    markSaved(sound);
}

void UnsavedWork::markSaved(const HeldSound& sound) {
    KnownSound* const saved = known(SoundIdentity(sound));
    if (saved == nullptr) {
        return;
    }
    saved->isUnsaved = false;
    if (const CopyNumber copy = std::exchange(saved->copy, kNoCopy)) {
        keeper_->drop(copy);
        std::erase_if(lost_, [copy](const LostSound& lost) { return lost.copy == copy; });
    }
    std::erase_if(known_, [](const KnownSound& one) { return one.isLost && one.copy == kNoCopy; });
}

// What is known -----------------------------------------------------------------------------------

UnsavedWork::KnownSound* UnsavedWork::known(const SoundIdentity& identity) {
    const auto found = std::find_if(known_.begin(), known_.end(), [&](const KnownSound& sound) {
        return sound.identity == identity;
    });
    return found == known_.end() || identity.isNone() ? nullptr : &*found;
}

const UnsavedWork::KnownSound* UnsavedWork::known(const SoundIdentity& identity) const {
    return const_cast<UnsavedWork*>(this)->known(identity);
}

const std::string& UnsavedWork::name() const {
    const KnownSound* const sound = known(SoundIdentity::now());
    return sound != nullptr ? sound->name : kNameless;
}

bool UnsavedWork::isUnsaved() const {
    const KnownSound* const sound = known(SoundIdentity::now());
    return sound != nullptr && sound->isUnsaved;
}

void UnsavedWork::found(const std::vector<FoundCopy>& copies) {
    for (const FoundCopy& copy : copies) {
        lost_.push_back({.copy = copy.number, .name = copy.soundName, .leftAt = copy.time});
    }
}

void UnsavedWork::discard(CopyNumber copy) {
    keeper_->drop(copy);
    forget(copy);
}

void UnsavedWork::forget(CopyNumber copy) {
    std::erase_if(lost_, [copy](const LostSound& lost) { return lost.copy == copy; });
    std::erase_if(known_, [copy](const KnownSound& sound) { return sound.copy == copy; });
}

std::optional<UnsavedWork::Unkept> UnsavedWork::unkept(const KnownSound& sound) const {
    if (!sound.isUnsaved || keeper_->isWritten(sound.copy)) {
        return std::nullopt;
    }
    HeldSound held = keeper_->find(sound.copy).sound;
    if (held.empty() && sound.identity == SoundIdentity::now()) {
        held = HeldSound::take();
    }
    if (held.empty()) { // it has been written meanwhile
        return std::nullopt;
    }
    return Unkept{std::move(held), sound.name};
}

std::optional<UnsavedWork::Unkept> UnsavedWork::unkept() const {
    if (keeper_ == nullptr) {
        return std::nullopt;
    }
    const KnownSound* const now = known(SoundIdentity::now());
    auto first = now != nullptr ? unkept(*now) : std::nullopt;
    for (auto sound = known_.begin(); sound != known_.end() && !first; ++sound) {
        first = unkept(*sound);
    }
    return first;
}

} // namespace zemo::rescue
