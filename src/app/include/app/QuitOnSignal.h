#pragma once

#include <QObject>
#include <functional>

namespace zemo {

/// While it lives, the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) call `close` and
/// end the event loop; a second one ends the process at once. One at a time. [main]
class QuitOnSignal final : public QObject {
    Q_OBJECT
public:
    /// `close` closes the window, which cancels long work, and asks nothing.
    explicit QuitOnSignal(const std::function<void()>& close);
    ~QuitOnSignal() override;

    /// What the process should end with: `status`, or after a signal what shells know it by.
    static int status(int status) noexcept;

private:
    int ends_[2] = {-1, -1}; ///< of the pipe that brings the signal into the event loop
};

} // namespace zemo
