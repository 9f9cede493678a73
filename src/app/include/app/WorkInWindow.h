#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "interface/ProgressPanel.h"
#include "platform/LongWork.h"
#include "platform/Progress.h"

namespace zemo {

/// Long work while the window stays awake: it runs on another thread, and this one goes on with its
/// events. Work that lasts shows how far it is, with a button that cancels it. All of it is [main].
///
/// Events mean actions, so whatever a person begins takes a turn first. Closing the window and
/// quitting cancel the work.
class WorkInWindow final : public QObject, public platform::LongWork {
    Q_OBJECT
public:
    /// Whether a play may be begun in a turn.
    enum class Play : std::uint8_t { MayBegin, MayNotBegin };

    struct EndTurn {
        void operator()(WorkInWindow* work) const { work->endTurn(); }
    };
    /// The time from the press that asks for something to its result: all its work, and what is
    /// waited for before and in between. While there is one no other begins.
    using Turn = std::unique_ptr<WorkInWindow, EndTurn>;

    /// The panel is shown over `window`, or over its sheet.
    explicit WorkInWindow(QObject* parent = nullptr);

    void setWindow(QWidget* window);
    /// What the next work is, for the person who waits: "Opening bell.caf…".
    void setDescription(const QString& text) { description_ = text; }

    /// Empty while there is another turn: then nothing is to be begun.
    [[nodiscard]] Turn takeTurn(Play play);
    /// Does `action` as soon as there is no turn: at once, or in the order of the calls.
    void onceIdle(std::function<void()> action);

    /// In a turn, or in one of its own.
    bool run(const Work& work, platform::Cancel cancel) override;
    void pause(std::chrono::microseconds duration) override;

    /// Whether there is a turn, or a pause.
    bool isBusy() const noexcept { return hasTurn_ || pausing_; }
    /// While the end of a play is waited for.
    bool isPausing() const noexcept { return pausing_; }
    bool mayPlayBegin() const noexcept {
        return !pausing_ && !(hasTurn_ && play_ == Play::MayNotBegin);
    }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void endTurn();
    void cancelTurn();
    void doWaiting();
    bool isPatienceOver() const;
    void showPanel(platform::Cancel cancel);
    void closePanelSoon();

    bool hasTurn_ = false;
    Play play_ = Play::MayBegin; ///< of the turn
    bool isCancelled_ = false;   ///< the turn
    bool hasRun_ = false;        ///< some work of the turn
    QElapsedTimer turnBegan_;
    std::deque<std::function<void()>> waiting_; ///< for the turn's end
    platform::Progress* progress_ = nullptr;    ///< of the work under way, if it can be cancelled
    QPointer<QWidget> window_;
    QPointer<ProgressPanel> panel_;
    QTimer panelCloser_;
    QString description_;
    bool pausing_ = false;
};

} // namespace zemo
