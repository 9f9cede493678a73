#include <algorithm>

#include "app/AppDelegate.h"
#include "dsp/AmplitudeModulation.h"
#include "dsp/HarmonicProcessor.h"
#include "dsp/PhaseModulation.h"
#include "dsp/Resampler.h"
#include "dsp/SingleSideband.h"
#include "interface/FieldValue.h"
#include "interface/InterfaceLoader.h"
#include "platform/Format.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"

namespace zemo {

/// What tells one sheet from another in the life that they share.
struct SheetKind {
    const char* panelName; ///< of the interface file and of the outlet
    SheetPanel* AppDelegate::*panel;
    QPushButton* AppDelegate::*okButton;
    QPushButton* AppDelegate::*cancelButton;
    bool (AppDelegate::*fillOutlets)();
    void (AppDelegate::*okPressed)(QObject*);
    void (AppDelegate::*cancelPressed)(QObject*);
    void (AppDelegate::*didEnd)(QDialog*, int, void*);
    const char* postTrace;   ///< logged before the sheet opens, in the newer way only; or null
    const char* closedTrace; ///< printed when the sheet ends with closedCode, in the newer way
    int closedCode;          ///< 1 never comes: the buttons end a sheet with 0. So it stays.
    const char* cancelTrace;
};

namespace {

using platform::format;

/// The first minor version that has the newer way.
constexpr std::int32_t kWindowSheets = 9;

platform::TraceLog& trace() {
    return *platform::services().trace;
}

bool isLegacy() {
    return versionMinor < kWindowSheets;
}

/// A field's value held to its range; where it was outside, the bound is shown in the field. NaN
/// takes the lower bound.
template <typename Number>
Number clampInField(QLineEdit* field, Number value, Number low, Number high) {
    const Number used = !(value >= low) ? low : std::min(value, high);
    if (!(used == value)) {
        field->setText(QString::number(static_cast<double>(used)));
    }
    return used;
}

} // namespace

static const SheetKind kResampleSheet{"resamplePanel",
                                      &AppDelegate::resamplePanel,
                                      &AppDelegate::resamplingOkButton,
                                      &AppDelegate::resamplingCancelButton,
                                      &AppDelegate::fillResampleOutlets,
                                      &AppDelegate::resamplingOkButtonPressed,
                                      &AppDelegate::resamplingCancelButtonPressed,
                                      &AppDelegate::resampleSheetDidEnd,
                                      "resamplePanel to be posted:\n",
                                      "ResampleDialogClosed\n",
                                      0,
                                      "Resampling Cancel Button pressed\n"};
static const SheetKind kAmSheet{"amPanel",
                                &AppDelegate::amPanel,
                                &AppDelegate::amOkButton,
                                &AppDelegate::amCancelButton,
                                &AppDelegate::fillAmOutlets,
                                &AppDelegate::amOkButtonPressed,
                                &AppDelegate::amCancelButtonPressed,
                                &AppDelegate::amSheetDidEnd,
                                nullptr,
                                "AMDialogClosed\n",
                                0,
                                "AM Cancel Button pressed\n"};
static const SheetKind kFmSheet{"fmPanel",
                                &AppDelegate::fmPanel,
                                &AppDelegate::fmOkButton,
                                &AppDelegate::fmCancelButton,
                                &AppDelegate::fillFmOutlets,
                                &AppDelegate::fmOkButtonPressed,
                                &AppDelegate::fmCancelButtonPressed,
                                &AppDelegate::fmSheetDidEnd,
                                nullptr,
                                "FMDialogClosed\n",
                                1,
                                "FM Cancel Button pressed\n"};
static const SheetKind kHdSheet{"hdPanel",
                                &AppDelegate::hdPanel,
                                &AppDelegate::hdOkButton,
                                &AppDelegate::hdCancelButton,
                                &AppDelegate::fillHdOutlets,
                                &AppDelegate::hdOkButtonPressed,
                                &AppDelegate::hdCancelButtonPressed,
                                &AppDelegate::hdSheetDidEnd,
                                nullptr,
                                "HDDialogClosed\n",
                                1,
                                "HD Cancel Button pressed\n"};

// The life that all sheets share --------------------------------------------------------------

bool AppDelegate::loadSheet(const SheetKind& kind) {
    if (this->*kind.panel != nullptr) {
        return true;
    }
    InterfaceLoader loader;
    this->*kind.panel = qobject_cast<SheetPanel*>(loader.loadInterface(kind.panelName, window));
    if (this->*kind.panel == nullptr || !(this->*kind.fillOutlets)()) {
        return false;
    }
    (this->*kind.panel)->setCancelButton(this->*kind.cancelButton);
    connect(this->*kind.okButton, &QPushButton::clicked, this,
            [this, &kind] { (this->*kind.okPressed)(this->*kind.okButton); });
    connect(this->*kind.cancelButton, &QPushButton::clicked, this,
            [this, &kind] { (this->*kind.cancelPressed)(this->*kind.cancelButton); });
    return true;
}

void AppDelegate::openSheet(const SheetKind& kind) {
    if (fBuffersize.load() == 0 || !loadSheet(kind)) {
        return;
    }
    SheetPanel* const panel = this->*kind.panel;
    if (isLegacy()) {
        sheets_.beginForApplication(
            panel, [this, panel, &kind] { (this->*kind.didEnd)(panel, 0, nullptr); });
        return;
    }
    if (kind.postTrace != nullptr) {
        trace().log(kind.postTrace);
    }
    sheets_.beginForWindow(panel, [&kind](int returnCode) {
        if (returnCode == kind.closedCode) {
            trace().print(kind.closedTrace);
        }
    });
}

void AppDelegate::closeSheet(const SheetKind& kind) {
    SheetPanel* const panel = this->*kind.panel;
    panel->hide();
    if (isLegacy()) {
        sheets_.endForApplication(panel);
    } else {
        sheets_.endForWindow(panel, 0);
    }
}

void AppDelegate::cancelSheet(const SheetKind& kind) {
    if (isLegacy()) {
        closeSheet(kind);
        trace().log(kind.cancelTrace);
    } else {
        trace().log(std::string(">") + kind.cancelTrace);
        closeSheet(kind);
    }
}

void AppDelegate::transform(const Refusal& refusal,
                            const std::function<Refusal()>& transformation) {
    if (work_.isBusy()) {
        return;
    }
    Refusal reason = refusal;
    if (!reason && !awaitRescueCopies()) {
        return;
    }
    if (!reason) {
        fallIdle();
        work_.setDescription(tr("Transforming the sound…"));
        const SoundChange change(*this, SoundChange::Source::Work);
        reason = transformation();
    }
    messages_.drain(*this);
    describeTransformation(reason);
}

// Resample ------------------------------------------------------------------------------------

bool AppDelegate::fillResampleOutlets() {
    return fill(resamplePanel, resamplingTextField, "resamplingTextField") &&
           fill(resamplePanel, resamplingOkButton, "resamplingOkButton") &&
           fill(resamplePanel, resamplingCancelButton, "resamplingCancelButton");
}

void AppDelegate::ResampleDialog(QObject* /*sender*/) {
    openSheet(kResampleSheet);
}

void AppDelegate::resample() {
    transform(resampleRefusal(rvalue), [this] { return resampleBuffer(rvalue, &ustruct); });
}

void AppDelegate::resamplingOkButtonPressed(QObject* /*sender*/) {
    rvalue = floatValue(resamplingTextField->text());
    trace().log(format("Resampling Value = @%f", static_cast<double>(rvalue)));
    doResampling = true;
    closeSheet(kResampleSheet);
    if (!isLegacy()) {
        resample();
    }
}

void AppDelegate::resamplingCancelButtonPressed(QObject* /*sender*/) {
    doResampling = false;
    cancelSheet(kResampleSheet);
}

void AppDelegate::resampleSheetDidEnd(QDialog* /*sheet*/, int /*returnCode*/,
                                      void* /*contextInfo*/) {
    trace().log(format("Resampling Value = @%f", static_cast<double>(rvalue)));
    if (doResampling) {
        resample();
    }
    trace().log("sheet did close");
    doResampling = false;
}

// AM and single sideband ------------------------------------------------------------------------

bool AppDelegate::fillAmOutlets() {
    return fill(amPanel, amFreqTextField, "amFreqTextField") &&
           fill(amPanel, amIndexTextField, "amIndexTextField") &&
           fill(amPanel, amSegment, "amSegment") && fill(amPanel, amOkButton, "amOkButton") &&
           fill(amPanel, amCancelButton, "amCancelButton");
}

void AppDelegate::AMDialog(QObject* /*sender*/) {
    openSheet(kAmSheet);
}

void AppDelegate::modulateAmplitude(int segment) {
    transform(std::nullopt, [this, segment]() -> Refusal {
        switch (segment) {
        case 0:
            return amBuffer(amcfvalue, amindexvalue, &ustruct);
        case 1:
            return ssbmBuffer(false, amcfvalue, amindexvalue, &ustruct);
        case 2:
            return ssbmBuffer(true, amcfvalue, amindexvalue, &ustruct);
        default: // nothing is modulated, but the copy is taken: the very sound, by the same name
            make_revert(ustruct, heldSound(), fBuffersize.load());
            return std::nullopt;
        }
    });
}

void AppDelegate::amOkButtonPressed(QObject* /*sender*/) {
    amcfvalue = floatValue(amFreqTextField->text());
    amindexvalue = floatValue(amIndexTextField->text());
    doAM = amcfvalue > 0.0F && amindexvalue >= 0.0F;
    // The sheet is ended here once already, in the older way, and below a second time.
    amPanel->hide();
    sheets_.endForApplication(amPanel);
    if (!isLegacy()) {
        const int segment = amSegment->selectedSegment();
        if (doAM) {
            modulateAmplitude(segment);
        }
    }
    closeSheet(kAmSheet);
}

void AppDelegate::amCancelButtonPressed(QObject* /*sender*/) {
    cancelSheet(kAmSheet);
}

void AppDelegate::amSheetDidEnd(QDialog* /*sheet*/, int /*returnCode*/, void* /*contextInfo*/) {
    const int segment = amSegment->selectedSegment();
    if (doAM) {
        modulateAmplitude(segment);
    }
    trace().log("AM Sheet did end");
    doAM = false;
}

// FM ------------------------------------------------------------------------------------------

bool AppDelegate::fillFmOutlets() {
    return fill(fmPanel, fmFreqTextField, "fmFreqTextField") &&
           fill(fmPanel, fmIndexTextField, "fmIndexTextField") &&
           fill(fmPanel, fmLpfTextField, "fmLpfTextField") &&
           fill(fmPanel, fmOkButton, "fmOkButton") &&
           fill(fmPanel, fmCancelButton, "fmCancelButton");
}

void AppDelegate::FMDialog(QObject* /*sender*/) {
    openSheet(kFmSheet);
}

void AppDelegate::modulatePhase() {
    const float lpf = clampInField(fmLpfTextField, floatValue(fmLpfTextField->text()),
                                   dsp::kSlowestEnvelope, dsp::kFastestEnvelope);
    if (doFM) {
        transform(pmRefusal(lpf),
                  [this, lpf] { return pmBuffer(fmcfvalue, fmindexvalue, lpf, &ustruct); });
    }
}

void AppDelegate::fmOkButtonPressed(QObject* /*sender*/) {
    fmcfvalue = floatValue(fmFreqTextField->text());
    fmindexvalue = floatValue(fmIndexTextField->text());
    doFM = fmcfvalue > 0.0F && fmindexvalue >= 0.0F;
    if (!isLegacy()) {
        modulatePhase();
    }
    closeSheet(kFmSheet);
}

void AppDelegate::fmCancelButtonPressed(QObject* /*sender*/) {
    cancelSheet(kFmSheet);
}

void AppDelegate::fmSheetDidEnd(QDialog* /*sheet*/, int /*returnCode*/, void* /*contextInfo*/) {
    modulatePhase();
    trace().log("AM Sheet did end"); // this very text, as for AM
    doFM = false;
}

// HD ------------------------------------------------------------------------------------------

bool AppDelegate::fillHdOutlets() {
    return fill(hdPanel, hdSegment, "hdSegment") && fill(hdPanel, hdHpSegment, "hdHpSegment") &&
           fill(hdPanel, hdMixSlider, "hdMixSlider") &&
           fill(hdPanel, hdHpfSlopeTextField, "hdHpfSlopeTextField") &&
           fill(hdPanel, hdHpfAttackTextField, "hdHpfAttackTextField") &&
           fill(hdPanel, hdCompTextField, "hdCompTextField") &&
           fill(hdPanel, hdKneeTextField, "hdKneeTextField") &&
           fill(hdPanel, hdScaleCheckBox, "hdScaleCheckBox") &&
           fill(hdPanel, hdOkButton, "hdOkButton") &&
           fill(hdPanel, hdCancelButton, "hdCancelButton");
}

void AppDelegate::HDDialog(QObject* /*sender*/) {
    openSheet(kHdSheet);
}

/// The fields, clamped, in their order.
HdSettings AppDelegate::readHdFields() {
    HdSettings settings;
    settings.two = hdSegment->isSelectedForSegment(0);
    settings.four = hdSegment->isSelectedForSegment(1);
    for (const int segment : {0, 1, 2}) { // the last one that is on
        settings.hpSelect =
            hdHpSegment->isSelectedForSegment(segment) ? segment : settings.hpSelect;
    }
    settings.slope =
        clampInField(hdHpfSlopeTextField, doubleValue(hdHpfSlopeTextField->text()), 0.6, 0.998);
    settings.attack =
        clampInField(hdHpfAttackTextField, integerValue(hdHpfAttackTextField->text()), 100, 1000);
    settings.mix = static_cast<float>(hdMixSlider->value()) / 1000.0F;
    settings.scale = hdScaleCheckBox->isChecked();
    settings.knee = clampInField(hdKneeTextField, floatValue(hdKneeTextField->text()), 0.0F, 1.0F);
    settings.comp = clampInField(hdCompTextField, floatValue(hdCompTextField->text()), 0.2F, 1.0F);
    return settings;
}

/// The processing is done before the sheet closes, in both ways.
void AppDelegate::hdOkButtonPressed(QObject* /*sender*/) {
    const HdSettings s = readHdFields();
    if (s.two || s.four) {
        transform(std::nullopt, [this, &s] {
            return hd(s.two, s.four, s.six, s.attack, s.scale, s.hpSelect, s.slope, s.mix, s.knee,
                      s.comp, &ustruct);
        });
    }
    if (!isLegacy()) {
        trace().log(">HD OK Button pressed\n");
    }
    closeSheet(kHdSheet);
}

void AppDelegate::hdCancelButtonPressed(QObject* /*sender*/) {
    cancelSheet(kHdSheet);
}

void AppDelegate::hdSheetDidEnd(QDialog* /*sheet*/, int /*returnCode*/, void* /*contextInfo*/) {}

// Revert --------------------------------------------------------------------------------------

void AppDelegate::revertAction(QObject* /*sender*/) {
    if (ustruct.bufsize > 0 && !work_.isBusy()) {
        const SoundChange change(*this, SoundChange::Source::Revert);
        revert(ustruct);
        messages_.drain(*this);
        describeTransformation(std::nullopt);
    }
}

} // namespace zemo
