#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>

#include "platform/Progress.h"
#include "platform/Services.h"
#include "platform/Workers.h"

/// Long work in pieces that the workers take one after the other. All [main], [worker].
namespace zemo::platform {

/// How many workers there may be at once for `pieces` pieces; at least 1.
inline unsigned workersFor(std::size_t pieces) {
    const Workers* const workers = services().workers;
    const std::size_t most = workers != nullptr ? workers->count() : 1;
    return static_cast<unsigned>(std::max<std::size_t>(std::min(most, pieces), 1));
}

/// Calls work(piece, worker) for each piece from 0 to pieces - 1, begun in that order; worker is
/// below workersFor(pieces). The work must not throw. A stage of the thread's progress; once that
/// is asked to stop no further piece is begun, so that the first ones are whole and the others
/// have not been touched.
template <typename Work> void forEachPiece(std::size_t pieces, const Work& work) {
    Progress* const progress = currentProgress();
    beginStage(pieces);
    std::atomic<std::size_t> next{0};
    const auto takePieces = [&](unsigned worker) {
        const ProgressScope scope(progress);
        while (!isStopRequested()) { // asked before a piece is taken: one that is taken is done
            const std::size_t piece = next++;
            if (piece >= pieces) {
                break;
            }
            work(piece, worker);
            pieceDone();
        }
    };
    const unsigned workers = workersFor(pieces);
    if (workers == 1) {
        takePieces(0);
    } else {
        services().workers->run(workers, takePieces);
    }
}

/// Calls work(first, count) for `total` items in pieces of `most`.
template <typename Work>
void forEachStretch(std::size_t total, std::size_t most, const Work& work) {
    forEachPiece((total + most - 1) / most, [&](std::size_t piece, unsigned /*worker*/) {
        const std::size_t first = piece * most;
        work(first, std::min(most, total - first));
    });
}

} // namespace zemo::platform
