#include "app/QuitOnSignal.h"

#include <fcntl.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): sigaction is not in <csignal>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <atomic>
#include <initializer_list>

namespace zemo {
namespace {

constexpr auto kRequests = {SIGTERM, SIGINT, SIGHUP};
constexpr int kShellsOffset = 128;

constinit std::atomic<int> writeEnd{-1};
constinit std::atomic<int> received{0};

void takeSignal(int number) {
    received = number;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
}

void handle(void (*handler)(int), int flags) {
    for (const int number : kRequests) {
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = flags;
        ::sigemptyset(&action.sa_mask);
        ::sigaction(number, &action, nullptr);
    }
}

} // namespace

QuitOnSignal::QuitOnSignal(const std::function<void()>& close) {
    if (::pipe2(ends_, O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // a signal ends the process at once then, as it does any other
    }
    writeEnd = ends_[1];
    auto* const notifier = new QSocketNotifier(ends_[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [close, notifier] {
        notifier->setEnabled(false);
        close();
        QCoreApplication::quit(); // also where a panel or the manual is still open
    });
    handle(takeSignal, static_cast<int>(SA_RESETHAND) | SA_RESTART);
}

QuitOnSignal::~QuitOnSignal() {
    if (ends_[0] >= 0) {
        handle(SIG_DFL, 0);
        writeEnd = -1;
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
}

int QuitOnSignal::status(int status) noexcept {
    return received != 0 ? kShellsOffset + received : status;
}

} // namespace zemo
