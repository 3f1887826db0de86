#include "calc/channelsum.h"
#include "calc/ffacandidates.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"
#include "data/reader.h"
#include "results/candidates.h"
#include "results/filterbank.h"
#include "support/batchfolder.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <csignal>
#include <sys/stat.h>

// The program as a user or a batch system calls it.

Q_DECLARE_METATYPE(PulsarParameters)

using TestSupport::contentOf;
using TestSupport::Ended;

class TestProgram : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void failures_data();
    void failures();
    void sameAsForm_data();
    void sameAsForm();
    void candidatesAreThoseOfTheForm();
    void wholeFactorsAreNamed();
    void presetsAreThoseOfTheForm();
    void killedRunsGoOn();
    void stopsAtSignal();
    void skipsWhatIsDone();
    void filterbankRoundTrip();
    void importedFilterbanks_data();
    void importedFilterbanks();
    void exportedSeries();
    void examples_data();
    void examples();
};

void TestProgram::initTestCase()
{
    QVERIFY(folder.isValid());
    // The examples of the manuals speak of this recording.
    QCOMPARE(run({"simulate", "--demo", "--points", "80000", "demo.pnt"}).code, 0);
    const TestSupport::Shape shape = {600, 1, 33, 1};
    const auto sample = [](int point, int, int channel, int) {
        return float((point * 37 + channel * 11) % 101);
    };
    const QByteArray bytes = TestSupport::recordingBytes(shape, sample);
    writeFile(path("short.pnt"), bytes);
    writeFile(path("cut.pnt"), bytes.chopped(4));
    writeFile(path("text.pnt"), "this is no recording\n");
    writeFile(path("bands.pnt"), TestSupport::recordingBytes({600, 1, 9, 1}, sample));
    writeFile(path("numbers.pnt"), TestSupport::recordingBytes({600, 2, 33, 1}, sample)
                                       .replace("modulus 1 2\n", "modulus 4 6\n"));
    const TestSupport::Shape constant = {20000, 1, 33, 1};
    writeFile(path("constant.pnt"), TestSupport::recordingBytes(constant, [](int, int, int, int) {
                  return 445400.3F; // no base line takes it off without rounding
              }));
    QDir(folder.path()).mkdir("many");
    for (int i = 0; i < 50; ++i)
        writeFile(path(QString("many/%1.pnt").arg(i, 2, 10, QChar('0'))), bytes);
    QDir(folder.path()).mkdir("empty");
}

