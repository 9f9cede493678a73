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
    bool* clearedByCancel; ///< its flag; null: that stays as it is
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

struct Range {
    double low;
    double high;
};

constexpr Range kSlopes{0.6, 0.998};
constexpr Range kAttacks{100, 1000};
constexpr Range kKnees{0, 1};
constexpr Range kComps{0.2, 1};

/// A value as it is used. Where the field says anything else, or says it in another notation, it is
/// shown there.
template <typename Number> Number used(QLineEdit* field, Number value) {
    const QString shown = shownNumber(field->text(), value);
    if (shown != field->text()) {
        field->setText(shown);
    }
    return value;
}

/// A field's value held to its range, and the bound shown where it was outside. NaN takes the lower
/// bound.
template <typename Number>
Number usedWithin(QLineEdit* field, Number value, Number low, Number high) {
    return used(field, !(value >= low) ? low : std::min(value, high));
}

template <typename Number> Number usedWithin(QLineEdit* field, Number value, const Range& range) {
    return usedWithin(field, value, static_cast<Number>(range.low),
                      static_cast<Number>(range.high));
}

float usedFloat(QLineEdit* field) {
    return used(field, floatValue(field->text()));
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
                                      "Resampling Cancel Button pressed\n",
                                      &doResampling};
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
                                "AM Cancel Button pressed\n",
                                nullptr};
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
                                "FM Cancel Button pressed\n",
                                nullptr};
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
                                "HD Cancel Button pressed\n",
                                nullptr};

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
    localizeFields(this->*kind.panel);
    (this->*kind.panel)->setCancelButton(this->*kind.cancelButton);
    connect(this->*kind.okButton, &QPushButton::clicked, this,
            [this, &kind] { (this->*kind.okPressed)(this->*kind.okButton); });
    connect(this->*kind.cancelButton, &QPushButton::clicked, this,
            [this, &kind] { (this->*kind.cancelPressed)(this->*kind.cancelButton); });
    return true;
}

/// The interface files have their numbers in English.
void AppDelegate::localizeFields(SheetPanel* panel) {
    for (QLineEdit* const field : panel->findChildren<QLineEdit*>()) {
        field->setText(localizedNumber(field->text()));
    }
}

