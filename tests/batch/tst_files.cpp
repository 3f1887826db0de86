#include "base/process.h"
#include "batch/mergework.h"
#include "picture/resultplot.h"
#include "results/candidates.h"
#include "results/filterbank.h"
#include "support/batchfolder.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <cmath>
#include <limits>
#include <random>
#include <sys/stat.h>

// Names, numbers and fates of the files that the batch program makes.

using TestSupport::contentOf;
using TestSupport::Ended;

class TestFiles : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void fullDisk_data();
    void fullDisk();
    void skipsByRequest_data();
    void skipsByRequest();
    void picturesBelongToTables();
    void trueNumbers();
    void oneChannelHasNoDispersion();
    void namesOfAnyBytes();
    void namesWithPercent();
    void listFromPipe();
    void candidatesAsPicture();
    void mergingIgnoresOrder();

private:
    bool wasSkipped(const QString &arguments) const;
};

void TestFiles::initTestCase()
{
    QVERIFY(folder.isValid());
    // Two modules and two rays whose places are not their numbers; each ray has its own level.
    const auto sample = [](int point, int module, int channel, int ray) {
        return float(100 * module + 10 * ray + channel % 3 + point % 7);
    };
    const QByteArray shorter = TestSupport::recordingBytes({600, 1, 33, 1}, sample);
    writeFile(path("short.pnt"), shorter);
    writeFile(path("again.pnt"), shorter);
    writeFile(path("cut.pnt"), shorter.chopped(4));
    writeFile(path("numbers.pnt"), TestSupport::recordingBytes({2000, 2, 33, 2}, sample)
                                       .replace("modulus 1 2\n", "modulus 4 6\n"));
    writeFile(path("ray.pnt"),
              TestSupport::recordingBytes({2000, 1, 33, 1}, sample).replace("rays 1\n", "ray 5\n"));
    Results::FilterbankHeader header;
    header.step = 0.25;
    header.firstBand = 110;
    header.bandStep = 1;
    header.channels = 2;
    writeFile(path("again.fil"), Results::filterbankBytes(header) + QByteArray(16, 'x'));
    writeFile(path("curve.res"), "points: 2\ndays: 1\n12345678");
    Results::ResultTable table;
    table.request = {{"program", "zrt-batch"}, {"command", "sum"}};
    table.columns = {{"sum", {}, std::vector<float>{1, 3, 2}}};
    writeFile(path("curve.txt"), table.toBytes(Results::Format::Text));
    table.columns = Results::candidateColumns(std::vector<Results::Candidate>(2), true);
    writeFile(path("candidates.txt"), table.toBytes(Results::Format::Text));
}

void TestFiles::fullDisk_data()
{
    QTest::addColumn<QString>("command");
    for (const char *command :
         {"native --ray 1 --first-point 0 --plot svg -o full short.pnt", "totext -o full curve.res",
          "totext -o full short.pnt", "plot -o full curve.txt", "export --ray 1 -o full short.pnt",
          "export --ray 1 --kind dat -o full short.pnt", "import -o full again.fil",
          "merge -o full/merged.txt candidates.txt", "simulate --points 9 full/simulated.pnt"})
        QTest::newRow(command) << QString(command);
}

// Not a byte can be written, though everything fits into one buffer: it is told, with the file
// and the cause, and nothing appears. A limit on the size of files stands for the disk.
void TestFiles::fullDisk()
{
    QFETCH(QString, command);
    const Ended end = runShell("mkdir -p full\nulimit -f 0\nzrt-batch " + command);
    QCOMPARE(end.code, 74);
    QVERIFY2(end.errors.contains("cannot be written: File too large") &&
                 end.errors.contains(QRegularExpression("[^ ]*full/[^ ]+ cannot be written")),
             qPrintable(end.errors));
    QVERIFY(filesOf(path("full")).isEmpty());
}

