#include "analyses/days/fourierdays.h"
#include "results/resulttable.h"
#include "support/batchfolder.h"
#include "support/dayfiles.h"
#include "support/testmain.h"

#include <cmath>

// survey and stack as a user or a batch system calls them.

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

constexpr int days = 8;
constexpr int pointsOfFile = 1500;

QByteArray dayBytes(int day)
{
    return TestSupport::stripBytes(day, pointsOfFile, 0.03, 0.1);
}

const QString place = "--module 1 --ray 2 --count 1024 --point 100 ";

Results::ResultTable tableOf(const QString &path)
{
    return Results::readTable(contentOf(path)).table;
}

QStringList textsOf(const Results::ResultTable &table, const QString &name)
{
    for (const Results::Column &column : table.columns) {
        if (column.name == name && std::holds_alternative<QStringList>(column.values))
            return std::get<QStringList>(column.values);
    }
    return {};
}

std::vector<double> numbersOf(const Results::ResultTable &table, const QString &name)
{
    for (const Results::Column &column : table.columns) {
        if (column.name == name && std::holds_alternative<std::vector<double>>(column.values))
            return std::get<std::vector<double>>(column.values);
    }
    return {};
}

} // namespace

class TestDays : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void failures_data();
    void failures();
    void daysThatAreTooFewAreListed();
    void keptInPartsAndInOne();
    void stackIsThatOfTheLibrary_data();
    void stackIsThatOfTheLibrary();
    void copiedCommand();
    void daysThatDoNotCount();
    void skipsWhatIsDone();
    void oneDay();
    void readsWhatItWrote();

private:
    Ended stack(const QString &more) const
    {
        return run("stack " + place + "--window 129 --interference none " + more);
    }
};

void TestDays::initTestCase()
{
    QVERIFY(folder.isValid());
    qputenv("XDG_CONFIG_HOME", path("config").toUtf8());
    QDir().mkpath(path("strip/part"));
    QDir().mkpath(path("empty"));
    QDir().mkpath(path("wrong"));
    QDir().mkpath(path("one"));
    for (int day = 0; day < days; ++day)
        writeFile(path(QString(day % 2 ? "strip/%1.pnt" : "strip/part/%1.pnt").arg(day)),
                  dayBytes(day));
    writeFile(path("strip/other.pnt"),
              dayBytes(20).replace("tresolution 12.4928", "tresolution 25"));
    writeFile(path("strip/text.pnt"), "this is no recording\n");
    writeFile(path("wrong/text.pnt"), "this is no recording\n");
    writeFile(path("one/0.pnt"), dayBytes(0));
    QDir().mkpath(path("apart"));
    for (const char *const date : {"01.04.2015", "01.05.2015"})
        writeFile(path(QString("apart/%1.pnt").arg(date)), dayBytes(0).replace("01.04.2015", date));
}

