#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/EvenSpline.h"

/// The groups of rows that the spline on even grids is solved in.
namespace zemo::dsp {

/// What a group of rows leaves at its borders, and what it took its neighbours to leave there.
struct GroupBorders {
    struct State {
        double pivot = 0.0;
        double right = 0.0;
    };
    State before;             ///< of the row before the first
    State last;               ///< of the last row
    double firstSlope = 0.0;  ///< at the first row
    double slopeBehind = 0.0; ///< at the row behind the last
    bool isExact = true;      ///< the blocks inside agree with each other
    bool hasZeroPivot = false;
    bool isFinite = true; ///< all samples that the group has read are
};

/// The rows of one group and the scratch space for them.
class SplineGroup {
public:
    static constexpr std::int64_t kBlockRows = 1024;
    static constexpr std::int64_t kBlocks = 8;
    static constexpr std::int64_t kRows = kBlocks * kBlockRows;

    /// Doubles that a worker needs. `runUp`: rows before and behind a block's own.
    static std::size_t scratchSize(std::int64_t runUp);

    SplineGroup(const EvenGrids& grids, std::int64_t runUp, double* scratch);

    /// Solves the rows of group `index` (rows kRows * index and on) and writes the points in their
    /// intervals.
    GroupBorders run(std::int64_t index);

private:
    friend struct SplineKernel;

    /// One behind the last row, and what a vector reads beyond that.
    static constexpr std::int64_t kSlopes = kRows + 3 * kBlocks;

    void solvePlainly(GroupBorders& borders);
    void writePlainly(std::int64_t from, std::int64_t end);
    bool hasPlainRowsOnly() const;

    const EvenGrids& grids_;
    std::int64_t runUp_;
    double* slopes_;  ///< of the rows of the group and the one behind
    double* factors_; ///< of the rows of one vector's blocks, or of the group
    double* forward_; ///< the eliminated right sides
    std::int64_t first_ = 0;
    std::int64_t end_ = 0;
};

/// [any] Whether each of two neighbours left what the other one took for granted.
bool agree(const GroupBorders& left, const GroupBorders& right);

} // namespace zemo::dsp