void AppDelegate::openSheet(const SheetKind& kind) {
    if (work_.isBusy() || fBuffersize.load() == 0 || !loadSheet(kind)) {
        return;
    }
    SheetPanel* const panel = this->*kind.panel;
    if (isLegacy()) {
        sheets_.beginForApplication(panel, [this, &kind] { sheetHasEnded(kind); });
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

/// A sheet that was confirmed cannot be cancelled any more; the work can.
void AppDelegate::cancelSheet(const SheetKind& kind) {
    if (work_.isBusy()) {
        return;
    }
    clearTransformationsResult();
    if (kind.clearedByCancel != nullptr) {
        *kind.clearedByCancel = false;
    }
    if (isLegacy()) {
        closeSheet(kind);
        trace().log(kind.cancelTrace);
    } else {
        trace().log(std::string(">") + kind.cancelTrace);
        closeSheet(kind);
    }
}

void AppDelegate::confirmSheet(const std::function<void()>& action) {
    WorkInWindow::Turn turn = work_.takeTurn(WorkInWindow::Play::MayNotBegin);
    if (turn == nullptr) {
        return;
    }
    clearTransformationsResult();
    action();
    if (sheets_.isEndAwaited()) {
        confirmedTurn_ = std::move(turn);
    }
}

/// In the older way, some time after OK or Cancel.
void AppDelegate::sheetHasEnded(const SheetKind& kind) {
    (this->*kind.didEnd)(this->*kind.panel, 0, nullptr);
    confirmedTurn_.reset();
}

void AppDelegate::transform(const Refusal& refusal,
                            const std::function<Refusal()>& transformation) {
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

/// What one sheet said would seem to be said of the next, which is at work or has done nothing.
void AppDelegate::clearTransformationsResult() {
    if (isResultOfTransformation_) {
        isResultOfTransformation_ = false;
        resultValue_->setText("–"); // as before anything was said
        showReason({});
    }
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
    confirmSheet([this] {
        rvalue = usedFloat(resamplingTextField);
        trace().log(format("Resampling Value = @%f", static_cast<double>(rvalue)));
        doResampling = true;
        closeSheet(kResampleSheet);
        if (!isLegacy()) {
            resample();
        }
    });
}

void AppDelegate::resamplingCancelButtonPressed(QObject* /*sender*/) {
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
    confirmSheet([this] {
        amcfvalue = usedFloat(amFreqTextField);
        amindexvalue = usedFloat(amIndexTextField);
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
    });
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
    const float lpf = usedWithin(fmLpfTextField, floatValue(fmLpfTextField->text()),
                                 dsp::kSlowestEnvelope, dsp::kFastestEnvelope);
    if (doFM) {
        transform(pmRefusal(lpf),
                  [this, lpf] { return pmBuffer(fmcfvalue, fmindexvalue, lpf, &ustruct); });
    }
}

void AppDelegate::fmOkButtonPressed(QObject* /*sender*/) {
    confirmSheet([this] {
        fmcfvalue = usedFloat(fmFreqTextField);
        fmindexvalue = usedFloat(fmIndexTextField);
        doFM = fmcfvalue > 0.0F && fmindexvalue >= 0.0F;
        if (!isLegacy()) {
            modulatePhase();
        }
        closeSheet(kFmSheet);
    });
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
           fill(hdPanel, hdCancelButton, "hdCancelButton") && showHdRanges();
}

/// In the locale's notation, like the fields beside them.
bool AppDelegate::showHdRanges() {
    QLabel* slopes = nullptr;
    QLabel* comps = nullptr;
    if (!fill(hdPanel, slopes, "hdHpfSlopeTextFieldUnit") ||
        !fill(hdPanel, comps, "hdCompTextFieldUnit")) {
        return false;
    }
    const auto show = [](QLabel* label, const Range& range) {
        label->setText(tr("%1 to %2").arg(numberText(range.low), numberText(range.high)));
    };
    show(slopes, kSlopes);
    show(comps, kComps);
    return true;
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
        usedWithin(hdHpfSlopeTextField, doubleValue(hdHpfSlopeTextField->text()), kSlopes);
    settings.attack =
        usedWithin(hdHpfAttackTextField, integerValue(hdHpfAttackTextField->text()), kAttacks);
    settings.mix = static_cast<float>(hdMixSlider->value()) / 1000.0F;
    settings.scale = hdScaleCheckBox->isChecked();
    settings.knee = usedWithin(hdKneeTextField, floatValue(hdKneeTextField->text()), kKnees);
    settings.comp = usedWithin(hdCompTextField, floatValue(hdCompTextField->text()), kComps);
    return settings;
}

/// The processing is done before the sheet closes, in both ways.
void AppDelegate::hdOkButtonPressed(QObject* /*sender*/) {
    confirmSheet([this] {
        const HdSettings s = readHdFields();
        if (s.two || s.four) {
            transform(std::nullopt, [this, &s] {
                return hd(s.two, s.four, s.six, s.attack, s.scale, s.hpSelect, s.slope, s.mix,
                          s.knee, s.comp, &ustruct);
            });
        }
        if (!isLegacy()) {
            trace().log(">HD OK Button pressed\n");
        }
        closeSheet(kHdSheet);
    });
}

void AppDelegate::hdCancelButtonPressed(QObject* /*sender*/) {
    cancelSheet(kHdSheet);
}

void AppDelegate::hdSheetDidEnd(QDialog* /*sheet*/, int /*returnCode*/, void* /*contextInfo*/) {}

// Revert --------------------------------------------------------------------------------------

void AppDelegate::revertAction(QObject* /*sender*/) {
    const auto turn = work_.takeTurn(WorkInWindow::Play::MayNotBegin);
    if (turn != nullptr && ustruct.bufsize > 0) {
        const SoundChange change(*this, SoundChange::Source::Revert);
        revert(ustruct);
        messages_.drain(*this);
        describeTransformation(std::nullopt);
    }
}

} // namespace zemo
