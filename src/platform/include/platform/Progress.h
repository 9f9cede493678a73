#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// How far a long piece of work has come, and whether it is still wanted.
///
/// The work finds its Progress by the thread that it runs on, so that no function needs a parameter
/// for it; where nobody watches there is none, and every question has its plain answer.
namespace zemo::platform {

class Progress {
public:
    Progress() = default;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    virtual ~Progress() = default;

    /// [any][rt] Asks the work to leave off. What it has made by then is not to be used.
    void requestStop() noexcept { stop_.store(true, std::memory_order_relaxed); }
    bool isStopRequested() const noexcept { return stop_.load(std::memory_order_relaxed); }

    /// [worker] How many stages of about the same length the work has; 1 when nothing is said.
    void expectStages(unsigned stages) noexcept;
    /// [worker] Begins the next stage, of that many pieces. A stage may come unexpected: then the
    /// work is taken to be longer than it was thought to be.
    void beginStage(std::size_t pieces) noexcept;
    /// [worker] To be overridden by whoever wants to act between two pieces.
    virtual void pieceDone() noexcept { done_.fetch_add(1, std::memory_order_relaxed); }

    /// [any] From 0 to 1. It may fall when a stage comes unexpected.
    double fraction() const noexcept;

private:
    std::atomic<bool> stop_{false};
    std::atomic<unsigned> stages_{1};
    std::atomic<unsigned> begun_{0}; ///< stages
    std::atomic<std::size_t> pieces_{0};
    std::atomic<std::size_t> done_{0}; ///< pieces of this stage
};

/// [any] The progress of the work that this thread is at; null: nobody watches.
Progress* currentProgress() noexcept;

/// [any] Whether the work that this thread is at should leave off.
inline bool isStopRequested() noexcept {
    const Progress* const progress = currentProgress();
    return progress != nullptr && progress->isStopRequested();
}

/// [any] Tells the one who watches, if there is one.
void expectStages(unsigned stages) noexcept;
void beginStage(std::size_t pieces) noexcept;
void pieceDone() noexcept;

/// [any] Makes `progress` that of this thread's work for as long as it lives.
class ProgressScope {
public:
    explicit ProgressScope(Progress* progress) noexcept;
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;
    ~ProgressScope();

private:
    Progress* before_;
};

} // namespace zemo::platform
