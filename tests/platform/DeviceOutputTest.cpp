#include "platform_linux/DeviceOutput.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform_linux/LinuxAudioOutput.h"
#include "support/FakePlatform.h"

namespace zemo::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 20s;
constexpr const char* kSilent = "No audio device: playing silently";
constexpr const char* kLost = "The audio device went away: the play was ended";

/// What all devices of a test do, as the test arranges, and what they were asked. The calls that
/// are to hang do so until the end of the test.
struct Servers {
    std::atomic<std::uint32_t> rate{48000};
    std::atomic<bool> opens{true};
    std::atomic<bool> starts{true};
    std::atomic<bool> hangsInConnect{false};
    std::atomic<bool> hangsInOpen{false};
    std::atomic<bool> hangsInStart{false};
    std::atomic<bool> hangsInClose{false};
    std::atomic<int> connected{0};
    std::atomic<int> opened{0};
    std::atomic<int> started{0};
    std::atomic<int> questions{0};
    std::atomic<bool> heard{true};
    std::atomic<int> alive{0};
    std::atomic<DeviceRun*> run{nullptr}; ///< of the stream that was started last
    std::mutex mutex;
    std::vector<StreamWish> wishes;     ///< of the streams, in their order
    void take(const StreamWish& wish) { // from several connections
        const std::lock_guard lock(mutex);
        wishes.push_back(wish);
    }
    StreamWish lastWish() {
        const std::lock_guard lock(mutex);
        return wishes.back();
    }

    std::promise<void> end;
    std::shared_future<void> ended = end.get_future().share();
};

class FakeDevice final : public Device {
public:
    explicit FakeDevice(Servers& servers) : servers_(servers) { ++servers_.alive; }
    ~FakeDevice() override { --servers_.alive; }

    std::uint32_t connect() override {
        ++servers_.connected;
        hang(servers_.hangsInConnect);
        return servers_.rate;
    }
    bool openStream(std::shared_ptr<DeviceRun> run, const StreamWish& wish) override {
        servers_.take(wish);
        ++servers_.opened;
        hang(servers_.hangsInOpen);
        run_ = std::move(run);
        return servers_.opens;
    }
    bool startStream() override {
        hang(servers_.hangsInStart);
        servers_.run = run_.get();
        ++servers_.started;
        return servers_.starts;
    }
    bool isHeard() override {
        ++servers_.questions;
        return servers_.heard;
    }
    void closeStream() override { hang(servers_.hangsInClose); }

private:
    void hang(const std::atomic<bool>& hangs) const {
        if (hangs) {
            servers_.ended.wait();
        }
    }

    Servers& servers_;
    std::shared_ptr<DeviceRun> run_;
};

class DeviceCase : public testing::Test {
protected:
    DeviceCase() { limits_.connect = 50ms; }
    ~DeviceCase() override {
        unit_.reset();
        servers_.end.set_value();
        EXPECT_TRUE(CallThread::awaitAll(kPatience));
        EXPECT_EQ(servers_.alive, 0) << "every connection was closed";
    }

    void launch(double rate = 0.0) {
        unit_ = std::make_unique<LinuxOutputUnit>(
            rate, [this] { return std::make_unique<FakeDevice>(servers_); }, clock_, limits_);
        unit_->setRenderCallback(count, this);
        double hertz = 0.0;
        unit_->sampleRate(hertz);
    }

    static Status count(void* context, RenderActionFlags*, const AudioTimeStamp*, std::uint32_t,
                        std::uint32_t, AudioBufferList*) {
        ++static_cast<DeviceCase*>(context)->calls_;
        return kNoError;
    }

