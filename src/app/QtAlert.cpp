#include "app/QtAlert.h"

#include <QApplication>
#include <QMessageBox>

#include "app/Languages.h"

namespace zemo {

void QtAlert::runCritical(const std::string& title, const std::string& message,
                          const std::string& button) {
    QMessageBox box(QApplication::activeWindow());
    box.setIcon(QMessageBox::Critical);
    box.setWindowTitle(translated(QString::fromStdString(title)));
    box.setTextFormat(Qt::PlainText);
    box.setText(translated(QString::fromStdString(message)));
    box.addButton(translated(QString::fromStdString(button)), QMessageBox::AcceptRole);
    box.exec();
}

} // namespace zemo
