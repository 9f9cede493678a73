#include "app/QtAlert.h"

#include <QApplication>
#include <QMessageBox>

namespace zemo {

void QtAlert::runCritical(const std::string& title, const std::string& message,
                          const std::string& button) {
    QMessageBox box(QApplication::activeWindow());
    box.setIcon(QMessageBox::Critical);
    box.setWindowTitle(QString::fromStdString(title));
    box.setTextFormat(Qt::PlainText);
    box.setText(QString::fromStdString(message));
    box.addButton(QString::fromStdString(button), QMessageBox::AcceptRole);
    box.exec();
}

} // namespace zemo