// Another option or another input does the work again, the same ones do not.
void TestFiles::skipsByRequest_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("other"); // another request for the same output
    const auto row = [](const char *command, const char *input, const char *other) {
        QTest::newRow(command) << QString(input) << QString(other);
    };
    row("native --ray 1 --first-point 0", "again.pnt", "native --ray 1 --first-point 1");
    row("plot", "curve.txt", "plot --size 300x200");
    row("plot --kind svg", "curve.txt", "plot --kind svg --size 300x200");
    row("plot --kind pdf", "curve.txt", "plot --kind pdf --size 300x200");
    row("totext", "curve.res", "totext --force");
    row("totext", "again.pnt", "totext --force");
    row("export --ray 1", "again.pnt", "export --ray 1 --dm 5");
    row("export --ray 1 --kind dat", "again.pnt", "export --ray-number 1 --kind dat");
    row("import", "again.fil", "import --force");
}

bool TestFiles::wasSkipped(const QString &arguments) const
{
    const Ended end = run(arguments);
    return end.code == 0 && end.errors.contains("is done with the same parameters");
}

void TestFiles::skipsByRequest()
{
    QFETCH(QString, input);
    QFETCH(QString, other);
    const QString command = QString(QTest::currentDataTag()) + " -o again " + input;
    QVERIFY(!wasSkipped(command));
    QVERIFY(wasSkipped(command));
    QFile file(path(input)); // another one in its place
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(file.fileTime(QFileDevice::FileModificationTime).addDays(-100),
                             QFileDevice::FileModificationTime));
    file.close();
    QVERIFY(!wasSkipped(command));
    QVERIFY(!wasSkipped(other + " -o again " + input));
}

// A table is done when its picture is there too, made for the same request.
void TestFiles::picturesBelongToTables()
{
    const QString table = "native --ray 1 --first-point 0 -o pictures short.pnt";
    const QString both = table + " --plot png";
    QVERIFY(!wasSkipped(table));
    QVERIFY(!wasSkipped(both));
    QFile::remove(path("pictures/short.pnt.native.png"));
    QVERIFY(!wasSkipped(both));
    QVERIFY(wasSkipped(both));
    succeed("plot --size 300x200 pictures/short.pnt.native.txt");
    QVERIFY(!wasSkipped(both));
}

// What a passport numbers 6 and 5 is called so everywhere, however it was chosen.
void TestFiles::trueNumbers()
{
    const QString sum = "sum --first-point 0 --count 1000 ";
    succeed(sum + "--module 2 --ray 2 numbers.pnt");
    succeed(sum + "--module-number 6 --ray-number 2 --tag number numbers.pnt");
    const auto linesOf = [this](const QString &name) {
        return QString::fromUtf8(contentOf(path(name))).split('\n');
    };
    const QStringList byPlace = linesOf("numbers.pnt.sum.txt");
    const QStringList byNumber = linesOf("numbers.pnt.sum.number.txt");
    QVERIFY(byPlace.contains("module: 6") && byPlace.contains("ray: 2"));
    QVERIFY(byNumber.contains("module: 6") && byNumber.contains("module_number: 6"));
    QCOMPARE(byPlace.mid(byPlace.size() - 1001), byNumber.mid(byNumber.size() - 1001));

    succeed(sum + "--ray-number 5 ray.pnt");
    QVERIFY(linesOf("ray.pnt.sum.txt").contains("ray: 5"));
    succeed("export --module 2 --ray 1 numbers.pnt");
    succeed("export --ray-number 5 --kind dat --dm 0 ray.pnt");
    QVERIFY(QFile::exists(path("numbers.pnt.m6_r1.fil")));
    QVERIFY(contentOf(path("ray.pnt.m1_r5_DM0.inf")).contains("Module 1, ray 5 of ray.pnt"));

    succeed("simulate --points 10000 --rays 2 --modules 2 --pulsar "
            "module=2,ray=2,period=1.3,strength=2 search.pnt");
    writeFile(path("search.pnt"),
              contentOf(path("search.pnt")).replace("modulus 1 2\n", "modulus 4 6\n"));
    succeed("ffa --module-number 6 --ray all --dm 0 --period-min 1 --period-max 2 --plot svg "
            "search.pnt");
    const Results::ReadCandidates found =
        Results::readCandidates(contentOf(path("search.pnt.ffa.txt")));
    QVERIFY(!found.candidates.empty());
    QCOMPARE(found.candidates[0].module * 10 + found.candidates[0].ray, 62);
    QVERIFY(linesOf("search.pnt.ffa.txt").contains("modules: 6"));
    QVERIFY(linesOf("search.pnt.ffa.txt").contains("rays: 1 2"));
    QVERIFY(contentOf(path("search.pnt.ffa.svg")).contains("module 6, ray 2, dispersion 0"));
}

