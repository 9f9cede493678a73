#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "UseModel.h"

namespace zemo::test {

/// A copy on the disk.
struct KeptSound {
    std::filesystem::path file;
    Fingerprint print = 0;
    std::string name; ///< the sound's
};

/// All complete copies under a rescue root.
std::vector<KeptSound> keptSounds(const std::filesystem::path& root);

/// What a program says of its sounds just before it is killed, and how often it has done what.
struct Account {
    bool isSettled = false; ///< it has waited until every copy was written, and every other removed
    std::vector<ModelSound> unsaved;
    std::vector<Fingerprint> dropped;
    std::map<std::string, int> deeds;

    void write(const std::filesystem::path& file) const;
    static Account read(const std::filesystem::path& file);
};

/// What is wrong with the copies that a killed program has left; empty: nothing. Settled, they are
/// those of all its unsaved sounds and no others. Otherwise the sounds that were made last may be
/// missing, and those that were dropped may be there.
std::string wrongWith(const Account& account, const std::vector<KeptSound>& kept);

} // namespace zemo::test
