#include "Person.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <fstream>
#include <thread>
#include <utility>

#include "ForeignSounds.h"
#include "platform/LongWork.h"
#include "platform/Progress.h"
#include "playback/SharedState.h"

namespace zemo::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr qint64 kPatience = 60000;  ///< milliseconds
constexpr std::int64_t kFewest = 50; ///< samples of a sound that is still transformed
constexpr std::size_t kCafHeader = 68;

Fingerprint soundNow() {
    return fingerprintOf({fBuffer.load(), static_cast<std::size_t>(fBuffersize.load())});
}

/// Every piece of work is cancelled before it is done.
class UnwantedWork final : public platform::LongWork {
public:
    UnwantedWork() { platform::services().longWork = this; }
    UnwantedWork(const UnwantedWork&) = delete;
    UnwantedWork& operator=(const UnwantedWork&) = delete;
    ~UnwantedWork() override { platform::services().longWork = before_; }

    bool run(const Work& work, platform::Cancel cancel) override {
        platform::Progress progress;
        if (cancel == platform::Cancel::Allowed) {
            progress.requestStop();
        }
        const platform::ProgressScope scope(&progress);
        work();
        return cancel != platform::Cancel::Allowed;
    }
    void pause(std::chrono::microseconds /*duration*/) override {}

private:
    platform::LongWork* before_ = platform::services().longWork;
};

QString asQString(const fs::path& path) {
    return QString::fromStdString(path.string());
}

/// The samples with which a CAF file of ours begins.
std::vector<float> samplesIn(const fs::path& file, std::size_t count) {
    std::vector<float> samples(count);
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(kCafHeader);
    stream.read(reinterpret_cast<char*>(samples.data()),
                static_cast<std::streamsize>(count * sizeof(float)));
    return samples;
}

} // namespace

Person::Person(fs::path folder, std::uint32_t seed) : folder_(std::move(folder)), random_(seed) {
    platform::services().fileOperations = &operations_;
    platform::services().fileSystem = &fileSystem_;
    zemo_.delegate.window->setUpdatesEnabled(false); // nobody looks, and drawing takes its time
    const fs::path root = folder_ / "zemo" / "rescue";
    for (const KeptSound& kept : keptSounds(root)) {
        model_.found(kept.print, kept.name);
    }
    zemo_.delegate.keepRescueCopies(root);
    expect(waitUntil([this] {
               return zemo_.delegate.window->findChild<QWidget*>("rescueLine")->isVisible() !=
                      model_.left().empty();
           }),
           "what was left is not offered");
    check();
}

Account Person::account(bool isSettled) const {
    return {.isSettled = isSettled,
            .unsaved = model_.unsaved(),
            .dropped = model_.dropped(),
            .deeds = deeds_};
}

void Person::settle() {
    const fs::path root = folder_ / "zemo" / "rescue";
    std::string wrong;
    const bool isSettled = waitUntil([&] {
        wrong = wrongWith(account(true), keptSounds(root));
        return wrong.empty();
    });
    expect(isSettled, wrong);
}

void Person::doSomething() {
    static const std::vector<std::pair<std::string, Deed>> kDeeds{
        {"open", &Person::open},
        {"open", &Person::open},
        {"open what was saved", &Person::openSaved},
        {"open nothing", &Person::openNothing},
        {"open what is refused", &Person::openRefused},
        {"import", &Person::import},
        {"transform", &Person::transform},
        {"transform", &Person::transform},
        {"transform", &Person::transform},
        {"transform", &Person::transform},
        {"transform", &Person::transform},
        {"cancel", &Person::cancelWork},
        {"Revert", &Person::revert},
        {"Revert", &Person::revert},
        {"Revert", &Person::revert},
        {"save", &Person::save},
        {"save later", &Person::saveLater},
        {"export exactly", &Person::exportExactly},
        {"export rounded", &Person::exportRounded},
        {"restore", &Person::restore},
        {"restore", &Person::restore},
        {"discard", &Person::discard},
        {"discard", &Person::discard},
    };
    const auto& [name, deed] = kDeeds[below(static_cast<std::uint32_t>(kDeeds.size()))];
    deed_ = name;
    (this->*deed)();
    check();
}

// Opening -----------------------------------------------------------------------------------------

std::string Person::newName() {
    static const std::vector<std::string> kNames{"harp.f32", "bell", "bell.2.f32",
                                                 "Glöckchen~1.raw", "a[*]b c.f32"};
    return kNames[below(static_cast<std::uint32_t>(kNames.size()))];
}

/// Each in a folder of its own, so that names come again.
fs::path Person::newFile(const std::string& name) {
    const fs::path place = folder_ / "files" / std::to_string(random_()) / std::to_string(++files_);
    fs::create_directories(place);
    return place / name;
}

std::vector<float> Person::newSamples() {
    std::vector<float> samples(200 + below(2000));
    std::uniform_real_distribution<float> level(-0.9F, 0.9F);
    const float gain = oneIn(5) ? 1.5F : 1.0F; // which is scaled
    std::generate(samples.begin(), samples.end(), [&] { return gain * level(random_); });
    return samples;
}

