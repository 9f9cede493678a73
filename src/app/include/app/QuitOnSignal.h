#pragma once

#include <QObject>

namespace zemo {

/// While it lives, the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) close `window`
/// as a user does; a second one ends the process at once. One at a time. [main]
class QuitOnSignal final : public QObject {
    Q_OBJECT
public:
    explicit QuitOnSignal(QWidget* window);
    ~QuitOnSignal() override;

    /// What the process should end with: `status`, or after a signal what shells know it by.
    static int status(int status) noexcept;

private:
    int ends_[2] = {-1, -1}; ///< of the pipe that brings the signal into the event loop
};

} // namespace zemo
