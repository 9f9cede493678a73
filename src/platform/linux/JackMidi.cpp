#include <jack/jack.h>
#include <jack/midiport.h>
#include <jack/ringbuffer.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <semaphore>
#include <string>
#include <thread>
#include <utility>
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
/// A call comes every few milliseconds. The clock may stand still meanwhile with the program, so
/// looks are counted.
constexpr std::chrono::milliseconds kLookInterval{100};
constexpr int kMostLooksWithoutCall = 5;
constexpr const char* kGone =
    "MIDI went away: no notes are read. Choose Play ▸ Look for MIDI Again.";

void saySilently(const char* /*text*/) {}

struct RingHeader {
    std::uint32_t length;
};

/// JACK's thread must not wait, so it only puts the bytes into a ring; a thread of our own takes
/// them out and reads them. It also closes the client when the server has died: the library mixes
/// up clients of a dead server and of its successor, and crashes.
class JackMidi final : public MidiService {
public:
    ~JackMidi() override {
        closeClient();
        if (thread_.joinable()) {
            ending_.store(true);
            arrived_.release();
            thread_.join();
        }
        if (ring_ != nullptr) {
            jack_ringbuffer_free(ring_);
        }
    }

    /// The server may add a number to a name that it has already.
    bool open(const char* name) {
        jack_set_error_function(saySilently);
        jack_set_info_function(saySilently);
        client_ = jack_client_open(name, JackNoStartServer, nullptr);
        return client_ != nullptr;
    }

    /// It has its name since it was opened.
    Status createClient(const char* /*name*/, MidiObject& client) override {
        const std::lock_guard lock(mutex_);
        ring_ = jack_ringbuffer_create(kRingBytes);
        if (ring_ == nullptr || jack_set_process_callback(client_, process, this) != 0) {
            return kJackError;
        }
        jack_on_shutdown(client_, shutDown, this);
        client = 1;
        return kNoError;
    }

    Status createInputPort(MidiObject /*client*/, const char* name, MidiReadProc read,
                           void* readContext, MidiObject& port) override {
        const std::lock_guard lock(mutex_);
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
        const std::lock_guard lock(mutex_);
        sources_.clear();
        if (client_ == nullptr) {
            return 0; // the server has died meanwhile
        }
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
        const std::lock_guard lock(mutex_);
        sourceContext_.store(sourceContext);
        return client_ == nullptr
                   ? kJackError
                   : jack_connect(client_, sources_.at(source - 1).c_str(), jack_port_name(port_));
    }

    void onNotice(const std::function<void()>& changed) override { changed_ = changed; }

    std::string notice() const override {
        switch (health_.load()) {
        case Health::Silent:
            return kMidiDoesNotAnswer;
        case Health::Gone:
            return kGone;
        default:
            return {};
        }
    }

private:
    enum class Health { Well, Silent, Gone };

    static int process(jack_nframes_t frames, void* context) {
        const RealTimeScope realTime;
        static_cast<JackMidi*>(context)->take(frames);
        return 0;
    }

    /// [any] The server has ended, or has thrown this client out. Here nothing but a mark is safe.
    static void shutDown(void* context) {
        auto& self = *static_cast<JackMidi*>(context);
        self.isGone_.store(true);
        self.arrived_.release();
    }

    void take(jack_nframes_t frames) {
        calls_.fetch_add(1, std::memory_order_relaxed);
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
        while (true) {
            const bool hasArrived = arrived_.try_acquire_for(kLookInterval);
            if (ending_.load()) {
                return;
            }
            lookAfterServer(hasArrived);
            const bool hasRead = readWaiting();
            if (isGone_.load() && !hasRead) {
                return closeClient();
            }
        }
    }

    void closeClient() {
        const std::lock_guard lock(mutex_);
        if (client_ != nullptr) {
            jack_client_close(std::exchange(client_, nullptr));
        }
    }

    void lookAfterServer(bool hasArrived) {
        const std::uint64_t calls = calls_.load(std::memory_order_relaxed);
        if (calls != seenCalls_) {
            looksWithoutCall_ = 0;
        } else if (!hasArrived) {
            ++looksWithoutCall_;
        }
        seenCalls_ = calls;
        const bool isSilent = looksWithoutCall_ >= kMostLooksWithoutCall;
        const Health health = isGone_.load() ? Health::Gone
                              : isSilent     ? Health::Silent
                                             : Health::Well;
        if (health_.exchange(health) != health && changed_) {
            changed_();
        }
    }

    /// One message; false if no whole one is there.
    bool readWaiting() {
        RingHeader header{};
        jack_ringbuffer_peek(ring_, reinterpret_cast<char*>(&header), sizeof header);
        if (jack_ringbuffer_read_space(ring_) < sizeof header + header.length) {
            return false;
        }
        jack_ringbuffer_read_advance(ring_, sizeof header);
        jack_ringbuffer_read(ring_, bytes_.data(), header.length);
        sender_.send(0, {reinterpret_cast<const std::uint8_t*>(bytes_.data()), header.length},
                     sourceContext_.load());
        return true;
    }

    std::mutex mutex_;                ///< of the client
    jack_client_t* client_ = nullptr; ///< null once the server has died
    jack_port_t* port_ = nullptr;
    jack_ringbuffer_t* ring_ = nullptr;
    std::vector<std::string> sources_;
    std::atomic<void*> sourceContext_{nullptr};
    std::counting_semaphore<> arrived_{0};
    std::atomic<bool> ending_{false};
    std::atomic<bool> isGone_{false};
    std::atomic<std::uint64_t> calls_{0};
    std::atomic<Health> health_{Health::Well};
    std::function<void()> changed_;
    // Of the reading thread.
    std::array<char, kLongestMessage> bytes_{};
    std::uint64_t seenCalls_ = 0;
    int looksWithoutCall_ = 0;
    MidiPacketSender sender_;
    std::thread thread_;
};

} // namespace

std::unique_ptr<MidiService> makeJackMidi(const char* clientName) {
    if (!mayHaveJackServer(JackPlaces::ofThisProcess(), jack_get_version_string())) {
        return nullptr;
    }
    auto midi = std::make_unique<JackMidi>();
    return midi->open(clientName) ? std::move(midi) : nullptr;
}

} // namespace zemo::platform
