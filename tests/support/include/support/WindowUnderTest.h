#pragma once

#include "app/AppDelegate.h"
#include "interface/SavePanel.h"
#include "support/FakePlatform.h"

namespace zemo::test {

/// The program's window over fake services, launched.
struct WindowUnderTest {
    FakePlatform platform;
    AppDelegate delegate;

    explicit WindowUnderTest(double rate = 48000.0) {
        platform.output.rate = rate;
        if (!delegate.loadMainWindow()) {
            qFatal("the main window's interface file is broken");
        }
        delegate.applicationDidFinishLaunching();
        delegate.window->show();
    }

    /// One render call and the messages that it sent.
    void pump(std::uint32_t frames) {
        platform.output.pump(frames);
        QMetaObject::invokeMethod(&delegate, "attendPlayback", Qt::DirectConnection);
    }
};

} // namespace zemo::test
