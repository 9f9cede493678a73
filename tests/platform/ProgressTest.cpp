#include "platform/Progress.h"

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/LongWork.h"
#include "platform/Pieces.h"
#include "platform_linux/LinuxServices.h"

namespace zemo::platform {
namespace {

/// Four workers, as this process's service.
class WithWorkers : public testing::Test {
protected:
    WithWorkers() { services().workers = &workers; }
    ~WithWorkers() override { services().workers = nullptr; }

    ThreadWorkers workers{4};
};

TEST(ProgressTest, BeforeTheFirstStageNothingIsDone) {
    const Progress progress;
    EXPECT_EQ(progress.fraction(), 0.0);
    EXPECT_FALSE(progress.isStopRequested());
}

TEST(ProgressTest, EachStageTakesItsShare) {
    Progress progress;
    progress.expectStages(2);
    progress.beginStage(4);
    EXPECT_EQ(progress.fraction(), 0.0);
    progress.pieceDone();
    EXPECT_EQ(progress.fraction(), 0.125);
    progress.beginStage(2);
    EXPECT_EQ(progress.fraction(), 0.5);
    progress.pieceDone();
    progress.pieceDone();
    EXPECT_EQ(progress.fraction(), 1.0);
}

TEST(ProgressTest, AStageOfNoPiecesIsDone) {
    Progress progress;
    progress.beginStage(0);
    EXPECT_EQ(progress.fraction(), 1.0);
}

TEST(ProgressTest, AnUnexpectedStageMakesTheWorkLonger) {
    Progress progress;
    progress.beginStage(1);
    progress.pieceDone();
    progress.beginStage(1);
    EXPECT_EQ(progress.fraction(), 0.5);
}

TEST(ProgressTest, MorePiecesThanAnnouncedAreNoMoreThanAll) {
    Progress progress;
    progress.beginStage(1);
    progress.pieceDone();
    progress.pieceDone();
    EXPECT_EQ(progress.fraction(), 1.0);
}

TEST(ProgressTest, WithoutOneEveryQuestionHasItsPlainAnswer) {
    EXPECT_EQ(currentProgress(), nullptr);
    EXPECT_FALSE(isStopRequested());
    expectStages(3);
    beginStage(3);
    pieceDone();
}

TEST(ProgressTest, AScopeIsOfItsThreadAndEndsWithItself) {
    Progress outer;
    Progress inner;
    const ProgressScope outerScope(&outer);
    {
        const ProgressScope innerScope(&inner);
        EXPECT_EQ(currentProgress(), &inner);
        std::thread([] { EXPECT_EQ(currentProgress(), nullptr); }).join();
    }
    EXPECT_EQ(currentProgress(), &outer);
}

TEST_F(WithWorkers, PiecesAreCountedFromAllWorkers) {
    Progress progress;
    const ProgressScope scope(&progress);
    forEachPiece(100, [](std::size_t, unsigned) {});
    EXPECT_EQ(progress.fraction(), 1.0);
}

TEST_F(WithWorkers, EveryWorkerSeesThatTheWorkShouldLeaveOff) {
    Progress progress;
    const ProgressScope scope(&progress);
    std::atomic<int> unseen{0};
    forEachPiece(64, [&](std::size_t, unsigned) {
        progress.requestStop();
        unseen += isStopRequested() ? 0 : 1;
    });
    EXPECT_EQ(unseen, 0);
}

TEST_F(WithWorkers, AfterAStopOnlyTheFirstPiecesAreDoneAndTheyWithoutAGap) {
    for (std::size_t at = 0; at < 50; ++at) {
        Progress progress;
        const ProgressScope scope(&progress);
        std::vector<std::atomic<int>> done(100);
        forEachPiece(done.size(), [&](std::size_t piece, unsigned) {
            if (piece == at) {
                progress.requestStop();
            }
            ++done[piece];
        });
        std::size_t first = 0;
        while (first < done.size() && done[first] == 1) {
            ++first;
        }
        EXPECT_GT(first, at);
        EXPECT_LE(first, at + 4); // what the other workers had already begun
        for (std::size_t piece = first; piece < done.size(); ++piece) {
            EXPECT_EQ(done[piece], 0);
        }
    }
}

TEST_F(WithWorkers, WorkThatIsStoppedBeforeItBeginsTouchesNothing) {
    Progress progress;
    progress.requestStop();
    const ProgressScope scope(&progress);
    forEachPiece(8, [](std::size_t, unsigned) { FAIL(); });
}

TEST(LongWorkTest, WithoutTheServiceTheWorkIsJustDone) {
    const auto caller = std::this_thread::get_id();
    bool done = false;
    EXPECT_TRUE(runLongWork([&] { done = std::this_thread::get_id() == caller; }));
    EXPECT_TRUE(done);
}

} // namespace
} // namespace zemo::platform
