#pragma once

#include <QDialog>
#include <QTextBrowser>

namespace zemo {

/// The user's manual in a window of its own, which no sheet blocks and which keeps no program
/// alive. Links between its headings work within it; any other is the desktop's to open. [main]
class ManualWindow : public QDialog {
    Q_OBJECT
public:
    /// Reads the manual at `path`, or, when that is empty, says that there is none.
    explicit ManualWindow(const QString& path);

    /// Where the manual of a program in `programFolder` is: installed, or in the source tree that
    /// the program was built in. Empty when it is nowhere.
    static QString find(const QString& programFolder);

    /// Goes to the heading that a Markdown link calls `anchor`; false when there is none.
    bool goTo(const QString& anchor);

    /// [any] What a Markdown link calls a heading: "Peak / RMS" is "peak--rms".
    static QString anchorOf(const QString& heading);

    QTextBrowser* browser() { return &browser_; }

private:
    void follow(const QUrl& link);

    QTextBrowser browser_;
};

} // namespace zemo
