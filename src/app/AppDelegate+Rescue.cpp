#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QPushButton>
#include <iterator>
#include <utility>

#include "app/AppDelegate.h"
#include "files/RefusalReason.h"

namespace zemo {
namespace {

QString pathOf(const rescue::RescueFolder& folder) {
    return QFile::decodeName(folder.copy().c_str());
}

QDateTime timeOf(const rescue::RescueFolder& folder) {
    return QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(folder.time()));
}

} // namespace

bool AppDelegate::fillRescueLine() {
    return fill(window, rescueLine_, "rescueLine") && fill(window, rescueText_, "rescueText") &&
           fill(window, restoreButton_, "restoreButton") &&
           fill(window, discardButton_, "discardButton");
}

void AppDelegate::connectRescueLine() {
    rescueLine_->hide();
    connect(restoreButton_, &QPushButton::clicked, this, &AppDelegate::restoreRescued);
    connect(discardButton_, &QPushButton::clicked, this, &AppDelegate::discardRescued);
}

void AppDelegate::keepRescueCopies(const std::filesystem::path& root) {
    // A list in a function must be one that can be copied.
    const auto found = [this](std::vector<rescue::RescueFolder> folders) {
        const auto list = std::make_shared<std::vector<rescue::RescueFolder>>(std::move(folders));
        QMetaObject::invokeMethod(
            this, [this, list] { takeRescued(std::move(*list)); }, Qt::QueuedConnection);
    };
    const auto kept = [this](bool isKept) {
        QMetaObject::invokeMethod(
            this, [this, isKept] { showRescueState(isKept); }, Qt::QueuedConnection);
    };
    keeper_ = std::make_unique<rescue::RescueKeeper>(
        root, rescue::RescueEvents{.found = found, .kept = kept});
    fatalEnd_ = std::make_unique<rescue::FatalEnd>(*keeper_);
    unsaved_.keepWith(*keeper_);
}

void AppDelegate::takeRescued(std::vector<rescue::RescueFolder> found) {
    rescued_ = std::move(found);
    offerRescued();
}

/// One after the other, so that it is one line.
void AppDelegate::offerRescued() {
    rescueLine_->setVisible(!rescued_.empty());
    if (rescued_.empty()) {
        return;
    }
    const QString name = QFileInfo(pathOf(rescued_.front())).completeBaseName();
    const QLocale locale;
    const QDateTime written = timeOf(rescued_.front());
    rescueText_->setText(tr("Not saved last time: %1 (%2, %3)")
                             .arg(name, locale.toString(written.date(), QLocale::ShortFormat),
                                  written.toString("HH:mm")));
    announcer_->say(rescueText_->text());
}

rescue::RescueFolder AppDelegate::takeFirstRescued() {
    rescue::RescueFolder first = std::move(rescued_.front());
    rescued_.erase(rescued_.begin());
    return first;
}

/// As it was, however loud, or by Import where the output runs at another rate than it did then.
void AppDelegate::restoreRescued() {
    if (work_.isBusy() || rescued_.empty()) {
        return;
    }
    const QString path = pathOf(rescued_.front());
    const auto before = rescue::SoundIdentity::now();
    if (refusalReason(FileUrl(rescued_.front().copy())).kind == RefusalReason::Kind::Rate) {
        importFile(path);
    } else {
        openChosenFile(path, Level::Exact);
    }
    if (rescue::SoundIdentity::now() != before) {
        unsaved_.restored(takeFirstRescued());
        offerRescued();
    }
}

void AppDelegate::discardRescued() {
    if (!work_.isBusy() && !rescued_.empty()) {
        keeper_->discard(takeFirstRescued());
        offerRescued();
    }
}

void AppDelegate::showRescueState(bool isKept) {
    rescueNotice_ =
        isKept ? QString() : tr("No rescue copy of the sound can be kept: save it to be safe");
    showNotice();
}

} // namespace zemo
