#include "coords/raytables.h"
#include "forms/calculator/calculatortexts.h"
#include "support/testmain.h"

#include <QLocale>

using namespace Calculator;

namespace {

// What a reader of the report sees, marked with what is coloured.
QString plain(QString html)
{
    html.replace("<p>", "|").replace("<br>", "|").replace("&nbsp;", " ");
    html.replace(QRegularExpression("<span class='(\\w)\\w*'>([^<]*)</span>"), "\\1{\\2}");
    return html.remove(QRegularExpression("<[^>]*>"));
}

// The refused fields, or the filled ones, behind what the report says after its title.
QString told(const Answer &answer)
{
    QStringList fields = answer.failing;
    for (auto output = answer.outputs.begin(); output != answer.outputs.end(); ++output)
        fields << output.key().section('_', 1) + "=" + output.value();
    return plain(answer.report).section("| ", 1) + " -> " + fields.join(" ");
}

} // namespace

class TestCalculatorTexts : public QObject {
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void tablesOfPeriods();
    void pointAndTime();
};

void TestCalculatorTexts::answers_data()
{
    QLocale::setDefault(QLocale("de_DE"));
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const Answer &answer, const char *expected) {
        QTest::newRow(name) << told(answer) << QString::fromUtf8(expected);
    };
    const Tools::RayTables tables =
        Tools::parseRayTables("N1 6 8 41.50025\nN4 1 1 -0.0429\nN4 1 1x 1");
    const Tools::RayTables good = Tools::parseRayTables("N1 6 8 41.50025\nN4 1 1 -0.0429");
    row("nothing selected", deltaFromRay({}, good),
        "|Error:|Select plosh in form!|Select module in form!|Select ray in form!| -> "
        "calcdelta_plosh calcdelta_module calcdelta_ray");
    row("beam", deltaFromRay({"N4", 1, 1}, good),
        "|Parameters:|plosh = g{N4}|module = g{1}|ray = g{1}\n|Result:|delta = b{-00°02′34″}|"
        "delta = b{-0.0429} -> delta=-00°02′34″ deltaD=-0.043");
    row("no such beam", deltaFromRay({"N1", 6, 7}, good),
        "|Parameters:|plosh = g{N1}|module = g{6}|ray = g{7}\n"
        "|r{Error:} no delta for these module and beam! -> delta= deltaD=");
    QVERIFY(plain(deltaFromRay({"N1", 6, 8}, tables).report).contains("line 3 "));

    row("example", catalogToZrt({"03:23:27", "39:44:52", "01.04.2015", "N1", "0.0124928"}),
        "|Parameters:|alfa = g{03:23:27}|delta = g{39:44:52}|date = g{01.04.2015}|"
        "tres = g{0.0124928}|time_zone=4|Results:|UTC date: 01.04.2015|UTC time: 12:13:20|"
        "Seconds from hour: 800 sec|File name: 010415_17_N1_00.pnthr|Culmination point: 64090 -> "
        "culmPoint=64090 fileName=010415_17_N1_00.pnthr sec=800 time=12:13:20");
    // 8 sidereal hours later: the file is one of the next day, the report is not.
    row("next day", catalogToZrt({"11:23:27", "39°44′52.9″", "01.04.2015", "N4", "0.1"}),
        "|Parameters:|alfa = g{11:23:27}|delta = g{39°44′52.9″}|date = g{01.04.2015}|"
        "tres = g{0.1}|time_zone=4|Results:|UTC date: 01.04.2015|UTC time: 20:11:51|"
        "Seconds from hour: 711 sec|File name: 020415_01_N4_00.pnt|Culmination point: 7114 -> "
        "culmPoint=7114 fileName=020415_01_N4_00.pnt sec=711 time=20:11:51");
    row("too far north", catalogToZrt({"03:23:27", "89:50:00", "01.04.2015", "N1", "0.1"}),
        "|Parameters:|alfa = g{03:23:27}|delta = g{89:50:00}|date = g{01.04.2015}|tres = g{0.1}|"
        "time_zone=4|r{Error:} no source of this delta crosses the beam plane! -> "
        "culmPoint= fileName= sec= time=");
    row("all empty", catalogToZrt({"", "", "", "", ""}),
        "|Error:|No alfa! Type alfa in format hh:mm:ss|"
        "No delta! Type delta in format hh:mm:ss or hh°mm′ss″|"
        "Bad date! Type date in the format dd.mm.yyyy|Bad tres!| -> "
        "cat2zrt_alfa cat2zrt_delta cat2zrt_date tres");
    row("all bad", catalogToZrt({"03:23:27.5", "-05:10:00", "29.02.2015", "N1", "0,0124928"}),
        "|Error:|Bad alfa! Type alfa in format hh:mm:ss|"
        "Bad delta! Type delta in format hh:mm:ss or hh°mm′ss″|"
        "Bad date! Type date in the format dd.mm.yyyy|Bad tres!| -> "
        "cat2zrt_alfa cat2zrt_delta cat2zrt_date tres");
    QVERIFY(plain(catalogToZrt({"23:60:00", "39:44:52", "01.04.2015", "N1", "1e-5"}).report)
                .contains("r{Note:} alfa has more than 59 minutes"));

    row("endless tres", zrtToCatalog({"01.04.2015", "12:13:20.66", "0", "39°44′52.00″", "inf"}),
        "|Error:|Bad tres!| -> tres");
    row("all bad back", zrtToCatalog({"1.4.2015", "24:00:00<b>", "-1", "39:44:52x", "9e-6"}),
        "|Error:|Bad delta! Type delta in format hh:mm:ss or hh°mm′ss″|"
        "Bad date! Type date in the format dd.mm.yyyy|"
        "Bad time: 24:00:00&lt;b&gt; Type time in the format hh:mm:ss|"
        "Bad point! Type a whole number, 0 or more|Bad tres!| -> "
        "zrt2cat_deltaZrt zrt2cat_date zrt2cat_time zrt2cat_culmPoint tres");
    // The estimate for a moment 3600 s after 11:13:20 is that of 12:13:20.
    const QString estimate = zrtToCatalog({"01.04.2015", "12:13:20", "0", "63:00:00", "1"})
                                 .outputs.value("zrt2cat_alfaKest");
    QVERIFY(estimate.startsWith("03:2"));
    row("out of range", zrtToCatalog({"01.04.2015", "11:13:20", "3600", "63:00:00", "1"}),
        qUtf8Printable("|Parameters:|date = g{01.04.2015}|time = g{11:13:20}|point = g{3600}|"
                       "tres = g{1}|time_zone=4|Results:|alfa 2000:   nan (alfa Kest: " +
                       estimate +
                       ")|delta 2000: nan|Pulsar name: |r{Error:} the declination is outside the "
                       "range of the conversion, 0 to about 62 degrees! -> alfa=nan alfaKest=" +
                       estimate + " delta=nan pulsarName="));

    const auto ffa = [](const char *points, const char *tres, const char *shortest) {
        return ffaInfo({points, tres, shortest, "3", 2, 2, 0.9, 1.5}, false);
    };
    row("no numbers", ffa("1.5", "x", ""),
        "|Error:|Bad points! Type a whole number|Bad tres!| -> ffa_poins ffa_tres");
    row("engine refuses", ffa("30000", "1", "1.5"),
        "|Error:|Must have: period_min &gt;= tsamp * bins_min (1*2=2)| -> ffa_period_min");
    row("too short", ffa("3", "1", "2"),
        "|Parameters:|period min - max:  2 - 3 secbin min - max:2 - 2ducy_max:0.9wtsp:1.5  "
        "points:3tres:1| |Results:|Error: periodogram.rows = 0 -> cols=1 rows=0");
}

