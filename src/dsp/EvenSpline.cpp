#include "dsp/EvenSpline.h"

#include <algorithm>
#include <vector>

#include "dsp/Scratch.h"
#include "dsp/kernels/EvenSpline.h"
#include "platform/Pieces.h"

namespace zemo::dsp {
namespace {

SplineOutcome outcomeOf(const std::vector<GroupBorders>& groups) {
    const auto any = [&](auto property) {
        return std::any_of(groups.begin(), groups.end(), property);
    };
    if (any([](const GroupBorders& group) { return !group.isFinite; })) {
        return SplineOutcome::NotFinite;
    }
    if (any([](const GroupBorders& group) { return group.hasZeroPivot; })) {
        return SplineOutcome::ZeroPivot;
    }
    const bool disagree =
        std::adjacent_find(groups.begin(), groups.end(),
                           [](const GroupBorders& left, const GroupBorders& right) {
                               return !agree(left, right);
                           }) != groups.end();
    return disagree || any([](const GroupBorders& group) { return !group.isExact; })
               ? SplineOutcome::BordersDiffer
               : SplineOutcome::Exact;
}

} // namespace

SplineOutcome splineOnEvenGrids(const EvenGrids& grids, std::int64_t runUp) {
    std::vector<GroupBorders> groups(
        static_cast<std::size_t>((grids.knots + SplineGroup::kRows - 1) / SplineGroup::kRows));
    Scratch scratch(platform::workersFor(groups.size()), SplineGroup::scratchSize(runUp));
    platform::forEachPiece(groups.size(), [&](std::size_t index, unsigned worker) {
        SplineGroup group(grids, runUp, scratch.of(worker));
        groups[index] = group.run(static_cast<std::int64_t>(index));
    });
    return platform::isStopRequested() ? SplineOutcome::Stopped : outcomeOf(groups);
}

} // namespace zemo::dsp
