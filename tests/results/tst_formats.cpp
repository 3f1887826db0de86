#include "results/candidates.h"
#include "results/filterbank.h"
#include "results/report.h"
#include "support/testmain.h"

#include <QBuffer>
#include <cmath>

using namespace Results;

namespace {

constexpr Format formats[] = {Format::Text, Format::Csv, Format::Json};

} // namespace

class TestFormats : public QObject {
    Q_OBJECT

private slots:
    void tablesComeBack();
    void longTablesComeInPieces();
    void damagedTables_data();
    void damagedTables();
    void onePeriodAtSeveralDispersions();
    void refusedFilterbanks();
    void reportsAsTextAndAsHtml();
};

// Every number to the last bit, texts with whatever separates the cells of one of the forms.
void TestFormats::tablesComeBack()
{
    const QString strange = QString("a \"name\", with; all: of 100% [it]") + QChar(0xDCD0);
    const std::vector<float> snr = {0.1F, -1.5e-38F, 16777217.0F};
    for (const Format format : formats) {
        const QString lines = format == Format::Text ? "x" : "x\ny"; // one line a row there
        ResultTable table;
        table.request = {
            {"program", "zrt-batch"}, {"file", "/tmp/" + strange}, {"report", "one\ntwo"}};
        table.columns = {{"S/N, best", "mJy", snr}};
        const QByteArray series = table.toBytes(format);
        table.columns.push_back({"period", "s", std::vector<double>{1 / 3.0, 5e-324, 1e22}});
        table.columns.push_back({"remark", {}, QStringList{strange, lines, "-"}});

        for (const QByteArray &bytes : {series, table.toBytes(format)}) {
            QVERIFY(bytes.startsWith(requestBytes(table.request, format)));
            const ReadTable read = readTable(bytes);
            QCOMPARE(read.problem, QString());
            const std::vector<Column> &columns = read.table.columns;
            QCOMPARE(columns.size(), std::size_t(bytes == series ? 1 : 3));
            QCOMPARE(columns[0].name, table.columns[0].name);
            QCOMPARE(columns[0].unit, QString("mJy"));
            const auto &numbers = std::get<std::vector<double>>(columns[0].values);
            QCOMPARE(std::vector<float>(numbers.begin(), numbers.end()), snr);
            for (std::size_t i = 1; i < columns.size(); ++i)
                QVERIFY(columns[i].values == table.columns[i].values);
            QVERIFY(!readTable(bytes.left(bytes.size() - 2)).problem.isEmpty());
        }
    }
}

// A table may be longer than one array of bytes can be, so none holds all of it.
void TestFormats::longTablesComeInPieces()
{
    constexpr float number = -1.1754944e-38F;
    ResultTable table;
    table.columns = {{"power", {}, std::vector<float>(100000, number)}};
    for (const Format format : formats) {
        QByteArray all;
        int longest = 0;
        table.write(format, [&](const QByteArray &piece) {
            all += piece;
            longest = std::max(longest, piece.size());
        });
        QCOMPARE(all.count(numberText(number)), 100000);
        QVERIFY(all.size() > 1400000 && longest < 1200000);
    }
}

void TestFormats::damagedTables_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem"); // "": it is whole
    std::vector<Candidate> candidates(2);
    candidates[0].peak.snr = 9.5;
    candidates[1].peak.snr = 8.5;
    ResultTable table;
    table.request = {{"program", "zrt-batch"}};
    table.columns = candidateColumns(candidates, true);
    const auto with = [&table](Format format, const char *before, const char *after) {
        return table.toBytes(format).replace(before, after);
    };
    for (const Format format : formats) {
        const bool isJson = format == Format::Json;
        const QByteArray bytes = table.toBytes(format);
        const auto row = [&](const char *name, const QByteArray &damaged, const char *problem) {
            QTest::addRow("%s, %s", qPrintable(extensionOf(format)), name)
                << damaged << QString(problem);
        };
        row("whole", bytes, "");
        row("cut in a line", bytes.chopped(2),
            isJson ? "no whole JSON text" : "ends within a line");
        row("no S/N", with(format, "9.5", isJson ? "\"abc\"" : "abc"),
            "in row 1 the snr \"abc\" is no number");
        row("none there", with(format, "8.5", isJson ? "null" : "nan"),
            "in row 2 the snr \"nan\" is no number");
        row("infinite", with(format, "9.5", "1e39"), "in row 1 the snr \"1e+39\" is no number");
        row("cut at a line", bytes.left(bytes.lastIndexOf('\n', bytes.size() - 2) + 1),
            isJson ? "no whole JSON text" : "it has 1 rows, its header says 2");
    }
    const auto row = [](const char *name, const QByteArray &damaged, const char *problem) {
        QTest::newRow(name) << damaged << QString(problem);
    };
    row("columns of unequal length", with(Format::Json, "[9.5,8.5]", "[9.5]"),
        "column \"snr\" has 1 values, its header says 2");
    row("longer columns than announced", with(Format::Json, "\"points\": 2", "\"points\": 1"),
        "its header says 1");
    const QByteArray csv = table.toBytes(Format::Csv);
    row("no rows at all", csv.left(csv.indexOf("# rows")), "its header has no end");
    row("another table", with(Format::Csv, ",remark,", ",remarks,"), "no table of candidates");
}

