#include "platform_linux/JackServer.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace zemo::platform {
namespace {

/// Nobody changes the environment of this program.
std::string environment(const char* name) {
    const char* const text = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return text != nullptr ? text : "";
}

bool isThere(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

std::string prefixOf(const JackPlaces& places) {
    return places.memory + "/jack_" + places.server + "_";
}

} // namespace

JackPlaces JackPlaces::ofThisProcess() {
    JackPlaces places;
    places.user = std::to_string(::getuid());
    if (const std::string name = environment("JACK_DEFAULT_SERVER"); !name.empty()) {
        places.server = name;
    }
    return places;
}

bool mayHaveJackServer(const JackPlaces& places, const std::string& libraryVersion) {
    if (!libraryVersion.starts_with("0.") && !libraryVersion.starts_with("1.")) {
        return true; // not JACK's own library
    }
    const std::string prefix = prefixOf(places);
    // A server for one user, one for all users, and one of the first version of JACK.
    return isThere(prefix + places.user + "_0") || isThere(prefix + "0") ||
           isThere(places.memory + "/jack-" + places.user + "/" + places.server);
}

/// A line of the list: address, references, protocol, flags, type, state, inode, path. The sockets
/// of the connections have the server's path as well.
std::uint64_t jackServerSocket(const JackPlaces& places) {
    constexpr unsigned kListens = 0x10000;
    const std::string prefix = prefixOf(places);
    std::ifstream sockets(places.sockets);
    for (std::string line; std::getline(sockets, line);) {
        if (line.find(prefix) == std::string::npos) {
            continue; // the list may be long
        }
        std::istringstream words(line);
        std::string number;
        std::string path;
        unsigned flags = 0;
        std::uint64_t inode = 0;
        words >> number >> number >> number >> std::hex >> flags >> number >> number >> std::dec >>
            inode >> path;
        if ((flags & kListens) != 0 &&
            (path == prefix + places.user + "_0" || path == prefix + "0")) {
            return inode;
        }
    }
    return 0;
}

} // namespace zemo::platform
