#include <jack/jack.h>
#include <jack/midiport.h>
#include <jack/ringbuffer.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "platform/RealTime.h"
#include "platform_linux/JackServer.h"
#include "platform_linux/LinuxMidi.h"
#include "platform_linux/MidiPackets.h"

namespace zemo::platform {
namespace {

constexpr Status kJackError = static_cast<Status>(fourCharCode("jack"));
constexpr std::size_t kRingBytes = std::size_t{1} << 20; ///< some 50 000 short messages
constexpr std::size_t kLongestMessage = 4096;            ///< bytes; the rest of a longer one is cut

void saySilently(const char* /*text*/) {}

struct RingHeader {
    std::uint32_t length;
};

/// JACK's thread must not wait, so it only puts the bytes into a ring; a thread of our own takes
/// them out and reads them.
class JackMidi final : public MidiService {
public:
    ~JackMidi() override {
        if (client_ != nullptr) {
            jack_client_close(client_);
        }
        if (thread_.joinable()) {
            ending_.store(true);
            arrived_.release();
            thread_.join();
        }
        if (ring_ != nullptr) {
            jack_ringbuffer_free(ring_);
        }
    }

    bool open() {
        jack_set_error_function(saySilently);
        jack_set_info_function(saySilently);
        client_ = jack_client_open("ZEMO", JackNoStartServer, nullptr);
        return client_ != nullptr;
    }

    Status createClient(const char* /*name*/, MidiObject& client) override {
        ring_ = jack_ringbuffer_create(kRingBytes);
        if (ring_ == nullptr || jack_set_process_callback(client_, process, this) != 0) {
            return kJackError;
        }
        client = 1;
        return kNoError;
    }

    Status createInputPort(MidiObject /*client*/, const char* name, MidiReadProc read,
                           void* readContext, MidiObject& port) override {
        port_ = jack_port_register(client_, name, JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
        if (port_ == nullptr) {
            return kJackError;
        }
        sender_.setReader(read, readContext);
        thread_ = std::thread([this] { readUntilTheEnd(); });
        port = 1;
        return jack_activate(client_) == 0 ? kNoError : kJackError;
    }

    long numberOfSources() override {
        sources_.clear();
        const char** const names =
            jack_get_ports(client_, nullptr, JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
        for (const char** name = names; name != nullptr && *name != nullptr; ++name) {
            sources_.emplace_back(*name);
        }
        jack_free(names);
        return static_cast<long>(sources_.size());
    }

    MidiObject source(long index) override { return static_cast<MidiObject>(index) + 1; }

    Status connectSource(MidiObject /*port*/, MidiObject source, void* sourceContext) override {
        sourceContext_.store(sourceContext);
        return jack_connect(client_, sources_.at(source - 1).c_str(), jack_port_name(port_));
    }

private:
    static int process(jack_nframes_t frames, void* context) {
        const RealTimeScope realTime;
        static_cast<JackMidi*>(context)->take(frames);
        return 0;
    }

    void take(jack_nframes_t frames) {
        void* const buffer = jack_port_get_buffer(port_, frames);
        const jack_nframes_t count = jack_midi_get_event_count(buffer);
        for (jack_nframes_t i = 0; i < count; ++i) {
            jack_midi_event_t event{};
            if (jack_midi_event_get(&event, buffer, i) == 0) {
                put(event);
            }
        }
    }

    /// Whole or not at all. The semaphore's release never blocks.
    void put(const jack_midi_event_t& event) {
        const RingHeader header{
            static_cast<std::uint32_t>(std::min<std::size_t>(event.size, kLongestMessage))};
        if (jack_ringbuffer_write_space(ring_) < sizeof header + header.length) {
            return;
        }
        const auto* const head = reinterpret_cast<const char*>(&header);
        jack_ringbuffer_write(ring_, head, sizeof header);
        jack_ringbuffer_write(ring_, reinterpret_cast<const char*>(event.buffer), header.length);
        arrived_.release();
    }

    void readUntilTheEnd() {
        std::array<char, kLongestMessage> bytes{};
        while (true) {
            arrived_.acquire();
            if (ending_.load()) {
                return;
            }
            RingHeader header{};
            jack_ringbuffer_read(ring_, reinterpret_cast<char*>(&header), sizeof header);
            jack_ringbuffer_read(ring_, bytes.data(), header.length);
            sender_.send(0, {reinterpret_cast<const std::uint8_t*>(bytes.data()), header.length},
                         sourceContext_.load());
        }
    }

    jack_client_t* client_ = nullptr;
    jack_port_t* port_ = nullptr;
    jack_ringbuffer_t* ring_ = nullptr;
    std::vector<std::string> sources_;
    std::atomic<void*> sourceContext_{nullptr};
    std::counting_semaphore<> arrived_{0};
    std::atomic<bool> ending_{false};
    MidiPacketSender sender_;
    std::thread thread_;
};

} // namespace

std::unique_ptr<MidiService> makeJackMidi() {
    if (!mayHaveJackServer(JackPlaces::ofThisProcess(), jack_get_version_string())) {
        return nullptr;
    }
    auto midi = std::make_unique<JackMidi>();
    return midi->open() ? std::move(midi) : nullptr;
}

} // namespace zemo::platform