void Person::open() {
    const fs::path file = newFile(newName());
    const std::vector<float> samples = newSamples();
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(samples.data()),
               static_cast<std::streamsize>(samples.size() * sizeof(float)));
    zemo_.delegate.openFileNamed(asQString(file));
    expect(fBuffersize.load() == static_cast<std::int64_t>(samples.size()), "it is not opened");
    model_.opened(soundNow(), file.filename());
    ++deeds_[deed_];
}

void Person::openSaved() {
    if (!saved_.empty()) {
        const fs::path& file = saved_[below(static_cast<std::uint32_t>(saved_.size()))];
        zemo_.delegate.openFileNamed(asQString(file));
        model_.opened(soundNow(), file.filename());
        ++deeds_[deed_];
    }
}

void Person::openNothing() {
    const fs::path file = newFile("nothing.f32");
    if (oneIn(2)) {
        std::ofstream(file) << "abc";
    }
    zemo_.delegate.openFileNamed(asQString(file));
    model_.opened(0, {});
    ++deeds_[deed_];
}

void Person::openRefused() {
    const fs::path file = newFile("refused.caf");
    std::ofstream(file) << "no sound";
    zemo_.delegate.openFileNamed(asQString(file));
    model_.scaled(soundNow());
    ++deeds_[deed_];
}

void Person::import() {
    const fs::path file = newFile("imported.wav");
    const Bytes bytes = wavOf(48000, wordsOf(newSamples()));
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    zemo_.delegate.importFile(asQString(file));
    model_.opened(soundNow(), file.filename());
    ++deeds_[deed_];
}

// Transformations ---------------------------------------------------------------------------------

void Person::chooseTransformation() {
    AppDelegate& zemo = zemo_.delegate;
    const auto number = [this](double low, double high) {
        return QString::number(low + (high - low) * (static_cast<double>(random_()) / 4294967296.0),
                               'f', 6);
    };
    if (oneIn(2)) {
        zemo.ResampleDialog(nullptr);
        zemo.resamplingTextField->setText(number(0.6, 1.3));
        zemo.resamplingOkButton->click();
    } else {
        zemo.AMDialog(nullptr);
        zemo.amFreqTextField->setText(number(20, 8000));
        zemo.amIndexTextField->setText(number(0, 3)); // which may make it loud
        zemo.amOkButton->click();
    }
}

void Person::transform() {
    if (fBuffersize.load() >= kFewest) {
        chooseTransformation();
        expect(label("resultValue") == "Done", "it is not transformed");
        model_.transformed(soundNow());
        ++deeds_[deed_];
    }
}

void Person::cancelWork() {
    const UnwantedWork cancelled;
    if (fBuffersize.load() >= kFewest) {
        oneIn(2) ? chooseTransformation()
                 : zemo_.delegate.importFile(asQString(newFile("none.wav")));
        ++deeds_[deed_];
    }
    if (fBuffersize.load() > 0 && oneIn(2)) {
        expect(!saveAs("cancelled.caf", [] {}), "a save that was cancelled says that it is done");
    }
}

void Person::revert() {
    zemo_.delegate.revertAction(nullptr);
    model_.reverted();
    ++deeds_[deed_];
}

// Saving ------------------------------------------------------------------------------------------

bool Person::saveAs(const std::string& name, const std::function<void()>& meanwhile) {
    const ModelSound asked = model_.sound();
    const auto count = static_cast<std::size_t>(fBuffersize.load());
    zemo_.delegate.SaveAsAudioDialog(nullptr);
    auto* const panel = zemo_.delegate.window->findChild<SavePanel*>();
    meanwhile();
    const fs::path file = newFile(name);
    panel->findChild<QLineEdit*>("fileNameEdit")->setText(asQString(file));
    panel->accept();
    const QString saved = QString("Saved as %1").arg(QString::fromStdString(name));
    const QString failed = QString("%1 was not saved").arg(QString::fromStdString(name));
    expect(
        waitUntil([&] { return label("resultValue") == saved || label("resultValue") == failed; }),
        "a save does not end");
    if (label("resultValue") != saved) {
        return false;
    }
    expect(fingerprintOf(samplesIn(file, count)) == asked.print, "another sound was saved");
    saved_.push_back(file);
    model_.saved(asked.id, name);
    return true;
}

void Person::save() {
    if (fBuffersize.load() > 0) {
        const std::string name = "saved-" + std::to_string(saved_.size()) + ".caf";
        expect(saveAs(name, [] {}), "it is not saved");
        ++deeds_[deed_];
    }
}

void Person::saveLater() {
    if (fBuffersize.load() > 0) {
        const std::string name = "later-" + std::to_string(saved_.size()) + ".caf";
        expect(saveAs(name, [this] { oneIn(2) ? open() : transform(); }), "it is not saved");
        ++deeds_[deed_];
    }
}

void Person::exportExactly() {
    if (fBuffersize.load() > 0) {
        zemo_.delegate.exportFile(asQString(newFile("exported.wav")));
        expect(label("resultValue").startsWith("Exported as"), "it is not exported");
        model_.saved(model_.sound().id, {});
        ++deeds_[deed_];
    }
}

