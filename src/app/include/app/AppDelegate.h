#pragma once

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QSlider>
#include <QTimer>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/SheetSession.h"
#include "app/WorkInWindow.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/Revert.h"
#include "dsp/Transformation.h"
#include "files/AudioFileWriter.h"
#include "interface/Announcer.h"
#include "interface/BackgroundWindow.h"
#include "interface/ManualWindow.h"
#include "interface/SegmentedControl.h"
#include "interface/SheetPanel.h"
#include "interface/SoundView.h"
#include "interface/StateButton.h"
#include "interface/TitledButton.h"
#include "meter/levelOpenGLView.h"
#include "midi/MidiClient.h"
#include "overview/OverviewBuilder.h"
#include "playback/Delegate.h"
#include "playback/RenderMessageQueue.h"
#include "rescue/FatalEnd.h"
#include "rescue/RescueKeeper.h"
#include "rescue/UnsavedWork.h"

namespace zemo {

struct SheetKind;

/// The application's controller: it owns the window's outlets, starts the output at launch and
/// carries every action. Outlets are filled by name from the interface files. All of it is [main];
/// the render callback's messages come through a queue that the controller drains. While work is
/// under way (WorkInWindow's turns) nothing else is begun: no sheet, panel or message opens, no
/// handler does anything, and during a transformation no play starts.
class AppDelegate : public QObject, public RenderDelegate, public MidiDelegate {
    Q_OBJECT
public:
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    // Outlets ---------------------------------------------------------------------------------
    BackgroundWindow* window = nullptr;
    levelOpenGLView* levelView = nullptr;
    SoundView* soundView = nullptr;
    TitledButton* playButton = nullptr;
    StateButton* modeButton = nullptr;
    TitledButton* testButton = nullptr;
    QAction* OpenMenu = nullptr;
    QAction* SaveAsAudioMenu = nullptr;
    QAction* ResampleMenu = nullptr;
    QAction* AMMenu = nullptr;
    QAction* FMMenu = nullptr;
    QAction* HDMenu = nullptr;
    QAction* RevertMenu = nullptr;
    QAction* SpectrogramMenu = nullptr;

    // The sheets' outlets are null until a sheet is opened for the first time.
    SheetPanel* resamplePanel = nullptr;
    SheetPanel* amPanel = nullptr;
    SheetPanel* fmPanel = nullptr;
    SheetPanel* hdPanel = nullptr;
    QLineEdit* resamplingTextField = nullptr;
    QPushButton* resamplingOkButton = nullptr;
    QPushButton* resamplingCancelButton = nullptr;
    QLineEdit* amFreqTextField = nullptr;
    QLineEdit* amIndexTextField = nullptr;
    QPushButton* amOkButton = nullptr;
    QPushButton* amCancelButton = nullptr;
    SegmentedControl* amSegment = nullptr;
    QLineEdit* fmFreqTextField = nullptr;
    QLineEdit* fmLpfTextField = nullptr;
    QLineEdit* fmIndexTextField = nullptr;
    QPushButton* fmOkButton = nullptr;
    QPushButton* fmCancelButton = nullptr;
    SegmentedControl* hdSegment = nullptr;
    SegmentedControl* hdHpSegment = nullptr;
    QSlider* hdMixSlider = nullptr;
    QLineEdit* hdHpfSlopeTextField = nullptr;
    QLineEdit* hdHpfAttackTextField = nullptr;
    QLineEdit* hdCompTextField = nullptr;
    QLineEdit* hdKneeTextField = nullptr;
    QPushButton* hdOkButton = nullptr;
    QCheckBox* hdScaleCheckBox = nullptr;
    QPushButton* hdCancelButton = nullptr;

    // Variables -------------------------------------------------------------------------------
    std::string string;   ///< status of the last raw data file
    bool swapRaw = false; ///< "Swap Bytes" when the open panel closed
    float maxval = 0.0F;  ///< the peak that normalize found
    bool norm = false;    ///< "Normalize" when the open panel closed
    undo_struct ustruct;

    // Launch ----------------------------------------------------------------------------------
    /// Makes the main window and fills its outlets. False when the interface file is broken.
    bool loadMainWindow();
    /// Styles the window, opens the output, sets all state to its start. Ends the process when the
    /// output cannot be had.
    void applicationDidFinishLaunching();
    /// From now on copies of unsaved sounds are kept under `root`. Those that cannot be reached any
    /// more, and those that are found there, are offered in one line of the window. Without this
    /// nothing is kept.
    void keepRescueCopies(const std::filesystem::path& root,
                          const rescue::RescueLimits& limits = {});
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    /// Closes the window, whatever would be lost with it.
    void closeWithoutAsking();
    /// Fades a play out and lets the device come to its end, for 300 ms at most. The window is
    /// closed by then.
    void applicationWillTerminate();

