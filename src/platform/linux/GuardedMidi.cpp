#include "platform_linux/GuardedMidi.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "platform_linux/LinuxMidi.h"

namespace zemo::platform {
namespace {

/// Bytes of messages that wait to be read: some 60 000 short ones. More are dropped.
constexpr std::size_t kMostWaiting = std::size_t{1} << 20;

} // namespace

/// Between the service's own thread and the reader. The service keeps it until it is closed.
struct GuardedMidi::Gate {
    using Bytes = std::vector<std::uint8_t>;

    std::mutex mutex;
    MidiReadProc read = nullptr; ///< null: closed
    void* context = nullptr;
    bool delivers = false;
    std::vector<std::pair<Bytes, void*>> waiting; ///< lists and their sources, until it does
    std::size_t waitingBytes = 0;
    std::string notice;
    std::function<void()> changed; ///< empty: nobody asks

    void set(MidiReadProc reader, void* readContext) {
        const std::lock_guard lock(mutex);
        read = reader;
        context = readContext;
    }
    void pass(const MidiPacketList& packets, void* source) {
        const std::lock_guard lock(mutex);
        if (read == nullptr) {
            return;
        }
        if (delivers) {
            read(packets, context, source);
        } else if (waitingBytes + packets.size <= kMostWaiting) {
            waitingBytes += packets.size;
            waiting.emplace_back(Bytes(packets.bytes, packets.bytes + packets.size), source);
        }
    }
    void deliver() {
        const std::lock_guard lock(mutex);
        delivers = true;
        for (const auto& [bytes, source] : std::exchange(waiting, {})) {
            if (read != nullptr) {
                read({bytes.data(), bytes.size()}, context, source);
            }
        }
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
    : factory_(std::move(factory)), limits_(limits), gate_(std::make_shared<Gate>()) {
    GuardedMidi::startOver();
}

GuardedMidi::~GuardedMidi() {
    giveUp();
}

/// On the thread of the service before, behind its closing; on another one where that hangs.
void GuardedMidi::startOver() {
    const std::lock_guard lock(mutex_);
    gate_->close();
    if (thread_ == nullptr && !CallThread::mayBeMade()) {
        return; // it stays given up
    }
    if (thread_ == nullptr) {
        thread_ = std::make_unique<CallThread>();
    }
    gate_ = std::make_shared<Gate>();
    auto before = std::exchange(guarded_, std::make_shared<Guarded>());
    guarded_->gate = gate_;
    thread_->post([before = std::move(before), guarded = guarded_, factory = factory_]() mutable {
        before.reset();
        guarded->service = factory();
    });
    answered_ = false;
    openBy_ = std::chrono::steady_clock::now() + limits_.open;
}

/// From here on nothing passes the gate. The service is closed when its calls have returned.
void GuardedMidi::giveUp() {
    const std::lock_guard lock(mutex_);
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
    static_cast<Gate*>(gate)->pass(packets, sourceContext);
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

void GuardedMidi::deliver() {
    ask<bool>(false, [gate = gate_.get()](MidiService& /*service*/) {
        gate->deliver();
        return true;
    });
}

std::string GuardedMidi::notice() const {
    const std::lock_guard lock(mutex_);
    if (thread_ == nullptr) {
        return kMidiDoesNotAnswer;
    }
    const std::lock_guard gateLock(gate_->mutex);
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
