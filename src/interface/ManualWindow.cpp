#include "interface/ManualWindow.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QMessageBox>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextTable>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "platform/OwnEnvironment.h"

namespace zemo {
namespace {

// Between black and white, and hardly there: right on light and dark palettes.
constexpr QColor kCodeGround(128, 128, 128, 38);
constexpr QColor kTableLines(128, 128, 128, 110);
constexpr int kProse = 125; ///< line height, percent

bool isCode(const QTextBlockFormat& format) {
    return format.hasProperty(QTextFormat::BlockCodeFence);
}

/// A command and what it prints are two pieces of code.
bool isSameCode(const QTextBlockFormat& one, const QTextBlockFormat& other) {
    constexpr auto kLanguage = QTextFormat::BlockCodeLanguage;
    return isCode(other) && one.property(kLanguage) == other.property(kLanguage);
}

void dressHeading(QTextBlockFormat& format) {
    constexpr std::array<int, 3> kAbove{0, 34, 20};
    const int level = std::clamp(format.headingLevel(), 1, 3);
    format.setTopMargin(kAbove.at(static_cast<std::size_t>(level - 1)));
    format.setBottomMargin(8);
}

/// A few lines of code lie on one ground, with air before and after.
void dressCode(QTextBlockFormat& format, const QTextBlock& block) {
    format.setBackground(kCodeGround);
    format.setTopMargin(isSameCode(format, block.previous().blockFormat()) ? 0 : 8);
    format.setBottomMargin(isSameCode(format, block.next().blockFormat()) ? 0 : 8);
}

void dressBlock(const QTextBlock& block) {
    QTextBlockFormat format = block.blockFormat();
    const bool hasPicture = block.text().contains(QChar::ObjectReplacementCharacter);
    if (format.headingLevel() > 0) {
        dressHeading(format);
    } else if (isCode(format)) {
        dressCode(format, block);
    } else if (!hasPicture) { // of which the height would be a part of the line's
        format.setLineHeight(kProse, QTextBlockFormat::ProportionalHeight);
    }
    QTextCursor(block).setBlockFormat(format);
}

void dressTable(QTextTable& table) {
    QTextTableFormat format = table.format();
    format.setCellPadding(6);
    format.setCellSpacing(0);
    format.setBorder(1);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(kTableLines);
    format.setBorderCollapse(true);
    format.setTopMargin(8);
    format.setBottomMargin(14);
    table.setFormat(format);
}

/// Markdown says nothing of type and space.
void dress(QTextDocument& document) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        dressBlock(block);
    }
    for (QTextFrame* const frame : document.rootFrame()->childFrames()) {
        if (auto* const table = qobject_cast<QTextTable*>(frame)) {
            dressTable(*table);
        }
    }
    document.setDocumentMargin(28);
}

} // namespace

ManualWindow::ManualWindow(const QString& path) : browser_(this) {
    setWindowFlags(Qt::Window);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(tr("ZEMO Manual"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(&browser_);
    browser_.setAccessibleName(tr("Manual"));
    browser_.setFrameShape(QFrame::NoFrame);
    browser_.setOpenLinks(false); // it knows no headings by their names
    browser_.setTextInteractionFlags(Qt::TextBrowserInteraction);
    QFont font = browser_.font();
    font.setPointSizeF(1.15 * font.pointSizeF());
    browser_.setFont(font);
    connect(&browser_, &QTextBrowser::anchorClicked, this, &ManualWindow::follow);
    if (path.isEmpty()) {
        browser_.setPlainText(tr("There is no manual here: the file MANUAL.md is missing."));
    } else {
        browser_.setSource(QUrl::fromLocalFile(path), QTextDocument::MarkdownResource);
    }
    dress(*browser_.document());
    resize(900, 780);
}

QString ManualWindow::find(const QString& programFolder) {
    for (const char* const folder : {"/../share/doc/zemo/docs", "/../../../docs"}) {
        const QFileInfo file(programFolder + folder + "/MANUAL.md");
        if (file.isFile()) {
            return file.canonicalFilePath();
        }
    }
    return {};
}

bool ManualWindow::goTo(const QString& anchor) {
    for (QTextBlock block = browser_.document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() > 0 && anchorOf(block.text()) == anchor) {
            browser_.setTextCursor(QTextCursor(block));
            QScrollBar* const bar = browser_.verticalScrollBar();
            bar->setValue(bar->value() + browser_.cursorRect().top() -
                          browser_.fontMetrics().height());
            return true;
        }
    }
    return false;
}

QString ManualWindow::anchorOf(const QString& heading) {
    QString anchor;
    for (const QChar c : heading.toLower()) {
        if (c == ' ') {
            anchor += '-';
        } else if (c.isLetterOrNumber() || c == '-' || c == '_') {
            anchor += c;
        }
    }
    return anchor;
}

/// The other program's sound is not this one's.
static bool openElsewhere(const QUrl& link) {
    const platform::WithoutOwnVariables without;
    return QDesktopServices::openUrl(link);
}

void ManualWindow::follow(const QUrl& link) {
    if (link.hasFragment() && link.adjusted(QUrl::RemoveFragment) == browser_.source()) {
        goTo(link.fragment());
    } else if (!openElsewhere(link)) {
        auto* const word = new QMessageBox(this);
        word->setAttribute(Qt::WA_DeleteOnClose);
        word->setWindowTitle(windowTitle());
        word->setText(tr("No program here opens %1.").arg(link.fileName()));
        word->open();
    }
}

} // namespace zemo
