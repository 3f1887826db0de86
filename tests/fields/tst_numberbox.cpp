#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "fields/wheelfilter.h"
#include "support/testmain.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

// A decimal comma, with points or blanks between thousands, must change nothing.
class TestNumberBox : public QObject {
    Q_OBJECT

private slots:
    void init();
    void typed();
    void arrowsAndWheel();
    void refusedTextStays();
    void wayBack();
    void wheelWithoutFocus();

private:
    void type(QAbstractSpinBox *box, const QString &text)
    {
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, text);
    }
    static bool isMarked(const QWidget *box) { return box->styleSheet() == FieldStyles::failing; }

    std::unique_ptr<QWidget> window;
    NumberBox *number = nullptr;
    WholeBox *whole = nullptr;
    QLineEdit *next = nullptr;
};

void TestNumberBox::init()
{
    window = std::make_unique<QWidget>();
    auto *const layout = new QVBoxLayout(window.get());
    auto *const label = new QLabel("&Dispersion");
    layout->addWidget(label);
    layout->addWidget(number = new NumberBox);
    layout->addWidget(whole = new WholeBox);
    layout->addWidget(next = new QLineEdit);
    label->setBuddy(number);
    number->setRange(0, 10000);
    whole->setRange(1, 99999);
    whole->setObjectName("points");
    window->show();
    QApplication::setActiveWindow(window.get());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

// The panel gets the wheel then.
void TestNumberBox::wheelWithoutFocus()
{
    const Fields::WheelFilter filter(nullptr);
    auto *const combo = new QComboBox;
    combo->addItems({"a", "b"});
    window->layout()->addWidget(combo);
    combo->show();
    whole->setValue(5);
    const auto turn = [](QWidget *field) {
        const QPointF place(field->rect().center());
        QWheelEvent wheel(place, field->mapToGlobal(place.toPoint()), {}, {0, -120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(field, &wheel);
        return wheel.isAccepted();
    };
    next->setFocus();
    QVERIFY(!turn(whole) && !turn(combo));
    QCOMPARE(whole->value(), 5);
    QCOMPARE(combo->currentIndex(), 0);
    whole->setFocus();
    QVERIFY(turn(whole));
    QCOMPARE(whole->value(), 4);
    combo->setFocus();
    QVERIFY(turn(combo));
    QCOMPARE(combo->currentIndex(), 1);
    QVERIFY(combo->focusPolicy() == Qt::StrongFocus);
}

void TestNumberBox::typed()
{
    const struct {
        const char *text;
        double value; // below 0: refused
        const char *shown;
        bool isWhole;
    } rows[] = {
        {"26,2", 26.2, "26.20", false},
        {"1,234", 1.23, "1.23", false},    // no mark of thousands
        {"26.766", 26.77, "26.77", false}, // rounded, not cut
        {"1,234.5", -1, "1,234.5", false},
        {"10000,01", -1, "10000,01", false},
        {"\b", -1, "", false},
        {" 58000 ", 58000, "58000", true},
        {"58,000", -1, "58,000", true},
        {"0", -1, "0", true},
    };
    for (const char *locale : {"C", "de_DE", "ru_RU", "ar_EG"}) {
        QLocale::setDefault(QLocale(locale));
        for (const auto &[text, value, shown, isWhole] : rows) {
            init(); // fields take the locale of their birth
            QAbstractSpinBox *const box = isWhole ? static_cast<QAbstractSpinBox *>(whole)
                                                  : static_cast<QAbstractSpinBox *>(number);
            type(box, text);
            QTest::keyClick(box, Qt::Key_Return);
            QCOMPARE(box->text(), QString(shown));
            QCOMPARE(isMarked(box), value < 0);
            QCOMPARE(Fields::refuseUnread(window.get()), value < 0);
            if (value >= 0)
                QCOMPARE(isWhole ? whole->value() : number->value(), value);
        }
    }
}

void TestNumberBox::arrowsAndWheel()
{
    number->setValue(26.2);
    number->setFocus();
    QTest::keyClick(number, Qt::Key_Up);
    QCOMPARE(number->text(), QString("27.20"));
    QTest::keyClick(number, Qt::Key_PageDown);
    QCOMPARE(number->text(), QString("17.20"));
    const QPoint middle = number->rect().center();
    QWheelEvent wheel(middle, number->mapToGlobal(middle), {}, {0, 120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(number, &wheel);
    QCOMPARE(number->text(), QString("18.20"));
}

// The message names the field and what it takes.
void TestNumberBox::refusedTextStays()
{
    number->setValue(26.2);
    type(number, "x");
    QTest::mouseClick(next, Qt::LeftButton);
    QVERIFY(isMarked(number));
    QVERIFY2(next->hasFocus(), "what is typed next belongs there");
    number->setFocus();
    QTest::keyClick(number, Qt::Key_Tab);
    QVERIFY(isMarked(number));
    QVERIFY(number->hasFocus());
    QCOMPARE(number->text(), QString("x"));
    QCOMPARE(number->value(), 26.2);
    QCOMPARE(QToolTip::text(),
             QString("Dispersion: \"x\" cannot be taken.\nAllowed: digits, with a "
                     "point or a comma before decimals, from 0 to 10000."));

    type(number, "30,5");
    QVERIFY(!isMarked(number));
    QCOMPARE(number->value(), 30.5);

    type(whole, "1.5");
    type(number, "");
    QTest::keyClicks(number, "\b");
    QVERIFY2(Fields::refuseUnread(window.get()), "both at once, the first gets the focus");
    QVERIFY(number->hasFocus());
    QVERIFY(isMarked(whole));
}

void TestNumberBox::wayBack()
{
    number->setValue(26.2);
    for (const int key : {Qt::Key_Escape, Qt::Key_Up}) {
        type(number, "x");
        QTest::keyClick(number, Qt::Key_Return);
        QTest::keyClick(number, Qt::Key(key));
        QCOMPARE(number->text(), QString("26.20"));
        QVERIFY(!isMarked(number));
    }
    // The value has followed the keys up to the text that cannot be read.
    for (const char *text : {"1.234,5", "5x"}) {
        type(number, text);
        QTest::keyClick(number, Qt::Key_Return);
        QTest::keyClick(number, Qt::Key_Escape);
        QCOMPARE(number->value(), 26.2);
        QCOMPARE(number->text(), QString("26.20"));
    }
    type(number, "7");
    QTest::keyClick(number, Qt::Key_Return);
    type(number, "8x");
    QTest::keyClick(number, Qt::Key_Escape);
    QCOMPARE(number->value(), 7.0);
    number->setValue(26.2);
    type(number, "x");
    QTest::keyClick(number, Qt::Key_Return);
    number->setValue(26.2); // by the program, the same as before
    QTRY_VERIFY(!isMarked(number));
}

ZRT_GUI_TEST_MAIN(TestNumberBox)
#include "tst_numberbox.moc"