void TestProgram::failures_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("words"); // that the message has
    const QString longName = QString(240, 'x') + ".pnt";
    QVERIFY(QFile::exists(path(longName)) || QFile::copy(path("short.pnt"), path(longName)));
    QTest::newRow("no command") << "" << 64 << "subcommand is required";
    QTest::newRow("unknown command") << "sums demo.pnt" << 64 << "subcommand is required";
    QTest::newRow("no input") << "sum" << 64 << "FILE";
    QTest::newRow("no number") << "sum --ray x demo.pnt" << 64 << "--ray";
    QTest::newRow("bad noise") << "sum --noise pink demo.pnt" << 64 << "polinom5";
    QTest::newRow("bad size") << "sum --plot png --size 5x5 demo.pnt" << 64 << "1280x720";
    QTest::newRow("bad scale") << "sum --plot png --size 500x500@9 demo.pnt" << 64 << "1280x720";
    QTest::newRow("bad dispersions") << "ffa --dm 5:1:1 demo.pnt" << 64 << "from:to:step";
    QTest::newRow("one output twice")
        << "native --ray 1 --first-point 0 -o out short.pnt many/../empty/../short.pnt "
           "many/00.pnt ./many/00.pnt many/../many/00.pnt"
        << 0 << "2 done";
    QTest::newRow("missing") << "sum nothing.pnt" << 66 << "nothing.pnt cannot be opened";
    QTest::newRow("missing list") << "sum @nothing" << 66 << "list nothing";
    QTest::newRow("empty folder") << "sum empty" << 66 << "no recordings";
    QTest::newRow("a folder in a list") << "sum @folders" << 66 << "not an ordinary file";
    QTest::newRow("text") << "sum text.pnt" << 65 << "text.pnt is not a usable recording";
    QTest::newRow("cut") << "sum cut.pnt" << 65 << "cut.pnt ends early: of 600 points";
    QTest::newRow("cut, asked") << "info cut.pnt" << 65 << "it holds 599";
    QTest::newRow("few bands") << "fourier bands.pnt --ray 1" << 65 << "8 frequency bands";
    QTest::newRow("few bands to scan") << "dmscan bands.pnt --ray 1" << 65 << "8 frequency bands";
    QTest::newRow("no such ray") << "fold --ray 9 short.pnt" << 65 << "Error ray";
    QTest::newRow("short stretch") << "sum --ray 1 short.pnt" << 65 << "need more than 16384";
    QTest::newRow("no such time") << "sum --utc 01:00:00 demo.pnt" << 65 << "not in the recording";
    QTest::newRow("bins beyond all samples")
        << "ffa --bins-min 2147483647 --bins-max 2147483647 demo.pnt" << 65 << "period_min >=";
    QTest::newRow("no periods") << "ffa --period-min 9 --period-max 1 demo.pnt" << 65 << "eriod";
    QTest::newRow("equal samples") << "ffa --dm 0 constant.pnt" << 65 << "bands is constant";
    QTest::newRow("no result") << "plot demo.pnt" << 65 << "no result of zrt-batch";
    QTest::newRow("neither curve nor candidates")
        << "plot names.csv" << 65 << "neither curves nor candidates";
    QTest::newRow("plot onto its input") << "plot result.png" << 64 << "take the place of an input";
    QTest::newRow("log onto an input") << "native --json demo.pnt demo.pnt" << 64 << "is an input";
    QTest::newRow("pipe as a list") << "sum @pipe" << 66 << "pipe that nothing comes from";
    QTest::newRow("pipe as a table") << "merge -o t.txt pipe" << 66 << "nothing comes from";
    QTest::newRow("pipe to text") << "totext pipe" << 66 << "not an ordinary file";
    QTest::newRow("pipe as a recording") << "sum pipe" << 66 << "not an ordinary file";
    QTest::newRow("pipe as a log") << "native --json pipe short.pnt" << 73 << "--json";
    QTest::newRow("pipe as an output")
        << "merge -o pipe candidates.txt" << 73 << "not an ordinary file";
    QTest::newRow("pipe to simulate") << "simulate --points 9 pipe" << 73 << "not an ordinary file";
    QTest::newRow("short result") << "totext short.res" << 65 << "Block 1 of 2 in";
    QTest::newRow("result without points")
        << "totext nopoints.res" << 65 << "нет points в паспорте";
    QTest::newRow("result without points and days")
        << "totext nocounts.res" << 65 << "нет points в паспорте";
    QTest::newRow("result cut in its header")
        << "totext cutheader.res" << 65 << "нет points в паспорте";
    QTest::newRow("result without days") << "totext nodays.res" << 65 << "Error! No days in";
    QTest::newRow("name too long")
        << "native --ray 1 --first-point 0 " + longName << 73 << "File name too long";
    QTest::newRow("no such number") << "sum --module-number 3 numbers.pnt" << 65
                                    << "no module number 3 in the recording. It "
                                       "has 4, 6.";
    QTest::newRow("place and number") << "sum --ray 1 --ray-number 5 demo.pnt" << 64 << "excludes";
    QTest::newRow("no table") << "merge -o t.txt short.pnt" << 65 << "short.pnt cannot be merged";
    QTest::newRow("no filterbank") << "import short.pnt" << 65 << "SIGPROC";
    QTest::newRow("file for a folder")
        << "native --ray 1 --first-point 0 -o text.pnt/x short.pnt" << 73 << "cannot be made";
    QTest::newRow("log in no folder") << "native --json nothing/log short.pnt" << 73 << "--json";
    QTest::newRow("bad alfa") << "cat2zrt 3:23 39:44:52 01.04.2015" << 64 << "Bad alfa!";
    QTest::newRow("no such beam") << "ray 9 9" << 65 << "no delta for these module and beam!";
    QTest::newRow("first failure counts") << "sum text.pnt nothing.pnt" << 65 << "nothing.pnt";
    Results::ResultTable table;
    table.request = {{"program", "zrt-batch"}};
    table.columns = Results::candidateColumns(std::vector<Results::Candidate>(2), true);
    writeFile(path("candidates.txt"), table.toBytes(Results::Format::Text));
    writeFile(path("folders"), "# a comment\n\nempty\n");
    table.columns = {{"name", {}, QStringList{"a", "b"}}};
    writeFile(path("names.csv"), table.toBytes(Results::Format::Csv));
    table.columns = {{"sum", {}, std::vector<float>{1, 2}}};
    writeFile(path("result.png"), table.toBytes(Results::Format::Text));
    QCOMPARE(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    writeFile(path("short.res"), "points: 9\ntype: float\ndays: 2\nxx");
    writeFile(path("nopoints.res"), "type: float\ndays: 2\n");
    writeFile(path("nocounts.res"), "type: float\nfirst_point: 0\n");
    writeFile(path("cutheader.res"), "program: zrt-batch\ncommand: fold\nfile: a.pnt\nrep");
    writeFile(path("nodays.res"), "points: 9\ntype: float\n");
}