    /// Attends, without time passing, until the condition holds.
    bool await(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            unit_->attend();
            std::this_thread::sleep_for(100us);
        }
        return true;
    }

    bool begin() {
        const int before = servers_.started;
        return unit_->start() == kNoError && await([&] { return servers_.started > before; });
    }

    /// The device asks for as many frames as one call has; how many it gets.
    std::uint32_t request() {
        std::array<float, kFramesPerRenderCall> frames{};
        return servers_.run.load()->fill(frames.data(), frames.size());
    }

    /// The device's server holds three calls of 512 frames at 48 kHz, and asks for one as the
    /// device has taken it: every 10.7 ms, but one request comes so much later.
    void requestsWithADelay(std::chrono::milliseconds delay) {
        constexpr auto kPeriod = 10666us;
        std::array<float, std::size_t{3} * kFramesPerRenderCall> frames{};
        servers_.run.load()->fill(frames.data(), frames.size());
        for (int i = 0; i < 10; ++i) {
            request();
            clock_.time += kPeriod + (i == 5 ? delay : 0ms);
        }
        request();
    }

    void playWithADelay(std::chrono::milliseconds delay) {
        ASSERT_TRUE(begin());
        requestsWithADelay(delay);
        unit_->stop();
    }

    /// What was asked of the server for the last stream, in milliseconds.
    long long askedLatency() { return servers_.lastWish().latency.count(); }

    /// Time passes, and the unit is attended to every 8 ms.
    void pass(std::chrono::milliseconds time) {
        for (auto passed = 0ms; passed < time; passed += 8ms) {
            clock_.time += 8ms;
            unit_->attend();
        }
    }

    /// A play under way whose callback has been called several times.
    void play() {
        launch();
        ASSERT_TRUE(begin());
        request();
        request();
        unit_->attend();
        ASSERT_EQ(calls_, 2);
    }

    void expectLost() {
        EXPECT_FALSE(unit_->isRunning());
        EXPECT_TRUE(unit_->takeFailure());
        EXPECT_FALSE(unit_->takeFailure()) << "only once";
        EXPECT_EQ(unit_->notice(), kLost);
    }

    void expectSilence() {
        EXPECT_TRUE(await([&] { return calls_ > 0; })) << "the silent output makes the calls";
        EXPECT_TRUE(unit_->isRunning());
        EXPECT_FALSE(unit_->takeFailure());
        EXPECT_EQ(unit_->notice(), kSilent);
        unit_->stop();
    }

    Servers servers_;
    test::FakeClock clock_;
    DeviceLimits limits_;
    std::unique_ptr<LinuxOutputUnit> unit_;
    std::atomic<int> calls_{0};
};

using Launch = DeviceCase;
using Play = DeviceCase;
using Loss = DeviceCase;
using Latency = DeviceCase;

TEST_F(Launch, TakesTheRateOfTheDevice) {
    servers_.rate = 44100;
    launch();
    double rate = 0.0;
    EXPECT_EQ(unit_->sampleRate(rate), kNoError);
    EXPECT_EQ(rate, 44100.0);
    EXPECT_EQ(unit_->notice(), "");
}

TEST_F(Launch, WithoutADeviceIsSilentAndSaysSo) {
    servers_.rate = 0;
    launch();
    double rate = 0.0;
    unit_->sampleRate(rate);
    EXPECT_EQ(rate, 48000.0);
    EXPECT_EQ(unit_->notice(), kSilent);
    ASSERT_EQ(unit_->start(), kNoError);
    expectSilence();
}

TEST_F(Launch, DoesNotWaitForAServerThatDoesNotAnswer) {
    servers_.hangsInConnect = true;
    launch();
    EXPECT_EQ(unit_->notice(), kSilent);
}

TEST_F(Launch, WithoutADeviceIsMadeGoodByALaterPlayAtTheProgramsRate) {
    servers_.rate = 0;
    launch();
    servers_.rate = 44100;
    ASSERT_TRUE(begin());
    EXPECT_EQ(servers_.lastWish().rate, 48000U);
    request();
    unit_->attend();
    EXPECT_EQ(calls_, 1);
    EXPECT_EQ(unit_->notice(), "");
}

TEST_F(Play, MakesNoCallBeforeItIsAttended) {
    launch();
    ASSERT_EQ(unit_->start(), kNoError);
    EXPECT_TRUE(unit_->isRunning());
    EXPECT_EQ(servers_.started, 0);
    EXPECT_TRUE(await([&] { return servers_.started == 1; }));
}

TEST_F(Play, EndsWhenTheDeviceSaysThatAllWasHeard) {
    play();
    servers_.run.load()->feed.askStop();
    while (request() == kFramesPerRenderCall) {
    }
    EXPECT_TRUE(unit_->attend());
    servers_.run.load()->ended = true;
    EXPECT_FALSE(unit_->attend());
    EXPECT_FALSE(unit_->takeFailure());
}

TEST_F(Play, EndsASecondAfterItsLastFrameWhenTheDeviceSaysNothing) {
    play();
    servers_.run.load()->feed.askStop();
    while (request() == kFramesPerRenderCall) {
    }
    EXPECT_TRUE(unit_->attend());
    clock_.time += 990ms;
    EXPECT_TRUE(unit_->attend());
    clock_.time += 20ms;
    EXPECT_FALSE(unit_->attend());
    EXPECT_FALSE(unit_->takeFailure());
}

TEST_F(Play, KeepsTheConnectionForTheNextOne) {
    play();
    unit_->stop();
    ASSERT_TRUE(begin());
    EXPECT_EQ(servers_.connected, 1);
    EXPECT_EQ(servers_.opened, 2);
}

