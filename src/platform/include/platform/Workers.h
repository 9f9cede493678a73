#pragma once

#include <functional>

namespace zemo::platform {

/// The threads that a long computation is spread over.
class Workers {
public:
    /// Gets the worker's number, from 0 on. Must not throw.
    using Work = std::function<void(unsigned worker)>;

    Workers() = default;
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    virtual ~Workers() = default;

    /// [any] How many threads run at once, the caller's own among them; at least 1.
    virtual unsigned count() const = 0;

    /// [main], [worker] Runs `work` on as many threads as there are, but at most `most`, the
    /// caller's among them, and returns when it has returned on all. Where a thread is not to be
    /// had there are fewer: the work must be such that one alone would do it all.
    virtual void run(unsigned most, const Work& work) = 0;
};

} // namespace zemo::platform
