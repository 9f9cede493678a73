#include <QFile>
#include <QFileInfo>
#include <utility>

#include "app/AppDelegate.h"
#include "app/Languages.h"
#include "files/RefusalReason.h"
#include "interface/FileNames.h"
#include "interface/SoundRuler.h"
#include "platform/OutOfMemory.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

constexpr qint64 kPlayheadInterval = 16; ///< milliseconds between two moves of the line, at least

} // namespace

bool AppDelegate::fillViews() {
    return fill(window, soundView, "soundView") &&
           fill(window, SpectrogramMenu, "SpectrogramMenu") &&
           fill(window, peakValue_, "peakValue") && fill(window, reasonValue_, "reasonValue");
}

void AppDelegate::connectViews() {
    connect(SpectrogramMenu, &QAction::toggled, soundView, &SoundView::setSpectrogramShown);
    connect(soundView, &SoundView::spectrogramShownChanged, SpectrogramMenu, &QAction::setChecked);
    reasonValue_->hide();
    announcer_ = new Announcer(window);
}

AppDelegate::SoundChange::SoundChange(AppDelegate& delegate, Source source, const QString& path)
    : delegate_(delegate),
      source_(source),
      name_(bytesOfPath(path.mid(path.lastIndexOf('/') + 1))) {
    delegate_.soundWillChange();
}

AppDelegate::SoundChange::~SoundChange() {
    delegate_.soundDidChange();
    platform::unlessOutOfMemory([this] { tell(); },
                                [this] { delegate_.showRescueState({.isFailing = true}); });
    delegate_.showName();
    delegate_.offerRescued();
}

void AppDelegate::SoundChange::tell() {
    const rescue::SoundIdentity reverted = delegate_.soundBehindRevert();
    switch (source_) {
    case Source::File:
        return delegate_.unsaved_.opened(before_, reverted, name_);
    case Source::Scaling:
        return delegate_.unsaved_.scaled(before_, reverted);
    case Source::Work:
        return delegate_.unsaved_.transformed(before_, reverted);
    case Source::Revert:
        return delegate_.unsaved_.exchanged(reverted);
    }
}

void AppDelegate::SoundChange::scalingFollows() {
    tell();
    before_ = rescue::SoundIdentity::now();
    source_ = Source::Scaling;
    if (delegate_.unsaved_.isUnsaved()) {
        unscaled_ = HeldSound::take();
    }
}

void AppDelegate::soundWillChange() {
    builder_.stop();
}

void AppDelegate::soundDidChange() {
    const std::int64_t count = fBuffersize.load();
    if (count == 0) {
        wantedBuild_ = 0;
        soundView->clear();
        peakValue_->setText("–");
        return;
    }
    wantedBuild_ = builder_.rebuild({fBuffer.load(), static_cast<std::size_t>(count)}, R);
}

void AppDelegate::takeOverviewLater(const overview::Overview& made) {
    QMetaObject::invokeMethod(
        this, [this, made] { takeOverview(made); }, Qt::QueuedConnection);
}

void AppDelegate::takeOverview(const overview::Overview& made) {
    if (made.build != wantedBuild_) {
        return; // of a sound that is gone
    }
    if (made.wave == nullptr) {
        soundView->clearForWantOfMemory();
        peakValue_->setText("–");
    } else if (made.isComplete) {
        soundView->setSpectrogram(made.spectrogram);
    } else {
        soundView->setWave(made.wave, R);
        peakValue_->setText(decibelText(made.wave->peak()));
    }
}

/// The line is nowhere unless the sound is heard.
void AppDelegate::showPlayhead() {
    if (bufferPlayer.rampState.load() == Silent) {
        soundView->setPlayhead(-1.0);
        playheadMoved_.invalidate();
    } else if (!playheadMoved_.isValid() || playheadMoved_.elapsed() >= kPlayheadInterval) {
        soundView->setPlayhead(bufferPlayer.readPosition.load());
        playheadMoved_.start();
    }
}

/// A sound that nobody told of leaves the name as it is.
void AppDelegate::showName() {
    const QString name = shownFileName(pathFromBytes(unsaved_.name()));
    const bool isSound = fBuffersize.load() > 0;
    if (isSound && name.isEmpty()) {
        return;
    }
    soundName_->setText(isSound ? name : tr("No sound"));
    const QString shown = QString(name).replace("[*]", "[*][*]"); // the mark's place, escaped
    window->setWindowTitle(isSound ? shown + "[*] – ZEMO" : "ZEMO");
    window->setWindowModified(unsaved_.isUnsaved());
}

void AppDelegate::showResult(const QString& text) {
    resultValue_->setText(text);
    isResultOfTransformation_ = false;
    showReason({});
    announceLater();
}

void AppDelegate::showReason(const QString& text) {
    reasonValue_->setText(text);
    reasonValue_->setVisible(!text.isEmpty());
}

/// The result and its reason come one after the other and are one thing to say.
void AppDelegate::announceLater() {
    if (!std::exchange(willAnnounce_, true)) {
        QMetaObject::invokeMethod(this, &AppDelegate::announce, Qt::QueuedConnection);
    }
}

void AppDelegate::announce() {
    willAnnounce_ = false;
    QStringList texts{resultValue_->text(), reasonValue_->text(), notice_->text()};
    texts.removeAll("");
    announcer_->say(texts.join(". "));
}

void AppDelegate::explainRefusal(const QString& path, const std::string& file) {
    using Kind = RefusalReason::Kind;
    const RefusalReason reason = refusalReason(FileUrl(file));
    const QString name = shownFileName(path);
    const auto hertz = [](double rate) { return QString::number(rate, 'g', 10); };
    switch (reason.kind) {
    case Kind::None:
        return showReason({});
    case Kind::Unreadable:
        return showReason(translated(QString::fromStdString(reason.sentence)));
    case Kind::Rate:
        return showReason(tr("%1 is at %2 Hz, the output at %3 Hz. Import Audio… converts it.")
                              .arg(name, hertz(reason.rate), hertz(R)));
    case Kind::Channels:
        return showReason(tr("%1 has %2 channels, not one. Import Audio… converts it.")
                              .arg(name, QString::number(reason.channels)));
    case Kind::Format:
        return showReason(
            tr("The samples of %1 are not 32-bit floats. Import Audio… converts them.").arg(name));
    }
}

} // namespace zemo