TEST_F(Play, ConnectsAnewAfterAConnectionThatWasGivenUp) {
    play();
    unit_->disconnect();
    EXPECT_EQ(servers_.alive, 1) << "not during a play";
    unit_->stop();
    unit_->disconnect();
    EXPECT_EQ(servers_.alive, 0) << "by then";
    unit_->disconnect();
    ASSERT_TRUE(begin());
    EXPECT_EQ(servers_.connected, 2);
}

TEST_F(Loss, IsNoticedBeforeTheConnectionIsGivenUp) {
    play();
    servers_.heard = false;
    unit_->disconnect();
    EXPECT_EQ(servers_.alive, 0);
    EXPECT_FALSE(unit_->attend());
    expectLost();
}

TEST_F(Play, LeavesAServerBehindThatHangsWhenItsConnectionIsGivenUp) {
    limits_.farewell = 20ms;
    play();
    servers_.hangsInClose = true;
    unit_->stop();
    unit_->disconnect();
    ASSERT_TRUE(begin());
    EXPECT_EQ(servers_.connected, 2);
}

TEST_F(Play, IsCalledAfterItsSound) {
    play();
    EXPECT_EQ(servers_.lastWish().name, "");
    unit_->stop();
    unit_->setSoundName("bell.caf");
    ASSERT_TRUE(begin());
    EXPECT_EQ(servers_.lastWish().name, "bell.caf");
}

TEST_F(Latency, StaysShortWhileTheServerHasFramesLeft) {
    launch();
    for (int i = 0; i < 5; ++i) {
        playWithADelay(20ms);
        EXPECT_EQ(askedLatency(), 50);
    }
}

TEST_F(Latency, IsDoubleForTheRestOfTheSessionAfterAServerThatHadNone) {
    launch();
    playWithADelay(23ms);
    EXPECT_EQ(askedLatency(), 50) << "a stream under way stays as it is";
    EXPECT_EQ(servers_.opened, 1);
    for (int i = 0; i < 3; ++i) {
        playWithADelay(0ms);
        EXPECT_EQ(askedLatency(), 100);
    }
    unit_->disconnect();
    playWithADelay(23ms);
    EXPECT_EQ(askedLatency(), 100) << "whichever connection it is";
    playWithADelay(0ms);
    EXPECT_EQ(askedLatency(), 100) << "and no more";
}

TEST_F(Latency, OfAPlayThatIsBegunAnewInTheTailStaysAsItWas) {
    launch();
    ASSERT_TRUE(begin());
    requestsWithADelay(1s);
    servers_.run.load()->feed.askStop();
    ASSERT_EQ(unit_->start(), kNoError);
    EXPECT_EQ(servers_.opened, 1);
    EXPECT_TRUE(unit_->isRunning());
    unit_->stop();
    ASSERT_TRUE(begin());
    EXPECT_EQ(askedLatency(), 100);
}

TEST_F(Latency, IsDoubleAlsoWhereTheDeviceWentAway) {
    launch();
    ASSERT_TRUE(begin());
    requestsWithADelay(100ms);
    servers_.run.load()->failed = true;
    unit_->attend();
    expectLost();
    ASSERT_TRUE(begin());
    EXPECT_EQ(askedLatency(), 100);
}

TEST_F(Latency, IsNotJudgedByAStreamThatWasLeftBehind) {
    launch();
    playWithADelay(0ms);
    requestsWithADelay(1s);
    EXPECT_TRUE(servers_.run.load()->lead.wasLost());
    ASSERT_TRUE(begin());
    EXPECT_EQ(askedLatency(), 50);
}

TEST_F(Latency, IsWhatTheLimitsSay) {
    limits_.latency = limits_.safeLatency;
    launch();
    playWithADelay(0ms);
    EXPECT_EQ(askedLatency(), 100);
}

TEST_F(Play, ConnectsAnewWhereTheConnectionTakesNoStream) {
    launch();
    servers_.opens = false;
    ASSERT_EQ(unit_->start(), kNoError);
    expectSilence();
    EXPECT_EQ(servers_.connected, 2);
    servers_.opens = true;
    EXPECT_TRUE(begin());
}

TEST_F(Play, IsSilentWhenTheStreamDoesNotStart) {
    launch();
    servers_.starts = false;
    ASSERT_EQ(unit_->start(), kNoError);
    expectSilence();
}

TEST_F(Play, IsSilentWhenTheServerHangsWhileItMakesTheStream) {
    launch();
    servers_.hangsInOpen = true;
    ASSERT_EQ(unit_->start(), kNoError);
    pass(1990ms);
    EXPECT_EQ(unit_->notice(), "") << "it may still answer";
    pass(20ms);
    expectSilence();
}

