#pragma once

#include <QComboBox>
#include <QFileDialog>
#include <QPushButton>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

namespace zemo {

/// A panel for one existing file of any kind. Qt's list leaves out files whose names are not UTF-8:
/// they stand in a line of their own below it, with %XX for what cannot be shown, and can be typed
/// so. Not the system's own panel: that one takes no boxes. All of it is [main].
class OpenPanel : public QFileDialog {
    Q_OBJECT
public:
    OpenPanel(QWidget* parent, const QString& title);
    OpenPanel(const OpenPanel&) = delete;
    OpenPanel& operator=(const OpenPanel&) = delete;
    ~OpenPanel() override;

    /// Adds a row below all others.
    void setAccessoryView(QWidget* view);

    /// The file that was chosen, as pathFromBytes makes it; empty before the panel is accepted.
    QString chosenFile() const;

protected:
    void accept() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Search;

    void look(const QString& folder);
    void leaveOff();
    void showNames(const std::vector<std::string>& names);
    QString fileTyped() const;
    void enableOpen();

    QWidget* namesRow_;
    QComboBox* names_;
    QPushButton* openButton_ = nullptr;
    QString escaped_; ///< the path, when it was chosen by its escapes
    std::string folder_;
    std::shared_ptr<Search> search_; ///< shared with its thread, which is not waited for
};

} // namespace zemo