void TestProgram::failures()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QString, words);
    const Ended end = run(arguments.split(' ', Qt::SkipEmptyParts));
    QCOMPARE(end.code, code);
    QVERIFY2(end.errors.contains(words), qPrintable(end.errors));
    const QString expected = arguments.contains("cut.pnt") && arguments.startsWith("sum")
                                 ? "File " + path("cut.pnt") + " has wrong size. Ignoring it.\n"
                                 : QString();
    QVERIFY2(end.out.contains(expected), qPrintable(end.out));
}

void TestProgram::sameAsForm_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<PulsarParameters>("parameters");
    const auto with = [](auto change) {
        PulsarParameters parameters = pulsarPresets();
        change(parameters);
        return parameters;
    };
    QTest::newRow("native") << "showNative" << with([](PulsarParameters &p) {
        p.channel = 33;
        p.points = 700;
        p.startTime = "12:01:02";
        p.deleteStep = true;
    });
    QTest::newRow("fold") << "sumPeriod" << with([](PulsarParameters &p) {
        p.period = 1.274;
        p.ray = 3;
        p.noise = "median";
        p.normalise = true;
    });
    QTest::newRow("sum") << "sumChannelsDemoNoise" << with([](PulsarParameters &) {});
    QTest::newRow("sum at the end") << "sumChannelsDemoNoise" << with([](PulsarParameters &p) {
        p.firstPoint = 63615;
        p.noise = "backSum";
        p.deductNoise = true;
    });
    QTest::newRow("average") << "sumChannelsAndAverage" << with([](PulsarParameters &p) {
        p.averageCount = 3;
        p.dispersion = 50.125;
    });
    QTest::newRow("fourier") << "sumChannelsAndFourier" << with([](PulsarParameters &p) {
        p.ray = 5;
        p.firstPoint = 60000;
        p.deleteStep = true;
        p.withNull = true;
        p.harmonicNum = 40;
        p.sigmaMultiple = 4;
    });
    QTest::newRow("four") << "sum4Dispersions" << with([](PulsarParameters &p) {
        p.dispersions = {0, 3000.5, 26.2, 1};
        p.noise = "without";
    });
    QTest::newRow("scan") << "sumAllDispersions"
                          << with([](PulsarParameters &p) { p.harmonicNum = 1080; });
    QTest::newRow("scans of averages") << "sumMultiDispersions" << with([](PulsarParameters &p) {
        p.averageCount = 1;
        p.harmonicNum = 900;
        p.dispersion = 40;
    });
    QTest::newRow("scans of starts") << "sumTimeDispersions" << with([](PulsarParameters &p) {
        p.firstPoint = 10;
        p.startDelta = 20000.4;
        p.harmonicNum = 500;
    });
}

// The command that a form copies gives what the form shows, though it reads less of the file.
void TestProgram::sameAsForm()
{
    QFETCH(QString, action);
    QFETCH(PulsarParameters, parameters);
    const QString command =
        pulsarCommand(action, parameters, "demo.pnt") + " --force --tag same --format csv";
    const Ended end = runShell(command);
    QVERIFY2(end.code == 0, qPrintable(command + "\n" + end.errors));

    static const ObservationData data = Reader::readDataFile(nullptr, path("demo.pnt"));
    if (!parameters.startTime.isEmpty()) // 12:01:02 is 135 s after the begin
        parameters.firstPoint = int(135 / data.tresolution);
    PulsarCalculate form(data, parameters);
    QVERIFY2(form.run(action), qPrintable(form.failure()));
    const PulsarResult &expected = form.result();

    const QString name = command.section(' ', 1, 1);
    const Results::ReadTable read =
        Results::readTable(contentOf(path("demo.pnt." + name + ".same.csv")));
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.table.columns.size(), expected.curves.size() + 1);
    for (std::size_t i = 0; i < expected.curves.size(); ++i) {
        const auto &numbers = std::get<std::vector<double>>(read.table.columns[i + 1].values);
        QCOMPARE(std::vector<float>(numbers.begin(), numbers.end()), expected.curves[i]);
    }
    QString report;
    for (const Results::HeaderLine &line : read.table.request)
        report += line.key == "report" ? line.value + "\n" : QString();
    const QStringList lines = expected.description.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(report, (lines + expected.remarks).join('\n') + "\n");
}