    // Actions ---------------------------------------------------------------------------------
    /// Plays the sound or asks for its stop; the title of `sender`, if there is one, follows.
    void playButtonPressed(TitledButton* sender);
    void modeButtonPressed(StateButton* sender);
    /// Shows a random level, or with Alt none. Nothing during a play.
    void testButtonPressed(TitledButton* sender);
    /// What Alt and the test button do, where the window manager takes Alt and a click for itself.
    void clearMeterAction(QObject* sender);
    /// Makes the MIDI client and its connections anew, and says how many sources there are.
    void lookForMidiAction(QObject* sender);
    void OpenDialog(QObject* sender);
    void classicOpenDialog(QObject* sender);
    /// Saves the sound as it is now, whatever becomes of it while the panel is open.
    void SaveAsAudioDialog(QObject* sender);
    void ImportDialog(QObject* sender);
    void ExportDialog(QObject* sender);
    void ResampleDialog(QObject* sender);
    void resamplingOkButtonPressed(QObject* sender);
    void resamplingCancelButtonPressed(QObject* sender);
    void AMDialog(QObject* sender);
    void amOkButtonPressed(QObject* sender);
    void amCancelButtonPressed(QObject* sender);
    void FMDialog(QObject* sender);
    void fmOkButtonPressed(QObject* sender);
    void fmCancelButtonPressed(QObject* sender);
    void HDDialog(QObject* sender);
    void hdOkButtonPressed(QObject* sender);
    void hdCancelButtonPressed(QObject* sender);
    /// Exchanges the sound and the copy that the last transformation kept, if there is one.
    void revertAction(QObject* sender);
    void aboutDialog(QObject* sender);
    void showManual();

    // Ends of sheets, in the older way of presenting them. The arguments are ignored.
    void resampleSheetDidEnd(QDialog* sheet, int returnCode, void* contextInfo);
    void amSheetDidEnd(QDialog* sheet, int returnCode, void* contextInfo);
    void fmSheetDidEnd(QDialog* sheet, int returnCode, void* contextInfo);
    void hdSheetDidEnd(QDialog* sheet, int returnCode, void* contextInfo);

    // The outlets of each sheet, filled when its panel was made. False when one is missing.
    bool fillResampleOutlets();
    bool fillAmOutlets();
    bool fillFmOutlets();
    bool fillHdOutlets();

    // Messages --------------------------------------------------------------------------------
    void setPlayTitle();
    void resetPlayTitle() override;
    void updateValue(float ignored) override;
    void updateTestValue(float ignored);
    void resetMeter() override;
    /// Clears the drawing context that is current. Nothing sends it.
    void clearTheView();
    void traceIdleCycle(std::int32_t left) override;
    void traceMissingBuffer() override;

    // From the MIDI thread: all reach the widgets on this one, in their order. [midi]
    void playButtonPressedByMidi() override;
    void setPlayTitleByMidi() override;
    void midiNoticeChanged() override;

    /// Opens a file as the open panel does with both its boxes unchecked.
    void openFileNamed(const QString& path);
    /// Takes in a file that was dropped, or given when the program was started: by Open, by Import
    /// or, once the user agrees, as raw data.
    void openAnyFile(const QString& path);
    /// The same for the file that the program is started with. Notes wait until it is open.
    void openAtLaunch(const QString& path);
    void importFile(const QString& path);
    void exportFile(const QString& path);

    /// Makes the sound that is offered the sound; its copy stays until it is saved.
    void restoreRescued();
    /// Removes the copy of the sound that is offered.
    void discardRescued();

    /// Closing may have to wait, or to be asked about; a second click on an offer's button is none
    /// on the next one's.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    template <typename Outlet> bool fill(QWidget* owner, Outlet*& outlet, const char* name) {
        outlet = owner->findChild<Outlet*>(name);
        return outlet != nullptr;
    }
    void connectActions();
    std::uint32_t stateAtThisPress();
    void takeNote();
    void takeNoteTitle();
    enum class TestLevel { Random, None };
    void test(TestLevel kind);
    void startPlay(TitledButton* sender);
    void askForStop(TitledButton* sender);
    /// True while the output has anything to be attended to.
    Q_INVOKABLE bool attendPlayback();
    bool ignoresPress() const;
    void onceClosed(std::function<void()> action);
    enum class Level { Scaled, Exact };
    void openChosenFile(const QString& path);
    void readFile(const QString& path, Level level);
    void openChosenRawFile(const QString& path);
    bool loadSheet(const SheetKind& kind);
    void openSheet(const SheetKind& kind);
    void closeSheet(const SheetKind& kind);
    void cancelSheet(const SheetKind& kind);
    /// Does what a sheet's OK stands for, in a turn that lasts until the sheet has ended.
    void confirmSheet(const std::function<void()>& action);
    void sheetHasEnded(const SheetKind& kind);
    void localizeFields(SheetPanel* panel);
    /// Keeps the copy for Revert and transforms the sound, unless there is a `refusal` already. A
    /// play under way falls idle first.
    void transform(const Refusal& refusal, const std::function<Refusal()>& transformation);
    void resample();
    void modulateAmplitude(int segment);
    void modulatePhase();
    HdSettings readHdFields();
    bool showHdRanges();
    /// Asks where to save a sound. `whenSaved` is called once that is done, if it is.
    void openSavePanel(const HeldSound& sound, const std::string& name,
                       const std::function<void()>& whenSaved);
    bool saveHeld(const QString& path, const HeldSound& sound);
    void readForeignFile(const QString& path);
    void describeSound(const QString& path, const std::string& status, bool isRefused);
    void describeLength();
    void describeFailure(const platform::Error& error);
    bool isImportable(const QString& path);
    void offerRawData(const QString& path);
    void describeTransformation(const Refusal& refusal);

