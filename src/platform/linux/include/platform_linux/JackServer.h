#pragma once

#include <cstdint>
#include <string>

namespace zemo::platform {

/// Where a JACK server leaves its socket.
struct JackPlaces {
    std::string memory = "/dev/shm";
    std::string server = "default";         ///< the server's name
    std::string user;                       ///< the user's number
    std::string sockets = "/proc/net/unix"; ///< the kernel's list of those that are open

    static JackPlaces ofThisProcess(); ///< [any]
};

/// [any] Whether a server may be there for the JACK library of this version; the socket of one that
/// was killed counts as well. Where there is none the library had better not be asked: it locks a
/// data base that all its clients share, and a program that is killed meanwhile leaves it locked
/// for good. PipeWire's library has neither that data base nor that socket.
bool mayHaveJackServer(const JackPlaces& places, const std::string& libraryVersion);

/// [any] The number of the socket that the server listens at, 0 where none does: another one after
/// each start of a server. Asks the kernel and not the server, so it never waits, and a server that
/// was killed is seen at once.
std::uint64_t jackServerSocket(const JackPlaces& places);

} // namespace zemo::platform
