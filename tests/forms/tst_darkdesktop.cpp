#include "app/shell/applicationstyles.h"
#include "fields/fieldstyles.h"
#include "forms/arrays/arraysdirform.h"
#include "forms/arrays/arraysform.h"
#include "forms/calculator/calculatorform.h"
#include "forms/days/fourierform.h"
#include "forms/ffa/ffaform.h"
#include "forms/native/nativegrafik.h"
#include "forms/profiles/profileform.h"
#include "forms/pulsar/pulsarform.h"
#include "forms/transient/transientform.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTextBlock>
#include <QTextEdit>
#include <algorithm>
#include <cmath>

// Looks at every form on a dark and on a light desktop for text that is hard to tell from its
// ground. Most texts are judged by their pixels, so that it does not matter where a colour comes
// from: the commonest colour of a widget is its ground, and of all others the one that is told
// best from it its text.

namespace {

// Contrast of text, of WCAG 2.1, 1.4.3, which exempts what is disabled: its grey is the desktop's.
constexpr double enough = 4.5;

QPalette darkPalette()
{
    QPalette palette(QColor("#2b2e31"));
    for (const auto &[role, colour] : {std::pair(QPalette::Window, "#2b2e31"),
                                       {QPalette::WindowText, "#e6e6e6"},
                                       {QPalette::Base, "#1c1e20"},
                                       {QPalette::AlternateBase, "#26292c"},
                                       {QPalette::Text, "#e6e6e6"},
                                       {QPalette::Button, "#34383c"},
                                       {QPalette::ButtonText, "#e6e6e6"},
                                       {QPalette::ToolTipBase, "#34383c"},
                                       {QPalette::ToolTipText, "#e6e6e6"},
                                       {QPalette::Highlight, "#2f6ea8"},
                                       {QPalette::HighlightedText, "#ffffff"},
                                       {QPalette::Link, "#8ab8e6"}})
        palette.setColor(role, colour);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, "#8f9499");
    return palette;
}

// Relative luminance and contrast of WCAG 2.1.
double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return a > b ? a / b : b / a;
}

QColor commonest(const QHash<QRgb, int> &counts)
{
    const auto best = std::max_element(counts.cbegin(), counts.cend());
    return best == counts.cend() ? QColor() : QColor(best.key());
}

QHash<QRgb, int> coloursOf(const QImage &image, const QRect &area)
{
    QHash<QRgb, int> counts;
    const QRect part = area & image.rect();
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            ++counts[image.pixel(x, y)];
    }
    return counts;
}

QString textOf(const QWidget *widget)
{
    if (const auto *const label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (const auto *const button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    if (const auto *const line = qobject_cast<const QLineEdit *>(widget))
        return line->text();
    if (const auto *const box = qobject_cast<const QGroupBox *>(widget))
        return box->title();
    if (const auto *const choice = qobject_cast<const QComboBox *>(widget))
        return choice->currentText();
    return {};
}

// Where the text is; without the frames, which must not be taken for text.
QRect textArea(const QWidget *widget)
{
    if (const auto *const box = qobject_cast<const QGroupBox *>(widget)) {
        const QFontMetrics font = box->fontMetrics();
        return {12, 0, font.horizontalAdvance(box->title()) - 2, font.height()};
    }
    constexpr int frame = 4;
    const bool isFramed = !qobject_cast<const QLabel *>(widget);
    QRect area = isFramed ? widget->rect().adjusted(frame, frame, -frame, -frame) : widget->rect();
    if (qobject_cast<const QRadioButton *>(widget) || widget->inherits("QCheckBox"))
        area.setLeft(area.left() + 20);
    else if (qobject_cast<const QComboBox *>(widget))
        area.setRight(area.right() - 24);
    return area;
}

double bestContrast(const QHash<QRgb, int> &counts, const QColor &ground)
{
    double best = 1;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        best = std::max(best, contrast(QColor(it.key()), ground));
    return best;
}

template <typename Function>
void forEachFragment(const QTextDocument *document, Function function)
{
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it)
            function(it.fragment());
    }
}

template <typename Function>
void forEachItem(const QAbstractItemView *view, Function function)
{
    for (int row = 0; view->model() && row < view->model()->rowCount(); ++row) {
        for (int column = 0; column < view->model()->columnCount(); ++column)
            function(view->model()->index(row, column));
    }
}

QColor colourOf(const QTextFragment &fragment, const QWidget *text)
{
    const QBrush brush = fragment.charFormat().foreground();
    return brush.style() == Qt::NoBrush ? text->palette().color(QPalette::Text) : brush.color();
}

} // namespace

class TestDarkDesktop : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void readable_data();
    void readable();

private:
    void open(const QString &form);
    void showEverything();
    QStringList faintTexts();
};

void TestDarkDesktop::initTestCase()
{
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::NoAntialias); // its pixels have the colour of the text
    QApplication::setFont(font);
}

void TestDarkDesktop::readable_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::addColumn<QString>("form");
    for (const bool isDark : {true, false}) {
        for (const char *form : {"pulsar", "ffa", "native", "days", "profiles", "arrays",
                                 "directory", "calculator", "transients"})
            QTest::newRow(qPrintable(QString(isDark ? "dark %1" : "light %1").arg(form)))
                << isDark << form;
    }
}

