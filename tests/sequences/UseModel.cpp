#include "UseModel.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace zemo::test {

Fingerprint fingerprintOf(std::span<const float> samples) {
    if (samples.empty()) {
        return 0;
    }
    Fingerprint print = 14695981039346656037U; // FNV-1a
    for (const std::byte byte : std::as_bytes(samples)) {
        print = (print ^ std::to_integer<Fingerprint>(byte)) * 1099511628211U;
    }
    return print;
}

ModelSound UseModel::make(Fingerprint print, const std::string& name, bool isUnsaved) {
    return print == 0 ? ModelSound() : ModelSound{++lastId_, print, name, isUnsaved};
}

bool UseModel::isLostNow(const ModelSound& sound) const {
    return sound.isUnsaved && sound.id != sound_.id && sound.id != revert_.id;
}

void UseModel::lose(const ModelSound& sound) {
    if (isLostNow(sound)) {
        lost_.insert(lost_.begin(), sound);
    }
}

void UseModel::opened(Fingerprint now, const std::string& name) {
    const ModelSound before = std::exchange(sound_, make(now, name, false));
    lose(before);
}

void UseModel::scaled(Fingerprint now) {
    if (now != sound_.print) {
        const ModelSound before = sound_;
        sound_ = make(now, before.name, before.isUnsaved);
        lose(before);
    }
}

void UseModel::transformed(Fingerprint now) {
    const ModelSound before = std::exchange(revert_, sound_);
    sound_ = make(now, sound_.name, true);
    lose(before);
}

void UseModel::reverted() {
    if (revert_.id != 0) {
        std::swap(sound_, revert_);
    }
}

bool UseModel::takeOut(std::vector<ModelSound>& sounds, std::uint64_t id, ModelSound& taken) {
    const auto found = std::find_if(sounds.begin(), sounds.end(),
                                    [id](const ModelSound& sound) { return sound.id == id; });
    if (found == sounds.end()) {
        return false;
    }
    taken = *found;
    sounds.erase(found);
    return true;
}

void UseModel::saved(std::uint64_t id, const std::string& name) {
    for (ModelSound* const sound : {&sound_, &revert_}) {
        if (sound->id == id) {
            if (std::exchange(sound->isUnsaved, false)) {
                dropped_.push_back(sound->print);
            }
            sound->name = name.empty() ? sound->name : name;
        }
    }
    ModelSound taken;
    if (takeOffer(id, taken)) {
        dropped_.push_back(taken.print);
    }
}

bool UseModel::takeOffer(std::uint64_t id, ModelSound& taken) {
    return takeOut(lost_, id, taken) || takeOut(left_, id, taken) || takeOut(displaced_, id, taken);
}

void UseModel::restored(std::uint64_t id) {
    ModelSound taken;
    if (takeOffer(id, taken)) {
        const ModelSound before = std::exchange(sound_, taken);
        if (isLostNow(before)) {
            displaced_.push_back(before);
        }
    }
}

void UseModel::discarded(std::uint64_t id) {
    ModelSound taken;
    if (takeOffer(id, taken)) {
        dropped_.push_back(taken.print);
    }
}

void UseModel::found(Fingerprint print, const std::string& name) {
    left_.push_back(make(print, name, true));
}

std::vector<ModelSound> UseModel::unsaved() const {
    std::vector<ModelSound> all = lost_;
    all.insert(all.end(), left_.begin(), left_.end());
    all.insert(all.end(), displaced_.begin(), displaced_.end());
    for (const ModelSound& sound : {sound_, revert_}) {
        if (sound.isUnsaved) {
            all.push_back(sound);
        }
    }
    std::sort(all.begin(), all.end(),
              [](const ModelSound& one, const ModelSound& other) { return one.id < other.id; });
    return all;
}

} // namespace zemo::test