void TestCalculatorTexts::answers()
{
    QFETCH(QString, answer);
    QTEST(answer, "expected");
}

// m rows of two bins, of which ceil(2 (m - 1) / 3) are kept.
void TestCalculatorTexts::tablesOfPeriods()
{
    const auto report = [](const char *points) {
        return ffaInfo({points, "1", "2", "3", 2, 2, 0.9, 1.5}, true).report;
    };
    const QString shown = report("30000");
    QVERIFY(shown.contains("rows = 10000<") && shown.contains("<b>Foldbins:</b>"));
    QCOMPARE(shown.count("<td><nobr>"), 2 * 10000 + 1); // one stands in the parameters
    QVERIFY(shown.contains("<nobr>2.000133</nobr>"));   // 2 / (1 - 1 / (2 * 14999)) * 2
    const QString refused = report("30004");
    QVERIFY(refused.contains("rows = 10001<") && !refused.contains("Foldbins"));
    QVERIFY(refused.contains("Sorry, there are more than 10000 periods"));
}

void TestCalculatorTexts::pointAndTime()
{
    QCOMPARE(pointOfTime("12:13:20.66", "0.0124928"), QString("64090"));
    QCOMPARE(timeOfPoint("12:00:00", "64090", "0.0124928"), QString("12:13:20.66"));
    for (const char *tres : {"0.0124928", "0.0999424", "0.003072", "1"}) {
        for (const char *point : {"0", "1", "3599"}) {
            const QString time = timeOfPoint("23:59:59", point, tres);
            QCOMPARE(pointOfTime(time, tres), QString(point));
        }
    }
    QCOMPARE(timeOfPoint("12:00:00", "3600", "1"), QString());
    QCOMPARE(timeOfPoint("12:00:00", "288168", "0.0124928"), QString()); // 3600.0252 s
    QCOMPARE(timeOfPoint("12:00:00", "288165", "0.0124928"), QString("12:59:59.99"));
    QCOMPARE(pointOfTime("12:13:2", "1"), QString());
    QCOMPARE(shortestPeriod(64, "0.0124928").toDouble(), 64 * 0.0124928);
}

ZRT_UNIT_TEST_MAIN(TestCalculatorTexts)
#include "tst_calculatortexts.moc"
