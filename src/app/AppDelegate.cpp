#include "app/AppDelegate.h"

#include <QColor>
#include <QGuiApplication>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <cmath>
#include <cstdlib>

#include "platform/Clock.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/SystemVersion.h"
#include "platform/TraceLog.h"
#include "playback/OutputUnit.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {

/// A second pointer, distinct from the controller's outlet of the same name. It is never assigned,
/// so whatever is read through it is 0.
static levelOpenGLView* levelView = nullptr;

namespace {

using namespace std::chrono_literals;
using platform::format;

constexpr auto kAttendance = 8ms;
constexpr auto kLastFade = 300ms;         ///< for a fade and what the server holds before it
constexpr auto kLastFadeAttendance = 2ms; ///< whoever quits waits for it
constexpr double kTwoPi = 6.283185307179586;

QColor backgroundColour() {
    return QColor::fromRgbF(0.19F, 0.18F, 0.23F, 0.99F);
}
QColor playingColour() {
    return QColor::fromRgbF(0.8F, 0.2F, 0.4F, 1.0F);
}
QColor stoppingColour() {
    return QColor::fromRgbF(0.1F, 0.9F, 0.7F, 1.0F);
}

platform::TraceLog& trace() {
    return *platform::services().trace;
}

void logTestVal() {
    const float testVal = levelView != nullptr ? levelView->testVal() : 0.0F;
    trace().log(format("TESTVAL = %f\n", static_cast<double>(testVal)));
}

float randomLevel() {
    const float r = static_cast<float>(std::rand()) / 2147483648.0F; // NOLINT: any number will do
    return std::sin(static_cast<float>(kTwoPi * static_cast<double>(r)));
}

} // namespace

AppDelegate::AppDelegate(QObject* parent) : QObject(parent) {
    attendant_.setInterval(kAttendance);
    connect(&attendant_, &QTimer::timeout, this, &AppDelegate::attendPlayback);
}

AppDelegate::~AppDelegate() {
    builder_.stop();
    fatalEnd_.reset();
    keeper_.reset(); // it finishes, and tells this
    if (bufferPlayer.outputUnit != nullptr) {
        bufferPlayer.outputUnit->stop();
    }
    platform::services().longWork = nullptr;
    renderDelegate.store(nullptr);
    midiDelegate.store(nullptr);
    delete window;
}

/// Twice: as a part of the launch, and before that for a window that is shown first.
void AppDelegate::styleWindow() {
    window->setOpaque(false);
    window->setBackgroundColour(backgroundColour());
}

void AppDelegate::applicationDidFinishLaunching() {
    styleWindow();
    renderDelegate.store(&messages_);
    midiDelegate.store(this);
    createOutputUnit(&bufferPlayer);
    createMIDI(&bufferPlayer);

    bufferPlayer.rampState.store(Silent);
    fBuffersize.store(0);
    value.store(0.0F);
    doResampling = doAM = doSSB = doFM = false;
    string.clear();
    ustruct.bufsize = 0;
    versionMinor = 0;
    versionMinor = platform::services().systemVersion->minorVersion();
    trace().log(format("Version Minor = %d\n", versionMinor));
    logTestVal();
    showRate();
    showNotice();
}

/// The ramp state, with every message taken that was sent on the way to it: one that came after the
/// press would undo what the press does.
std::uint32_t AppDelegate::stateAtThisPress() {
    while (true) {
        const std::uint32_t state = bufferPlayer.rampState.load();
        if (state == Silent) {
            awaitRenderCallsUnderWay(); // one of them may have ended the play, and be about to tell
        }
        messages_.drain(*this);
        if (bufferPlayer.rampState.load() == state) {
            return state;
        }
    }
}

void AppDelegate::applicationWillTerminate() {
    platform::Clock& clock = *platform::services().clock;
    const auto deadline = clock.now() + kLastFade;
    bufferStop0();
    while (attendPlayback() && clock.now() < deadline) {
        clock.sleepFor(kLastFadeAttendance);
    }
}

/// While the end of a play is waited for, and where a play would begin that may not.
bool AppDelegate::ignoresPress() const {
    return work_.isPausing() || (bufferPlayer.rampState.load() == Silent && !work_.mayPlayBegin());
}

