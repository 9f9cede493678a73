#include <QFileInfo>
#include <QHBoxLayout>
#include <QLocale>
#include <memory>

#include "app/AppDelegate.h"
#include "app/Languages.h"
#include "files/PostError.h"
#include "files/RawFileReader.h"
#include "files/SoundLoader.h"
#include "interface/FileNames.h"
#include "interface/OpenPanel.h"
#include "interface/SavePanel.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

platform::TraceLog& trace() {
    return *platform::services().trace;
}

/// A status may hold any bytes: the first line of a raw file is whatever stands there.
QString printable(const std::string& text) {
    QString result = QString::fromLocal8Bit(text.data(), static_cast<qsizetype>(text.size()));
    for (QChar& c : result) {
        if (!c.isPrint()) {
            c = QChar::ReplacementCharacter;
        }
    }
    constexpr qsizetype kLongest = 160;
    return result.size() > kLongest ? result.left(kLongest) + "…" : result;
}

} // namespace

/// A panel's end may be the end of the panel, and it is still at its own code when it tells of it.
/// Long work, in which events go on, must not begin before it is through, nor while other work is
/// under way.
void AppDelegate::onceClosed(std::function<void()> action) {
    const auto then = [this, action = std::move(action)] { work_.onceIdle(action); };
    QMetaObject::invokeMethod(this, then, Qt::QueuedConnection);
}

void AppDelegate::OpenDialog(QObject* /*sender*/) {
    auto* const panel = new OpenPanel(window, tr("Open"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    auto* const accessory = new QWidget(panel);
    auto* const row = new QHBoxLayout(accessory);
    row->setContentsMargins(0, 0, 0, 0);
    auto* const swapBox = new QCheckBox(tr("Swap Bytes"), accessory);
    auto* const normalizeBox = new QCheckBox(tr("Normalize"), accessory);
    row->addWidget(swapBox);
    row->addWidget(normalizeBox);
    row->addStretch();
    panel->setAccessoryView(accessory);
    trace().log("Dialog initialized\n");
    connect(panel, &QDialog::finished, this, [this, panel, swapBox, normalizeBox](int result) {
        swapRaw = swapBox->isChecked();
        norm = normalizeBox->isChecked();
        if (result == QDialog::Accepted) {
            onceClosed([this, path = panel->chosenFile()] { openChosenFile(path); });
        }
    });
    panel->open();
}

void AppDelegate::openChosenFile(const QString& path) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn != nullptr && awaitRescueCopies()) {
        readFile(path, Level::Scaled);
    }
}

void AppDelegate::readFile(const QString& path, Level level) {
    work_.setDescription(tr("Opening %1…").arg(shownFileName(path)));
    const FileUrl url(absoluteBytesOf(path));
    SoundChange change(*this, SoundChange::Source::File, path);
    const OpenResult result = openByExtension(url, swapRaw);
    if (result.cancelled) {
        showResult(tr("Cancelled"));
        return;
    }
    if (!result.isAudioFile) {
        string = result.status;
    }
    if (level == Level::Scaled) {
        change.scalingFollows();
        finishOpening(url.path(), &maxval, norm);
    }
    describeSound(path, result.status, result.isAudioFile && !result.loaded);
}

/// The older way in: every file is raw data, and the sound is always scaled.
void AppDelegate::classicOpenDialog(QObject* /*sender*/) {
    const auto panel = std::make_unique<OpenPanel>(window, tr("Open as Raw Data"));
    auto* const swapBox = new QCheckBox(tr("Swap Bytes"), panel.get());
    panel->setAccessoryView(swapBox);
    const int result = panel->exec();
    if (result == QDialog::Accepted) {
        swapRaw = swapBox->isChecked();
        openChosenRawFile(panel->chosenFile());
    }
}

void AppDelegate::openChosenRawFile(const QString& path) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn == nullptr || !awaitRescueCopies()) {
        return;
    }
    work_.setDescription(tr("Opening %1…").arg(shownFileName(path)));
    const std::string file = absoluteBytesOf(path);
    SoundChange change(*this, SoundChange::Source::File, path);
    const char* const status = openFile(file.c_str(), swapRaw);
    if (status == kReadingCancelled) {
        showResult(tr("Cancelled"));
        return;
    }
    string = status;
    trace().log(string);
    change.scalingFollows();
    finishOpening(file, &maxval, true);
    describeSound(path, string, false);
}

void AppDelegate::openFileNamed(const QString& path) {
    swapRaw = false;
    norm = false;
    openChosenFile(path);
}

void AppDelegate::SaveAsAudioDialog(QObject* /*sender*/) {
    if (fBuffersize.load() == 0) {
        return;
    }
    openSavePanel(HeldSound::take(), unsaved_.name(), [] {});
}

void AppDelegate::openSavePanel(const HeldSound& sound, const std::string& name,
                                const std::function<void()>& whenSaved) {
    auto* const panel = new SavePanel(window, tr("Save As"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAllowedFileTypes({"caf", "CAF", "aif", "AIF"});
    panel->suggestName(shownFileName(pathFromBytes(name)));
    connect(panel, &QDialog::finished, this, [this, panel, sound, whenSaved](int result) {
        if (result == QDialog::Accepted) {
            panel->hide();
            onceClosed([this, path = panel->selectedFiles().value(0), sound, whenSaved] {
                if (saveHeld(path, sound)) {
                    whenSaved();
                }
            });
        }
    });
    panel->open();
}

bool AppDelegate::saveHeld(const QString& path, const HeldSound& sound) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn == nullptr) {
        return false;
    }
    const QString name = QFileInfo(path).fileName();
    work_.setDescription(tr("Saving %1…").arg(name));
    const bool saved = saveHeldSound(FileUrl(absoluteBytesOf(path)), sound);
    trace().log(platform::format("%uc", saved ? 1U : 0U));
    trace().log("no_err"); // whatever the result
    if (saved) {
        unsaved_.saved(sound, bytesOfPath(name));
        showName();
        offerRescued();
    }
    showResult(saved ? tr("Saved as %1").arg(name) : tr("%1 was not saved").arg(name));
    return saved;
}

/// The first line of a raw file may read like a refusal.
void AppDelegate::describeSound(const QString& path, const std::string& status, bool isRefused) {
    const QString name = shownFileName(path);
    if (isRefused) { // the sound that is described is still there
        showResult(tr("%1 (%2)").arg("KO", name));
        explainRefusal(path, absoluteBytesOf(path));
        return;
    }
    describeLength();
    showResult(translated(printable(status)));
}

void AppDelegate::describeLength() {
    const std::int64_t count = fBuffersize.load();
    const QLocale locale;
    lengthValue_->setText(tr("%1 s").arg(locale.toString(static_cast<double>(count) / R, 'f', 3)));
    samplesValue_->setText(locale.toString(static_cast<qlonglong>(count)));
}

void AppDelegate::describeTransformation(const Refusal& refusal) {
    describeLength();
    if (refusal) {
        describeFailure(*refusal);
    } else {
        showResult(tr("Done"));
    }
    isResultOfTransformation_ = true;
}

} // namespace zemo
