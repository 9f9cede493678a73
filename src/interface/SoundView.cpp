#include "interface/SoundView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QLinearGradient>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "interface/SoundColours.h"
#include "interface/SoundPicture.h"
#include "interface/SoundRuler.h"
#include "overview/ColourMap.h"

namespace zemo {
namespace {

constexpr double kRadius = 8.0; ///< of the cards' corners
constexpr double kMargin = 14.0;
constexpr double kHead = 38.0;   ///< above the plot: the legend and the button
constexpr double kGutter = 64.0; ///< left of it
constexpr double kFoot = 28.0;   ///< below it
constexpr double kSwatch = 10.0; ///< in the legend
constexpr double kScaleWidth = 60.0;
constexpr double kMarksStrip = 9.0;
constexpr double kTickLength = 4.0;
constexpr double kTimeSpacing = 76.0; ///< at least, between two times
constexpr double kFrequencySpacing = 15.0;
constexpr double kLineWidth = 1.5; ///< of the playhead
constexpr int kButtonHeight = 26;

/// To assistive technology the view is a picture with a name and a description.
QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const view = qobject_cast<SoundView*>(object);
    return view != nullptr ? new QAccessibleWidget(view, QAccessible::Graphic) : nullptr;
}

QFont rulerFont(const QWidget& widget) {
    QFont font = widget.font();
    font.setPointSizeF(8.5);
    return font;
}

QString lengthText(double seconds) {
    return timeText(seconds, 3);
}

} // namespace

SoundView::SoundView(QWidget* parent) : QWidget(parent), button_(new TitledButton(this)) {
    QAccessible::installFactory(makeAccessible); // the same one is taken once
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Picture of the sound"));
    button_->setObjectName("spectrogramButton");
    button_->setCheckable(true);
    button_->setTitle(tr("Spectrogram"));
    button_->setToolTip(tr("Show the sound by time and frequency, or as a wave (Ctrl+G)"));
    connect(button_, &QPushButton::toggled, this, [this](bool shown) {
        redraw();
        emit spectrogramShownChanged(shown);
    });
    clear();
}

// What is shown -------------------------------------------------------------------------------

void SoundView::setWave(std::shared_ptr<const overview::WavePyramid> wave, double rate) {
    wave_ = std::move(wave);
    rate_ = rate;
    hint_.clear();
    describe();
    redraw();
}

void SoundView::setSpectrogram(std::shared_ptr<const overview::Spectrogram> spectrogram) {
    spectrogram_ = std::move(spectrogram);
    spectrogramImage_ = spectrogram_ != nullptr ? imageOf(*spectrogram_) : QImage();
    if (isSpectrogramShown()) {
        redraw();
    }
}

void SoundView::clear() {
    drop(tr("Open a sound, or drop a file here"));
}

void SoundView::clearForWantOfMemory() {
    drop(tr("There is no memory for a picture of this sound"));
}

void SoundView::drop(const QString& hint) {
    wave_.reset();
    spectrogram_.reset();
    spectrogramImage_ = QImage();
    playhead_ = -1.0;
    hint_ = hint;
    describe();
    redraw();
}

void SoundView::redraw() {
    picture_ = QPixmap();
    update();
}

void SoundView::describe() {
    QString text = hint_;
    if (wave_ != nullptr) {
        text = tr("Length %1, peak %2")
                   .arg(lengthText(static_cast<double>(wave_->count()) / rate_),
                        decibelText(wave_->peak()));
        const QString counts = countsText(wave_->beyondCount(), wave_->notFiniteCount());
        text += counts.isEmpty() ? QString() : ", " + counts;
    }
    setAccessibleDescription(text);
}

// The line ------------------------------------------------------------------------------------

void SoundView::setPlayhead(double sample) {
    const QRect before = stripAt(playhead_);
    playhead_ = sample;
    const QRect after = stripAt(playhead_);
    if (before != after) {
        update(before);
        update(after);
    }
}

double SoundView::xOf(double sample) const {
    const QRectF area = plot();
    const double count = wave_ != nullptr ? static_cast<double>(wave_->count()) : 1.0;
    return area.left() + std::clamp(sample / count, 0.0, 1.0) * area.width();
}

