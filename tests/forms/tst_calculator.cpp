#include "app/shell/settings.h"
#include "calculators/calculators.h"
#include "coords/raytables.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QTextBrowser>

using namespace Calculator;

namespace {

// The report from its errors or results on, as one reads it, and the refused or filled fields.
QString told(const Answer &answer)
{
    QString html = answer.report;
    html.replace("<p>", "|").replace("<br>", "|").remove(QRegularExpression("<[^>]*>"));
    html.remove(QRegularExpression("^.*(time_zone=4|tres:|ray = |nbsp;\\|Error:)",
                                   QRegularExpression::DotMatchesEverythingOption));
    return html + " -> " + (answer.failing + answer.outputs.values()).join(" ");
}

} // namespace

class TestCalculator : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void init()
    {
        FormTest::init();
        window->openCalculator();
    }
    void answers();
    void colours();
    void boundFields();
    void fileNameOpensTheRecording();

private:
    QLineEdit *field(const char *name) const { return find<QLineEdit>(name); }
    QString typed(const char *name, const QString &text, const char *shown) const
    {
        type(name, text);
        return field(shown)->text();
    }
    QColor colourOf(const QString &text) const
    {
        const QTextDocument *const report = find<QTextBrowser>("textInfo")->document();
        return report->find(text).charFormat().foreground().color();
    }
};

// The declinations are the nominal ones, whatever the user of this machine has.
void TestCalculator::initTestCase()
{
    QLocale::setDefault(QLocale("ru_RU")); // numbers, times and dates do not follow it
    qputenv("XDG_CONFIG_HOME", "/nowhere");
    qApp->setStyleSheet(".blue { color: #010203; } .green { color: #040506; } "
                        ".red { color: #070809; }");
}

void TestCalculator::answers()
{
    const Tools::RayTables tables = Tools::parseRayTables("N4 1 1 -0.0429");
    QCOMPARE(told(deltaFromRay({}, tables)),
             "|Select plosh in form!|Select module in form!|Select ray in form!| -> "
             "calcdelta_plosh calcdelta_module calcdelta_ray");
    QCOMPARE(told(deltaFromRay({"N4", 1, 1}, tables)),
             "1\n|Result:|delta = -00°02′34″|delta = -0.0429 -> -00°02′34″ -0.043");
    QCOMPARE(told(deltaFromRay({"N1", 6, 7}, {{}, {}, "line 3"})),
             "7\n|Error: no delta for these module and beam!|Error: line 3 ->  ");

    // 8 sidereal hours after the example: the file is one of the next day, the report is not.
    QCOMPARE(told(catalogToZrt({"11:23:27", "39°44′52.9″", "01.04.2015", "N4", "0.1"})),
             "|Results:|UTC date: 01.04.2015|UTC time: 20:11:51|Seconds from hour: 711 sec|"
             "File name: 020415_01_N4_00.pnt|Culmination point: 7114 -> "
             "7114 020415_01_N4_00.pnt 711 20:11:51");
    QCOMPARE(told(catalogToZrt({"03:23:27", "89:50:00", "01.04.2015", "N1", "0.1"})),
             "|Error: no source of this delta crosses the beam plane! ->    ");
    const QString rest = QString(" delta in format hh:mm:ss or hh°mm′ss″|"
                                 "Bad date! Type date in the format dd.mm.yyyy|%1Bad tres!| -> ");
    const QString refused = rest.arg("") + "cat2zrt_alfa cat2zrt_delta cat2zrt_date tres";
    QCOMPARE(told(catalogToZrt({"", "", "", "", ""})),
             "|No alfa! Type alfa in format hh:mm:ss|No delta! Type" + refused);
    QCOMPARE(told(catalogToZrt({"3:23:27", "-05:10:00", "29.02.2015", "N1", "0,012.4928"})),
             "|Bad alfa! Type alfa in format hh:mm:ss|Bad delta! Type" + refused);

    QCOMPARE(told(zrtToCatalog({"1.4.2015", "24:00:00<b>", "-1", "39:44:52x", "9e-6"})),
             "|Bad delta! Type" +
                 rest.arg("Bad time: 24:00:00&lt;b&gt; Type time in the format hh:mm:ss|"
                          "Bad point! Type a whole number, 0 or more|") +
                 "zrt2cat_deltaZrt zrt2cat_date zrt2cat_time zrt2cat_culmPoint tres");
    // The estimate counts the point from the time on.
    const QString estimate = zrtToCatalog({"01.04.2015", "12:13:20", "0", "63:00:00", "1"})
                                 .outputs.value("zrt2cat_alfaKest");
    QCOMPARE(told(zrtToCatalog({"01.04.2015", "11:13:20", "3600", "63:00:00", "1"})),
             QString("|Results:|alfa 2000:   nan (alfa Kest: %1)|delta 2000: nan|Pulsar name: |"
                     "Error: the declination is outside the range of the conversion, 0 to about "
                     "62 degrees! -> nan %1 nan ")
                 .arg(estimate));
    const auto ffa = [](const char *points, const char *tres, const char *shortest) {
        return told(ffaInfo({points, tres, shortest, "3", 2, 2, 0.9, 1.5}, false));
    };
    QCOMPARE(ffa("30000", "1", "1.5"),
             "|Must have: period_min &gt;= tsamp * bins_min (1*2=2)| -> ffa_period_min");
    QCOMPARE(ffa("30,000", "0,5", "1.500,5"),
             "|Bad points! Type a whole number|Bad period min! Type a number of seconds| -> "
             "ffa_poins ffa_period_min");
    QCOMPARE(ffa("3", "1", "2"), "1|&nbsp;|Results:|Error: periodogram.rows = 0 -> 1 0");
    // m rows of two bins, of which ceil(2 (m - 1) / 3) are kept.
    const auto periods = [](const char *points) {
        return ffaInfo({points, "1", "2", "3", 2, 2, 0.9, 1.5}, true).report;
    };
    QCOMPARE(periods("30000").count("<td><nobr>"), 1 + 2 * 10000); // 1 in the parameters
    QVERIFY(periods("30004").contains("Sorry, there are more than 10000 periods"));
}

