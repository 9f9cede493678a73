#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include "interface/ProgressPanel.h"
#include "platform/LongWork.h"
#include "platform/Progress.h"

namespace zemo {

/// Long work while the window stays awake: it runs on another thread, and this one goes on with its
/// events. Work that lasts shows how far it is, with a button that cancels it. All of it is [main].
///
/// Events mean actions: whoever has begun something that may be long must look at isBusy() before
/// the next. Closing the window and quitting cancel the work.
class WorkInWindow final : public QObject, public platform::LongWork {
    Q_OBJECT
public:
    /// The panel is shown over `window`, or over its sheet.
    explicit WorkInWindow(QObject* parent = nullptr) : QObject(parent) {}

    void setWindow(QWidget* window);
    /// What the next work is, for the person who waits: "Opening bell.caf…".
    void setDescription(const QString& text) { description_ = text; }

    bool run(const Work& work, platform::Cancel cancel) override;
    void pause(std::chrono::microseconds duration) override;

    /// Whether work is under way, or a pause.
    bool isBusy() const noexcept { return busy_; }
    /// Whether a play may be begun: not while its end is waited for.
    bool isPausing() const noexcept { return pausing_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showPanel(platform::Progress& progress, platform::Cancel cancel);

    platform::Progress* progress_ = nullptr; ///< of the work under way
    QPointer<QWidget> window_;
    QPointer<ProgressPanel> panel_;
    QString description_;
    bool busy_ = false;
    bool pausing_ = false;
};

} // namespace zemo
