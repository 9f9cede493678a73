#pragma once

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <algorithm>
#include <string>
#include <vector>

#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "support/RescueCopies.h"
#include "support/WindowUnderTest.h"

namespace zemo::test {

struct RealDisk {
    platform::PosixFileOperations operations;
    platform::PosixFileSystem fileSystem;
};

/// A raw file of `count` samples of that value.
inline QString rawFile(const QTemporaryDir& folder, const QString& name, float sample,
                       int count = 1000) {
    const std::vector<float> samples(static_cast<std::size_t>(count), sample);
    QFile file(folder.filePath(name));
    if (!file.open(QFile::WriteOnly)) {
        qFatal("cannot write");
    }
    file.write(reinterpret_cast<const char*>(samples.data()), qint64{4} * count);
    return file.fileName();
}

/// The window with its rescue line, over the real disk. That goes last: copies may be written to
/// the end.
struct RescuedWindow : RealDisk, WindowUnderTest {
    explicit RescuedWindow(const QTemporaryDir& state, double rate = 48000.0,
                           const rescue::RescueLimits& limits = {})
        : WindowUnderTest(rate), state_(state) {
        platform::services().fileOperations = &operations;
        platform::services().fileSystem = &fileSystem;
        delegate.keepRescueCopies(state.filePath("zemo/rescue").toStdString(), limits);
    }

    /// Made beside the rescue folder.
    void openRaw(const char* name, float value) {
        delegate.openFileNamed(rawFile(state_, name, value));
    }
    void rewriteRaw(const char* name, float value) {
        openRaw(name, value);
        resample();
    }

    template <typename Widget> Widget* find(const char* name) {
        return delegate.window->findChild<Widget*>(name);
    }
    bool isOffered() { return find<QWidget>("rescueLine")->isVisible(); }
    QString offer() { return find<QLabel>("rescueText")->text(); }
    QString notice() { return find<QLabel>("notice")->text(); }
    QString result() { return find<QLabel>("resultValue")->text(); }
    QString headline() { return find<QLabel>("soundName")->text(); }
    QString title() { return delegate.window->windowTitle(); }
    bool isModified() { return delegate.window->isWindowModified(); }
    void restore() { find<QPushButton>("restoreButton")->click(); }
    void discard() { find<QPushButton>("discardButton")->click(); }
    void resample(const QString& ratio = "1.5") {
        delegate.ResampleDialog(nullptr);
        delegate.resamplingTextField->setText(ratio);
        delegate.resamplingOkButton->click();
    }
    void revert() { delegate.revertAction(nullptr); }
    SavePanel* savePanel() { return delegate.window->findChild<SavePanel*>(); }
    /// The question that is asked; null when none is.
    QMessageBox* question() {
        const auto boxes = delegate.window->findChildren<QMessageBox*>();
        const auto shown = std::find_if(boxes.begin(), boxes.end(),
                                        [](const QMessageBox* box) { return box->isVisible(); });
        return shown == boxes.end() ? nullptr : *shown;
    }
    /// The names of the question's buttons.
    QStringList choices() {
        QStringList texts;
        for (const QAbstractButton* const button : question()->buttons()) {
            texts += QString(button->text()).remove('&');
        }
        texts.sort();
        return texts;
    }
    void choose(const QString& text) {
        for (QAbstractButton* const button : question()->buttons()) {
            if (QString(button->text()).remove('&') == text) {
                return button->click();
            }
        }
        qFatal("there is no such button");
    }
    static std::vector<float> sound() {
        return {fBuffer.load(), fBuffer.load() + fBuffersize.load()};
    }

private:
    const QTemporaryDir& state_;
};

/// The copies under a folder, which is what a kill leaves, each with its samples.
inline std::vector<std::vector<float>> soundsInCopies(const QTemporaryDir& state) {
    constexpr qint64 kHeader = 68; // of our CAF: file, description and data chunk
    std::vector<std::vector<float>> sounds;
    for (const auto& path : rescueCopies(state.path().toStdString())) {
        QFile file(QString::fromStdString(path));
        if (file.open(QFile::ReadOnly) && file.seek(kHeader)) {
            const QByteArray bytes = file.readAll();
            std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
            std::copy_n(bytes.data(), samples.size() * sizeof(float),
                        reinterpret_cast<char*>(samples.data()));
            sounds.push_back(std::move(samples));
        }
    }
    return sounds;
}

inline bool hasCopyOf(const QTemporaryDir& state, const std::vector<float>& sound) {
    const auto sounds = soundsInCopies(state);
    return std::find(sounds.begin(), sounds.end(), sound) != sounds.end();
}

} // namespace zemo::test
