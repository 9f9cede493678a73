#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "app/AppDelegate.h"
#include "app/FirstFrame.h"
#include "app/Languages.h"
#include "app/QtAlert.h"
#include "app/QuitOnSignal.h"
#include "interface/FileNames.h"
#include "meter/GlPreparation.h"
#include "platform/Services.h"
#include "platform_linux/CallThread.h"
#include "platform_linux/LinuxAudioOutput.h"
#include "platform_linux/LinuxMidi.h"
#include "platform_linux/LinuxServices.h"
#include "platform_linux/StreamProperties.h"
#include "rescue/RescueFolder.h"

namespace {

constexpr const char* kUsage = "zemo [FILE]\n"
                               "  Opens ZEMO, with FILE in it: CAF or AIFF-C by its extension,\n"
                               "  other sound files converted, anything else as raw 32-bit floats\n"
                               "  when you agree.\n"
                               "zemo --help | --version\n";

bool hasDisplay() {
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

QIcon windowIcon() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 128}) {
        icon.addFile(QString(":/icons/zemo-%1.png").arg(size), QSize(size, size));
    }
    return icon;
}

/// `words`: the command line, without what Qt has taken from it. Qt's own copy of it has lost what
/// is not UTF-8.
int runWindow(const QApplication& application, char** words) {
    const zemo::GlPreparation openGl;
    zemo::platform::LinuxAudioOutput output;
    zemo::platform::SteadyClock clock;
    zemo::platform::PosixFileOperations fileOperations;
    zemo::platform::PosixFileSystem fileSystem;
    zemo::platform::KernelVersion systemVersion;
    zemo::platform::LinuxMemory memory;
    zemo::platform::ThreadWorkers workers;
    zemo::platform::SystemTrace trace("zemo");
    zemo::QtAlert alert;
    zemo::platform::services() = {.audioOutput = &output,
                                  .alert = &alert,
                                  .clock = &clock,
                                  .fileOperations = &fileOperations,
                                  .fileSystem = &fileSystem,
                                  .midi = nullptr,
                                  .systemVersion = &systemVersion,
                                  .trace = &trace,
                                  .memory = &memory,
                                  .workers = &workers};

    zemo::AppDelegate delegate;
    if (!delegate.loadMainWindow()) {
        trace.printError("zemo: the main window's interface file is broken.\n");
        return EXIT_FAILURE;
    }
    const zemo::QuitOnSignal quitOnSignal([&delegate] { delegate.closeWithoutAsking(); });
    zemo::showFirstFrame(*delegate.window);
    // Only now: the servers of sound and MIDI may take their time to answer.
    auto midi = zemo::platform::makeLinuxMidi(zemo::kMidiClientName);
    zemo::platform::services().midi = midi.get();
    delegate.applicationDidFinishLaunching();
    delegate.keepRescueCopies(zemo::rescue::rescueRoot().value_or("")); // none: none can be kept
    if (application.arguments().size() > 1) {
        delegate.openAtLaunch(zemo::pathFromBytes(words[1]));
    }
    // A window that was closed meanwhile would end an event loop that does not run yet.
    const int status = delegate.window->isVisible() ? QApplication::exec() : EXIT_SUCCESS;
    delegate.applicationWillTerminate();
    zemo::platform::services().midi = nullptr;
    midi.reset(); // nothing arrives at a controller that is gone
    return zemo::QuitOnSignal::status(status);
}

} // namespace

int main(int argc, char** argv) {
    // A pipe that nobody reads any more, of the trace or of a save, is an error and not the end.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    const bool help = argc > 1 && std::strcmp(argv[1], "--help") == 0;
    const bool version = argc > 1 && std::strcmp(argv[1], "--version") == 0;
    if (help || version) {
        return std::fputs(help ? kUsage : "zemo " ZEMO_VERSION "\n", stdout) < 0;
    }
    if (!hasDisplay()) {
        static_cast<void>(
            std::fputs("zemo: there is no display; zemo-batch works without one.\n", stderr));
        return EXIT_FAILURE;
    }
    zemo::platform::setStreamProperties(ZEMO_VERSION);
    QApplication application(argc, argv);
    QApplication::setApplicationName("ZEMO");
    QApplication::setApplicationVersion(ZEMO_VERSION);
    QApplication::setDesktopFileName("zemo");
    QApplication::setWindowIcon(windowIcon());
    zemo::Languages languages;
    languages.install(zemo::Languages::choose(QLocale().uiLanguages()));
    return zemo::platform::leaveHungCallsBehind(runWindow(application, argv));
}
