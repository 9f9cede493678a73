#pragma once

#include <QFileDialog>
#include <QStringList>

namespace zemo {

/// A panel that asks where to save a file. A name without an extension gets the first of the
/// allowed ones; a name with another extension is refused with one sentence, and the panel stays;
/// before a file is replaced it asks. [main]
class SavePanel : public QFileDialog {
    Q_OBJECT
public:
    SavePanel(QWidget* parent, const QString& title);

    /// Extensions without dots, compared to the letter.
    void setAllowedFileTypes(const QStringList& extensions);
    /// Has the name of a sound stand in the panel, with the first of the allowed extensions unless
    /// it has one of them. To be called after those are known.
    void suggestName(const QString& soundName);

    void accept() override;

private:
    QStringList allowedFileTypes_;
};

} // namespace zemo
