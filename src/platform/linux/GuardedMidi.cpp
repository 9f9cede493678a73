#include "platform_linux/GuardedMidi.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform_linux/LinuxMidi.h"

namespace zemo::platform {

/// Between the service's own thread and the reader. The service keeps it until it is closed.
struct GuardedMidi::Gate {
    std::mutex mutex;
    MidiReadProc read = nullptr; ///< null: closed
    void* context = nullptr;
    std::string notice;
    std::function<void()> changed; ///< empty: nobody asks

    void set(MidiReadProc reader, void* readContext) {
        const std::lock_guard lock(mutex);
        read = reader;
        context = readContext;
    }
    void close() {
        const std::lock_guard lock(mutex);
        read = nullptr;
        changed = nullptr;
    }
    void setNotice(std::string text) {
        const std::lock_guard lock(mutex);
        notice = std::move(text);
        if (changed) {
            changed();
        }
    }
};

/// Touched by the calls alone, on their thread.
struct GuardedMidi::Guarded {
    std::shared_ptr<Gate> gate; ///< goes after the service, which calls through it
    std::unique_ptr<MidiService> service;
};

GuardedMidi::GuardedMidi(Factory factory, MidiLimits limits)
    : limits_(limits),
      openBy_(std::chrono::steady_clock::now() + limits.open),
      guarded_(std::make_shared<Guarded>()),
      gate_(std::make_shared<Gate>()),
      thread_(std::make_unique<CallThread>()) {
    guarded_->gate = gate_;
    thread_->post(
        [guarded = guarded_, factory = std::move(factory)] { guarded->service = factory(); });
}

GuardedMidi::~GuardedMidi() {
    giveUp();
}

/// From here on nothing passes the gate. The service is closed when its calls have returned.
void GuardedMidi::giveUp() {
    gate_->close();
    if (thread_ != nullptr) {
        thread_->post([guarded = std::move(guarded_)]() mutable { guarded.reset(); });
        thread_.reset();
    }
}

template <typename Answer>
Answer GuardedMidi::ask(Answer without, std::function<Answer(MidiService&)> question) {
    if (thread_ == nullptr) {
        return without;
    }
    std::future<Answer> answer =
        thread_->ask<Answer>([guarded = guarded_, question = std::move(question)] {
            return question(*guarded->service);
        });
    const auto callBy = std::chrono::steady_clock::now() + limits_.call;
    const auto deadline = answered_ ? callBy : std::max(openBy_, callBy);
    if (answer.wait_until(deadline) != std::future_status::ready) {
        giveUp();
        return without;
    }
    answered_ = true;
    return answer.get();
}

void GuardedMidi::pass(const MidiPacketList& packets, void* gate, void* sourceContext) {
    auto& self = *static_cast<Gate*>(gate);
    const std::lock_guard lock(self.mutex);
    if (self.read != nullptr) {
        self.read(packets, self.context, sourceContext);
    }
}

Status GuardedMidi::createClient(const char* name, MidiObject& client) {
    const auto made = ask<Made>({}, [name = std::string(name)](MidiService& service) {
        Made result;
        result.status = service.createClient(name.c_str(), result.object);
        return result;
    });
    client = made.object;
    return made.status;
}

Status GuardedMidi::createInputPort(MidiObject client, const char* name, MidiReadProc read,
                                    void* readContext, MidiObject& port) {
    gate_->set(read, readContext);
    const auto made =
        ask<Made>({}, [client, name = std::string(name), gate = gate_.get()](MidiService& service) {
            Made result;
            result.status =
                service.createInputPort(client, name.c_str(), pass, gate, result.object);
            return result;
        });
    port = made.object;
    return made.status;
}

long GuardedMidi::numberOfSources() {
    return ask<long>(0, [](MidiService& service) { return service.numberOfSources(); });
}

MidiObject GuardedMidi::source(long index) {
    return ask<MidiObject>(0, [index](MidiService& service) { return service.source(index); });
}

Status GuardedMidi::connectSource(MidiObject port, MidiObject source, void* sourceContext) {
    return ask<Status>(kNoError, [port, source, sourceContext](MidiService& service) {
        return service.connectSource(port, source, sourceContext);
    });
}

std::string GuardedMidi::notice() const {
    if (thread_ == nullptr) {
        return kMidiDoesNotAnswer;
    }
    const std::lock_guard lock(gate_->mutex);
    return gate_->notice;
}

/// The service itself is another thread's: what it says is kept at the gate.
void GuardedMidi::onNotice(const std::function<void()>& changed) {
    {
        const std::lock_guard lock(gate_->mutex);
        gate_->changed = changed;
    }
    ask<bool>(false, [gate = gate_.get()](MidiService& service) {
        service.onNotice([gate, &service] { gate->setNotice(service.notice()); });
        return true;
    });
}

} // namespace zemo::platform
