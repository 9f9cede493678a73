#include "platform/Progress.h"

#include <algorithm>
#include <utility>

namespace zemo::platform {
namespace {

thread_local constinit Progress* current = nullptr;

} // namespace

void Progress::expectStages(unsigned stages) noexcept {
    stages_.store(std::max(stages, 1U), std::memory_order_relaxed);
}

void Progress::beginStage(std::size_t pieces) noexcept {
    const unsigned begun = begun_.fetch_add(1, std::memory_order_relaxed) + 1;
    done_.store(0, std::memory_order_relaxed);
    pieces_.store(pieces, std::memory_order_relaxed);
    if (begun > stages_.load(std::memory_order_relaxed)) {
        stages_.store(begun, std::memory_order_relaxed);
    }
}

double Progress::fraction() const noexcept {
    const unsigned begun = begun_.load(std::memory_order_relaxed);
    if (begun == 0) {
        return 0.0;
    }
    const auto pieces = static_cast<double>(pieces_.load(std::memory_order_relaxed));
    const auto done = static_cast<double>(done_.load(std::memory_order_relaxed));
    const double ofStage = pieces > 0.0 ? std::min(done / pieces, 1.0) : 1.0;
    const unsigned stages = std::max(stages_.load(std::memory_order_relaxed), begun);
    return (static_cast<double>(begun - 1) + ofStage) / static_cast<double>(stages);
}

Progress* currentProgress() noexcept {
    return current;
}

void expectStages(unsigned stages) noexcept {
    if (current != nullptr) {
        current->expectStages(stages);
    }
}

void beginStage(std::size_t pieces) noexcept {
    if (current != nullptr) {
        current->beginStage(pieces);
    }
}

void pieceDone() noexcept {
    if (current != nullptr) {
        current->pieceDone();
    }
}

ProgressScope::ProgressScope(Progress* progress) noexcept
    : before_(std::exchange(current, progress)) {}

ProgressScope::~ProgressScope() {
    current = before_;
}

} // namespace zemo::platform
