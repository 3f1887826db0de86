#include "data/numberfile.h"
#include "results/candidates.h"
#include "results/filterbank.h"
#include "support/testmain.h"

#include <QBuffer>
#include <limits>

using namespace Results;

class TestFormats : public QObject {
    Q_OBJECT

private slots:
    void tablesComeBack_data();
    void tablesComeBack();
    void longTablesComeInPieces();
    void damagedTables_data();
    void damagedTables();
    void onePeriodAtSeveralDispersions();
    void refusedFilterbanks_data();
    void refusedFilterbanks();
};

void TestFormats::tablesComeBack_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<bool>("isSeries");
    for (const bool isSeries : {true, false}) {
        const char *const kind = isSeries ? "series" : "rows";
        QTest::addRow("text, %s", kind) << int(Format::Text) << isSeries;
        QTest::addRow("csv, %s", kind) << int(Format::Csv) << isSeries;
        QTest::addRow("json, %s", kind) << int(Format::Json) << isSeries;
    }
}

// Every number to the last bit, texts with whatever separates the cells of one of the forms.
void TestFormats::tablesComeBack()
{
    QFETCH(int, format);
    QFETCH(bool, isSeries);
    const QString strange = QString("a \"name\", with; all: of 100% [it]") + QChar(0xDCD0);
    const QString lines = format == int(Format::Text) ? "x" : "x\ny"; // one line a row there
    ResultTable table;
    table.request = {{"program", "zrt-batch"}, {"file", "/tmp/" + strange}, {"report", "one\ntwo"}};
    table.columns = {{"S/N, best", "mJy", std::vector<float>{0.1F, -1.5e-38F, 16777217.0F}}};
    if (!isSeries) {
        table.columns.push_back({"period", "s", std::vector<double>{1 / 3.0, 5e-324, 1e22}});
        table.columns.push_back({"remark", {}, QStringList{strange, lines, "-"}});
    }

    const QByteArray bytes = table.toBytes(Format(format));
    QVERIFY(bytes.startsWith(requestBytes(table.request, Format(format))));
    const ReadTable read = readTable(bytes);
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.table.columns.size(), table.columns.size());
    QCOMPARE(read.table.columns[0].name, table.columns[0].name);
    QCOMPARE(read.table.columns[0].unit, QString("mJy"));
    const auto &numbers = std::get<std::vector<double>>(read.table.columns[0].values);
    QCOMPARE(std::vector<float>(numbers.begin(), numbers.end()),
             std::get<std::vector<float>>(table.columns[0].values));
    if (!isSeries) {
        QVERIFY(read.table.columns[1].values == table.columns[1].values);
        QVERIFY(read.table.columns[2].values == table.columns[2].values);
    }
    QVERIFY(!readTable(bytes.left(bytes.size() - 2)).problem.isEmpty());

    // "Show arrays" of the workbench opens a series as a curve.
    if (!isSeries || format != int(Format::Text))
        return;
    QTemporaryFile file;
    QVERIFY(file.open() && file.write(bytes) == bytes.size() && file.flush());
    const NumberFile shown = Tools::readNumberFile(file.fileName());
    QCOMPARE(shown.error, QString());
    QVERIFY(shown.rowsAreSeries);
    QCOMPARE(shown.table.rows(), qint64(1));
    QCOMPARE(float(shown.table.at(0, 2)), 16777217.0F);
}