void TestProgram::candidatesAreThoseOfTheForm()
{
    PulsarParameters parameters;
    parameters.ray = 3;
    parameters.dispersion = 15.5;
    parameters.firstPoint = 1000;
    parameters.noise = "median";
    parameters.ffa.period_min = 1;
    parameters.ffa.period_max = 4;
    parameters.ffa.bins_max = 60;
    parameters.ffa.rmed_width = 12;
    const Ended end = runShell(ffaCommand(parameters, "demo.pnt") + " --tag same");
    QVERIFY2(end.code == 0, qPrintable(end.errors));
    const Results::ReadCandidates read =
        Results::readCandidates(contentOf(path("demo.pnt.ffa.same.txt")));
    QCOMPARE(read.problem, QString());

    const ObservationData data = Reader::readDataFile(nullptr, path("demo.pnt"));
    PulsarCalculate form(data, parameters);
    QVERIFY2(form.run("createFFA"), qPrintable(form.failure()));
    const FfaEstimate estimate =
        Tools::estimateFfa(parameters.ffa, form.ffaPoints(), data.tresolution);
    const std::vector<FfaCandidate> expected =
        Tools::findCandidates(*form.result().ffa, estimate.noiseThreshold, 50);
    QVERIFY(!expected.empty() && qAbs(expected[0].period - 1.274) < 1e-3);
    QCOMPARE(read.candidates.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        // Tables have 6 and 12 digits of them.
        QVERIFY(qAbs(read.candidates[i].peak.snr / expected[i].snr - 1) < 1e-5F);
        QVERIFY(qAbs(read.candidates[i].peak.period / expected[i].period - 1) < 1e-11);
        const int base = expected[i].base; // its period stands for its number
        const QString period =
            base < 0 ? "" : QString::number(expected[std::size_t(base)].period, 'g', 9) + " s";
        QCOMPARE(read.candidates[i].remark, Tools::candidateRemark(expected[i], period));
    }
}

void TestProgram::wholeFactorsAreNamed()
{
    // 1.499136 s are 3 x 40 samples, and the pulsar of 3.032 s lies in that step.
    const Ended end = runShell("zrt-batch ffa --ray 7 --dm 26.2 --period-min 1.499136 "
                               "--period-max 8 --refine --tag whole demo.pnt");
    QVERIFY2(end.code == 0, qPrintable(end.errors));
    QVERIFY2(end.errors.contains("demo.pnt: S/N comes out too low at periods of 1.4991 to 3.0358 s "
                                 "(1.3 times), where the downsampling factor is whole (3). "
                                 "--period-min 1.499 avoids it."),
             qPrintable(end.errors));
    const QByteArray table = contentOf(path("demo.pnt.ffa.whole.txt"));
    QCOMPARE(table.count("remark: S/N comes out too low"), 1);
    const Results::ReadCandidates read = Results::readCandidates(table);
    QVERIFY(read.candidates.size() > 1);
    const Results::Peak &pulsar = read.candidates[0].peak;
    QVERIFY2(qAbs(pulsar.period - 3.032) < 1e-3, qPrintable(QString::number(pulsar.period)));
    QVERIFY(qAbs(pulsar.snrFactor - std::sqrt(5 / 3.0)) < 1e-3);
    // Harmonics name the refined period of their base.
    const QString base = QString::number(pulsar.period, 'g', 9) + " s";
    const QString harmonic = "2 x " + base;
    QVERIFY(std::any_of(read.candidates.begin(), read.candidates.end(),
                        [&](const auto &candidate) { return candidate.remark == harmonic; }));

    // Merged by the true S/N, and no remark of its own.
    const double threshold = (pulsar.strength() + double(pulsar.snr)) / 2;
    QCOMPARE(run({"merge", "--only-base", "--threshold", QString::number(threshold), "-o",
                  "strong.txt", "demo.pnt.ffa.whole.txt"})
                 .code,
             0);
    const Results::ReadCandidates strong = Results::readCandidates(contentOf(path("strong.txt")));
    QCOMPARE(strong.candidates.size(), std::size_t(1));
    QCOMPARE(strong.candidates[0].peak.snrFactor, pulsar.snrFactor);
}