void AppDelegate::playButtonPressed(TitledButton* sender) {
    if (ignoresPress()) {
        return;
    }
    const std::uint32_t state = stateAtThisPress();
    if (fBuffersize.load() == 0) {
        value.store(0.0F);
        updateTestValue(0.0F);
        return;
    }
    if (state == Silent) {
        if (work_.mayPlayBegin()) { // it may have fallen silent in this moment
            startPlay(sender);
        }
    } else {
        askForStop(sender);
    }
    attendPlayback();
}

void AppDelegate::startPlay(TitledButton* sender) {
    bufferPlayer.outputUnit->setSoundName(soundName_->text().toStdString());
    bufferPlay0(0);
    if (sender != nullptr) {
        AttributedTitle alternate = sender->attributedAlternateTitle();
        alternate.colour = playingColour();
        // The length of the title that it takes the place of, not its own.
        alternate.colouredLength = static_cast<int>(sender->attributedTitle().text.size());
        sender->setAttributedTitle(alternate);
    }
}

void AppDelegate::askForStop(TitledButton* sender) {
    bufferStop0();
    if (sender != nullptr) {
        AttributedTitle title = sender->attributedTitle();
        title.colour = stoppingColour();
        title.colouredLength = static_cast<int>(title.text.size());
        sender->setAttributedTitle(title);
    }
    value.store(0.0F);
    resetMeter();
    updateValue(0.0F);
    updateTestValue(0.0F);
}

void AppDelegate::setPlayTitle() {
    if (fBuffersize.load() == 0) {
        return;
    }
    const QString text = tr("Stop");
    playButton->setAttributedTitle({.text = text,
                                    .colour = playingColour(),
                                    .colouredLength = static_cast<int>(text.size()),
                                    .font = QFont("Lucida Grande", 12),
                                    .alignment = Qt::AlignRight});
    playButton->setTitleAlignment(Qt::AlignHCenter);
}

void AppDelegate::resetPlayTitle() {
    playButton->setTitle(tr("Play"));
}

void AppDelegate::modeButtonPressed(StateButton* sender) {
    if (sender->state() == StateButton::On) {
        sender->setTitle(tr("RMS"));
        bufferPlayer.rmsMode.store(1);
    } else if (sender->state() == StateButton::Off) {
        sender->setTitle(tr("Peak"));
        bufferPlayer.rmsMode.store(0);
    }
}

void AppDelegate::testButtonPressed(TitledButton* /*sender*/) {
    const bool isAltHeld = QGuiApplication::keyboardModifiers().testFlag(Qt::AltModifier);
    test(isAltHeld ? TestLevel::None : TestLevel::Random);
}

void AppDelegate::clearMeterAction(QObject* /*sender*/) {
    test(TestLevel::None);
}

void AppDelegate::test(TestLevel kind) {
    if (!work_.mayPlayBegin() || stateAtThisPress() != Silent) {
        return;
    }
    float level = 0.0F;
    if (kind == TestLevel::None) {
        resetMeter();
    } else {
        level = randomLevel();
    }
    value.store(level);
    updateTestValue(level);
    trace().log(format("val = %f\n", static_cast<double>(level)));
    logTestVal();
}

/// The argument is ignored, here and below: the view reads the live level itself.
void AppDelegate::updateValue(float /*ignored*/) {
    levelView->update();
}

void AppDelegate::updateTestValue(float /*ignored*/) {
    levelView->update();
}

void AppDelegate::resetMeter() {
    levelView->resetPrevious();
    value.store(0.001F);
    levelView->update();
    value.store(0.0F);
    levelView->update();
}

void AppDelegate::clearTheView() {
    if (QOpenGLContext* const context = QOpenGLContext::currentContext()) {
        QOpenGLFunctions* const gl = context->functions();
        gl->glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }
}

void AppDelegate::traceIdleCycle(std::int32_t left) {
    trace().print(format("IdleCycle = %d\n", left));
}

void AppDelegate::traceMissingBuffer() {
    trace().print("Can't access input buffer\n");
}

bool AppDelegate::attendPlayback() {
    const bool more = superviseOutputUnit();
    if (!isNoteTitleDue_) {
        messages_.drain(*this);
    }
    showPlayhead();
    showNotice();
    if (more && !attendant_.isActive()) {
        attendant_.start();
    } else if (!more) {
        attendant_.stop();
    }
    return more;
}

} // namespace zemo
