#include <QtTest>
#include <bit>
#include <random>

#include "interface/FieldValue.h"

using namespace zemo;

class FieldValueTest : public QObject {
    Q_OBJECT
private slots:
    void init() { QLocale::setDefault(QLocale::c()); }

    void aFieldIsTheNumberThatItBeginsWith_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<float>("value");
        QTest::newRow("plain") << "440" << 440.0F;
        QTest::newRow("with a unit") << "440 Hz" << 440.0F;
        QTest::newRow("spaces before it") << "  1.5" << 1.5F;
        QTest::newRow("negative") << "-0.25x" << -0.25F;
        QTest::newRow("plus") << "+2" << 2.0F;
        QTest::newRow("exponent") << "1e3" << 1000.0F;
        QTest::newRow("half an exponent") << "1e" << 1.0F;
        QTest::newRow("no digit before the point") << ".5" << 0.5F;
        QTest::newRow("empty") << "" << 0.0F;
        QTest::newRow("a word") << "loud" << 0.0F;
        QTest::newRow("infinity is a word") << "inf" << 0.0F;
        QTest::newRow("not a number is a word") << "nan" << 0.0F;
        QTest::newRow("only a sign") << "-" << 0.0F;
        QTest::newRow("too large") << "1e99" << HUGE_VALF;
        QTest::newRow("too small") << "1e-99" << 0.0F;
    }
    void aFieldIsTheNumberThatItBeginsWith() {
        QFETCH(const QString, text);
        QFETCH(const float, value);
        QCOMPARE(floatValue(text), value);
    }

    void theUsersDecimalCommaIsUnderstoodAndSoIsThePoint() {
        QLocale::setDefault(QLocale(QLocale::German));
        QCOMPARE(floatValue("1,5"), 1.5F);
        QCOMPARE(floatValue("1.5"), 1.5F);
        QCOMPARE(doubleValue("0,995"), 0.995);
    }

    void withoutThatLocaleACommaEndsTheNumber() { QCOMPARE(floatValue("1,5"), 1.0F); }

    void aFieldShowsWhatWasReadOfIt_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        for (const char* const text : {"440", "0.50", ".5", "5.", "1e3", "+2", " 7 ", "-0", "-3"}) {
            QTest::newRow(text) << text << text; // is that number
        }
        QTest::newRow("with a unit") << "440 Hz"
                                     << "440";
        QTest::newRow("a word") << "loud"
                                << "0";
        QTest::newRow("empty") << ""
                               << "0";
        QTest::newRow("a comma that is none") << "0,3"
                                              << "0";
        QTest::newRow("a word behind it") << "0.1x"
                                          << "0.1";
        QTest::newRow("half an exponent") << "12e"
                                          << "12";
        QTest::newRow("a large number and a unit") << "192000 Hz"
                                                   << "192000";
        QTest::newRow("a huge number and a unit") << "1e20 Hz"
                                                  << "1e+20";
        QTest::newRow("a tiny number and a unit") << "0.00000125 s"
                                                  << "1.25e-06";
        QTest::newRow("too small") << "1e-99"
                                   << "0";
        QTest::newRow("too large to be shown") << "1e99"
                                               << "1e99";
    }
    void aFieldShowsWhatWasReadOfIt() {
        QFETCH(const QString, typed);
        QFETCH(const QString, shown);
        QCOMPARE(shownNumber(typed, floatValue(typed)), shown);
        QCOMPARE(floatValue(shown), floatValue(typed));
    }

    void aFieldShowsTheBound() {
        QCOMPARE(shownNumber("0.5", 0.6), QString("0.6"));
        QCOMPARE(shownNumber("50", 100), QString("100"));
        QCOMPARE(shownNumber("12.9", 12), QString("12"));
        QCOMPARE(shownNumber("100", 100), QString("100"));
        QLocale::setDefault(QLocale(QLocale::German));
        QCOMPARE(shownNumber("0,5", 0.6), QString("0,6"));
    }

    void aFieldShowsTheLocalesDecimalSign() {
        QLocale::setDefault(QLocale(QLocale::German));
        QCOMPARE(shownNumber("0,3", 0.3F), QString("0,3"));
        QCOMPARE(shownNumber("0.3", 0.3F), QString("0,3"));
        QCOMPARE(shownNumber("1.000", 1.0F), QString("1")); // which is not a thousand here
        QCOMPARE(localizedNumber("0.995"), QString("0,995"));
        QCOMPARE(numberText(0.998), QString("0,998"));
    }

    void anyNumberThatIsShownIsReadAsItself() {
        std::mt19937 random(7);
        for (int i = 0; i < 100000; ++i) {
            const auto bits = static_cast<std::uint32_t>(random());
            const auto number = std::bit_cast<float>(bits);
            if (std::isfinite(number)) {
                QCOMPARE(floatValue(numberText(number)), number);
                const double wide = static_cast<double>(number) / 3.0;
                QCOMPARE(doubleValue(numberText(wide)), wide);
            }
        }
    }

    void wholeNumbersAreHeldToThirtyTwoBits() {
        QCOMPARE(integerValue("500 samples"), 500);
        QCOMPARE(integerValue("12.9"), 12);
        QCOMPARE(integerValue("x"), 0);
        QCOMPARE(integerValue("99999999999999999999999"), INT32_MAX);
        QCOMPARE(integerValue("-99999999999"), INT32_MIN);
    }
};

QTEST_MAIN(FieldValueTest)
#include "field_value_test.moc"