/// The pixels that the line may touch. Nothing when there is no line.
QRect SoundView::stripAt(double sample) const {
    if (wave_ == nullptr || !(sample >= 0.0)) {
        return {};
    }
    const QRectF area = plot();
    return QRectF(xOf(sample) - kLineWidth, area.top(), 2.0 * kLineWidth, area.height())
        .toAlignedRect()
        .adjusted(-1, 0, 1, 0);
}

// Painting ------------------------------------------------------------------------------------

QRectF SoundView::plot() const {
    return {kGutter, kHead, std::max(width() - kGutter - kMargin, 1.0),
            std::max(height() - kHead - kFoot, 1.0)};
}

void SoundView::paintEvent(QPaintEvent* /*event*/) {
    const double scale = devicePixelRatioF();
    if (picture_.isNull() || picture_.devicePixelRatio() != scale) {
        picture_ = paintPicture();
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, picture_);
    if (wave_ != nullptr && playhead_ >= 0.0) {
        const QRectF area = plot();
        const double width = std::round(kLineWidth * scale) / scale; // whole pixels: a sharp line
        painter.fillRect(QRectF(xOf(playhead_) - width / 2.0, area.top(), width, area.height()),
                         colours::kPlayhead);
    }
}

QPixmap SoundView::paintPicture() const {
    const double scale = devicePixelRatioF();
    QPixmap picture((QSizeF(size()) * scale).toSize().expandedTo({1, 1}));
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setFont(rulerFont(*this));
    paintCard(painter);
    if (wave_ == nullptr) {
        paintHint(painter, hint_);
        return picture;
    }
    if (isSpectrogramShown()) {
        paintSpectrogramPlot(painter);
    } else {
        paintWavePlot(painter);
    }
    paintMarks(painter, plot(), *wave_, scale);
    paintTimes(painter);
    paintLegend(painter);
    return picture;
}

void SoundView::paintCard(QPainter& painter) const {
    const double inset = hasFocus() ? 1.0 : 0.0; // half the pen's width
    painter.setPen(hasFocus() ? QPen(colours::kFocus, 2.0) : QPen(Qt::NoPen));
    painter.setBrush(colours::kCard);
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), kRadius,
                            kRadius);
}

void SoundView::paintHint(QPainter& painter, const QString& hint) const {
    QFont font = this->font();
    font.setPointSizeF(12.0);
    painter.setFont(font);
    painter.setPen(colours::kText);
    const QRectF area = QRectF(rect()).adjusted(kMargin, kHead, -kMargin, -kHead);
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, hint);
}

void SoundView::paintWavePlot(QPainter& painter) const {
    painter.fillRect(plot(), colours::kPlot);
    painter.save();
    painter.setClipRect(plot());
    paintWave(painter, plot(), *wave_, devicePixelRatioF());
    painter.restore();
    paintLevelLine(painter, 1.0, tr("+1"));
    paintLevelLine(painter, 0.0, tr("0"));
    paintLevelLine(painter, -1.0, tr("−1"));
}

void SoundView::paintLevelLine(QPainter& painter, double value, const QString& text) const {
    const QRectF area = plot();
    const double y = heightInPlot(area, shownMagnitude(*wave_), value);
    const Qt::PenStyle style = value == 0.0 ? Qt::SolidLine : Qt::DashLine;
    painter.setPen(QPen(colours::kLine, 0.8, style));
    painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    painter.setPen(colours::kText);
    painter.drawText(QRectF(0.0, y - 10.0, kGutter - 8.0, 20.0), Qt::AlignRight | Qt::AlignVCenter,
                     text);
}

void SoundView::paintSpectrogramPlot(QPainter& painter) const {
    painter.fillRect(plot(), colours::kPlot);
    if (!spectrogramImage_.isNull()) {
        painter.drawImage(spectrogramPlot(), spectrogramImage_);
        paintFrequencies(painter);
    }
}

/// The plot without the strips of the marks, which would not be seen on bright colours.
QRectF SoundView::spectrogramPlot() const {
    const double above = wave_->beyondCount() > 0 ? kMarksStrip : 0.0;
    const double below = wave_->notFiniteCount() > 0 ? kMarksStrip : 0.0;
    return plot().adjusted(0.0, above, 0.0, -below);
}

