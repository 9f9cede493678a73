#include "interface/SavePanel.h"

#include <QFileInfo>
#include <QMessageBox>

namespace zemo {

SavePanel::SavePanel(QWidget* parent, const QString& title) : QFileDialog(parent, title) {
    setOption(QFileDialog::DontUseNativeDialog); // the system's own would not be asked twice
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
}

void SavePanel::setAllowedFileTypes(const QStringList& extensions) {
    allowedFileTypes_ = extensions;
    setDefaultSuffix(extensions.value(0));
}

void SavePanel::suggestName(const QString& soundName) {
    const QFileInfo file(soundName);
    if (allowedFileTypes_.contains(file.suffix())) {
        selectFile(soundName);
    } else if (!file.completeBaseName().isEmpty()) {
        selectFile(file.completeBaseName() + "." + allowedFileTypes_.value(0));
    }
}

void SavePanel::accept() {
    const QString file = selectedFiles().value(0);
    const bool isFolder = QFileInfo(file).isDir();
    if (!isFolder && !allowedFileTypes_.contains(QFileInfo(file).suffix())) {
        QMessageBox::warning(
            this, windowTitle(),
            tr("The file's name must end in .%1.").arg(allowedFileTypes_.join(", .")));
        return;
    }
    QFileDialog::accept();
}

} // namespace zemo
