#include "base/typednumber.h"
#include "support/testmain.h"

#include <QLocale>

using namespace Tools;

class TestTypedNumber : public QObject {
    Q_OBJECT

private slots:
    void numbers();

private:
    QString told(const std::vector<double> &values) const
    {
        QStringList texts;
        for (const double value : values)
            texts << QString::number(value, 'g', 10);
        return texts.join(" ");
    }
};

// Decimal points, commas and blanks as marks of thousands, and no Latin digits.
void TestTypedNumber::numbers()
{
    const struct {
        QString text;
        QString number; // empty: refused
        QString whole;
        QString list;
    } cases[] = {
        {"26.2", "26.2", "", "26.2"},
        {"1,234", "1.234", "", "1.234"}, // no mark of thousands
        {"1.234", "1.234", "", "1.234"},
        {"58,000", "58", "", "58"}, // no fraction, but a mark
        {",5 5,", "", "", "0.5 5"},
        {"1,234.5", "", "", ""},
        {"1,234,567", "", "", ""},
        {" \t58000\n", "58000", "58000", "58000"},
        {QString::fromUtf8("\u00a0"
                           "16384\u00a0"),
         "16384", "16384", "16384"},
        {"58 000", "", "", "58 0"},
        {"-1,5e-3", "-0.0015", "", "-0.0015"},
        {"+2e3", "2000", "2000", "2000"},
        {"1e2,5", "", "", ""},
        {"1e300", "1e+300", "9000000000000000000", "1e+300"}, // beyond all points
        {"1e999", "", "", ""},
        {" 0  13,1 26.2 52,4 ", "", "", "0 13.1 26.2 52.4"},
        {"1 2 x", "", "", ""},
        {"nan", "", "", ""},
        {"inf", "", "", ""},
        {"0x10", "", "", ""},
        {QString::fromUtf8("٢٦"), "", "", ""},
        {",", "", "", ""},
        {"", "", "", ""},
    };
    for (const char *locale : {"C", "de_DE", "ru_RU", "ar_EG"}) {
        QLocale::setDefault(QLocale(locale));
        for (const auto &[text, number, whole, list] : cases) {
            const std::optional<double> asNumber = typedNumber(text);
            QCOMPARE(asNumber ? told({*asNumber}) : QString(), number);
            const std::optional<qint64> asWhole = typedWhole(text);
            QCOMPARE(asWhole ? QString::number(*asWhole) : QString(), whole);
            QCOMPARE(told(typedNumbers(text)), list);
        }
    }
}

ZRT_UNIT_TEST_MAIN(TestTypedNumber)
#include "tst_typednumber.moc"
