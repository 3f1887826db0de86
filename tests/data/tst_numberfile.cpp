#include "data/numberfile.h"

#include "support/recordings.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <cmath>

namespace {

// Rows as "1;2|3;nan".
QString textOf(const NumberFile &file)
{
    QStringList rows;
    for (qint64 row = 0; row < file.table.rows(); ++row) {
        QStringList cells;
        for (qint64 column = 0; column < file.table.rowLength(row); ++column)
            cells << file.cell(row, column);
        rows << cells.join(";");
    }
    return rows.join("|");
}

QByteArray resultHeader(int points, int blocks)
{
    return QString("disp: 26\npoints: %1\ntype: float\nfirst_point: 58000\ndays: %2\n")
        .arg(points)
        .arg(blocks)
        .toUtf8();
}

QByteArray floats(const std::vector<float> &values)
{
    return QByteArray(reinterpret_cast<const char *>(values.data()),
                      int(values.size() * sizeof(float)));
}

void row(const char *name, const QByteArray &bytes, const char *cells, const char *remarks = "",
         const char *names = "", const char *wordColumns = "")
{
    QTest::newRow(name) << bytes << cells << remarks << names << wordColumns;
}

// Tables with names above their columns.
void tableRows()
{
    row("samples of a plot",
        "# file: x.pnt\n# points 0 to 1 of 9\nindex,time (s),\"sum, "
        "\"\"a\"\"\"\n0,0,1.5\n1,0.25,\n",
        "0;0;1.5|1;0.25;nan", "", "index;time (s);sum, \"a\"");
    row("candidates of a form",
        "# file: x.pnt\nno.\tperiod, s\tremark\n1\t0.7145700\t\n2\t1.4291400\t2 x no. 1\n",
        "1;0.71457;|2;1.42914;2 x no. 1", "", "no.;period, s;remark", "2");
    row("rows of the batch program",
        "program: x\nrows: 2\ncolumns: period [s]; remark; file\n0.5\t-\t7\n1\t2 x 0.5 s\tb.pnt\n",
        "0.5;-;7|1;2 x 0.5 s;b.pnt", "1 cells of the column \"file\"", "period [s];remark;file",
        "1");
    row("its CSV", "# program: x\n# rows: 1\nname,remark\n\"a\nb\",-\n", "a\nb;-", "",
        "name;remark", "0 1");
    row("marks of inches", "size,n\n5\" dish,3\n \"a \"\"b\"\", c\",4\n", "5\" dish;3|a \"b\", c;4",
        "", "size;n", "0");
    row("of others, with blanks", "\xEF\xBB\xBFname; F0\r\nB0329+54 ;1.39\r\n\r\n J1807 ; 6.1",
        "B0329+54;1.39|J1807;6.1", "", "name;F0", "0");
    row("one column with a name", "# about\nflux of today\n1\n2\n", "1|2", "", "flux of today");
    row("cut within a row", "# program: x\n# rows: 3\na,b\n1,2\n3,4\n5,6", "1;2|3;4",
        "Line 6 skipped: the file ends within it\nThe header promises 3 rows, the file has 2",
        "a;b");
    row("rows that do not fit", "a,b\n1,2\n3\n4,5,6\n7,8\n", "1;2|7;8",
        "Line 3 skipped: 1 cells below 2 names\nLine 4 skipped: 3 cells", "a;b");
    row("a number lost", "a,b\n1,2\n3,x\n5,6\n", "1;2|3;x|5;6",
        "1 cells of the column \"b\" are no numbers", "a;b");
}

} // namespace

class TestNumberFile : public QObject {
    Q_OBJECT

private slots:
    void read_data();
    void read();
    void seriesHeader();
    void refused();
    void longFile();
    void limitAndCancel();

private:
    QString file(const QByteArray &bytes)
    {
        return TestSupport::writeFile(folder, "50%1 %2.txt", bytes);
    }

    QTemporaryDir folder;
};

void TestNumberFile::read_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("cells");
    QTest::addColumn<QString>("remarks"); // parts of them, in order, one a line
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("wordColumns");
    row("one column, no last line end", "1\n-2.5e3\n+3", "1|-2500|3");
    row("rows end with a blank, one row is empty", "1 2 \n\n 3\t4 \r\n", "1;2|3;4");
    row("marks keep the columns", "1, 2;3\n4,,5\n;6,\n", "1;2;3|4;nan;5|nan;6");
    row("mark of an editor", "\xEF\xBB\xBF 1 2\n3 4\n", "1;2|3;4");
    row("no numbers", "1\nabc\n2 x3\n0x10\n4+5\n+-1\n7\n", "1|7",
        "Line 2 skipped: \"abc\"\nLine 3 skipped: \"x3\"\nLine 4 \nLine 5 \nLine 6 ");
    row("beyond the range", "1e999\n2\n", "2", "Line 1 skipped: \"1e999\" is beyond");
    row("nan and inf are numbers", "nan\n-inf\n", "nan|-inf");
    row("names of columns", "about\n# time, flux\n1 2\n3 4\nend\n", "1;2|3;4",
        "Line 1 skipped\nLine 5 skipped", "time;flux");
    row("title that is no names", "my data of today\n1 2\n", "1;2", "Line 1 skipped");
    row("rows of different length", "1\n2 3\n4\n5 6 7\n", "1|2;3|4|5;6;7");
    row("result file as text", resultHeader(3, 2) + "1\n2\n3\n4\n5\n6\n", "1;2;3|4;5;6");
    row("result file of floats", resultHeader(3, 2) + floats({1, 2, 3, 4, 5, 6}), "1;2;3|4;5;6");
    row("result file that promises more", resultHeader(3, 2) + "1\nx\n2\n3\n4\n", "1;2;3|4",
        "Line 7 skipped\npromises 2 blocks of 3 values, the file has 4");
    row("text of a recording",
        "i=0\nmodule 1 ray 1: 1 2\nmodule 1 ray 2: 3 4\n"
        "i=1\nmodule 1 ray 1: 5 6\nmodule 1 ray 2: 7 8\n",
        "1;2;3;4|5;6;7;8", "",
        "module 1 ray 1 channel 1;module 1 ray 1 channel 2;"
        "module 1 ray 2 channel 1;module 1 ray 2 channel 2");
    tableRows();
}