void TestDays::failures_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("words");
    QTest::newRow("no such folder") << "survey --module 1 --ray 2 nowhere" << 66 << "no folder";
    QTest::newRow("a file") << "stack --module 1 --ray 2 one/0.pnt" << 66 << "no folder";
    QTest::newRow("empty folder") << "stack --module 1 --ray 2 empty" << 66 << "no recording";
    QTest::newRow("no usable recording")
        << "survey --module 1 --ray 2 wrong" << 65 << "None of 1 recordings";
    QTest::newRow("too short") << "stack --module 1 --ray 2 strip" << 65 << "8 days are left out";
    QTest::newRow("no such ray") << "stack --module 1 --ray 5 --count 1024 strip" << 65
                                 << "does not hold module 1, ray 5";
    QTest::newRow("no ray") << "stack --count 1024 strip" << 64 << "--module: Give the number";
    QTest::newRow("odd length") << "stack --module 1 --ray 2 --count 1000 strip" << 64 << "--count";
    QTest::newRow("misspelt pulsar")
        << "stack --source B0329+55 --module 1 --ray 2 strip" << 64 << "B0329+54";
    QTest::newRow("southern declination") << "stack --ra 10:00 --dec -00:30 --module 1 --ray 2 "
                                             "--count 1024 strip"
                                          << 65 << "another time of the day";
    QTest::newRow("all days off")
        << "stack --module 1 --ray 2 --count 1024 --days-off 2015-04-01 one" << 65
        << "switched off";
    QTest::newRow("day that is not there")
        << "stack --module 1 --ray 2 --count 1024 --days-off 2015-05-01 one" << 64 << "2015-05-01";
    QTest::newRow("list that is not there")
        << "stack --module 1 --ray 2 --count 1024 --interference nowhere one" << 66 << "nowhere";
    QTest::newRow("kept nowhere") << "survey --module 1 --ray 2 --count 1024 --kept one/0.pnt one"
                                  << 73 << "--kept";
    QTest::newRow("options of the other product")
        << "stack --ffa --window 129 --module 1 --ray 2 one" << 64 << "excludes";
    QTest::newRow("options of --ffa")
        << "stack --period-min 0.6 --module 1 --ray 2 one" << 64 << "requires";
    QTest::newRow("few trials") << "stack --ffa --period-min 0.6 --period-max 0.62 --module 1 "
                                   "--ray 2 --count 1024 one"
                                << 64 << "--period-max: These periods are";
    QTest::newRow("days of no ray") << "days --count 1024 strip" << 64 << "--module: Give";
    QTest::newRow("days from no date")
        << "days --module 1 --ray 2 --first-date soon one" << 64 << "--first-date: The date";
    QTest::newRow("no day that counts")
        << "days --module 1 --ray 2 --count 1024 --days-off 2015-04-01 one" << 65
        << "at least 4 days that count; there are 0";
    QTest::newRow("days that share no sidereal time")
        << "days --module 1 --ray 2 --count 1024 apart" << 0 << "Choose a sidereal time";
    QTest::newRow("part") << "survey --module 1 --ray 2 --part 3/2 one" << 64 << "2/12";
}

void TestDays::failures()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, words);
    const Ended end = run(arguments);
    QCOMPARE(end.code, code);
    QVERIFY2((end.errors + end.out).contains(words), qPrintable(end.errors + end.out));
}

void TestDays::daysThatAreTooFewAreListed()
{
    const Ended end = run("days --module 1 --ray 2 --count 1024 -o few one");
    QCOMPARE(end.code, 0);
    QVERIFY2(end.errors.contains("at least 4 days that count; there are 1"),
             qPrintable(end.errors));
    const QByteArray list = contentOf(path("few/m1_r2.days.days.txt"));
    QVERIFY2(list.contains("remark: Differences need at least 4 days") &&
                 list.contains("\n2015-04-01T"),
             list);
}

void TestDays::keptInPartsAndInOne()
{
    const QString whole = "survey " + place + "strip --kept ";
    const Ended once = run(whole + "once");
    QCOMPARE(once.code, 0);
    QVERIFY2(once.errors.contains("1 recording is left out: Its step is 25 ms"),
             qPrintable(once.errors));
    const QMap<QString, QByteArray> files = filesOf(path("once"));
    QCOMPARE(files.size(), days);
    for (const char *const part : {"3/3", "1/3", "2/3"})
        succeed(whole + "parts --jobs 1 --part " + part);
    QCOMPARE(filesOf(path("parts")), files);

    // What was cut short is made anew, the rest is left alone.
    const QString cut = path("parts/" + files.firstKey());
    writeFile(cut, files.first().chopped(1));
    const Ended again = run(whole + "parts");
    QVERIFY2(again.errors.contains("1 done, 7 skipped, 0 failed"), qPrintable(again.errors));
    QCOMPARE(contentOf(cut), files.first());
}

