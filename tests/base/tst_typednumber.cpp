#include "base/typednumber.h"
#include "support/testmain.h"

#include <QLocale>

using namespace Tools;

class TestTypedNumber : public QObject {
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();

private:
    QString told(const QVector<double> &values) const
    {
        QStringList texts;
        for (const double value : values)
            texts << QString::number(value, 'g', 10);
        return texts.join(" ");
    }
};

void TestTypedNumber::numbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("number"); // empty: refused
    QTest::addColumn<QString>("whole");
    QTest::addColumn<QString>("list");
    const auto row = [](const char *name, const char *text, const char *number, const char *whole,
                        const char *list) {
        QTest::newRow(name) << QString::fromUtf8(text) << number << whole << list;
    };
    row("point", "26.2", "26.2", "", "26.2");
    row("comma", "26,2", "26.2", "", "26.2");
    row("no mark of thousands", "1,234", "1.234", "", "1.234");
    row("nor a point", "1.234", "1.234", "", "1.234");
    row("no fraction, but a mark", "58,000", "58", "", "58");
    row("comma in front and behind", ",5 5,", "", "", "0.5 5");
    row("two marks", "1,234.5", "", "", "");
    row("two commas", "1,234,567", "", "", "");
    row("whole, blanks around", " \t58000\n", "58000", "58000", "58000");
    row("blank that never breaks",
        "\u00a0"
        "16384\u00a0",
        "16384", "16384", "16384");
    row("blank between thousands", "58 000", "", "", "58 0");
    row("sign and exponent", "-1,5e-3", "-0.0015", "", "-0.0015");
    row("whole by exponent", "+2e3", "2000", "2000", "2000");
    row("mark in the exponent", "1e2,5", "", "", "");
    row("beyond all points", "1e300", "1e+300", "9000000000000000000", "1e+300");
    row("beyond all numbers", "1e999", "", "", "");
    row("four", " 0  13,1 26.2 52,4 ", "", "", "0 13.1 26.2 52.4");
    row("one bad spoils all", "1 2 x", "", "", "");
    row("not a number", "nan", "", "", "");
    row("infinite", "inf", "", "", "");
    row("hexadecimal", "0x10", "", "", "");
    row("digits of another script", "٢٦", "", "", "");
    row("mark alone", ",", "", "", "");
    row("empty", "", "", "", "");
}

// Decimal points, commas and blanks as marks of thousands, and no Latin digits.
void TestTypedNumber::numbers()
{
    QFETCH(QString, text);
    for (const char *locale : {"C", "de_DE", "ru_RU", "ar_EG"}) {
        QLocale::setDefault(QLocale(locale));
        const std::optional<double> number = typedNumber(text);
        QTEST(number ? told({*number}) : QString(), "number");
        const std::optional<qint64> whole = typedWhole(text);
        QTEST(whole ? QString::number(*whole) : QString(), "whole");
        const std::vector<double> list = typedNumbers(text);
        QTEST(told(QVector<double>(list.begin(), list.end())), "list");
    }
}

ZRT_UNIT_TEST_MAIN(TestTypedNumber)
#include "tst_typednumber.moc"