void Person::exportRounded() {
    if (fBuffersize.load() > 0) {
        zemo_.delegate.exportFile(asQString(newFile("exported.flac")));
        expect(label("resultValue").startsWith("Exported as"), "it is not exported");
        ++deeds_[deed_];
    }
}

// Offers ------------------------------------------------------------------------------------------

/// The lost sound whose offer stands in the line; null where it is one that was left, or none.
const ModelSound* Person::offered() const {
    if (!model_.lost().empty()) {
        return &model_.lost().front();
    }
    return model_.left().empty() && !model_.displaced().empty() ? &model_.displaced().front()
                                                                : nullptr;
}

void Person::restore() {
    if (model_.offers() == 0) {
        return;
    }
    zemo_.delegate.window->findChild<QPushButton*>("restoreButton")->click();
    if (const ModelSound* const sound = offered()) {
        model_.restored(sound->id);
    } else {
        const auto& left = model_.left();
        const auto found = std::find_if(left.begin(), left.end(), [&](const ModelSound& one) {
            return one.print == soundNow();
        });
        expect(found != left.end(), "what is restored is none of those that were left");
        model_.restored(found != left.end() ? found->id : 0);
    }
    ++deeds_[deed_];
}

void Person::discard() {
    if (model_.offers() == 0) {
        return;
    }
    if (const ModelSound* const sound = offered()) {
        zemo_.delegate.window->findChild<QPushButton*>("discardButton")->click();
        model_.discarded(sound->id);
    } else {
        discardLeft();
    }
    ++deeds_[deed_];
}

/// Which of those that were left it was, only the disk can tell.
void Person::discardLeft() {
    const fs::path root = folder_ / "zemo" / "rescue";
    settle();
    const std::vector<KeptSound> before = keptSounds(root);
    zemo_.delegate.window->findChild<QPushButton*>("discardButton")->click();
    expect(waitUntil([&] { return keptSounds(root).size() < before.size(); }),
           "no copy was removed");
    for (const KeptSound& copy : before) {
        if (!fs::exists(copy.file)) {
            const auto& left = model_.left();
            const auto found = std::find_if(left.begin(), left.end(), [&](const ModelSound& sound) {
                return sound.print == copy.print && sound.name == copy.name;
            });
            expect(found != left.end(), "a copy was removed that was not offered");
            model_.discarded(found != left.end() ? found->id : 0);
        }
    }
}

// What is to be true ------------------------------------------------------------------------------

void Person::check() {
    QCoreApplication::processEvents();
    const ModelSound& sound = model_.sound();
    const undo_struct& undo = zemo_.delegate.ustruct;
    expect(soundNow() == sound.print, "it is another sound");
    expect(fingerprintOf({undo.buf.get(), static_cast<std::size_t>(undo.bufsize)}) ==
               model_.revert().print,
           "another sound is behind Revert");
    if (sound.id != 0) {
        const QString name = QString::fromStdString(sound.name);
        expect(label("soundName") == name,
               "the sound is called " + label("soundName").toStdString());
        expect(zemo_.delegate.window->windowTitle() ==
                   QString(name).replace("[*]", "[*][*]") + "[*] – ZEMO",
               "the window has another title");
    } else {
        expect(label("soundName").startsWith("No sound"), "no sound has a name");
    }
    expect(zemo_.delegate.window->isWindowModified() == sound.isUnsaved, "the mark is wrong");
    checkOffer();
}

void Person::checkOffer() {
    const bool isOffer = zemo_.delegate.window->findChild<QWidget*>("rescueLine")->isVisible();
    expect(isOffer == (model_.offers() > 0), "there is an offer, or none");
    const QString text = label("rescueText");
    const auto isOf = [&](const ModelSound& sound) {
        return text.startsWith("Not saved last time: " + titleOf(sound.name) + " (");
    };
    bool isRight = true;
    if (const ModelSound* const sound = offered()) {
        const QString more =
            model_.offers() > 1 ? QString(" (1 of %1)").arg(model_.offers()) : QString();
        isRight = text == titleOf(sound->name) + " was not saved" + more;
    } else if (const auto& left = model_.left(); !left.empty()) {
        isRight = std::any_of(left.begin(), left.end(), isOf);
    }
    expect(isRight, "the offer is of another sound: " + text.toStdString());
}

void Person::expect(bool isTrue, const std::string& what) {
    if (!isTrue && wrong_.empty()) {
        wrong_ = (deed_.empty() ? "at the start" : "after " + deed_) + ": " + what;
    }
}

bool Person::waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer since;
    since.start();
    while (!condition()) {
        if (since.hasExpired(kPatience)) {
            return false;
        }
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

QString Person::label(const char* name) const {
    return zemo_.delegate.window->findChild<QLabel*>(name)->text();
}

QString Person::titleOf(const std::string& name) const {
    return QFileInfo(QString::fromStdString(name)).completeBaseName();
}

} // namespace zemo::test
