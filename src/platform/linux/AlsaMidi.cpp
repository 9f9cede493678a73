#include <alsa/asoundlib.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <thread>
#include <vector>

#include "platform_linux/LinuxMidi.h"
#include "platform_linux/MidiPackets.h"

namespace zemo::platform {
namespace {

constexpr std::size_t kLongestMessage = 4096; ///< bytes; longer ones come in parts

/// The library would write a line on standard error for a computer without a sequencer. This stays:
/// another thread may be asking the same library for sound, and setting it back would let that
/// speak.
void saySilently(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                 const char* /*text*/, ...) {}

MidiObject objectOf(const snd_seq_addr_t& address) {
    return (static_cast<MidiObject>(address.client) << 8U) | address.port;
}

class AlsaMidi final : public MidiService {
public:
    ~AlsaMidi() override {
        if (thread_.joinable()) {
            const std::uint64_t wake = 1;
            static_cast<void>(!::write(wake_, &wake, sizeof wake));
            thread_.join();
        }
        if (wake_ >= 0) {
            ::close(wake_);
        }
        if (decoder_ != nullptr) {
            snd_midi_event_free(decoder_);
        }
        if (sequencer_ != nullptr) {
            snd_seq_close(sequencer_);
        }
    }

    bool open() {
        snd_lib_error_set_handler(saySilently);
        return snd_seq_open(&sequencer_, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) == 0;
    }

    Status createClient(const char* name, MidiObject& client) override {
        if (const int error = snd_seq_set_client_name(sequencer_, name); error < 0) {
            return error;
        }
        client = static_cast<MidiObject>(snd_seq_client_id(sequencer_));
        return kNoError;
    }

    Status createInputPort(MidiObject /*client*/, const char* name, MidiReadProc read,
                           void* readContext, MidiObject& port) override {
        const int number = snd_seq_create_simple_port(
            sequencer_, name, SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE,
            SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION);
        if (number < 0) {
            return number;
        }
        port_ = number;
        port = static_cast<MidiObject>(number) + 1; // 0 would be no port
        sender_.setReader(read, readContext);
        return startReading();
    }

    long numberOfSources() override {
        sources_.clear();
        snd_seq_client_info_t* client = nullptr;
        snd_seq_client_info_alloca(&client);
        snd_seq_client_info_set_client(client, -1);
        while (snd_seq_query_next_client(sequencer_, client) >= 0) {
            addSourcesOf(snd_seq_client_info_get_client(client));
        }
        return static_cast<long>(sources_.size());
    }

    MidiObject source(long index) override {
        return objectOf(sources_.at(static_cast<std::size_t>(index)));
    }

    Status connectSource(MidiObject /*port*/, MidiObject source, void* sourceContext) override {
        sourceContext_.store(sourceContext);
        return snd_seq_connect_from(sequencer_, port_, static_cast<int>(source >> 8U),
                                    static_cast<int>(source & 0xFFU));
    }

private:
    void addSourcesOf(int client) {
        if (client == SND_SEQ_CLIENT_SYSTEM || client == snd_seq_client_id(sequencer_)) {
            return;
        }
        constexpr unsigned kReadable = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ;
        snd_seq_port_info_t* port = nullptr;
        snd_seq_port_info_alloca(&port);
        snd_seq_port_info_set_client(port, client);
        snd_seq_port_info_set_port(port, -1);
        while (snd_seq_query_next_port(sequencer_, port) >= 0) {
            if ((snd_seq_port_info_get_capability(port) & kReadable) == kReadable) {
                sources_.push_back(*snd_seq_port_info_get_addr(port));
            }
        }
    }

    Status startReading() {
        if (const int error = snd_midi_event_new(kLongestMessage, &decoder_); error < 0) {
            return error;
        }
        snd_midi_event_no_status(decoder_, 1); // every message with its status byte
        wake_ = ::eventfd(0, EFD_CLOEXEC);
        if (wake_ < 0) {
            return -errno;
        }
        thread_ = std::thread([this] { readUntilTheEnd(); });
        return kNoError;
    }

    void readUntilTheEnd() {
        std::vector<pollfd> waited(
            static_cast<std::size_t>(snd_seq_poll_descriptors_count(sequencer_, POLLIN)) + 1);
        snd_seq_poll_descriptors(sequencer_, waited.data(),
                                 static_cast<unsigned>(waited.size() - 1), POLLIN);
        waited.back() = {wake_, POLLIN, 0};
        while (true) {
            ::poll(waited.data(), waited.size(), -1);
            if (waited.back().revents != 0) {
                return;
            }
            readWaiting();
        }
    }

    void readWaiting() {
        std::array<unsigned char, kLongestMessage> bytes{};
        snd_seq_event_t* event = nullptr;
        while (snd_seq_event_input(sequencer_, &event) >= 0) {
            const long length = snd_midi_event_decode(decoder_, bytes.data(),
                                                      static_cast<long>(bytes.size()), event);
            if (length > 0) {
                sender_.send(0, {bytes.data(), static_cast<std::size_t>(length)},
                             sourceContext_.load());
            }
        }
    }

    snd_seq_t* sequencer_ = nullptr;
    snd_midi_event_t* decoder_ = nullptr;
    int port_ = -1;
    int wake_ = -1;
    std::vector<snd_seq_addr_t> sources_;
    std::atomic<void*> sourceContext_{nullptr};
    MidiPacketSender sender_;
    std::thread thread_;
};

} // namespace

std::unique_ptr<MidiService> makeAlsaMidi() {
    auto midi = std::make_unique<AlsaMidi>();
    return midi->open() ? std::move(midi) : nullptr;
}

} // namespace zemo::platform
