// The ALSA back end over a sequencer of our own: the library's calls that it makes are defined
// here, and the linker takes these. The machines that run the tests have no sequencer.

#include <alsa/asoundlib.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "platform_linux/LinuxMidi.h"

struct _snd_seq {};
struct snd_midi_event {};
struct _snd_seq_client_info {
    int client;
};
struct _snd_seq_port_info {
    snd_seq_addr_t address;
    unsigned capability;
};

namespace {

using Bytes = std::vector<std::uint8_t>;

struct FakePort {
    int client;
    int port;
    unsigned capability;
};

/// The sequencer as the test arranges it, and what was asked of it.
struct FakeSequencer {
    int openResult = 0;
    int createPortResult = 4;
    std::vector<FakePort> ports; ///< in the order of their clients
    std::vector<std::string> calls;
    bool isOpen = false;

    std::mutex mutex;
    std::deque<Bytes> waiting; ///< messages that have arrived
    snd_seq_event_t event{};
    int arrived = ::eventfd(0, EFD_NONBLOCK);

    ~FakeSequencer() { ::close(arrived); }

    void receive(const Bytes& message) {
        const std::lock_guard lock(mutex);
        waiting.push_back(message);
        const std::uint64_t one = 1;
        ASSERT_EQ(::write(arrived, &one, sizeof one), static_cast<ssize_t>(sizeof one));
    }
};

FakeSequencer* fake = nullptr;
_snd_seq theSequencer;
snd_midi_event theDecoder;

/// What came through to the reader.
struct Reader {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Bytes> lists;

    static void read(const zemo::platform::MidiPacketList& list, void* self, void* /*source*/) {
        auto& reader = *static_cast<Reader*>(self);
        const std::lock_guard lock(reader.mutex);
        reader.lists.emplace_back(list.bytes, list.bytes + list.size);
        reader.changed.notify_all();
    }

    std::vector<Bytes> wait(std::size_t count) {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::seconds(10), [&] { return lists.size() >= count; });
        return lists;
    }
};

/// The list of one packet, time 0, that holds `message`.
Bytes listOf(const Bytes& message) {
    constexpr std::size_t kHead = 14;
    Bytes list(kHead + message.size());
    list[0] = 1;
    list[12] = static_cast<std::uint8_t>(message.size());
    std::copy(message.begin(), message.end(), list.begin() + kHead);
    return list;
}

} // namespace

extern "C" {

int snd_lib_error_set_handler(snd_lib_error_handler_t /*handler*/) {
    return 0;
}

int snd_seq_open(snd_seq_t** handle, const char* /*name*/, int /*streams*/, int /*mode*/) {
    *handle = &theSequencer;
    fake->isOpen = fake->openResult == 0;
    return fake->openResult;
}

int snd_seq_close(snd_seq_t* /*handle*/) {
    fake->isOpen = false;
    return 0;
}

int snd_seq_set_client_name(snd_seq_t* /*handle*/, const char* name) {
    fake->calls.push_back(std::string("name ") + name);
    return 0;
}

int snd_seq_client_id(snd_seq_t* /*handle*/) {
    return 128;
}

int snd_seq_create_simple_port(snd_seq_t* /*handle*/, const char* name, unsigned int capability,
                               unsigned int /*type*/) {
    const bool writable = (capability & SND_SEQ_PORT_CAP_WRITE) != 0 &&
                          (capability & SND_SEQ_PORT_CAP_SUBS_WRITE) != 0;
    fake->calls.push_back(std::string("port ") + name + (writable ? " writable" : ""));
    return fake->createPortResult;
}

size_t snd_seq_client_info_sizeof(void) {
    return sizeof(_snd_seq_client_info);
}
size_t snd_seq_port_info_sizeof(void) {
    return sizeof(_snd_seq_port_info);
}
void snd_seq_client_info_set_client(snd_seq_client_info_t* info, int client) {
    info->client = client;
}
int snd_seq_client_info_get_client(const snd_seq_client_info_t* info) {
    return info->client;
}
void snd_seq_port_info_set_client(snd_seq_port_info_t* info, int client) {
    info->address.client = static_cast<unsigned char>(client);
}
void snd_seq_port_info_set_port(snd_seq_port_info_t* info, int port) {
    info->address.port = static_cast<unsigned char>(port);
}
unsigned int snd_seq_port_info_get_capability(const snd_seq_port_info_t* info) {
    return info->capability;
}
const snd_seq_addr_t* snd_seq_port_info_get_addr(const snd_seq_port_info_t* info) {
    return &info->address;
}

int snd_seq_query_next_client(snd_seq_t* /*handle*/, snd_seq_client_info_t* info) {
    for (const FakePort& port : fake->ports) {
        if (port.client > info->client) {
            info->client = port.client;
            return 0;
        }
    }
    return -ENOENT;
}

int snd_seq_query_next_port(snd_seq_t* /*handle*/, snd_seq_port_info_t* info) {
    const int last = static_cast<signed char>(info->address.port);
    for (const FakePort& port : fake->ports) {
        if (port.client == info->address.client && port.port > last) {
            info->address.port = static_cast<unsigned char>(port.port);
            info->capability = port.capability;
            return 0;
        }
    }
    return -ENOENT;
}

int snd_seq_connect_from(snd_seq_t* /*handle*/, int port, int client, int clientPort) {
    fake->calls.push_back("connect " + std::to_string(client) + ":" + std::to_string(clientPort) +
                          " to " + std::to_string(port));
    return 0;
}

int snd_seq_poll_descriptors_count(snd_seq_t* /*handle*/, short /*events*/) {
    return 1;
}

int snd_seq_poll_descriptors(snd_seq_t* /*handle*/, struct pollfd* descriptors,
                             unsigned int /*space*/, short events) {
    descriptors[0] = {fake->arrived, events, 0};
    return 1;
}

int snd_seq_event_input(snd_seq_t* /*handle*/, snd_seq_event_t** event) {
    const std::lock_guard lock(fake->mutex);
    if (fake->waiting.empty()) {
        std::uint64_t count = 0;
        static_cast<void>(!::read(fake->arrived, &count, sizeof count));
        return -EAGAIN;
    }
    *event = &fake->event;
    return 1;
}

int snd_midi_event_new(size_t /*size*/, snd_midi_event_t** decoder) {
    *decoder = &theDecoder;
    return 0;
}

void snd_midi_event_free(snd_midi_event_t* /*decoder*/) {}

void snd_midi_event_no_status(snd_midi_event_t* /*decoder*/, int on) {
    fake->calls.push_back("no running status " + std::to_string(on));
}

/// An event without bytes is one that has no MIDI form.
long snd_midi_event_decode(snd_midi_event_t* /*decoder*/, unsigned char* bytes, long count,
                           const snd_seq_event_t* /*event*/) {
    const std::lock_guard lock(fake->mutex);
    const Bytes message = fake->waiting.front();
    fake->waiting.pop_front();
    if (message.empty() || static_cast<long>(message.size()) > count) {
        return -ENOENT;
    }
    std::memcpy(bytes, message.data(), message.size());
    return static_cast<long>(message.size());
}

} // extern "C"

