#include "platform_linux/GuardedMidi.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 20s;
constexpr const char* kNoAnswer = "MIDI does not answer: no notes are read";

struct Bus {
    std::atomic<bool> hangsInOpen{false};
    std::atomic<bool> hangsInPort{false};
    std::atomic<bool> hangsInSources{false};
    std::atomic<bool> hangsInConnect{false};
    std::atomic<Status> status{kNoError};
    std::atomic<int> alive{0};
    std::atomic<int> connections{0};
    MidiReadProc read = nullptr;
    void* context = nullptr;
    std::string notice;
    std::function<void()> changed;
    std::promise<void> end;
    std::shared_future<void> ended = end.get_future().share();

    void hang(const std::atomic<bool>& hangs) const {
        if (hangs) {
            ended.wait();
        }
    }
    void send() const { read({}, context, nullptr); }
};

class FakeService final : public MidiService {
public:
    explicit FakeService(Bus& bus) : bus_(bus) {
        bus_.hang(bus_.hangsInOpen);
        ++bus_.alive;
    }
    ~FakeService() override { --bus_.alive; }

    Status createClient(const char* name, MidiObject& client) override {
        EXPECT_STREQ(name, "client");
        client = 11;
        return bus_.status;
    }
    Status createInputPort(MidiObject client, const char* name, MidiReadProc read,
                           void* readContext, MidiObject& port) override {
        EXPECT_EQ(client, 11U);
        EXPECT_STREQ(name, "port");
        bus_.hang(bus_.hangsInPort);
        bus_.read = read;
        bus_.context = readContext;
        port = 12;
        return bus_.status;
    }
    long numberOfSources() override {
        bus_.hang(bus_.hangsInSources);
        return 2;
    }
    MidiObject source(long index) override { return static_cast<MidiObject>(20 + index); }
    Status connectSource(MidiObject port, MidiObject source, void* /*context*/) override {
        EXPECT_EQ(port, 12U);
        EXPECT_EQ(source, 21U);
        bus_.hang(bus_.hangsInConnect);
        ++bus_.connections;
        return bus_.status;
    }

    std::string notice() const override { return bus_.notice; }
    void onNotice(const std::function<void()>& changed) override { bus_.changed = changed; }

private:
    Bus& bus_;
};

class Guard : public testing::Test {
protected:
    ~Guard() override {
        midi_.reset();
        bus_.end.set_value();
        EXPECT_TRUE(CallThread::awaitAll(kPatience));
        EXPECT_EQ(bus_.alive, 0) << "the service was closed";
    }

    void make(std::chrono::milliseconds limit) {
        midi_ =
            std::make_unique<GuardedMidi>([this] { return std::make_unique<FakeService>(bus_); },
                                          MidiLimits{.open = limit, .call = limit});
    }

    static void read(const MidiPacketList& /*packets*/, void* context, void* /*source*/) {
        ++*static_cast<int*>(context);
    }

    /// The statuses of the client, the port and the connection.
    std::vector<Status> setUp() {
        MidiObject client = 0;
        MidiObject port = 0;
        const Status first = midi_->createClient("client", client);
        const Status second = midi_->createInputPort(client, "port", read, &received_, port);
        sources_ = midi_->numberOfSources();
        const Status third = midi_->connectSource(port, midi_->source(1), nullptr);
        midi_->deliver();
        EXPECT_NE(client, 0U);
        EXPECT_NE(port, 0U);
        return {first, second, third};
    }

    void expectGivenUp() {
        EXPECT_EQ(setUp(), std::vector<Status>(3, kNoError)) << "nothing that ends the program";
        EXPECT_EQ(midi_->notice(), kNoAnswer);
    }

    Bus bus_;
    std::unique_ptr<GuardedMidi> midi_;
    int received_ = 0;
    long sources_ = -1;
};

TEST_F(Guard, PassesEveryCallOn) {
    make(kPatience);
    EXPECT_EQ(setUp(), std::vector<Status>(3, kNoError));
    EXPECT_EQ(sources_, 2);
    EXPECT_EQ(bus_.connections, 1);
    EXPECT_EQ(midi_->notice(), "");
}

TEST_F(Guard, PassesEveryFailureOn) {
    bus_.status = -5;
    make(kPatience);
    EXPECT_EQ(setUp(), std::vector<Status>(3, -5));
}

TEST_F(Guard, PassesMessagesOn) {
    make(kPatience);
    setUp();
    bus_.send();
    bus_.send();
    EXPECT_EQ(received_, 2);
}