void TestProgram::presetsAreThoseOfTheForm()
{
    const QString form = QString::fromUtf8(contentOf(ZRT_SOURCE "/src/forms/pulsar/pulsarform.ui"));
    const auto preset = [&form](const QString &name, const QString &property) {
        const QString widget = form.section("name=\"" + name + "\"", 1).section("</widget>", 0, 0);
        return widget.section("name=\"" + property + "\"", 1).section('>', 2, 2).section('<', 0, 0);
    };
    const PulsarParameters presets = pulsarPresets();
    QCOMPARE(preset("ray", "value").toInt(), presets.ray);
    QCOMPARE(preset("dispersion", "text").toDouble(), presets.dispersion);
    QCOMPARE(preset("period", "text").toDouble(), presets.period);
    QCOMPARE(preset("firstPoint", "text").toInt(), presets.firstPoint);
    QCOMPARE(preset("harmonicNum", "value").toInt(), presets.harmonicNum);
    QCOMPARE(preset("noisePolinom5", "checked") == "true", presets.noise == "polinom5");
}

// Killed at random moments and begun again, with other jobs in another order: the same files to
// the last byte, no other file, and every recording once in the log.
void TestProgram::killedRunsGoOn()
{
    const QStringList command = {"native", "--ray", "1",      "--first-point", "0",
                                 "--plot", "png",   "--size", "200x150"};
    QCOMPARE(run(command + QStringList{"--jobs", "1", "-o", "undisturbed", "many"}).code, 0);

    QByteArray reversed;
    for (int i = 49; i >= 0; --i)
        reversed += QString("many/%1.pnt\n").arg(i, 2, 10, QChar('0')).toLatin1();
    writeFile(path("reversed"), reversed);
    // What a kill may leave in the middle of a write.
    QDir(folder.path()).mkdir("disturbed");
    writeFile(path("disturbed/00.pnt.native.txt.AbCdEf"), "program: zrt-ba");
    QRandomGenerator random(1);
    int kills = 0;
    double longest = 30; // ms
    for (int code = -1; code != 0;) {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(ZRT_BATCH, command + QStringList{"--jobs", "3", "--json", "log", "-o",
                                                       "disturbed", "@reversed"});
        QVERIFY(process.waitForStarted());
        // Each run gets a little longer, so that the last one ends by itself.
        longest *= 1.15;
        if (!process.waitForFinished(random.bounded(10, int(longest)))) {
            process.kill();
            ++kills;
        }
        const Ended end = ended(process);
        code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        QVERIFY2(code == 0 || code == -1, qPrintable(end.errors));
        QVERIFY(kills < 200);
    }
    QVERIFY(kills > 0);
    const auto undisturbed = filesOf(path("undisturbed"));
    QCOMPARE(undisturbed.size(), 100);
    QCOMPARE(filesOf(path("disturbed")), undisturbed);
    QSet<QByteArray> done;
    for (const QByteArray &line : contentOf(path("log")).split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        const QByteArray file = object["file"].toString().toUtf8();
        QVERIFY(object["status"] != "failed" &&
                !(object["status"] == "done" && done.contains(file)));
        done += file;
    }
    QCOMPARE(done.size(), 51); // the end of the log is an empty line
}