void TestFormats::damagedTables()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, problem);
    const ReadCandidates read = readCandidates(bytes);
    QVERIFY2(read.problem.contains(problem), qPrintable(read.problem));
    QCOMPARE(read.problem.isEmpty(), problem.isEmpty());
    QCOMPARE(int(read.candidates.size()), problem.isEmpty() ? 2 : 0);
}

// Over 1000 s the periods 1.000 and 1.0004 s drift apart by 0.4 turns, 1.000 and 1.0006 s by 0.6;
// two peaks at one dispersion are two sources.
void TestFormats::onePeriodAtSeveralDispersions()
{
    std::vector<Candidate> found(4);
    const double periods[] = {1.0004, 1, 1.0006, 0.9997};
    const double dispersions[] = {10, 20, 30, 20};
    const float snrs[] = {8, 9, 7, 6};
    for (std::size_t i = 0; i < found.size(); ++i) {
        found[i].peak.period = periods[i];
        found[i].peak.snr = snrs[i];
        found[i].dispersion = dispersions[i];
    }
    std::vector<float> strongest;
    for (const Candidate &candidate : strongestOfDispersions(found, 1000))
        strongest.push_back(candidate.peak.snr);
    QCOMPARE(strongest, (std::vector<float>{9, 7, 6}));
}

void TestFormats::refusedFilterbanks()
{
    FilterbankHeader good;
    good.step = 0.001;
    good.firstBand = 120;
    good.bandStep = -0.1;
    good.channels = 4;
    const auto with = [&good](auto field, auto value) {
        FilterbankHeader bad = good;
        bad.*field = value;
        return filterbankBytes(bad);
    };
    using H = FilterbankHeader;
    QByteArrayList refused = {"",
                              QByteArray("\x0c\0\0\0HEADER_WRONG", 16),
                              QByteArray("\xff\xff\xff\x7fHEADER_START", 16), // a key of 2 GB
                              filterbankBytes(good).chopped(3),
                              with(&H::bits, 2),
                              with(&H::bandStep, -100)};
    for (const int channels : {0, 65537, 2147483647})
        refused << with(&H::channels, channels);
    for (const float number : {NAN, INFINITY, 0.0F})
        refused << with(&H::step, number) << with(&H::firstBand, number);
    const auto problemOf = [](QByteArray bytes) {
        QBuffer device(&bytes);
        device.open(QIODevice::ReadOnly);
        FilterbankHeader header;
        return readFilterbank(device, header);
    };
    QCOMPARE(problemOf(filterbankBytes(good)), QString());
    for (int i = 0; i < refused.size(); ++i)
        QVERIFY2(!problemOf(refused[i]).isEmpty(), qPrintable(QString::number(i)));
}

// The same report in both forms; names of files and units may look like tags.
void TestFormats::reportsAsTextAndAsHtml()
{
    Report report;
    report.addHeading("Lines > 6 sigma:");
    report.addGap();
    report.addTable({{{"line"}, {"frequency", "Hz"}}, "%1: %2 Hz", "harmonic:%1", {{"7", "0.5"}}});
    report.addGap();
    report.addLine("file: <b>.pnt");
    report.addValue("DM", "26.2", "dispersion:26.2");
    QCOMPARE(report.plainText(),
             QString("Lines > 6 sigma:\n\n7: 0.5 Hz\n\nfile: <b>.pnt\nDM = 26.2"));
    const QString html = report.html();
    for (const char *const part :
         {"<span class='blue'>Lines &gt; 6 sigma:</span>", "<a href='harmonic:7'>7</a></nobr></td>",
          "frequency, Hz</th>", "<p>file: &lt;b&gt;.pnt<br>DM = <a href='dispersion:26.2'>26.2"})
        QVERIFY2(html.contains(part), qPrintable(html));
    QCOMPARE(joinReports({Report("a"), Report(), Report("b")}).plainText(), QString("a\n\nb"));
}

ZRT_UNIT_TEST_MAIN(TestFormats)
#include "tst_formats.moc"
