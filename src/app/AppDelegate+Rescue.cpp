#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QPushButton>
#include <utility>

#include "app/AppDelegate.h"
#include "app/Languages.h"
#include "files/RefusalReason.h"
#include "interface/FileNames.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

QDateTime localTime(std::chrono::system_clock::time_point time) {
    return QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(time));
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
    restoreButton_->installEventFilter(this);
    discardButton_->installEventFilter(this);
}

void AppDelegate::keepRescueCopies(const std::filesystem::path& root,
                                   const rescue::RescueLimits& limits) {
    const auto later = [this](auto action) {
        QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
    };
    const auto found = [this, later](std::vector<rescue::FoundCopy> copies) {
        later([this, copies = std::move(copies)] {
            unsaved_.found(copies);
            offerRescued();
        });
    };
    const auto changed = [this, later](const rescue::KeeperState& state) {
        later([this, state] { showRescueState(state); });
    };
    const auto gone = [this, later](rescue::CopyNumber copy) {
        later([this, copy] {
            unsaved_.forget(copy);
            offerRescued();
        });
    };
    keeper_ = std::make_unique<rescue::RescueKeeper>(
        root, rescue::RescueEvents{.found = found, .changed = changed, .gone = gone}, limits);
    fatalEnd_ = std::make_unique<rescue::FatalEnd>(*keeper_);
    unsaved_.keepWith(*keeper_);
}

QString AppDelegate::titleOf(const std::string& soundName) {
    return QFileInfo(shownFileName(pathFromBytes(soundName))).completeBaseName();
}

// Offers ------------------------------------------------------------------------------------------

QString AppDelegate::offerText() const {
    const auto& lost = unsaved_.lost();
    const rescue::LostSound& first = lost.front();
    const QLocale locale;
    if (first.leftAt) {
        const QDateTime written = localTime(*first.leftAt);
        return tr("Not saved last time: %1 (%2, %3)")
            .arg(titleOf(first.name), locale.toString(written.date(), QLocale::ShortFormat),
                 written.toString("HH:mm"));
    }
    const auto count = static_cast<qlonglong>(lost.size());
    return count == 1
               ? tr("%1 was not saved").arg(titleOf(first.name))
               : tr("%1 was not saved (1 of %2)").arg(titleOf(first.name), locale.toString(count));
}

/// One after the other, so that it is one line.
void AppDelegate::offerRescued() {
    const bool isOffer = !unsaved_.lost().empty();
    const QString text = isOffer ? offerText() : QString();
    if (rescueText_->text() != text) {
        rescueText_->setText(text);
        if (isOffer) {
            announcer_->say(text);
        }
    }
    rescueLine_->setVisible(isOffer);
}

void AppDelegate::restoreRescued() {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn == nullptr || unsaved_.lost().empty() || !awaitRescueCopies() ||
        unsaved_.lost().empty()) {
        return;
    }
    const rescue::LostSound offer = unsaved_.lost().front();
    const rescue::RescueKeeper::Place place = keeper_->find(offer.copy);
    const auto before = rescue::SoundIdentity::now();
    unsaved_.willRestore();
    if (place.file) {
        readBack(*place.file);
    } else if (!place.sound.empty()) {
        putBack(place.sound);
    } else { // somebody has taken it away
        showResult(translated("The file cannot be read."));
    }
    if (rescue::SoundIdentity::now() != before) {
        unsaved_.restored(offer, soundBehindRevert());
        showName();
        offerRescued();
    } else {
        unsaved_.notRestored();
    }
}

/// What is not on the disk yet, or cannot be put there.
void AppDelegate::putBack(const HeldSound& sound) {
    {
        const SoundChange change(*this, SoundChange::Source::Revert);
        replaceBuffer(sound.block(), sound.count(), 0); // as what Revert brings back
    }
    messages_.drain(*this);
    describeTransformation(std::nullopt);
}

/// As it was, however loud, or by Import where the output runs at another rate than it did then.
void AppDelegate::readBack(const std::filesystem::path& file) {
    const QString path = pathFromBytes(file.native());
    if (refusalReason(FileUrl(file)).kind == RefusalReason::Kind::Rate) {
        readForeignFile(path);
    } else {
        readFile(path, Level::Exact);
    }
}

void AppDelegate::discardRescued() {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn != nullptr && !unsaved_.lost().empty()) {
        unsaved_.discard(unsaved_.lost().front().copy);
        offerRescued();
    }
}

bool AppDelegate::awaitRescueCopies() {
    if (keeper_ == nullptr || !keeper_->isBehind()) {
        return true;
    }
    work_.setDescription(tr("Writing rescue copies…"));
    const bool done = platform::runLongWork([this] { keeper_->awaitRoom(); });
    if (!done) {
        showResult(tr("Cancelled"));
    }
    return done;
}

void AppDelegate::showRescueState(const rescue::KeeperState& state) {
    QStringList notices;
    if (state.isFailing) {
        notices += tr("No rescue copy of the sound can be kept: save it to be safe");
    }
    if (!state.firstToGo.empty()) {
        notices += tr("The rescue copies take up too much disk space: the next one will remove the "
                      "oldest, %1 first. Restore and save what you still need.")
                       .arg(titleOf(state.firstToGo));
    }
    rescueNotice_ = notices.join("\n");
    showNotice();
    if (!state.firstToGo.empty()) {
        keeper_->allowRemoval();
    }
}

} // namespace zemo
