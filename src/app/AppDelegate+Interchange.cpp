#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <filesystem>
#include <system_error>

#include "app/AppDelegate.h"
#include "app/Languages.h"
#include "files/SoundLoader.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "interface/FileNames.h"
#include "interface/OpenPanel.h"
#include "interface/SavePanel.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

FileUrl urlOf(const QString& path) {
    return FileUrl(absoluteBytesOf(path));
}

bool isOpenedByExtension(const QString& path) {
    return isAudioFileExtension(QFileInfo(path).suffix().toStdString());
}

/// Whether every sample is in the file as it is; FLAC rounds.
bool isExactExport(const QString& path) {
    return QFileInfo(path).suffix().toLower() == "wav";
}

} // namespace

void AppDelegate::ImportDialog(QObject* /*sender*/) {
    auto* const panel = new OpenPanel(window, tr("Import Audio"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setLabelText(QFileDialog::Accept, tr("Import"));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& path) { onceClosed([this, path] { importFile(path); }); });
    panel->open();
}

void AppDelegate::importFile(const QString& path) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn != nullptr && awaitRescueCopies()) {
        readForeignFile(path);
    }
}

void AppDelegate::readForeignFile(const QString& path) {
    const QString name = shownFileName(path);
    work_.setDescription(tr("Importing %1…").arg(name));
    const SoundChange change(*this, SoundChange::Source::File, path);
    const auto imported = importSound(urlOf(path));
    messages_.drain(*this);
    if (!imported) {
        describeFailure(imported.error());
        return;
    }
    describeLength();
    const SoundFileDescription& source = imported.value().source;
    const QLocale locale;
    const QString channels =
        source.channels == 1 ? tr("mono") : tr("%1 channels").arg(locale.toString(source.channels));
    const QString what = tr("Imported: %1, %2, %3 Hz")
                             .arg(QString::fromStdString(source.format), channels,
                                  locale.toString(source.rate, 'g', 10));
    showResult(imported.value().incomplete ? tr("%1. The file is cut off.").arg(what) : what);
}

void AppDelegate::ExportDialog(QObject* /*sender*/) {
    if (fBuffersize.load() == 0) {
        return;
    }
    auto* const panel = new SavePanel(window, tr("Export Audio"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAllowedFileTypes({"wav", "WAV", "flac", "FLAC"});
    panel->suggestName(shownFileName(pathFromBytes(unsaved_.name())));
    panel->setLabelText(QFileDialog::Accept, tr("Export"));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& path) { onceClosed([this, path] { exportFile(path); }); });
    panel->open();
}

void AppDelegate::exportFile(const QString& path) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn == nullptr) {
        return;
    }
    const QString name = QFileInfo(path).fileName();
    work_.setDescription(tr("Exporting %1…").arg(name));
    const HeldSound sound = HeldSound::take();
    const auto exported = exportSound(urlOf(path));
    if (!exported) {
        describeFailure(exported.error());
        return;
    }
    if (isExactExport(path)) {
        unsaved_.exported(sound);
        showName();
        offerRescued();
    }
    const std::int64_t clipped = exported.value().clipped;
    const QString what =
        tr("Exported as %1 (%2)")
            .arg(name, translated(QString::fromStdString(exported.value().format)));
    showResult(clipped > 0 ? tr("%1. Samples beyond full scale that were clipped: %2.")
                                 .arg(what, QLocale().toString(qlonglong{clipped}))
                           : what);
}

/// What a file is decides how it comes in: by its extension one of those that Open reads, by its
/// content one that Import knows, else raw data, if the user wants that.
void AppDelegate::openAnyFile(const QString& path) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn == nullptr) {
        return;
    }
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(bytesOfPath(path), ignored)) {
        return showResult(tr("%1 is not a file").arg(shownFileName(path)));
    }
    const bool isOpened = isOpenedByExtension(path);
    if (!isOpened && !isImportable(path)) {
        return offerRawData(path);
    }
    if (!awaitRescueCopies()) {
        return;
    }
    if (isOpened) {
        swapRaw = norm = false;
        readFile(path, Level::Scaled);
    } else {
        readForeignFile(path);
    }
}

bool AppDelegate::isImportable(const QString& path) {
    bool isKnown = false;
    work_.setDescription(tr("Looking at %1…").arg(shownFileName(path)));
    const bool done =
        platform::runLongWork([&] { isKnown = isKnownSoundFile(urlOf(path).path()); });
    return done && isKnown;
}

void AppDelegate::offerRawData(const QString& path) {
    auto* const box = new QMessageBox(window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Question);
    box->setWindowTitle(tr("Open as Raw Data"));
    box->setTextFormat(Qt::PlainText);
    box->setText(tr("%1 is no sound file that ZEMO knows.").arg(shownFileName(path)));
    box->setInformativeText(
        tr("It can be opened as raw data: every four bytes of it are one sample then."));
    QPushButton* const open = box->addButton(tr("Open as Raw Data"), QMessageBox::AcceptRole);
    box->setDefaultButton(open);
    box->setEscapeButton(box->addButton(QMessageBox::Cancel));
    connect(box, &QMessageBox::buttonClicked, this, [this, open, path](QAbstractButton* pressed) {
        if (pressed == open) {
            onceClosed([this, path] { openFileNamed(path); });
        }
    });
    box->open();
}

void AppDelegate::describeFailure(const platform::Error& error) {
    const bool cancelled = error.category == platform::ErrorCategory::Cancelled;
    showResult(cancelled ? tr("Cancelled") : translated(QString::fromStdString(error.sentence)));
}

} // namespace zemo
