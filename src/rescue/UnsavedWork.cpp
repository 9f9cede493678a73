#include "rescue/UnsavedWork.h"

#include <utility>

namespace zemo::rescue {

void UnsavedWork::opened(const SoundIdentity& before) {
    if (SoundIdentity::now() != before) {
        inFile_ = SoundIdentity::now();
    }
}

void UnsavedWork::scaled(const SoundIdentity& before, const std::string& name) {
    const HeldSound sound = HeldSound::take();
    if (sound.empty()) {
        return;
    }
    if (inFile_ == before) {
        inFile_ = SoundIdentity(sound);
    }
    if (keeper_ != nullptr && kept_ == before) {
        kept_ = SoundIdentity(sound);
        keeper_->keep(sound, name);
    }
}

void UnsavedWork::changed(const SoundIdentity& before, const std::string& name) {
    const HeldSound sound = HeldSound::take();
    const SoundIdentity now(sound);
    if (keeper_ == nullptr || sound.empty() || now == before) {
        return;
    }
    if (now != inFile_) {
        kept_ = now;
        keeper_->keep(sound, name);
    } else if (kept_ == before) {
        dropCopy();
    }
}

void UnsavedWork::saved(const HeldSound& sound) {
    const SoundIdentity written(sound);
    if (written == SoundIdentity::now()) {
        inFile_ = written;
    }
    if (keeper_ != nullptr && !sound.empty() && kept_ == written) {
        dropCopy();
    }
}

void UnsavedWork::restored(RescueFolder folder) {
    if (keeper_ != nullptr) {
        inFile_ = {};
        kept_ = SoundIdentity::now();
        keeper_->adopt(std::move(folder));
    }
}

void UnsavedWork::dropCopy() {
    kept_ = {};
    keeper_->drop();
}

} // namespace zemo::rescue