namespace zemo::platform {
namespace {

constexpr unsigned kReadable = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ;

class AlsaMidi : public ::testing::Test {
protected:
    AlsaMidi() { fake = &sequencer; }
    ~AlsaMidi() override { fake = nullptr; }

    void openPort(MidiService& midi) {
        MidiObject client = 0;
        EXPECT_EQ(midi.createClient("MIDI_Client", client), kNoError);
        EXPECT_EQ(midi.createInputPort(client, "MIDI_Input", Reader::read, &reader, port),
                  kNoError);
    }

    FakeSequencer sequencer;
    Reader reader;
    MidiObject port = 0;
};

TEST_F(AlsaMidi, WithoutASequencerThereIsNone) {
    sequencer.openResult = -ENOENT;
    EXPECT_EQ(makeAlsaMidi(), nullptr);
}

TEST_F(AlsaMidi, HasOneClientAndOnePortThatOthersMayWriteTo) {
    const auto midi = makeAlsaMidi();
    openPort(*midi);
    EXPECT_NE(port, 0U);
    EXPECT_EQ(sequencer.calls,
              (std::vector<std::string>{"name MIDI_Client", "port MIDI_Input writable",
                                        "no running status 1"}));
}

TEST_F(AlsaMidi, APortThatCannotBeHadIsAFailure) {
    sequencer.createPortResult = -ENOMEM;
    const auto midi = makeAlsaMidi();
    MidiObject client = 0;
    ASSERT_EQ(midi->createClient("MIDI_Client", client), kNoError);
    EXPECT_EQ(midi->createInputPort(client, "MIDI_Input", Reader::read, &reader, port), -ENOMEM);
}

TEST_F(AlsaMidi, ItsSourcesAreThePortsThatCanBeReadButForTheSystemsAndItsOwn) {
    sequencer.ports = {{SND_SEQ_CLIENT_SYSTEM, 0, kReadable},
                       {20, 0, kReadable},
                       {20, 1, SND_SEQ_PORT_CAP_WRITE},
                       {24, 0, SND_SEQ_PORT_CAP_READ},
                       {24, 3, kReadable | SND_SEQ_PORT_CAP_WRITE},
                       {128, 0, kReadable}};
    const auto midi = makeAlsaMidi();
    openPort(*midi);
    sequencer.calls.clear();
    ASSERT_EQ(midi->numberOfSources(), 2);
    for (long index = 0; index < 2; ++index) {
        EXPECT_EQ(midi->connectSource(port, midi->source(index), nullptr), kNoError);
    }
    EXPECT_EQ(sequencer.calls,
              (std::vector<std::string>{"connect 20:0 to 4", "connect 24:3 to 4"}));
}

TEST_F(AlsaMidi, EveryMessageIsOnePacketListInItsOrder) {
    const auto midi = makeAlsaMidi();
    openPort(*midi);
    std::vector<Bytes> expected;
    for (int i = 0; i < 1000; ++i) {
        const Bytes message{static_cast<std::uint8_t>(0x90 | (i % 16)), 60,
                            static_cast<std::uint8_t>(i % 128)};
        sequencer.receive(message);
        expected.push_back(listOf(message));
    }
    EXPECT_EQ(reader.wait(1000), expected);
}

TEST_F(AlsaMidi, AnEventWithoutAMidiFormIsPassedOver) {
    const auto midi = makeAlsaMidi();
    openPort(*midi);
    sequencer.receive({});
    sequencer.receive({0xF8});
    EXPECT_EQ(reader.wait(1), (std::vector<Bytes>{listOf({0xF8})}));
}

TEST_F(AlsaMidi, ItsEndClosesTheSequencer) {
    auto midi = makeAlsaMidi();
    openPort(*midi);
    EXPECT_TRUE(sequencer.isOpen);
    midi.reset();
    EXPECT_FALSE(sequencer.isOpen);
}

} // namespace
} // namespace zemo::platform
