#include "interface/InterfaceLoader.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QFile>
#include <QHash>

#include "interface/BackgroundWindow.h"
#include "interface/SegmentedControl.h"
#include "interface/SheetPanel.h"
#include "interface/SoundView.h"
#include "interface/StateButton.h"
#include "interface/TitledButton.h"
#include "meter/levelOpenGLView.h"

static void registerInterfaceResource() {
    Q_INIT_RESOURCE(interface);
}

namespace zemo {
namespace {

using Maker = QWidget* (*)(QWidget* parent);

template <typename Widget> QWidget* make(QWidget* parent) {
    return new Widget(parent);
}

/// The widgets of this program by the names that the interface files have for them.
const QHash<QString, Maker>& makers() {
    static const QHash<QString, Maker> all{
        {"BackgroundWindow", make<BackgroundWindow>},
        {"SegmentedControl", make<SegmentedControl>},
        {"SheetPanel", make<SheetPanel>},
        {"SoundView", make<SoundView>},
        {"StateButton", make<StateButton>},
        {"TitledButton", make<TitledButton>},
        {"levelOpenGLView", make<levelOpenGLView>},
    };
    return all;
}

/// The loader translates every text but those in lists.
void translateSegments(const QWidget& made, const QString& name) {
    for (const SegmentedControl* const control : made.findChildren<SegmentedControl*>()) {
        for (QAbstractButton* const segment : control->findChildren<QAbstractButton*>()) {
            segment->setText(QCoreApplication::translate(name.toUtf8(), segment->text().toUtf8()));
        }
    }
}

} // namespace

QWidget* InterfaceLoader::loadInterface(const QString& name, QWidget* parent) {
    registerInterfaceResource();
    QFile file(":/interface/" + name + ".ui");
    QWidget* const made = file.open(QIODevice::ReadOnly) ? load(&file, parent) : nullptr;
    if (made != nullptr) {
        translateSegments(*made, name);
    }
    return made;
}

QWidget* InterfaceLoader::createWidget(const QString& className, QWidget* parent,
                                       const QString& name) {
    const auto maker = makers().find(className);
    if (maker == makers().end()) {
        return QUiLoader::createWidget(className, parent, name);
    }
    QWidget* const widget = maker.value()(parent);
    widget->setObjectName(name);
    return widget;
}

} // namespace zemo