    // The pictures of the sound. Whatever may change or free the sound does it within a
    // SoundChange, in which nothing else reads the sound. It ends with the sound known by its name,
    // as unsaved or not, and with an offer of what cannot be reached any more.
    class SoundChange {
    public:
        enum class Source { File, Scaling, Work, Revert };
        /// `path` is the file's, where one is opened.
        SoundChange(AppDelegate& delegate, Source source, const QString& path = {});
        SoundChange(const SoundChange&) = delete;
        SoundChange& operator=(const SoundChange&) = delete;
        ~SoundChange();
        /// The file was read, or refused. The sound that is there now may be scaled next.
        void scalingFollows();

    private:
        void tell();

        AppDelegate& delegate_;
        rescue::SoundIdentity before_ = rescue::SoundIdentity::now();
        Source source_;
        std::string name_;
        HeldSound unscaled_; ///< so that unsaved work is scaled in another block
    };
    bool fillViews();
    void connectViews();
    /// When it returns, nothing reads the sound any more for its pictures.
    void soundWillChange();
    /// Has the pictures of the sound as it is now made.
    void soundDidChange();
    void takeOverviewLater(const overview::Overview& made); ///< [worker]
    void takeOverview(const overview::Overview& made);
    void showPlayhead();
    void showResult(const QString& text); ///< and no reason
    void clearTransformationsResult();
    /// Says why a file was refused and what to do about it; with an empty text nothing.
    void showReason(const QString& text);
    /// Has what the window says now (result, reason, notice) spoken, once the event is over.
    void announceLater();
    void announce();
    void explainRefusal(const QString& path, const std::string& file);

    // Rescue copies.
    bool fillRescueLine();
    void connectRescueLine();
    void offerRescued();
    QString offerText() const;
    static QString titleOf(const std::string& soundName); ///< as the offers have it
    void putBack(const HeldSound& sound);
    void readBack(const std::filesystem::path& file);
    void showRescueState(const rescue::KeeperState& state);
    rescue::SoundIdentity soundBehindRevert() const { return rescue::SoundIdentity(ustruct.buf); }
    /// Whether the sound may be replaced now: not while lost ones take up too much memory. False:
    /// the user would not wait for that.
    bool awaitRescueCopies();
    /// The sound's name above it and in the window's title, which marks unsaved changes.
    void showName();

    // Closing.
    bool mayClose();
    void closeOnceKept();
    void askBeforeClosing(const rescue::UnsavedWork::Unkept& unkept);

    void styleWindow();
    void showRate();
    void showNotice();

    QLabel* soundName_ = nullptr;
    QLabel* lengthValue_ = nullptr;
    QLabel* samplesValue_ = nullptr;
    QLabel* rateValue_ = nullptr;
    QLabel* resultValue_ = nullptr;
    QLabel* notice_ = nullptr;
    QLabel* peakValue_ = nullptr;
    QLabel* reasonValue_ = nullptr;
    QWidget* rescueLine_ = nullptr;
    QLabel* rescueText_ = nullptr;
    QPushButton* restoreButton_ = nullptr;
    QPushButton* discardButton_ = nullptr;
    QString rescueNotice_; ///< empty: nothing is wrong
    bool isClosing_ = false;
    bool closesWithoutAsking_ = false;
    Announcer* announcer_ = nullptr;
    bool willAnnounce_ = false;
    bool isNoteTitleDue_ = false; ///< between a note's press and its title
    bool isOpeningAtLaunch_ = false;
    int waitingNotes_ = 0; ///< until that is done
    bool isResultOfTransformation_ = false;
    SheetSession sheets_;
    WorkInWindow work_;
    WorkInWindow::Turn confirmedTurn_; ///< in the older way: from OK to the sheet's end
    RenderMessageQueue messages_;
    std::unique_ptr<ManualWindow> manual_; ///< from when it was first asked for
    QTimer attendant_;                     ///< runs while the output has anything to be attended to
    QElapsedTimer playheadMoved_;
    std::uint64_t wantedBuild_ = 0; ///< of the pictures; 0: none
    overview::OverviewBuilder builder_{
        [this](const overview::Overview& made) { takeOverviewLater(made); }};
    rescue::UnsavedWork unsaved_;
    std::unique_ptr<rescue::RescueKeeper> keeper_;
    std::unique_ptr<rescue::FatalEnd> fatalEnd_;
};

} // namespace zemo
