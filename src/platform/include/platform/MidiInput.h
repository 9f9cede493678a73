#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/AudioOutput.h"

namespace zemo::platform {

/// A packet list as its bytes: a 32-bit packet count, then the packets one after the other without
/// padding, each a 64-bit time stamp, a 16-bit length and that many data bytes; numbers in the
/// host's byte order.
struct MidiPacketList {
    const std::uint8_t* bytes = nullptr;
    std::size_t size = 0;
};

/// Receives what arrives at an input port, on the MIDI service's own thread: [midi].
using MidiReadProc = void (*)(const MidiPacketList& packets, void* readContext,
                              void* sourceContext);

/// Objects of the service are 32-bit handles; 0 is none.
using MidiObject = std::uint32_t;

class MidiService {
public:
    MidiService() = default;
    MidiService(const MidiService&) = delete;
    MidiService& operator=(const MidiService&) = delete;
    virtual ~MidiService() = default;

    virtual Status createClient(const char* name, MidiObject& client) = 0; ///< [main]
    /// [main] `read` is called from the first connected source on.
    virtual Status createInputPort(MidiObject client, const char* name, MidiReadProc read,
                                   void* readContext, MidiObject& port) = 0;
    virtual long numberOfSources() = 0;        ///< [main] present now
    virtual MidiObject source(long index) = 0; ///< [main] 0 up to numberOfSources()
    virtual Status connectSource(MidiObject port, MidiObject source,
                                 void* sourceContext) = 0; ///< [main]
    /// [any] What the user should know about it, empty when all is well.
    virtual std::string notice() const { return {}; }
    /// [main] Before the port is made: `changed` is called [midi] when notice() becomes another.
    virtual void onNotice(const std::function<void()>& /*changed*/) {}
};

} // namespace zemo::platform