TEST_F(Play, IsSilentWhenTheServerHangsWhileItStartsTheStream) {
    launch();
    servers_.hangsInStart = true;
    ASSERT_EQ(unit_->start(), kNoError);
    pass(2010ms);
    expectSilence();
}

TEST_F(Play, IsSilentWhenTheDeviceNeverAsksForFrames) {
    launch();
    ASSERT_TRUE(begin());
    pass(2010ms);
    expectSilence();
}

TEST_F(Play, IsSilentAtOnceWhenTooManyConnectionsHang) {
    servers_.hangsInConnect = true;
    launch();
    for (int i = 0; i < 20; ++i) {
        unit_->start();
        pass(2010ms);
        unit_->stop();
    }
    EXPECT_LE(servers_.connected, 8);
    calls_ = 0;
    ASSERT_EQ(unit_->start(), kNoError);
    expectSilence();
}

TEST_F(Play, CanBeStoppedWhileTheServerHangs) {
    launch();
    servers_.hangsInOpen = true;
    ASSERT_EQ(unit_->start(), kNoError);
    unit_->stop();
    EXPECT_FALSE(unit_->isRunning());
    EXPECT_FALSE(unit_->attend());
    EXPECT_EQ(unit_->notice(), "");
}

TEST_F(Play, AStopReturnsThoughTheServerHangsInTheClosing) {
    play();
    servers_.hangsInClose = true;
    DeviceRun* const left = servers_.run;
    const std::shared_ptr<DeviceRun> kept(left, [](DeviceRun*) {});
    unit_->stop();
    EXPECT_FALSE(unit_->isRunning());
    EXPECT_FALSE(unit_->attend());
    request();
    EXPECT_EQ(calls_, 2) << "a stream that was left behind makes no call";
}

TEST_F(Loss, IsSaidWhenTheDeviceReportsAnError) {
    play();
    servers_.run.load()->failed = true;
    unit_->attend();
    expectLost();
}

TEST_F(Loss, IsNoticedThreeQuartersOfASecondAfterTheLastRequest) {
    play();
    pass(740ms);
    EXPECT_TRUE(unit_->isRunning());
    pass(16ms);
    expectLost();
}

TEST_F(Loss, IsSaidWhenTheServerPlaysOnIntoNothing) {
    play();
    servers_.heard = false;
    clock_.time += 200ms;
    EXPECT_TRUE(await([&] { return !unit_->isRunning(); }));
    EXPECT_EQ(servers_.questions, 1);
    expectLost();
}

TEST_F(Loss, IsNotWhatADeviceThatIsHeardCauses) {
    play();
    for (int i = 1; i <= 20; ++i) {
        clock_.time += 200ms;
        request();
        EXPECT_TRUE(await([&] { return servers_.questions >= i; }));
        unit_->attend();
    }
    EXPECT_TRUE(unit_->isRunning());
    EXPECT_FALSE(unit_->takeFailure());
}

TEST_F(Loss, IsNotWhatARegularDeviceCauses) {
    play();
    for (int i = 0; i < 20; ++i) {
        pass(700ms);
        request();
    }
    EXPECT_TRUE(unit_->isRunning());
    EXPECT_FALSE(unit_->takeFailure());
}

TEST_F(Loss, IsNotWhatAPauseOfTheProgramItselfCauses) {
    play();
    clock_.time += 1h;
    EXPECT_TRUE(unit_->attend());
    request();
    pass(700ms);
    EXPECT_TRUE(unit_->isRunning());
}

TEST_F(Loss, TheFirstCallsHaveTwoSeconds) {
    launch();
    ASSERT_TRUE(begin());
    request();
    unit_->attend();
    pass(1900ms);
    EXPECT_TRUE(unit_->isRunning());
    pass(110ms);
    expectLost();
}

TEST_F(Loss, IsNoticedInTheSilenceAfterTheSound) {
    play();
    servers_.run.load()->feed.askStop();
    request();
    unit_->attend();
    pass(760ms);
    expectLost();
}

TEST_F(Loss, TheNextPlayTriesAnotherConnection) {
    play();
    servers_.run.load()->failed = true;
    unit_->attend();
    expectLost();
    ASSERT_TRUE(begin());
    EXPECT_EQ(servers_.connected, 2);
    EXPECT_EQ(unit_->notice(), kLost) << "until it has begun";
    request();
    unit_->attend();
    EXPECT_EQ(unit_->notice(), "");
}

TEST_F(Loss, TheNextPlayIsSilentWhileThereIsNoServer) {
    play();
    servers_.run.load()->failed = true;
    servers_.rate = 0;
    unit_->attend();
    expectLost();
    calls_ = 0;
    ASSERT_EQ(unit_->start(), kNoError);
    expectSilence();
}

} // namespace
} // namespace zemo::platform
