#include <optional>
#include <utility>

#include "app/AppDelegate.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "playback/SharedState.h"

namespace zemo {

void AppDelegate::playButtonPressedByMidi() {
    QMetaObject::invokeMethod(this, &AppDelegate::takeNote, Qt::QueuedConnection);
}

void AppDelegate::setPlayTitleByMidi() {
    QMetaObject::invokeMethod(this, &AppDelegate::takeNoteTitle, Qt::QueuedConnection);
}

/// No message is taken before the note's title is set: the end of the fade that the note asks for
/// comes behind that, however soon it is.
void AppDelegate::takeNote() {
    if (isOpeningAtLaunch_) {
        ++waitingNotes_;
        return;
    }
    if (ignoresPress()) {
        return; // and so no title that promises a play
    }
    isNoteTitleDue_ = true;
    playButtonPressed(nullptr);
}

/// Not of a note that waits, or has waited, or was ignored.
void AppDelegate::takeNoteTitle() {
    if (std::exchange(isNoteTitleDue_, false)) {
        setPlayTitle();
        attendPlayback();
    }
}

/// Who plays a note as the window appears means the sound that it appears with.
void AppDelegate::openAtLaunch(const QString& path) {
    isOpeningAtLaunch_ = true;
    openAnyFile(path);
    isOpeningAtLaunch_ = false;
    for (; waitingNotes_ > 0; --waitingNotes_) {
        takeNote();
        takeNoteTitle();
    }
}

void AppDelegate::midiNoticeChanged() {
    QMetaObject::invokeMethod(
        this, [this] { showNotice(); }, Qt::QueuedConnection);
}

/// As long work: a server may take its time to answer. JACK's library takes no client of a new
/// server while it has one of a server that has died, and the output may have that.
void AppDelegate::lookForMidiAction(QObject* /*sender*/) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayBegin);
    if (turn == nullptr) {
        return;
    }
    work_.setDescription(tr("Looking for MIDI…"));
    bufferPlayer.outputUnit->disconnect();
    std::optional<long> sources;
    platform::unlessOutOfMemory(
        [&] {
            platform::runLongWork([&] { sources = recreateMIDI(&bufferPlayer); },
                                  platform::Cancel::NotAllowed);
        },
        [] {});
    showResult(sources ? tr("MIDI sources: %1").arg(*sources) : tr("MIDI cannot be used"));
    showNotice();
}

} // namespace zemo