// A table may be longer than one array of bytes can be, so none holds all of it.
void TestFormats::longTablesComeInPieces()
{
    ResultTable table;
    table.columns = {{"power", {}, std::vector<float>(1000000, 0.1F)}};
    for (const Format format : {Format::Text, Format::Csv, Format::Json}) {
        QByteArray all;
        int longest = 0;
        table.write(format, [&](const QByteArray &piece) {
            all += piece;
            longest = std::max(longest, piece.size());
        });
        QCOMPARE(all, table.toBytes(format));
        QVERIFY(all.size() > 4000000 && longest < 2000000);
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
    const auto bytes = [&table](Format format) { return table.toBytes(format); };
    const auto with = [&](Format format, const char *before, const char *after) {
        return bytes(format).replace(before, after);
    };
    const auto withoutLastLine = [&](Format format) {
        const QByteArray all = bytes(format);
        return all.left(all.lastIndexOf('\n', all.size() - 2) + 1);
    };
    const QByteArray csv = bytes(Format::Csv);
    for (const Format format : {Format::Text, Format::Csv, Format::Json}) {
        const QByteArray kind = extensionOf(format).toUtf8();
        const auto row = [&kind](const char *name, const QByteArray &damaged, const char *problem) {
            QTest::newRow((kind + ", " + name).constData()) << damaged << QString(problem);
        };
        row("whole", bytes(format), "");
        row("cut in a line", bytes(format).chopped(2),
            format == Format::Json ? "no whole JSON text" : "ends within a line");
        row("no S/N", with(format, "9.5", format == Format::Json ? "\"abc\"" : "abc"),
            "in row 1 the snr \"abc\" is no number");
        row("none there", with(format, "8.5", format == Format::Json ? "null" : "nan"),
            "in row 2 the snr \"nan\" is no number");
        row("infinite", with(format, "9.5", "1e39"), "in row 1 the snr \"1e+39\" is no number");
        row("cut at a line", withoutLastLine(format),
            format == Format::Json ? "no whole JSON text" : "it has 1 rows, its header says 2");
    }
    QTest::newRow("columns of unequal length")
        << with(Format::Json, "[9.5,8.5]", "[9.5]")
        << QString("column \"snr\" has 1 values, its header says 2");
    QTest::newRow("longer columns than announced")
        << with(Format::Json, "\"points\": 2", "\"points\": 1") << QString("its header says 1");
    QTest::newRow("no rows at all")
        << csv.left(csv.indexOf("# rows")) << QString("its header has no end");
    QTest::newRow("another table")
        << with(Format::Csv, ",remark,", ",remarks,") << QString("no table of candidates");
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

void TestFormats::onePeriodAtSeveralDispersions()
{
    const auto candidate = [](double period, double dispersion, float snr) {
        Candidate made;
        made.peak.period = period;
        made.peak.snr = snr;
        made.dispersion = dispersion;
        return made;
    };
    // Over 1000 s the periods 1.000 and 1.0004 s drift apart by 0.4 turns, 1.000 and 1.0006 s by
    // 0.6; two peaks at one dispersion are two sources.
    const std::vector<Candidate> strongest =
        strongestOfDispersions({candidate(1.0004, 10, 8), candidate(1, 20, 9),
                                candidate(1.0006, 30, 7), candidate(0.9997, 20, 6)},
                               1000);
    QCOMPARE(strongest.size(), std::size_t(3));
    QCOMPARE(strongest[0].peak.snr, 9.0F);
    QCOMPARE(strongest[1].peak.snr, 7.0F);
    QCOMPARE(strongest[2].peak.snr, 6.0F);
}

void TestFormats::refusedFilterbanks_data()
{
    QTest::addColumn<QByteArray>("bytes");
    FilterbankHeader good;
    good.step = 0.001;
    good.firstBand = 120;
    good.bandStep = -0.1;
    good.channels = 4;
    const auto with = [&good](auto change) {
        FilterbankHeader bad = good;
        change(bad);
        return filterbankBytes(bad);
    };
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("another file") << QByteArray("\x0c\0\0\0HEADER_WRONG", 16);
    QTest::newRow("a key of 2 GB") << QByteArray("\xff\xff\xff\x7fHEADER_START", 16);
    QTest::newRow("cut") << filterbankBytes(good).chopped(3);
    QTest::newRow("no channels") << with([](FilterbankHeader &h) { h.channels = 0; });
    QTest::newRow("2^31 - 1 channels")
        << with([](FilterbankHeader &h) { h.channels = 2147483647; });
    QTest::newRow("no step") << with([](FilterbankHeader &h) { h.step = 0; });
    QTest::newRow("2 bits") << with([](FilterbankHeader &h) { h.bits = 2; });
    QTest::newRow("bands below 0") << with([](FilterbankHeader &h) { h.bandStep = -100; });
    QTest::newRow("no number") << with(
        [](FilterbankHeader &h) { h.firstBand = std::numeric_limits<double>::quiet_NaN(); });
}

void TestFormats::refusedFilterbanks()
{
    QFETCH(QByteArray, bytes);
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    FilterbankHeader header;
    QVERIFY(!readFilterbank(device, header).isEmpty());
}

ZRT_UNIT_TEST_MAIN(TestFormats)
#include "tst_formats.moc"