void TestFiles::oneChannelHasNoDispersion()
{
    for (const QString command : {"native", "fold"}) {
        succeed(command + " --ray 1 --first-point 0 --tag one ray.pnt");
        const QByteArray table = contentOf(path("ray.pnt." + command + ".one.txt"));
        QVERIFY(table.contains("\nchannel: 1\n") && table.contains("\nfrequency: 120 MHz\n"));
        QVERIFY2(!table.contains("disp"), table.left(2000).constData());
    }
}

// The bytes of a name in KOI8-R come through arguments, lists, folders, headers, messages and
// logs, in the locale "C" too.
void TestFiles::namesOfAnyBytes()
{
    const Ended end =
        runShell("export LC_ALL=C\nmkdir koi\nname=$(printf 'koi/\\320\\321\\377.pnt')\n"
                 "cp short.pnt \"$name\"\ncp cut.pnt \"koi/cut-${name#koi/}\"\n"
                 "echo \"$name\" > koi.list\n"
                 "zrt-batch native --ray 1 --first-point 0 --json koi.log --plot svg \"$name\"\n"
                 "zrt-batch native --ray 1 --first-point 0 @koi.list 2>&1 | grep -q 'is done'\n"
                 "zrt-batch plot --kind pdf \"$name.native.txt\"\n"
                 "zrt-batch simulate --points 9 \"$name\"x\n"
                 "zrt-batch native --ray 1 --first-point 0 --force koi || test $? = 65\n");
    QVERIFY2(end.code == 0, qPrintable(end.errors));
    const QByteArray name = "/koi/\xD0\xD1\xFF.pnt";
    QProcess list;
    list.start("sh", {"-c", "cd " + path("koi") + " && LC_ALL=C ls"});
    QVERIFY(list.waitForFinished());
    QCOMPARE(list.readAllStandardOutput(),
             QByteArray("cut-\xD0\xD1\xFF.pnt\n"
                        "\xD0\xD1\xFF.pnt\n\xD0\xD1\xFF.pnt.native.pdf\n"
                        "\xD0\xD1\xFF.pnt.native.svg\n\xD0\xD1\xFF.pnt.native.txt\n"
                        "\xD0\xD1\xFF.pntx\n"));
    QProcess table;
    table.start("sh", {"-c", "grep -a ^file: " + path("koi") + "/*.txt"});
    QVERIFY(table.waitForFinished());
    QCOMPARE(table.readAllStandardOutput(),
             "file: " + QFile::encodeName(folder.path()) + name + "\n");
    QVERIFY(contentOf(path("koi.log")).contains("/koi/\\udcd0\\udcd1\\udcff.pnt\""));
}