void TestDays::stackIsThatOfTheLibrary_data()
{
    QTest::addColumn<bool>("isFfa");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("curve");
    QTest::newRow("spectra") << false << "stack"
                             << "spectrum";
    QTest::newRow("periodograms") << true << "stack-ffa"
                                  << "periods";
}

void TestDays::stackIsThatOfTheLibrary()
{
    QFETCH(bool, isFfa);
    QFETCH(QString, command);
    QFETCH(QString, curve);
    const QString options = isFfa ? "--ffa" : "--window 129";
    const QString results = "-o " + command + " --plot png --save-spectra strip";
    const Ended ended = run("stack " + place + options + " --interference none " + results);
    QVERIFY2(ended.code == 0, qPrintable(ended.errors));
    Days::FourierDaysParameters parameters;
    parameters.isFfa = isFfa;
    parameters.module = 1;
    parameters.ray = 2;
    parameters.points = 1024;
    parameters.firstPoint = 100;
    parameters.window = isFfa ? parameters.window : 129;
    const RecordingSet set = recordingsOfFolder(path("strip"), true);
    const Days::DayPlan plan = Days::planDays(set, parameters);
    parameters = Days::usedParameters(parameters, plan);
    std::vector<Days::FourierDay> products;
    for (const Days::Day &day : plan.list.days)
        products.push_back(Days::readDay(set, plan, day, parameters, {}));
    QCOMPARE(int(products.size()), days);
    Days::FourierDaysChoice choice = Days::choiceOf(plan, parameters);
    for (const Days::DayVerdict &verdict : Days::proposeDays(products))
        choice.days.push_back(verdict.isGood);
    const Days::FourierStack expected = Days::analysisOf(parameters).combine(products, choice, {});
    QVERIFY(!expected.lines.empty());
    const double first = isFfa ? 1 / TestSupport::stripPeriod : TestSupport::stripFrequency;
    QVERIFY(std::abs(expected.lines[0].telescope - first) < expected.binWidth);

    const QString base = path(command + "/m1_r2." + command + ".");
    const Results::ResultTable lines = tableOf(base + "lines.txt");
    QCOMPARE(lines.rows(), int(expected.lines.size()));
    QCOMPARE(numbersOf(lines, "significance")[0], expected.lines[0].sigma);
    QVERIFY(numbersOf(lines, "frequency_telescope")[0] == expected.lines[0].telescope);
    const Results::ResultTable spectrum = tableOf(base + curve + ".txt");
    const std::vector<double> sigma = numbersOf(spectrum, "significance");
    QCOMPARE(sigma.size(), expected.sigma.size());
    for (std::size_t bin = 0; bin < sigma.size(); ++bin)
        QVERIFY(float(sigma[bin]) == expected.sigma[bin]);
    QVERIFY(contentOf(base + "days.png").startsWith("\x89PNG"));
    QVERIFY(contentOf(base + curve + ".png").startsWith("\x89PNG"));
    const QStringList saved = QDir(path(command)).entryList({"*_f00_n*_av0.txt"});
    QCOMPARE(saved.size(), 1);
    const Days::ReadSpectra read =
        Days::readSpectra(path(command + "/" + saved[0]), parameters, plan.list.tresolution);
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.days[3].periodogram.snr, products[3].periodogram.snr);
    QCOMPARE(read.days[3].powers, products[3].powers);
}