// Enter starts the calculator of the field; a good input takes the marks away.
void TestCalculator::colours()
{
    click("cat2zrt_send");
    QCOMPARE(find<QWidget>("cat2zrt_culmPoint")->styleSheet(), "background-color: #98FB98;");
    QCOMPARE(colourOf("Calculator: From catalog to ZRT"), QColor("#010203"));
    QCOMPARE(colourOf("03:23:27"), QColor("#040506"));
    click("copyReport");
    QVERIFY(QApplication::clipboard()->text().endsWith(
        "UTC time: 12:13:20\nSeconds from hour: 800 sec\nFile name: 010415_17_N1_00.pnthr\n"
        "Culmination point: 64090"));
    click("copyCommand");
    QCOMPARE(QApplication::clipboard()->text(),
             QString("zrt-batch cat2zrt 03:23:27 39:44:52 01.04.2015 --plosh N1 --tres 0.0124928"));

    find<QComboBox>("tres")->setCurrentText("0");
    field("cat2zrt_alfa")->setFocus();
    QTest::keyClick(field("cat2zrt_alfa"), Qt::Key_Return);
    QVERIFY(isMarked("tres"));
    QCOMPARE(find<QWidget>("cat2zrt_culmPoint")->styleSheet(), "background-color: #dfffd3;");
    find<QComboBox>("calcdelta_plosh")->setCurrentText("N1");
    find<QSpinBox>("calcdelta_module")->setValue(6);
    find<QSpinBox>("calcdelta_ray")->setValue(9);
    click("calcdelta_send");
    QCOMPARE(colourOf("Error:"), QColor("#070809"));
    QVERIFY(!isMarked("tres"));
}

void TestCalculator::boundFields()
{
    QCOMPARE(typed("zrt2cat_time", "10:00:12.5", "zrt2cat_culmPoint"), QString("1001"));
    QCOMPARE(typed("zrt2cat_culmPoint", "64090", "zrt2cat_time"), QString("10:13:20.66"));
    find<QComboBox>("tres")->setCurrentText("0.0999424");
    QCOMPARE(field("zrt2cat_culmPoint")->text(), QString("8011")); // 800.66 s: 8011.21
    find<QComboBox>("tres")->clearEditText();
    QApplication::setActiveWindow(window.get());
    find<QComboBox>("tres")->setFocus();
    QTest::keyClicks(find<QComboBox>("tres"), "0.01"); // the beginning of a listed one
    QCOMPARE(field("zrt2cat_culmPoint")->text(), QString("80066"));
    find<QComboBox>("tres")->setCurrentText("0.0999424");
    typed("zrt2cat_culmPoint", "36021", "zrt2cat_time");
    QVERIFY(isMarked("zrt2cat_culmPoint")); // 3600.03 s
    QCOMPARE(pointOfTime(timeOfPoint("00:00:00", "3599", "0.003072"), "0.003072"), "3599");

    find<QSpinBox>("ffa_bin_min")->setValue(64);
    QCOMPARE(typed("ffa_tres", "0.0124928", "ffa_period_min").toDouble(), 64 * 0.0124928);
    click("ffa_boundPeriodBin");
    find<QSpinBox>("ffa_bin_min")->setValue(65);
    QCOMPARE(field("ffa_period_min")->text().toDouble(), 64 * 0.0124928);
    click("clearForm");
    QCOMPARE(field("ffa_period_min")->text(), QString("1"));
}

void TestCalculator::fileNameOpensTheRecording()
{
    Settings::instance()->setLastOpenPath(folder->path());
    click("cat2zrt_send");
    const TestSupport::MessageBoxCatcher catcher;
    QTest::mouseClick(field("cat2zrt_fileName"), Qt::LeftButton);
    QVERIFY(window->statusBar()->currentMessage().startsWith("010415_17_N1_00"));
    file({}, "010415_17_N1_00.pnthr");
    QTest::mouseClick(field("cat2zrt_fileName"), Qt::LeftButton);
    QTRY_COMPARE(catcher.boxes().size(), 1); // the form that was opened finds no data in it
    QVERIFY(!window->findChild<QWidget *>("CalculatorForm"));
}

ZRT_GUI_TEST_MAIN(TestCalculator)
#include "tst_calculator.moc"
