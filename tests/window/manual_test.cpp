#include <QMessageBox>
#include <QScrollBar>
#include <QTextBlock>
#include <QtTest>

#include "interface/ManualWindow.h"
#include "support/WindowUnderTest.h"

using namespace zemo;
using zemo::test::loadSound;
using zemo::test::WindowUnderTest;

namespace {

ManualWindow* shownManual() {
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        auto* const manual = qobject_cast<ManualWindow*>(widget);
        if (manual != nullptr && manual->isVisible()) {
            return manual;
        }
    }
    return nullptr;
}

QString write(const QTemporaryDir& folder, const QString& name, const QByteArray& text) {
    const QFileInfo path(folder.filePath(name));
    QDir().mkpath(path.absolutePath());
    QFile file(path.filePath());
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        qFatal("the test's folder cannot be written");
    }
    return path.canonicalFilePath();
}

QString manualOfThisProgram() {
    return ManualWindow::find(QCoreApplication::applicationDirPath());
}

/// Every picture that the text shows, by its own name.
QStringList picturesOf(const QTextDocument& document) {
    QStringList names;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto at = block.begin(); !at.atEnd(); ++at) {
            const QTextCharFormat format = at.fragment().charFormat();
            if (format.isImageFormat()) {
                names += format.toImageFormat().name();
            }
        }
    }
    return names;
}

/// Every link of the text to one of its own headings.
QStringList linksWithin(const QTextDocument& document) {
    QStringList anchors;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto at = block.begin(); !at.atEnd(); ++at) {
            const QString link = at.fragment().charFormat().anchorHref();
            if (link.startsWith('#')) {
                anchors += link.mid(1);
            }
        }
    }
    return anchors;
}

} // namespace

class ManualTest : public QObject {
    Q_OBJECT
private slots:
    void f1OpensTheManualAtItsBeginning() {
        WindowUnderTest zemo;
        QVERIFY(QTest::qWaitForWindowActive(zemo.delegate.window));
        QCOMPARE(shownManual(), nullptr);
        QTest::keyClick(zemo.delegate.window, Qt::Key_F1);
        ManualWindow* const manual = shownManual();
        QVERIFY(manual != nullptr);
        QCOMPARE(manual->windowTitle(), QString("ZEMO Manual"));
        const QTextBlock first = manual->browser()->document()->begin();
        QCOMPARE(first.text(), QString("ZEMO, the manual"));
        QCOMPARE(first.blockFormat().headingLevel(), 1);
        QCOMPARE(manual->browser()->verticalScrollBar()->value(), 0);
        QCOMPARE(manual->browser()->accessibleName(), QString("Manual"));
    }

    void askedForAgainItIsTheSameWindow() {
        WindowUnderTest zemo;
        QAction* const item = zemo.delegate.window->findChild<QAction*>("ManualMenu");
        item->trigger();
        ManualWindow* const first = shownManual();
        first->goTo("hd");
        const int place = first->browser()->verticalScrollBar()->value();
        first->close();
        QCOMPARE(shownManual(), nullptr);
        item->trigger();
        QCOMPARE(shownManual(), first);
        QCOMPARE(first->browser()->verticalScrollBar()->value(), place);
        QVERIFY(place > 0);
    }

    void itCanBeReadWhileASheetIsOpen() {
        WindowUnderTest zemo;
        loadSound(std::vector<float>(1000, 0.5F));
        zemo.delegate.window->findChild<QAction*>("ManualMenu")->trigger();
        zemo.delegate.HDMenu->trigger();
        QVERIFY(zemo.delegate.hdPanel->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(shownManual()));
        QScrollBar* const bar = shownManual()->browser()->verticalScrollBar();
        QTest::keyClick(shownManual()->windowHandle(), Qt::Key_PageDown);
        QVERIFY(bar->value() > 0);
    }

    void escapeClosesIt() {
        WindowUnderTest zemo;
        zemo.delegate.window->findChild<QAction*>("ManualMenu")->trigger();
        QTest::keyClick(shownManual(), Qt::Key_Escape);
        QCOMPARE(shownManual(), nullptr);
    }

