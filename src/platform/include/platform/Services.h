#pragma once

namespace zemo::platform {

class Alert;
class AudioOutputService;
class Clock;
class FileOperations;
class FileSystem;
class LongWork;
class Memory;
class MidiService;
class SystemVersion;
class TraceLog;
class Workers;

/// The platform as the core sees it. The program's entry point (or a test) puts the
/// implementations in before anything else runs; they outlive every use.
struct Services {
    AudioOutputService* audioOutput = nullptr;
    Alert* alert = nullptr;
    Clock* clock = nullptr;
    FileOperations* fileOperations = nullptr;
    FileSystem* fileSystem = nullptr;
    MidiService* midi = nullptr;
    SystemVersion* systemVersion = nullptr;
    TraceLog* trace = nullptr;
    Memory* memory = nullptr;     ///< only gives hints, so it may be absent
    Workers* workers = nullptr;   ///< absent: the caller's thread does it all
    LongWork* longWork = nullptr; ///< absent: long work is just done
};

/// [any] The one set of services of this process.
Services& services() noexcept;

} // namespace zemo::platform