TEST_F(Guard, KeepsMessagesUntilTheyAreToBeDelivered) {
    make(kPatience);
    std::vector<std::uint8_t> read;
    const auto append = [](const MidiPacketList& packets, void* context, void* source) {
        auto& all = *static_cast<std::vector<std::uint8_t>*>(context);
        all.insert(all.end(), packets.bytes, packets.bytes + packets.size);
        all.push_back(*static_cast<std::uint8_t*>(source));
    };
    MidiObject client = 0;
    MidiObject port = 0;
    midi_->createClient("client", client);
    midi_->createInputPort(client, "port", append, &read, port);
    std::uint8_t source = 9;
    const auto send = [&](std::uint8_t byte) { bus_.read({&byte, 1}, bus_.context, &source); };
    send(1);
    send(2);
    EXPECT_TRUE(read.empty());
    midi_->deliver();
    EXPECT_EQ(read, (std::vector<std::uint8_t>{1, 9, 2, 9}));
    send(3);
    EXPECT_EQ(read, (std::vector<std::uint8_t>{1, 9, 2, 9, 3, 9}));
}

TEST_F(Guard, PassesEveryNoticeOn) {
    make(kPatience);
    int changes = 0;
    midi_->onNotice([&] { ++changes; });
    setUp();
    for (const char* const notice : {"gone", ""}) {
        bus_.notice = notice;
        bus_.changed();
        EXPECT_EQ(midi_->notice(), notice);
    }
    EXPECT_EQ(changes, 2);
}

TEST_F(Guard, SaysNothingMoreOfAServiceThatWasGivenUp) {
    make(100ms);
    int changes = 0;
    midi_->onNotice([&] { ++changes; });
    bus_.hangsInConnect = true;
    expectGivenUp();
    bus_.notice = "gone";
    bus_.changed();
    EXPECT_EQ(midi_->notice(), kNoAnswer);
    EXPECT_EQ(changes, 0);
}

TEST_F(Guard, GivesAServiceUpThatDoesNotOpen) {
    bus_.hangsInOpen = true;
    make(20ms);
    expectGivenUp();
    EXPECT_EQ(sources_, 0);
}

TEST_F(Guard, GivesAServiceUpThatHangsLater) {
    bus_.hangsInPort = true;
    make(100ms);
    expectGivenUp();
    EXPECT_EQ(sources_, 0);
}

TEST_F(Guard, GivesAServiceUpThatHangsAtItsSources) {
    bus_.hangsInSources = true;
    make(100ms);
    expectGivenUp();
    EXPECT_EQ(sources_, 0);
}

TEST_F(Guard, NothingArrivesFromAServiceThatWasGivenUp) {
    bus_.hangsInConnect = true;
    make(100ms);
    expectGivenUp();
    EXPECT_EQ(sources_, 2);
    bus_.send();
    EXPECT_EQ(received_, 0);
}

TEST_F(Guard, WaitsOnceAtMost) {
    bus_.hangsInOpen = true;
    make(200ms);
    const auto before = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        setUp();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, 10s); // 80 s, if each call waited
}

TEST_F(Guard, StartedOverItIsAnotherServiceAndTheOneBeforeIsClosed) {
    make(kPatience);
    setUp();
    const MidiReadProc before = bus_.read;
    void* const contextBefore = bus_.context;
    bus_.send();
    bus_.notice = "gone";
    midi_->onNotice([] {});
    bus_.changed();
    EXPECT_EQ(midi_->notice(), "gone");
    midi_->startOver();
    EXPECT_EQ(midi_->notice(), "");
    EXPECT_EQ(setUp(), std::vector<Status>(3, kNoError));
    EXPECT_EQ(sources_, 2);
    EXPECT_EQ(bus_.connections, 2);
    EXPECT_EQ(bus_.alive, 1);
    bus_.send();
    EXPECT_EQ(received_, 2);
    EXPECT_TRUE(before != bus_.read || contextBefore != bus_.context) << "by a gate of its own";
}

TEST_F(Guard, StartedOverItPassesNothingOfTheServiceBefore) {
    make(kPatience);
    setUp();
    bus_.hangsInOpen = true; // so that the one before is there until then
    midi_->startOver();
    bus_.send();
    EXPECT_EQ(received_, 0);
}

TEST_F(Guard, StartedOverItIsThereAgainAfterItWasGivenUp) {
    bus_.hangsInPort = true;
    make(100ms);
    expectGivenUp();
    bus_.hangsInPort = false;
    midi_->startOver();
    EXPECT_EQ(setUp(), std::vector<Status>(3, kNoError));
    EXPECT_EQ(midi_->notice(), "");
    EXPECT_EQ(sources_, 2);
}

TEST_F(Guard, LeavesNoMoreThanEightHungServicesBehind) {
    bus_.hangsInOpen = true;
    make(1ms);
    for (int i = 0; i < 20; ++i) {
        expectGivenUp();
        midi_->startOver();
        EXPECT_LE(CallThread::alive(), 8);
    }
    expectGivenUp();
}

TEST_F(Guard, GoesAtOnceThoughTheServiceHangs) {
    bus_.hangsInOpen = true;
    make(kPatience);
    const auto before = std::chrono::steady_clock::now();
    midi_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, kPatience / 2);
}

} // namespace
} // namespace zemo::platform
