#include "app/mainwindow.h"
#include "app/settings.h"
#include "forms/pulsar/pulsarform.h"
#include "support/messageboxcatcher.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTextBlock>
#include <QTextBrowser>

namespace {

constexpr char failing[] = "background-color: #f4cccc;";
constexpr char filled[] = "background-color: #98FB98;";
constexpr char readOnly[] = "background-color: #dfffd3;";
constexpr char plain[] = "background-color: #ffffff;";

} // namespace

class TestCalculatorForm : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void presets();
    void severalErrors();
    void reportIsColoured();
    void boundFields();
    void fileNameOpensTheRecording();
    void reportIsCopied();

private:
    template <typename Widget = QLineEdit>
    Widget *find(const char *name) const
    {
        Widget *const widget = window->findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    void press(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void type(const char *field, const QString &text)
    {
        find(field)->clear();
        QTest::keyClicks(find(field), text);
    }
    QString report() const { return find<QTextBrowser>("textInfo")->toPlainText(); }
    QString style(const char *name) const { return find<QWidget>(name)->styleSheet(); }
    QColor colourOf(const QString &text) const;

    QTemporaryDir folder;
    std::unique_ptr<MainWindow> window;
};

// The declinations are the nominal ones, whatever the user of this machine has.
void TestCalculatorForm::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", folder.path().toLocal8Bit());
    qApp->setStyleSheet("QLineEdit { color: black; } .blue { color: #010203; } "
                        ".green { color: #040506; } .red { color: #070809; }");
}

void TestCalculatorForm::init()
{
    window = std::make_unique<MainWindow>();
    window->show();
    window->openCalculator();
}

void TestCalculatorForm::cleanup()
{
    window.reset();
}

// Of the fragment that begins with a text.
QColor TestCalculatorForm::colourOf(const QString &text) const
{
    const QTextDocument *const document = find<QTextBrowser>("textInfo")->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            if (part.fragment().text().startsWith(text))
                return part.fragment().charFormat().foreground().color();
        }
    }
    return {};
}

void TestCalculatorForm::presets()
{
    QVERIFY(report().startsWith("Введите параметры в калькулятор"));
    press("cat2zrt_send");
    QCOMPARE(find("cat2zrt_time")->text(), QString("12:13:20"));
    QCOMPARE(find("cat2zrt_culmPoint")->text(), QString("64090"));
    QCOMPARE(style("cat2zrt_culmPoint"), QString(filled));
    QVERIFY(report().endsWith("Culmination point: 64090"));
    press("zrt2cat_send");
    QVERIFY(find("zrt2cat_alfa")->text().startsWith("03:22:"));
    QVERIFY(report().contains("Pulsar name: J0322+3941"));
    press("ffa_show_info");
    QCOMPARE(find("ffa_rows")->text(), QString("15188"));
    press("clearForm");
    QCOMPARE(find("cat2zrt_time")->text(), QString());
    QCOMPARE(style("cat2zrt_time"), QString(readOnly));
    QCOMPARE(find("cat2zrt_alfa")->text(), QString("03:23:27"));
}

// Enter starts the calculator of the field; a good input takes the marks away.
void TestCalculatorForm::severalErrors()
{
    press("calcdelta_send");
    QVERIFY(
        report().contains("Select plosh in form!\nSelect module in form!\nSelect ray in form!"));
    QCOMPARE(style("calcdelta_plosh"), QString(failing));
    find<QComboBox>("calcdelta_plosh")->setCurrentText("N1");
    find<QSpinBox>("calcdelta_module")->setValue(6);
    find<QSpinBox>("calcdelta_ray")->setValue(9);
    QTest::keyClick(find<QSpinBox>("calcdelta_ray"), Qt::Key_Enter);
    QVERIFY(report().endsWith("Error: no delta for these module and beam!"));
    QCOMPARE(style("calcdelta_ray"), QString(plain));

    press("cat2zrt_send");
    type("cat2zrt_delta", "-05:10:00");
    find<QComboBox>("tres")->setCurrentText("0");
    find("cat2zrt_delta")->setFocus();
    QTest::keyClick(find("cat2zrt_delta"), Qt::Key_Return);
    QVERIFY(report().contains("Error:\nBad delta! Type delta in format hh:mm:ss or hh°mm′ss″\n"
                              "Bad tres!"));
    QCOMPARE(style("tres"), QString(failing));
    QCOMPARE(style("cat2zrt_alfa"), QString(plain));
    QCOMPARE(style("cat2zrt_time"), QString(readOnly));
    QCOMPARE(find("cat2zrt_time")->text(), QString("12:13:20")); // as it was
    QCOMPARE(window->focusWidget(), find<QWidget>("cat2zrt_delta"));
}