// "%1" in a name is no place for a number.
void TestFiles::namesWithPercent()
{
    for (const char *name : {"a%1.pnt", "a%2.pnt"})
        QVERIFY(QFile::copy(path("short.pnt"), path(name)));
    succeed("export --ray 1 a%1.pnt a%2.pnt");
    QVERIFY(QFile::exists(path("a%1.pnt.m1_r1.fil")) && QFile::exists(path("a%2.pnt.m1_r1.fil")));
    const Ended end = run("export --ray 9 a%2.pnt");
    QVERIFY2(
        end.errors.contains(path("a%2.pnt") + ": ray 9 is not in the recording. Allowed: 1 to 1"),
        qPrintable(end.errors));
}

// Somebody who writes to a pipe slowly is waited for.
void TestFiles::listFromPipe()
{
    QCOMPARE(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    const Ended end = runShell("(sleep 0.2; echo short.pnt; sleep 0.2; echo ray.pnt) > pipe &\n"
                               "zrt-batch native --ray 1 --first-point 0 --tag list @pipe");
    QVERIFY2(end.code == 0 && end.errors.contains("2 done"), qPrintable(end.errors));
}

// The highest places of the picture are those of the candidates.
void TestFiles::candidatesAsPicture()
{
    std::vector<Results::Candidate> candidates(3);
    const double periods[] = {0.5, 1, 2};
    for (std::size_t i = 0; i < 3; ++i) {
        candidates[i].peak.period = periods[i];
        candidates[i].peak.snr = 10 + float(i);
    }
    candidates[0].remark = "1/2 x 1 s";
    Results::ResultTable table;
    table.request = {{"program", "zrt-batch"}, {"command", "merge"}};
    table.result = {{"period_min", "0.25 s"}, {"period_max", "4 s"}};
    table.columns = Results::candidateColumns(candidates, true);
    const PlotData plot = Plot::plotOf(table);
    QCOMPARE(plot.graphs.size(), std::size_t(2));
    const auto places = [&](std::size_t curve) {
        std::vector<double> found;
        for (std::size_t i = 0; i < plot.x.values.size(); ++i)
            if (plot.graphs[curve][i] > 0)
                found.push_back(std::round(plot.x.values[i] * 100) / 100);
        return found;
    };
    QCOMPARE(places(0), (std::vector<double>{1, 2}));
    QCOMPARE(places(1), (std::vector<double>{0.5}));
    QCOMPARE(plot.x.values.front(), 0.25);
}

// Candidates that differ in a single column, some of them in two tables, give the same bytes in
// whatever order they come.
void TestFiles::mergingIgnoresOrder()
{
    QStringList inputs;
    for (int i = 0; i < 6; ++i) {
        Results::Candidate same;
        same.peak.snr = 10;
        same.file = "a.pnt";
        Results::Candidate other = same;
        other.remark = i % 2 ? "2 x 0.5 s" : "";
        other.peak.foldSnr = i % 3;
        other.peak.periodError = i == 4 ? 1e-6 : std::numeric_limits<double>::quiet_NaN();
        other.ray = 1 + i % 4;
        Results::ResultTable table;
        table.request = {{"program", "zrt-batch"}};
        table.columns = Results::candidateColumns({same, other}, true);
        inputs << path("table" + QString::number(i));
        writeFile(inputs.back(), table.toBytes(Results::Format::Text));
    }
    QByteArray first;
    for (int i = 0; i < 12; ++i) {
        std::mt19937 random{unsigned(i)};
        std::shuffle(inputs.begin(), inputs.end(), random);
        Batch::MergeRequest request;
        request.output = path("merged");
        QVERIFY(!Batch::mergeCandidates(inputs, request));
        const QByteArray bytes = contentOf(request.output);
        if (first.isEmpty())
            first = bytes;
        QCOMPARE(bytes, first);
    }
    QCOMPARE(Results::readCandidates(first).candidates.size(), std::size_t(4));
}

int main(int argc, char **argv)
{
    setUpProcess(); // for the folder with names of any bytes is removed at the end
    return TestSupport::runTest<QCoreApplication, TestFiles>(argc, argv);
}
#include "tst_files.moc"
