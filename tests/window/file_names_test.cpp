#include <QtTest>
#include <array>
#include <random>
#include <string>

#include "interface/FileNames.h"
#include "platform/Utf8.h"

using namespace zemo;
using platform::isUtf8;

class FileNamesTest : public QObject {
    Q_OBJECT
private slots:
    void ordinaryNamesAreAsQtHasThem() {
        for (const char* const name : {"", "a", "/a b/c.caf", "\u00E9\u00DF", "\u97F3.wav",
                                       "\U0001F3B5", "e\u0301", "\uFFFD", "100%"}) {
            QCOMPARE(pathFromBytes(name), QString::fromUtf8(name));
            QCOMPARE(bytesOfPath(QString::fromUtf8(name)), std::string(name));
            QVERIFY(isUtf8(name));
        }
    }

    void everyByteThatIsNotUtf8IsKept() {
        using namespace std::string_literals;
        for (const std::string& name :
             {"caf\xE9.caf"s, "\xFF\xFE\x80"s, "\xC3"s, "\xC3\x28"s, "\xC0\xAF"s, "\xE0\x80\xAF"s,
              "\xED\xA0\x80"s, "\xED\xB2\x80"s, "\xF0\x80\x80\x80"s, "\xF4\x90\x80\x80"s,
              "\xF5\x80\x80\x80"s, "\xF0\x9F\x8E"s, "\xE9\xC3\xA9\xE9"s,
              "/\xE9/\xF0\x9F\x8E\xB5\xB5"s}) {
            QCOMPARE(bytesOfPath(pathFromBytes(name)), name);
            QVERIFY(!isUtf8(name));
        }
    }

    void anyBytesComeBackAsTheyWere() {
        std::mt19937 random(1);
        // Beginnings and later bytes of characters, and what is next to them.
        constexpr std::array<unsigned char, 16> kBytes{'a',  '%',  '/',  0x7F, 0x80, 0xBF,
                                                       0xC2, 0xDF, 0xE0, 0xED, 0xEF, 0xF0,
                                                       0xF4, 0xF5, 0xA0, 0xFF};
        for (int i = 0; i < 100000; ++i) {
            std::string name(random() % 12, '\0');
            for (char& byte : name) {
                byte = static_cast<char>(kBytes[random() % kBytes.size()]);
            }
            QCOMPARE(bytesOfPath(pathFromBytes(name)), name);
            QCOMPARE(unescapedName(escapedName(name)), name);
            QCOMPARE(isUtf8(name), QByteArray::fromStdString(name).isValidUtf8());
        }
    }

    void aNameIsShownWithAMarkForEveryLostByte() {
        QCOMPARE(shownFileName(pathFromBytes("/a/caf\xE9.caf")), QString("caf\uFFFD.caf"));
        QCOMPARE(shownFileName(pathFromBytes("/a\xE9/\u00E9.caf")), QString("\u00E9.caf"));
        QCOMPARE(shownFileName("plain"), QString("plain"));
    }

    void escapesAreOfThoseBytesAndOfThePercentSign() {
        QCOMPARE(escapedName("caf\xE9 100%.caf"), QString("caf%E9 100%25.caf"));
        QCOMPARE(escapedName("\u00E9"), QString("\u00E9"));
    }

    void aPathIsTakenFromTheRoot() {
        const std::string here = QDir::currentPath().toStdString();
        QCOMPARE(absoluteBytesOf(pathFromBytes("caf\xE9")), here + "/caf\xE9");
        QCOMPARE(absoluteBytesOf(pathFromBytes("/a/./b/../caf\xE9")), std::string("/a/caf\xE9"));
    }
};

QTEST_GUILESS_MAIN(FileNamesTest)
#include "file_names_test.moc"
