#pragma once

#include <QPushButton>
#include <QtTest>
#include <cstdint>
#include <vector>

#include "app/AppDelegate.h"
#include "interface/SheetPanel.h"

/// The four sheets, and the two ways in which they are presented.
namespace zemo::test {

// The system's minor versions on either side of the change.
constexpr std::int32_t kLegacy = 8;
constexpr std::int32_t kCurrent = 9;

inline void addMechanisms() {
    QTest::addColumn<int>("minor");
    QTest::newRow("older way") << kLegacy;
    QTest::newRow("newer way") << kCurrent;
}

struct Sheet {
    void (AppDelegate::*open)(QObject*);
    SheetPanel* AppDelegate::*panel;
    QPushButton* AppDelegate::*ok;
    QPushButton* AppDelegate::*cancel;
};

inline const std::vector<Sheet> kSheets{
    {&AppDelegate::ResampleDialog, &AppDelegate::resamplePanel, &AppDelegate::resamplingOkButton,
     &AppDelegate::resamplingCancelButton},
    {&AppDelegate::AMDialog, &AppDelegate::amPanel, &AppDelegate::amOkButton,
     &AppDelegate::amCancelButton},
    {&AppDelegate::FMDialog, &AppDelegate::fmPanel, &AppDelegate::fmOkButton,
     &AppDelegate::fmCancelButton},
    {&AppDelegate::HDDialog, &AppDelegate::hdPanel, &AppDelegate::hdOkButton,
     &AppDelegate::hdCancelButton},
};

} // namespace zemo::test
