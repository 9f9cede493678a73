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

/// All that is [main] may also be another thread's for a while, one at a time.
class MidiService {
public:
    MidiService() = default;
    MidiService(const MidiService&) = delete;
    MidiService& operator=(const MidiService&) = delete;
    virtual ~MidiService() = default;

    virtual Status createClient(const char* name, MidiObject& client) = 0; ///< [main]
    /// [main] `read` gets what the sources send from their connection on, from deliver() on.
    virtual Status createInputPort(MidiObject client, const char* name, MidiReadProc read,
                                   void* readContext, MidiObject& port) = 0;
    virtual long numberOfSources() = 0;        ///< [main] present now
    virtual MidiObject source(long index) = 0; ///< [main] 0 up to numberOfSources()
    virtual Status connectSource(MidiObject port, MidiObject source,
                                 void* sourceContext) = 0; ///< [main]
    /// [main] What has arrived since the first connection is read now, and from here on at once.
    virtual void deliver() {}
    /// [main] Closes the client with its port and its connections and looks for the service as at
    /// the beginning, so that they can be made anew. Does not wait for either.
    virtual void startOver() {}
    /// [any] What the user should know about it, empty when all is well.
    virtual std::string notice() const { return {}; }
    /// [main] Before the port is made: `changed` is called [midi] when notice() becomes another.
    virtual void onNotice(const std::function<void()>& /*changed*/) {}
};

} // namespace zemo::platform
