#include <QtTest>

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