void TestDarkDesktop::open(const QString &form)
{
    const QString numbers = file("1 2\n2 3\n5 1\n", "numbers.txt");
    const QString recording =
        file(TestSupport::recordingBytes({40000, 1, 33, 1}, [](int point, int, int channel, int) {
            return float((point * 7 + channel) % 13);
        }));
    if (form == "pulsar") {
        new PulsarForm(recording, window.get());
    } else if (form == "ffa") {
        new FfaForm(recording, window.get());
    } else if (form == "transients") {
        new TransientForm(recording, window.get());
    } else if (form == "native") {
        new NativeGrafik(recording, 0, window.get());
    } else if (form == "days") {
        new FourierForm(folder->path(), 0, 0, 0, window.get());
        QTRY_VERIFY(window->findChild<QWidget *>("groupBox_place"));
    } else if (form == "profiles") {
        new ProfileForm(folder->path(), "periods", window.get());
        QTRY_VERIFY(window->findChild<QWidget *>("groupBox_average"));
    } else if (form == "arrays") {
        new ArraysForm(numbers, window.get());
    } else if (form == "directory") {
        file("no numbers\n", "words.txt");
        new ArraysDirForm(folder->path(), window.get());
    } else {
        new CalculatorForm(window.get());
        click("cat2zrt_send"); // a report with all its colours but red
    }
    QTest::qWait(100); // what forms read and show a little later
}

// Labels that wait for something to tell, and fields as they stand once refused.
void TestDarkDesktop::showEverything()
{
    for (QLabel *label : window->centralWidget()->findChildren<QLabel *>()) {
        if (label->text().isEmpty() && label->pixmap(Qt::ReturnByValue).isNull())
            label->setText("Told");
        label->show();
    }
    if (auto *const calculate = window->findChild<QAbstractButton *>("calcdelta_send"))
        calculate->click(); // refused: red
    int count = 0;
    for (QLineEdit *field : window->centralWidget()->findChildren<QLineEdit *>())
        FieldStyles::setStyle(field, ++count % 2 ? FieldStyles::failing : FieldStyles::filled);
    for (QAbstractSpinBox *field : window->centralWidget()->findChildren<QAbstractSpinBox *>())
        FieldStyles::setStyle(field, FieldStyles::failing);
}

// The texts that are told too badly from their ground, each with its contrast.
QStringList TestDarkDesktop::faintTexts()
{
    QCoreApplication::processEvents();
    for (QLineEdit *field : window->findChildren<QLineEdit *>())
        field->deselect(); // a selection has the desktop's own colours
    const QImage image = window->grab().toImage();
    QStringList faint;
    const auto judge = [&](const QString &text, const QWidget *widget, double found) {
        if (widget->isEnabled() && found < enough)
            faint << QString("%1 \"%2\" %3").arg(widget->objectName(), text.left(30)).arg(found);
    };
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        const QRect seen = widget->visibleRegion().boundingRect();
        if (seen.isEmpty())
            continue;
        const auto *const button = qobject_cast<const QAbstractButton *>(widget);
        if (button && (button->inherits("QCheckBox") || button->inherits("QRadioButton")))
            judge("mark of " + button->text(), widget,
                  contrast(widget->palette().color(QPalette::Text),
                           widget->palette().color(QPalette::Base)));
        const auto counts = coloursOf(
            image, (textArea(widget) & seen).translated(widget->mapTo(window.get(), QPoint())));
        const QColor ground = commonest(counts);
        if (!textOf(widget).trimmed().isEmpty())
            judge(textOf(widget), widget, bestContrast(counts, ground));
        else if (const auto *const text = qobject_cast<const QTextEdit *>(widget))
            forEachFragment(text->document(), [&](const QTextFragment &fragment) {
                judge(fragment.text(), widget, contrast(colourOf(fragment, text), ground));
            });
        else if (const auto *const plain = qobject_cast<const QPlainTextEdit *>(widget))
            forEachFragment(plain->document(), [&](const QTextFragment &fragment) {
                judge(fragment.text(), widget, contrast(colourOf(fragment, plain), ground));
            });
        else if (const auto *const view = qobject_cast<const QAbstractItemView *>(widget))
            forEachItem(view, [&](const QModelIndex &item) {
                const auto brush = item.data(Qt::ForegroundRole);
                const QColor colour = brush.isValid() ? brush.value<QBrush>().color()
                                                      : view->palette().color(QPalette::Text);
                judge(item.data().toString(), widget, contrast(colour, ground));
            });
    }
    return faint;
}

void TestDarkDesktop::readable()
{
    QFETCH(bool, isDark);
    QFETCH(QString, form);
    QApplication::setPalette(isDark ? darkPalette() : QApplication::style()->standardPalette());
    applyApplicationStyles();
    window->resize(1600, 1800); // no part of a panel has to be scrolled to
    open(form);
    QVERIFY(window->centralWidget()->layout());
    QCOMPARE(faintTexts().join("\n"), QString());
    showEverything();
    QCOMPARE(faintTexts().join("\n"), QString());
}

ZRT_GUI_TEST_MAIN(TestDarkDesktop)
#include "tst_darkdesktop.moc"
