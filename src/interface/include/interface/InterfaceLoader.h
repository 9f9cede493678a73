#pragma once

#include <QUiLoader>

namespace zemo {

/// Makes windows from interface files, with this program's own widgets in them. [main]
class InterfaceLoader : public QUiLoader {
    Q_OBJECT
public:
    explicit InterfaceLoader(QObject* parent = nullptr) : QUiLoader(parent) {}

    /// The interface file of that name (":/interface/<name>.ui"), made into widgets.
    QWidget* loadInterface(const QString& name, QWidget* parent = nullptr);

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override;
};

} // namespace zemo
