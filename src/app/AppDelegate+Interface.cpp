#include <QApplication>
#include <QLocale>
#include <QMessageBox>

#include "app/AppDelegate.h"
#include "app/Languages.h"
#include "interface/HeldKeys.h"
#include "interface/InterfaceLoader.h"
#include "interface/ManualWindow.h"
#include "platform/AudioOutput.h"
#include "platform/Services.h"
#include "playback/SharedState.h"

namespace zemo {

bool AppDelegate::loadMainWindow() {
    InterfaceLoader loader;
    QWidget* const made = loader.loadInterface("mainWindow");
    window = qobject_cast<BackgroundWindow*>(made);
    if (window == nullptr) {
        delete made;
        return false;
    }
    const bool buttons =
        fill(window, levelView, "levelView") && fill(window, playButton, "playButton") &&
        fill(window, modeButton, "modeButton") && fill(window, testButton, "testButton");
    const bool menus = fill(window, OpenMenu, "OpenMenu") &&
                       fill(window, SaveAsAudioMenu, "SaveAsAudioMenu") &&
                       fill(window, ResampleMenu, "ResampleMenu") &&
                       fill(window, AMMenu, "AMMenu") && fill(window, FMMenu, "FMMenu") &&
                       fill(window, HDMenu, "HDMenu") && fill(window, RevertMenu, "RevertMenu");
    const bool labels =
        fill(window, soundName_, "soundName") && fill(window, lengthValue_, "lengthValue") &&
        fill(window, samplesValue_, "samplesValue") && fill(window, rateValue_, "rateValue") &&
        fill(window, resultValue_, "resultValue") && fill(window, notice_, "notice");
    if (!buttons || !menus || !labels || !fillViews() || !fillRescueLine()) {
        return false;
    }
    connectActions();
    connectViews();
    connectRescueLine();
    window->installEventFilter(this); // before the work's, which is asked first then
    work_.setWindow(window);
    platform::services().longWork = &work_;
    styleWindow();
    levelView->resetPrevious(); // or the first frame would have a ghost
    notice_->hide();
    return true;
}

void AppDelegate::connectActions() {
    const auto onMenu = [this](const char* name, auto action) {
        connect(window->findChild<QAction*>(name), &QAction::triggered, this, action);
    };
    const auto onMenuIfIdle = [this, &onMenu](const char* name, auto action) {
        onMenu(name, [this, action] {
            if (!work_.isBusy()) {
                action();
            }
        });
    };
    connect(playButton, &QPushButton::clicked, this, [this] { playButtonPressed(playButton); });
    connect(modeButton, &QPushButton::clicked, this, [this] { modeButtonPressed(modeButton); });
    connect(testButton, &QPushButton::clicked, this, [this] { testButtonPressed(testButton); });
    onMenuIfIdle("OpenMenu", [this] { OpenDialog(OpenMenu); });
    onMenuIfIdle("OpenRawMenu", [this] { classicOpenDialog(sender()); });
    onMenuIfIdle("ImportMenu", [this] { ImportDialog(sender()); });
    onMenuIfIdle("ExportMenu", [this] { ExportDialog(sender()); });
    onMenuIfIdle("SaveAsAudioMenu", [this] { SaveAsAudioDialog(SaveAsAudioMenu); });
    onMenu("RevertMenu", [this] { revertAction(RevertMenu); });
    onMenu("ResampleMenu", [this] { ResampleDialog(ResampleMenu); });
    onMenu("AMMenu", [this] { AMDialog(AMMenu); });
    onMenu("FMMenu", [this] { FMDialog(FMMenu); });
    onMenu("HDMenu", [this] { HDDialog(HDMenu); });
    onMenu("QuitMenu", [this] { window->close(); });
    onMenu("PlayMenu", [this] { playButton->click(); });
    onMenu("ModeMenu", [this] { modeButton->click(); });
    onMenu("TestMenu", [this] { testButton->click(); });
    onMenu("ClearMeterMenu", [this] { clearMeterAction(sender()); });
    onMenu("LookForMidiMenu", [this] { lookForMidiAction(sender()); });
    onMenu("ManualMenu", [this] { showManual(); });
    onMenuIfIdle("AboutMenu", [this] { aboutDialog(sender()); });
    connect(window, &BackgroundWindow::fileDropped, this, &AppDelegate::openAnyFile);
    QList<QKeySequence> pressedOnce;
    for (const QAction* const action : window->findChildren<QAction*>()) {
        if (!action->autoRepeat()) {
            pressedOnce += action->shortcuts();
        }
    }
    new HeldKeys(window, pressedOnce);
    playButton->setFocus();
}

void AppDelegate::aboutDialog(QObject* /*sender*/) {
    QMessageBox::about(window, tr("About ZEMO"),
                       tr("ZEMO %1\nHolds one sound, plays it and rewrites it.")
                           .arg(QApplication::applicationVersion()));
}

/// The window is made once, so the place in the text stays.
void AppDelegate::showManual() {
    if (manual_ == nullptr) {
        const QString folder = QApplication::applicationDirPath();
        manual_ = std::make_unique<ManualWindow>(ManualWindow::find(folder));
    }
    manual_->show();
    manual_->raise();
    manual_->activateWindow();
}

void AppDelegate::showRate() {
    rateValue_->setText(tr("%1 Hz").arg(QLocale().toString(R, 'g', 10)));
}

void AppDelegate::showNotice() {
    QStringList notices{translated(QString::fromStdString(bufferPlayer.outputUnit->notice())),
                        translated(QString::fromStdString(platform::services().midi->notice())),
                        rescueNotice_};
    notices.removeAll(QString());
    const QString text = notices.join("\n");
    if (notice_->text() != text) {
        notice_->setText(text);
        announceLater();
    }
    notice_->setVisible(!text.isEmpty());
}

} // namespace zemo