void TestProgram::stopsAtSignal()
{
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(ZRT_BATCH, {"ffa", "--ray", "all", "--dm", "0:500:1", "--jobs", "1", "--tag",
                              "stopped", "demo.pnt", "short.pnt"});
    QVERIFY(process.waitForReadyRead());
    QCOMPARE(::kill(pid_t(process.processId()), SIGTERM), 0);
    const Ended end = ended(process);
    QCOMPARE(end.code, 75);
    QVERIFY2(end.errors.contains("2 not begun or stopped"), qPrintable(end.errors));
    QVERIFY(!QFile::exists(path("demo.pnt.ffa.stopped.txt")));

    // A result of 400 MB of zeros, of which the disk has none.
    const QByteArray header = "points: 100000000\ndays: 1\n";
    writeFile(path("long.res"), header);
    QVERIFY(QFile::resize(path("long.res"), header.size() + 400000000));
    process.start(ZRT_BATCH, {"totext", "--jobs", "1", "long.res"});
    QVERIFY(process.waitForReadyRead());
    QCOMPARE(::kill(pid_t(process.processId()), SIGTERM), 0);
    const Ended text = ended(process);
    QCOMPARE(text.code, 75);
    QVERIFY2(text.errors.contains(path("long.res") + " was stopped"), qPrintable(text.errors));
    QVERIFY(!QFile::exists(path("long.res.txt")));
}

void TestProgram::skipsWhatIsDone()
{
    const QStringList command = {"native", "--ray", "1",     "--first-point",
                                 "0",      "-o",    "again", "short.pnt"};
    const auto wasSkipped = [&](const QStringList &more) {
        const Ended end = run(command + more);
        return end.code == 0 && end.errors.contains("is done with the same parameters");
    };
    QVERIFY(!wasSkipped({}));
    QVERIFY(wasSkipped({}));
    QVERIFY(!wasSkipped({"--force"}));
    QVERIFY(!wasSkipped({"--channel", "2"}));
    QVERIFY(!wasSkipped({}));
    QVERIFY(!wasSkipped({"--plot", "png"}));
    QFile::remove(path("again/short.pnt.native.png"));
    QVERIFY(!wasSkipped({"--plot", "png"}));
    QVERIFY(wasSkipped({"--plot", "png"}));
    // A picture of the same name, but of another request.
    QCOMPARE(run({"plot", "--size", "300x200", "again/short.pnt.native.txt"}).code, 0);
    QVERIFY(!wasSkipped({"--plot", "png"}));
    QVERIFY(wasSkipped({"--plot", "png"}));
    QFile recording(path("short.pnt"));
    QVERIFY(recording.open(QIODevice::ReadWrite));
    QVERIFY(recording.setFileTime(QDateTime::currentDateTime().addDays(-1),
                                  QFileDevice::FileModificationTime));
    recording.close();
    QVERIFY(!wasSkipped({"--plot", "png"}));
}

void TestProgram::filterbankRoundTrip()
{
    QCOMPARE(run({"export", "--ray", "1", "short.pnt"}).code, 0);
    QCOMPARE(run({"import", "short.pnt.m1_r1.fil"}).code, 0);
    const ObservationData first = Reader::readDataFile(nullptr, path("short.pnt"));
    const ObservationData back = Reader::readDataFile(nullptr, path("short.pnt.m1_r1.fil.pnt"));
    QCOMPARE(back.npoints, first.npoints);
    QCOMPARE(back.beginTime, first.beginTime);
    QCOMPARE(back.tresolution, first.tresolution);
    for (int channel = 0; channel < 32; ++channel) {
        QVERIFY(qAbs(back.fbands[std::size_t(channel)] - first.fbands[std::size_t(channel)]) <
                1e-9);
        for (int point = 0; point < 600; ++point)
            QCOMPARE(back.samples[0][channel][0][point], first.samples[0][channel][0][point]);
    }
    // A plain fold of the filterbank's own layout: the last value of a sample is the lowest band.
    const QByteArray fil = contentOf(path("short.pnt.m1_r1.fil"));
    float lowest = 0;
    memcpy(&lowest, fil.constData() + fil.size() - 4, sizeof lowest);
    QCOMPARE(lowest, first.samples[0][0][0][599]);
}

void TestProgram::importedFilterbanks_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<double>("bandStep");
    QTest::addColumn<QByteArray>("samples"); // two of three channels, in the order of the file
    QTest::newRow("8 bits, lowest first") << 8 << 0.5 << QByteArray("\x01\x02\xff\x04\x05\x06", 6);
    QTest::newRow("8 bits, highest first")
        << 8 << -0.5 << QByteArray("\xff\x02\x01\x06\x05\x04", 6);
    QTest::newRow("16 bits, highest first")
        << 16 << -0.5 << QByteArray("\xff\0\x02\0\x01\0\x06\0\x05\0\x04\0", 12);
}

