#include "interface/SegmentedControl.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace zemo {

SegmentedControl::SegmentedControl(QWidget* parent) : QWidget(parent) {
    // A segment that is on is to be told from the others in dark palettes too.
    setStyleSheet("QPushButton { padding: 5px 10px; border: 1px solid palette(mid);"
                  " border-radius: 4px; background: palette(button); }"
                  "QPushButton:checked { background: palette(highlight);"
                  " color: palette(highlighted-text); }"
                  "QPushButton:focus { border: 1px solid palette(text); }");
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
        layout()->addWidget(button);
        group_.addButton(button, static_cast<int>(i));
        if (i == 0) {
            setFocusProxy(button);
        }
    }
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
