#include "Accounts.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "rescue/RescueFolder.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHeader = 68; ///< bytes of our CAF: file, description and data chunk

Fingerprint fingerprintOfFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
    if (bytes.size() <= kHeader) {
        return 0;
    }
    std::vector<float> samples((bytes.size() - kHeader) / sizeof(float));
    std::copy_n(bytes.data() + kHeader, samples.size() * sizeof(float),
                reinterpret_cast<char*>(samples.data()));
    return fingerprintOf(samples);
}

/// Takes the copy of that sound out of the list.
bool takeCopy(std::vector<KeptSound>& kept, const ModelSound& sound) {
    const auto found = std::find_if(kept.begin(), kept.end(), [&](const KeptSound& copy) {
        return copy.print == sound.print && copy.name == sound.name;
    });
    if (found == kept.end()) {
        return false;
    }
    kept.erase(found);
    return true;
}

std::string describe(const ModelSound& sound) {
    return std::to_string(sound.id) + " (" + sound.name + ")";
}

} // namespace

std::vector<KeptSound> keptSounds(const fs::path& root) {
    std::vector<KeptSound> kept;
    std::error_code none;
    for (fs::recursive_directory_iterator entry(root, none), end; !none && entry != end;
         entry.increment(none)) {
        const fs::path& file = entry->path();
        if (file.extension() == ".caf" && file.filename().native().front() != '.') {
            kept.push_back({.file = file,
                            .print = fingerprintOfFile(file),
                            .name = rescue::soundNameOf(file.filename())});
        }
    }
    return kept;
}

void Account::write(const fs::path& file) const {
    std::ofstream stream(file);
    stream << "settled " << isSettled << "\n";
    for (const ModelSound& sound : unsaved) {
        stream << "unsaved " << sound.id << " " << sound.print << " " << sound.name << "\n";
    }
    for (const Fingerprint print : dropped) {
        stream << "dropped " << print << "\n";
    }
    for (const auto& [deed, count] : deeds) {
        stream << "deed " << count << " " << deed << "\n";
    }
}

Account Account::read(const fs::path& file) {
    Account account;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "settled") {
            words >> account.isSettled;
        } else if (kind == "unsaved") {
            ModelSound sound{.isUnsaved = true};
            words >> sound.id >> sound.print;
            words.ignore(1);
            std::getline(words, sound.name);
            account.unsaved.push_back(sound);
        } else if (kind == "dropped") {
            words >> account.dropped.emplace_back();
        } else {
            int count = 0;
            words >> count;
            words.ignore(1);
            std::getline(words, line);
            account.deeds[line] = count;
        }
    }
    return account;
}

std::string wrongWith(const Account& account, const std::vector<KeptSound>& kept) {
    std::vector<KeptSound> others = kept;
    const ModelSound* missing = nullptr;
    for (const ModelSound& sound : account.unsaved) {
        if (!takeCopy(others, sound)) {
            missing = missing == nullptr ? &sound : missing;
        } else if (missing != nullptr) {
            return "the copy of sound " + describe(*missing) +
                   " is missing, and a later one is not";
        }
    }
    if (missing != nullptr && account.isSettled) {
        return "the copy of sound " + describe(*missing) + " is missing";
    }
    for (const KeptSound& copy : others) {
        const bool wasDropped =
            std::count(account.dropped.begin(), account.dropped.end(), copy.print) > 0;
        if (account.isSettled || !wasDropped) {
            return "there is a copy of a sound that needs none, or a damaged one: " +
                   copy.file.filename().string();
        }
    }
    return {};
}

} // namespace zemo::test