// The values are 1, 2, 255 and 4, 5, 6 from the lowest band up; the last sample is not whole.
void TestProgram::importedFilterbanks()
{
    QFETCH(int, bits);
    QFETCH(double, bandStep);
    QFETCH(QByteArray, samples);
    Results::FilterbankHeader header;
    header.begin = 57113.5; // 1 April 2015, noon
    header.step = 0.25;
    header.firstBand = bandStep > 0 ? 110 : 111;
    header.bandStep = bandStep;
    header.channels = 3;
    header.bits = bits;
    writeFile(path("in.fil"), Results::filterbankBytes(header) + samples + "x");
    const Ended end = run({"import", "--force", "in.fil"});
    QVERIFY2(end.code == 0 && end.errors.contains("the last sample is not whole"),
             qPrintable(end.errors));
    const ObservationData data = Reader::readDataFile(nullptr, path("in.fil.pnt"));
    QCOMPARE(data.npoints, 2);
    QCOMPARE(data.tresolution, 0.25);
    QCOMPARE(data.beginTime, QDateTime(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC));
    QCOMPARE(data.fbands, (std::vector<double>{110, 110.5, 111}));
    const std::vector<float> expected = {1, 4, 2, 5, 255, 6, 86, 5}; // the means last
    for (int channel = 0; channel < 4; ++channel)
        for (int point = 0; point < 2; ++point)
            QCOMPARE(data.samples[0][channel][0][point],
                     expected[std::size_t(2 * channel + point)]);
}

void TestProgram::exportedSeries()
{
    QCOMPARE(run({"export", "--kind", "dat", "--ray", "7", "--dm", "26.2", "demo.pnt"}).code, 0);
    const ObservationData data = Reader::readDataFile(nullptr, path("demo.pnt"));
    const std::vector<double> sums = Tools::sumChannels(data, 26.2, 0, 6);
    std::vector<float> written(sums.size());
    const QByteArray bytes = contentOf(path("demo.pnt.m1_r7_DM26.2.dat"));
    QCOMPARE(bytes.size(), int(sums.size() * sizeof(float)));
    memcpy(written.data(), bytes.constData(), std::size_t(bytes.size()));
    QCOMPARE(written, std::vector<float>(sums.begin(), sums.end()));
    const QString description = QString::fromUtf8(contentOf(path("demo.pnt.m1_r7_DM26.2.inf")));
    // 11:58:47 is 0.49915509... of a day.
    for (const char *line : {" Number of bins in the time series      =  80000\n",
                             " Width of each time series bin (sec)    =  0.0124928\n",
                             " Epoch of observation (MJD)             =  57113.49915509",
                             " Central freq of low channel (MHz)      =  120\n"})
        QVERIFY2(description.contains(line), qPrintable(description));
}

// Manuals and README: a block of commands each, tried in its order in one folder.
void TestProgram::examples_data()
{
    QTest::addColumn<QString>("commands");
    const auto commandsIn = [](QString text) {
        text.replace(QRegularExpression("\\\\\n\\s*"), "");
        QStringList commands;
        for (const QString &line : text.split('\n')) {
            if (line.trimmed().startsWith("zrt-batch ") && line.startsWith("  ") &&
                !line.contains(" COMMAND"))
                commands << line.trimmed();
        }
        return commands.join('\n');
    };
    const QString main = run({"--help"}).out;
    const QString list = main.section("Subcommands:\n", 1);
    QRegularExpressionMatchIterator names =
        QRegularExpression("^  (\\w+)", QRegularExpression::MultilineOption).globalMatch(list);
    int count = 0;
    while (names.hasNext()) {
        const QString name = names.next().captured(1);
        QTest::addRow("%s", qPrintable(name)) << commandsIn(run({name, "--help"}).out);
        ++count;
    }
    QCOMPARE(count, 16);
    QTest::newRow("README") << commandsIn(QString::fromUtf8(contentOf(ZRT_SOURCE "/README.md")));
}

void TestProgram::examples()
{
    QFETCH(QString, commands);
    QVERIFY(!commands.isEmpty());
    // Folders in examples hold the demonstration only.
    QTemporaryDir own(folder.filePath("example-XXXXXX"));
    QVERIFY(QFile::link(path("demo.pnt"), own.filePath("demo.pnt")));
    const Ended end = runShell("cd " + own.path() + "\n" + commands);
    QVERIFY2(end.code == 0, qPrintable(commands + "\n" + end.errors));
}

ZRT_UNIT_TEST_MAIN(TestProgram)
#include "tst_program.moc"