// What a form copies gives the same stack.
void TestDays::copiedCommand()
{
    Days::FourierDaysParameters parameters;
    parameters.module = 1;
    parameters.ray = 2;
    parameters.points = 1024;
    parameters.firstPoint = 100;
    parameters.window = 129;
    parameters.harmonics = 4;
    parameters.noise = "median";
    parameters.earthMotion = false;
    parameters.clockOffset = -0.5;
    const QString call = Days::fourierDaysCommand(false, parameters,
                                                  {"2015-04-02", "2015-04-04T11:48:13"}, {"strip"});
    const Ended end = runShell(call + " -o copied");
    QVERIFY2(end.code == 0, qPrintable(call + "\n" + end.errors));
    const Results::ResultTable table = tableOf(path("copied/m1_r2.stack.days.txt"));
    for (const char *const line : {"harmonics 4", "noise median", "earth_motion no",
                                   "clock_offset -0.5 s", "window 129", "all_days yes"})
        QCOMPARE(Results::valueOf(table.request, QString(line).section(' ', 0, 0)),
                 QString(line).section(' ', 1));
    QCOMPARE(textsOf(table, "counts"), QString("yes no yes no yes yes yes yes").split(' '));
    const QString survey = Days::fourierDaysCommand(true, parameters, {}, {"strip"});
    QVERIFY2(!survey.contains("harmonics") && survey.contains("--noise median"),
             qPrintable(survey));
    QCOMPARE(runShell(survey + " --kept copied").code, 0);
}

void TestDays::daysThatDoNotCount()
{
    writeFile(path("list.txt"), "6.3 Hz +- 0.1 # the line\n");
    succeed("stack " + place +
            "--window 129 --interference list.txt --dates 2015-04-02:2015-04-05 -o dates "
            "--format csv strip");
    const Results::ResultTable days4 = tableOf(path("dates/m1_r2.stack.days.csv"));
    QCOMPARE(days4.rows(), 4);
    QCOMPARE(Results::valueOf(days4.request, "interference"), QString("6.3 Hz +- 0.1 # the line"));
    QVERIFY2(Results::valueOf(days4.request, "left_out").contains("Its step is 25 ms") ||
                 contentOf(path("dates/m1_r2.stack.days.csv")).contains("Its step is 25 ms"),
             "the file of another step");
    QCOMPARE(tableOf(path("dates/m1_r2.stack.lines.csv")).rows(), 0);
}

void TestDays::skipsWhatIsDone()
{
    const QString call = "-o again strip ";
    QCOMPARE(stack(call).code, 0);
    const QMap<QString, QByteArray> files = filesOf(path("again"));
    QVERIFY(stack(call).errors.contains("is done with the same parameters"));
    // Another parameter, or a recording that was touched, makes it anew.
    QVERIFY(!stack(call + "--sigma 6").errors.contains("is done"));
    QVERIFY(!stack(call).errors.contains("is done"));
    writeFile(path("strip/part/0.pnt"), dayBytes(0));
    QVERIFY(!stack(call).errors.contains("is done"));
    QMap<QString, QByteArray> anew = filesOf(path("again"));
    QCOMPARE(anew.keys(), files.keys());
}

void TestDays::oneDay()
{
    const Ended end = stack("one");
    QVERIFY2(end.code == 0, qPrintable(end.errors));
    const Results::ResultTable table = tableOf(path("one/m1_r2.stack.spectrum.txt"));
    QCOMPARE(Results::valueOf(table.request, "stacked"), QString("1 of 1 days"));
    // Kept beside the data.
    QVERIFY(!QDir(path("one/zrt-days")).entryList({"20150401_120001_m1_r2_*.series"}).isEmpty());
}

// The tables open again, here and in the window.
void TestDays::readsWhatItWrote()
{
    for (const char *const name :
         {"stack/m1_r2.stack.spectrum", "stack/m1_r2.stack.lines", "stack/m1_r2.stack.days",
          "stack-ffa/m1_r2.stack-ffa.periods", "stack-ffa/m1_r2.stack-ffa.lines"}) {
        const QString file = path(QString(name) + ".txt");
        const Results::ReadTable read = Results::readTable(contentOf(file));
        QVERIFY2(read.problem.isEmpty(), qPrintable(file + ": " + read.problem));
        QVERIFY(read.table.toBytes(Results::Format::Csv).size() > 100);
    }
    succeed("plot stack/m1_r2.stack.spectrum.txt stack-ffa/m1_r2.stack-ffa.periods.txt");
}

ZRT_UNIT_TEST_MAIN(TestDays)
#include "tst_days.moc"