void TestNumberFile::read()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, remarks);
    const NumberFile found = Tools::readNumberFile(file(bytes));
    QCOMPARE(found.error, QString());
    QTEST(textOf(found), "cells");
    QTEST(found.columnNames.join(";"), "names");
    QStringList wordColumns;
    for (const qint64 column : found.textColumns)
        wordColumns << QString::number(column);
    QTEST(wordColumns.join(" "), "wordColumns");
    const QStringList parts = remarks.split('\n', Qt::SkipEmptyParts);
    QVERIFY2(found.remarks.size() == parts.size(), qPrintable(found.remarks.join("; ")));
    for (int i = 0; i < parts.size(); ++i)
        QVERIFY2(found.remarks[i].contains(parts[i]), qPrintable(found.remarks[i]));
    for (qint64 row = 0; row < found.table.rows(); ++row) {
        const std::vector<double> numbers = found.table.row(row);
        QVERIFY(std::isnan(found.table.at(row, qint64(numbers.size()))));
        QVERIFY(!(found.table.column(0)[std::size_t(row)] < numbers[0]));
    }
}

void TestNumberFile::seriesHeader()
{
    const NumberFile found = Tools::readNumberFile(
        file("program: x\nx: frequency [Hz]\nx_first: 0.5\nx_step: 0.25\npoints: 2\ntype: float\n"
             "blocks: spectrum; 1 sigma\ndays: 2\n1\n2\n3\n4\n"));
    QCOMPARE(textOf(found), QString("1;2|3;4"));
    QCOMPARE(found.rowNames, (QStringList{"spectrum", "1 sigma"}));
    QCOMPARE(found.rowAxis.name, QString("frequency [Hz]"));
    QCOMPARE(found.rowAxis.first, 0.5);
    QCOMPARE(found.rowAxis.step, 0.25);
    QCOMPARE(found.remarks, QStringList());
}

void TestNumberFile::refused()
{
    const std::pair<QByteArray, QString> files[] = {
        {"", "is empty"},
        {"hello\nworld\n", "has no line of numbers"},
        {QByteArray("numpar 3\nnpoints 2\n\0\0\1", 22), "binary data"},
        {"# Title\nFirst, a line\nand, more\nof it\n\nEnd.\n", "is no table: of most lines"},
        {"# program: x\na,b\n", "without rows"},
        {QByteArray("# x\na,b\n1,2\n\0,1\n", 15), "binary data"},
        {resultHeader(3, 2) + floats({1, 2, 3, 4}), "Block 2 of 2 in "},
        {"points: 2000000000\ntype: float\ndays: 99999999999999999999\n\1\2\3\4", "Block 1 of "},
    };
    for (const auto &[bytes, error] : files) {
        const QString path = file(bytes);
        const QString found = Tools::readNumberFile(path).error;
        QVERIFY2(found.contains(error) && found.contains(path), qPrintable(found));
    }
}

// Words lie across the pieces in which the file is read.
void TestNumberFile::longFile()
{
    constexpr int count = 400000;
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes += QByteArray::number(i * 1.25, 'f', 3) + (i % 4 == 3 ? '\n' : ' ');
    bytes.insert(bytes.size() / 2, "\n" + QByteArray(3 << 20, 'x') + "\n");
    const NumberFile found = Tools::readNumberFile(file(bytes));
    QCOMPARE(found.error, QString());
    QCOMPARE(found.remarks.size(), 1);
    QVERIFY(found.table.count() >= count);
    QVERIFY(found.table.count() <= count + 1); // the long word may have parted a number
    QCOMPARE(found.table.all().front(), 0.0);
    QCOMPARE(found.table.all().back(), (count - 1) * 1.25);
}

void TestNumberFile::limitAndCancel()
{
    const QString path = file("1 2\n3 4\n5 6\n");
    const NumberFile part = Tools::readNumberFile(path, 9);
    QCOMPARE(textOf(part), QString("1;2|3;4"));
    QVERIFY(!part.isWhole);
    const QString blocks = file(resultHeader(3, 2) + floats({1, 2, 3, 4, 5, 6}));
    QCOMPARE(textOf(Tools::readNumberFile(blocks, 8)), QString("1;2"));
    QCOMPARE(textOf(Tools::readNumberFile(blocks, 20)), QString("1;2;3"));
    QVERIFY(Tools::readNumberFile(path, 100, {}, [] { return true; }).wasCancelled);
}

ZRT_UNIT_TEST_MAIN(TestNumberFile)
#include "tst_numberfile.moc"