void TestCalculatorForm::reportIsColoured()
{
    find<QComboBox>("calcdelta_plosh")->setCurrentText("N1");
    find<QSpinBox>("calcdelta_module")->setValue(6);
    find<QSpinBox>("calcdelta_ray")->setValue(8);
    press("calcdelta_send");
    QCOMPARE(colourOf("Calculator: Get delta from ray"), QColor("#010203"));
    QCOMPARE(colourOf("N1"), QColor("#040506"));
    QCOMPARE(colourOf(find("calcdelta_delta")->text()), QColor("#010203"));
    find<QSpinBox>("calcdelta_ray")->setValue(9);
    press("calcdelta_send");
    QCOMPARE(colourOf("Error:"), QColor("#070809"));
}

void TestCalculatorForm::boundFields()
{
    type("zrt2cat_time", "10:00:12.5");
    QCOMPARE(find("zrt2cat_culmPoint")->text(), QString("1001")); // 1000.58
    type("zrt2cat_culmPoint", "64090");
    QCOMPARE(find("zrt2cat_time")->text(), QString("10:13:20.66"));
    find<QComboBox>("tres")->setCurrentText("0.0999424");
    QCOMPARE(find("zrt2cat_culmPoint")->text(), QString("8011")); // 8011.21
    type("zrt2cat_culmPoint", "36021");
    QCOMPARE(style("zrt2cat_culmPoint"), QString(failing)); // 3600.03 s

    find<QSpinBox>("ffa_bin_min")->setValue(64);
    QCOMPARE(find("ffa_period_min")->text(), QString("0.64"));
    type("ffa_tres", "0.5");
    QCOMPARE(find("ffa_period_min")->text(), QString("32"));
    find<QAbstractButton>("ffa_boundPeriodBin")->click();
    QVERIFY(!find("ffa_period_min")->isReadOnly());
    find<QSpinBox>("ffa_bin_min")->setValue(65);
    QCOMPARE(find("ffa_period_min")->text(), QString("32"));
    press("ffa_show_info");
    QCOMPARE(style("ffa_period_max"), QString(failing)); // "period_max must be > period_min"
}

void TestCalculatorForm::fileNameOpensTheRecording()
{
    Settings::instance()->setLastOpenPath(folder.path());
    press("cat2zrt_send");
    const TestSupport::MessageBoxCatcher catcher;
    QTest::mouseClick(find("cat2zrt_fileName"), Qt::LeftButton);
    QVERIFY(Settings::instance()->ui().statusbar->currentMessage().startsWith("010415_17_N1_00"));
    QFile file(folder.filePath("010415_17_N1_00.pnthr"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QTest::mouseClick(find("cat2zrt_fileName"), Qt::LeftButton);
    QTRY_COMPARE(catcher.boxes().size(), 1); // the form that was opened finds no data in it
    QVERIFY(!window->findChild<QWidget *>("CalculatorForm"));
}

void TestCalculatorForm::reportIsCopied()
{
    press("cat2zrt_send");
    QTest::keyClick(find<QTextBrowser>("textInfo"), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), report());
    press("zrt2cat_send");
    press("copyReport");
    QCOMPARE(QApplication::clipboard()->text(), report());
}

ZRT_GUI_TEST_MAIN(TestCalculatorForm)
#include "tst_calculatorform.moc"
