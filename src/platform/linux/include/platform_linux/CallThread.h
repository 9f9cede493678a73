#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <utility>

namespace zemo::platform {

/// A thread for calls that may never return, such as those to a server. It makes them one after
/// the other. Nobody waits for its end: where a call hangs it is left behind, and all that its
/// calls hold is released when the last of them has returned after all.
class CallThread {
public:
    CallThread();
    CallThread(const CallThread&) = delete;
    CallThread& operator=(const CallThread&) = delete;

    /// [main] Does not wait. What was posted is done, then the thread ends.
    ~CallThread();

    /// [main] `call` must own all that it touches, and throw nothing.
    void post(std::function<void()> call);

    /// [main] The answer to come. It may be thrown away.
    template <typename Answer> std::future<Answer> ask(std::function<Answer()> question) {
        auto promise = std::make_shared<std::promise<Answer>>();
        std::future<Answer> answer = promise->get_future();
        post([promise, question = std::move(question)] { promise->set_value(question()); });
        return answer;
    }

    /// [any] How many of these threads there are, those that were left behind included.
    static int alive() noexcept;

    /// [any] Whether one more may be made: so many hung calls at most are left behind.
    static bool mayBeMade() noexcept { return alive() < kMost; }
    static constexpr int kMost = 8;

    /// [main] Waits until there is none, at most so long. Whether there is none.
    static bool awaitAll(std::chrono::milliseconds patience);

private:
    struct Queue;
    static void serve(Queue& queue);

    std::shared_ptr<Queue> queue_;
};

/// [main] For the last line of a program's main: the status as it is, or, while a call still hangs,
/// the end of the process at once, so that nothing is taken down under that call.
int leaveHungCallsBehind(int status);

} // namespace zemo::platform
