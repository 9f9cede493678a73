#include "interface/InterfaceLoader.h"

#include <QFile>

#include "interface/BackgroundWindow.h"
#include "interface/StateButton.h"
#include "interface/TitledButton.h"
#include "meter/levelOpenGLView.h"

static void registerInterfaceResource() {
    Q_INIT_RESOURCE(interface);
}

namespace zemo {

QWidget* InterfaceLoader::loadInterface(const QString& name, QWidget* parent) {
    registerInterfaceResource();
    QFile file(":/interface/" + name + ".ui");
    return file.open(QIODevice::ReadOnly) ? load(&file, parent) : nullptr;
}

QWidget* InterfaceLoader::createWidget(const QString& className, QWidget* parent,
                                       const QString& name) {
    QWidget* widget = nullptr;
    if (className == "BackgroundWindow") {
        widget = new BackgroundWindow(parent);
    } else if (className == "StateButton") {
        widget = new StateButton(parent);
    } else if (className == "TitledButton") {
        widget = new TitledButton(parent);
    } else if (className == "levelOpenGLView") {
        widget = new levelOpenGLView(parent);
    } else {
        return QUiLoader::createWidget(className, parent, name);
    }
    widget->setObjectName(name);
    return widget;
}

} // namespace zemo
