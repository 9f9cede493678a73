#include "interface/SegmentedControl.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>

namespace zemo {
namespace {

/// A group, whose name screen readers say when the focus comes to one of its segments.
QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const control = qobject_cast<SegmentedControl*>(object);
    return control != nullptr ? new QAccessibleWidget(control, QAccessible::Grouping) : nullptr;
}

} // namespace

SegmentedControl::SegmentedControl(QWidget* parent) : QWidget(parent) {
    QAccessible::installFactory(makeAccessible); // the same one is taken once
    setFocusPolicy(Qt::TabFocus);                // or no label's letter would lead here
    // A segment that is on has its colours turned about: so it is told from the others, and read as
    // well as they are, in every palette. The highlight of many is too bright for white text.
    setStyleSheet("QPushButton { padding: 5px 10px; border: 1px solid palette(mid);"
                  " border-radius: 4px; background: palette(button); }"
                  "QPushButton:checked { background: palette(button-text);"
                  " color: palette(button); }"
                  "QPushButton:focus { outline: none; border: 3px solid palette(highlight);"
                  " padding: 3px 8px; }");
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    connect(&group_, &QButtonGroup::idToggled, this, [this](int segment, bool isOn) {
        if (isOn) {
            lastSelected_ = segment;
        }
    });
}

QStringList SegmentedControl::titles() const {
    QStringList result;
    for (const QAbstractButton* const button : group_.buttons()) {
        result += button->text();
    }
    return result;
}

void SegmentedControl::setTitles(const QStringList& titles) {
    qDeleteAll(group_.buttons());
    for (qsizetype i = 0; i < titles.size(); ++i) {
        auto* const button = new QPushButton(titles[i], this);
        button->setCheckable(true);
        button->setAutoDefault(false);
        button->installEventFilter(this);
        layout()->addWidget(button);
        group_.addButton(button, static_cast<int>(i));
        if (i == 0) {
            setFocusProxy(button);
        }
    }
}

/// A group is one stop of Tab. Buttons that exclude each other follow the arrows by themselves, the
/// others would be out of reach.
bool SegmentedControl::eventFilter(QObject* watched, QEvent* event) {
    if (isExclusive() || event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const int key = static_cast<QKeyEvent*>(event)->key();
    const int step = key == Qt::Key_Right ? 1 : key == Qt::Key_Left ? -1 : 0;
    const int segment = group_.id(qobject_cast<QAbstractButton*>(watched));
    QAbstractButton* const next =
        step != 0 ? group_.button(segment + (isRightToLeft() ? -step : step)) : nullptr;
    if (next == nullptr) {
        return QWidget::eventFilter(watched, event);
    }
    next->setFocus(Qt::OtherFocusReason);
    return true;
}

int SegmentedControl::selectedSegment() const {
    return isSelectedForSegment(lastSelected_) ? lastSelected_ : group_.checkedId();
}

void SegmentedControl::setSelectedSegment(int segment) {
    setSelectedForSegment(true, segment);
}

bool SegmentedControl::isSelectedForSegment(int segment) const {
    const QAbstractButton* const button = group_.button(segment);
    return button != nullptr && button->isChecked();
}

void SegmentedControl::setSelectedForSegment(bool selected, int segment) {
    if (QAbstractButton* const button = group_.button(segment)) {
        button->setChecked(selected);
    }
}

} // namespace zemo