void SoundView::paintFrequencies(QPainter& painter) const {
    const QRectF area = spectrogramPlot();
    double last = area.bottom() + kFrequencySpacing;
    for (const Tick& tick :
         frequencyTicks(spectrogram_->lowestFrequency(), spectrogram_->highestFrequency())) {
        const double y = area.bottom() - spectrogram_->heightOf(tick.place) * area.height();
        if (last - y < kFrequencySpacing || y < area.top() + 4.0) {
            continue;
        }
        last = y;
        painter.setPen(QPen(colours::kLine, 1.0));
        painter.drawLine(QPointF(area.left() - kTickLength, y), QPointF(area.left() - 0.5, y));
        painter.setPen(colours::kText);
        painter.drawText(QRectF(0.0, y - 10.0, kGutter - 8.0, 20.0),
                         Qt::AlignRight | Qt::AlignVCenter, tick.text);
    }
}

void SoundView::paintTimes(QPainter& painter) const {
    const QRectF area = plot();
    const double seconds = static_cast<double>(wave_->count()) / rate_;
    for (const Tick& tick : timeTicks(seconds, area.width(), kTimeSpacing)) {
        const double x = area.left() + tick.place / seconds * area.width();
        painter.setPen(QPen(colours::kLine, 1.0));
        painter.drawLine(QPointF(x, area.bottom() + 1.0),
                         QPointF(x, area.bottom() + 1.0 + kTickLength));
        const double half = painter.fontMetrics().horizontalAdvance(tick.text) / 2.0 + 1.0;
        const double middle = std::min(x, width() - half - 3.0); // the last one stays inside
        painter.setPen(colours::kText);
        painter.drawText(QRectF(middle - half, area.bottom() + kTickLength + 1.0, 2.0 * half, 18.0),
                         Qt::AlignHCenter | Qt::AlignVCenter, tick.text);
    }
}

/// What the colours mean, and how many samples are marked.
QVector<SoundView::LegendItem> SoundView::legend() const {
    QVector<LegendItem> items;
    if (isSpectrogramShown()) {
        QLinearGradient levels(0.0, 0.0, kScaleWidth, 0.0);
        for (int i = 0; i <= 8; ++i) {
            const auto& colour = overview::colourMap()[static_cast<std::size_t>(i * 255 / 8)];
            levels.setColorAt(i / 8.0, QColor(colour.red, colour.green, colour.blue));
        }
        items.push_back({levels, kScaleWidth, tr("−120 to 0 dB")});
    } else {
        items.push_back({colours::kPeak, kSwatch, tr("Peak")});
        items.push_back({colours::kRms, kSwatch, tr("RMS")});
    }
    if (wave_->beyondCount() > 0) {
        items.push_back({colours::kBeyond, kSwatch, countsText(wave_->beyondCount(), 0)});
    }
    if (wave_->notFiniteCount() > 0) {
        items.push_back({colours::kNotFinite, kSwatch, countsText(0, wave_->notFiniteCount())});
    }
    return items;
}

/// As far as there is room for it: the counts, which come last, stay longest.
void SoundView::paintLegend(QPainter& painter) const {
    const auto widthOf = [&](const LegendItem& item) {
        return item.width + 6.0 + painter.fontMetrics().horizontalAdvance(item.text) + 14.0;
    };
    const double left = kMargin + 2.0;
    double room = button_->x() - left;
    const QVector<LegendItem> items = legend();
    qsizetype first = items.size();
    while (first > 0 && widthOf(items[first - 1]) <= room) {
        --first;
        room -= widthOf(items[first]);
    }
    painter.translate(left, 0.0);
    for (const LegendItem& item : items.mid(first)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(item.brush);
        painter.drawRoundedRect(QRectF(0.0, kHead / 2.0 - 5.0, item.width, 10.0), 2.0, 2.0);
        painter.setPen(colours::kText);
        painter.drawText(QRectF(item.width + 6.0, 0.0, widthOf(item), kHead),
                         Qt::AlignLeft | Qt::AlignVCenter, item.text);
        painter.translate(widthOf(item), 0.0);
    }
}

// Events --------------------------------------------------------------------------------------

void SoundView::resizeEvent(QResizeEvent* /*event*/) {
    const int buttonWidth = button_->sizeHint().width();
    button_->setGeometry(width() - buttonWidth - static_cast<int>(kMargin),
                         (static_cast<int>(kHead) - kButtonHeight) / 2, buttonWidth, kButtonHeight);
    redraw();
}

void SoundView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        button_->click();
        return;
    }
    QWidget::keyPressEvent(event);
}

void SoundView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    redraw();
}

void SoundView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    redraw();
}

} // namespace zemo
