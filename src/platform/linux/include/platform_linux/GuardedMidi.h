#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/MidiInput.h"
#include "platform_linux/CallThread.h"

namespace zemo::platform {

/// How long a MIDI service may take before the program goes on without it.
struct MidiLimits {
    std::chrono::milliseconds open{1800}; ///< from the beginning, which is at construction
    std::chrono::milliseconds call{200};  ///< for each later call; start-up waits for one at most
};

/// A MIDI service whose calls may hang. It is made and called on a thread of its own; once it has
/// taken too long it is given up, and this is a service without sources, until it is started over.
/// A late answer is closed.
class GuardedMidi final : public MidiService {
public:
    using Factory = std::function<std::unique_ptr<MidiService>()>;

    /// [main] Begins at once, and does not wait.
    explicit GuardedMidi(Factory factory, MidiLimits limits = {});

    /// [main] Does not wait for the service; nothing arrives any more.
    ~GuardedMidi() override;

    Status createClient(const char* name, MidiObject& client) override;
    Status createInputPort(MidiObject client, const char* name, MidiReadProc read,
                           void* readContext, MidiObject& port) override;
    long numberOfSources() override;
    MidiObject source(long index) override;
    Status connectSource(MidiObject port, MidiObject source, void* sourceContext) override;
    void deliver() override;
    void startOver() override;
    std::string notice() const override;
    void onNotice(const std::function<void()>& changed) override;

private:
    struct Gate;
    struct Guarded;
    struct Made {
        Status status = kNoError;
        MidiObject object = 1;
    };

    static void pass(const MidiPacketList& packets, void* gate, void* sourceContext);
    template <typename Answer>
    Answer ask(Answer without, std::function<Answer(MidiService&)> question);
    void giveUp();

    Factory factory_;
    MidiLimits limits_;
    std::chrono::steady_clock::time_point openBy_;
    bool answered_ = false;    ///< at least once
    mutable std::mutex mutex_; ///< of what follows: notice() may be asked for at any time
    std::shared_ptr<Guarded> guarded_;
    std::shared_ptr<Gate> gate_;
    std::unique_ptr<CallThread> thread_; ///< null once the service was given up
};

} // namespace zemo::platform