    void itKeepsNoProgramAlive() {
        ManualWindow manual(manualOfThisProgram());
        QVERIFY(!manual.testAttribute(Qt::WA_QuitOnClose));
    }

    void everyLinkToAHeadingGoesThere() {
        ManualWindow manual(manualOfThisProgram());
        manual.show();
        const QStringList links = linksWithin(*manual.browser()->document());
        QVERIFY(links.size() > 10);
        for (const QString& link : links) {
            QVERIFY2(manual.goTo(link), qPrintable(link));
            const QTextCursor cursor = manual.browser()->textCursor();
            QCOMPARE(ManualWindow::anchorOf(cursor.block().text()), link);
            QVERIFY(manual.browser()->viewport()->rect().contains(
                manual.browser()->cursorRect(cursor).topLeft()));
        }
    }

    void aLinkToNoHeadingGoesNowhere() {
        ManualWindow manual(manualOfThisProgram());
        manual.show();
        QVERIFY(!manual.goTo("no-such-heading"));
        QCOMPARE(manual.browser()->verticalScrollBar()->value(), 0);
    }

    void aLinkThatIsFollowedScrollsTheText() {
        ManualWindow manual(manualOfThisProgram());
        manual.show();
        QUrl link = manual.browser()->source();
        link.setFragment("revert");
        emit manual.browser()->anchorClicked(link);
        QCOMPARE(manual.browser()->textCursor().block().text(), QString("Revert"));
        QVERIFY(manual.browser()->verticalScrollBar()->value() > 0);
    }

    void aLinkThatNoProgramOpensIsSaid() {
        ManualWindow manual(manualOfThisProgram());
        manual.show();
        const QUrl sound = manual.browser()->source().resolved(QUrl("manual/bell.flac"));
        emit manual.browser()->anchorClicked(sound);
        auto* const word = manual.findChild<QMessageBox*>();
        QVERIFY(word != nullptr && word->isVisible());
        QCOMPARE(word->text(), QString("No program here opens bell.flac."));
        QVERIFY(manual.browser()->source().fileName() == "MANUAL.md");
    }

    void everyPictureIsShownAndFitsIntoTheWindow() {
        ManualWindow manual(manualOfThisProgram());
        manual.show();
        const QStringList pictures = picturesOf(*manual.browser()->document());
        QVERIFY(pictures.size() > 10);
        const QDir folder = QFileInfo(manualOfThisProgram()).dir();
        for (const QString& name : pictures) {
            QVERIFY2(!QImage(folder.filePath(name)).isNull(), qPrintable(name));
        }
        QCOMPARE(manual.browser()->horizontalScrollBar()->maximum(), 0);
    }

    void anAnchorIsMadeOfItsHeadingAsMarkdownDoes() {
        QCOMPARE(ManualWindow::anchorOf("AM and SSB"), QString("am-and-ssb"));
        QCOMPARE(ManualWindow::anchorOf("Peak / RMS"), QString("peak--rms"));
        QCOMPARE(ManualWindow::anchorOf("What's “new”?"), QString("whats-new"));
    }

    void theInstalledManualIsFoundFirst() {
        const QTemporaryDir folder;
        const QString program = folder.filePath("a/b/bin");
        QCOMPARE(ManualWindow::find(program), QString());
        QDir().mkpath(program);
        const QString inTheTree = write(folder, "docs/MANUAL.md", "# Tree\n");
        QCOMPARE(ManualWindow::find(program), inTheTree);
        const QString installed = write(folder, "a/b/share/doc/zemo/docs/MANUAL.md", "# There\n");
        QCOMPARE(ManualWindow::find(program), installed);
    }

    void withoutAManualItSaysSo() {
        ManualWindow manual("");
        QCOMPARE(manual.browser()->toPlainText(),
                 QString("There is no manual here: the file MANUAL.md is missing."));
    }
};

QTEST_MAIN(ManualTest)
#include "manual_test.moc"
