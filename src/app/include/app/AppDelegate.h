#pragma once

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QSlider>
#include <QTimer>
#include <cstdint>
#include <string>

#include "dsp/Revert.h"
#include "files/AudioFileWriter.h"
#include "interface/BackgroundWindow.h"
#include "interface/StateButton.h"
#include "interface/TitledButton.h"
#include "meter/levelOpenGLView.h"
#include "playback/Delegate.h"
#include "playback/RenderMessageQueue.h"

namespace zemo {

/// The application's controller: it owns the window's outlets, starts the output at launch and
/// carries every action. Outlets are filled by name from the interface files. All of it is [main];
/// the render callback's messages come through a queue that the controller drains.
class AppDelegate : public QObject, public RenderDelegate {
    Q_OBJECT
public:
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    // Outlets ---------------------------------------------------------------------------------
    BackgroundWindow* window = nullptr;
    levelOpenGLView* levelView = nullptr;
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

    // The sheets' outlets are null until a sheet is opened for the first time.
    QDialog* resamplePanel = nullptr;
    QDialog* amPanel = nullptr;
    QDialog* fmPanel = nullptr;
    QDialog* hdPanel = nullptr;
    QLineEdit* resamplingTextField = nullptr;
    QPushButton* resamplingOkButton = nullptr;
    QPushButton* resamplingCancelButton = nullptr;
    QLineEdit* amFreqTextField = nullptr;
    QLineEdit* amIndexTextField = nullptr;
    QPushButton* amOkButton = nullptr;
    QPushButton* amCancelButton = nullptr;
    QWidget* amSegment = nullptr;
    QLineEdit* fmFreqTextField = nullptr;
    QLineEdit* fmLpfTextField = nullptr;
    QLineEdit* fmIndexTextField = nullptr;
    QPushButton* fmOkButton = nullptr;
    QPushButton* fmCancelButton = nullptr;
    QWidget* hdSegment = nullptr;
    QWidget* hdHpSegment = nullptr;
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
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }

    // Actions ---------------------------------------------------------------------------------
    /// Plays the sound or asks for its stop; the title of `sender`, if there is one, follows.
    void playButtonPressed(TitledButton* sender);
    void modeButtonPressed(StateButton* sender);
    void testButtonPressed(TitledButton* sender);
    void OpenDialog(QObject* sender);
    void classicOpenDialog(QObject* sender);
    /// Saves the sound as it is now, whatever becomes of it while the panel is open.
    void SaveAsAudioDialog(QObject* sender);
    void aboutDialog(QObject* sender);

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

    /// Opens a file as the open panel does with both its boxes unchecked.
    void openFileNamed(const QString& path);

private:
    template <typename Outlet> bool fill(Outlet*& outlet, const char* name);
    void connectActions();
    void startPlay(TitledButton* sender);
    void askForStop(TitledButton* sender);
    Q_INVOKABLE void attendPlayback();
    void openChosenFile(const QString& path);
    void openChosenRawFile(const QString& path);
    void saveCopy(const QString& path, SoundCopy& copy);
    void describeSound(const QString& path, const std::string& status);
    void showRate();
    void showNotice();

    QLabel* soundName_ = nullptr;
    QLabel* lengthValue_ = nullptr;
    QLabel* samplesValue_ = nullptr;
    QLabel* rateValue_ = nullptr;
    QLabel* resultValue_ = nullptr;
    QLabel* notice_ = nullptr;
    RenderMessageQueue messages_;
    QTimer attendant_; ///< runs while the output has anything to be attended to
};

} // namespace zemo
