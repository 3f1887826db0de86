#include "calc/ffacandidates.h"
#include "calc/pulsar/bandfold.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"
#include "data/reader.h"
#include "results/candidates.h"
#include "support/batchfolder.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <csignal>
#include <sys/stat.h>

// The program as a user or a batch system calls it.

Q_DECLARE_METATYPE(PulsarParameters)

using TestSupport::contentOf;
using TestSupport::Ended;

namespace {

// Sets members to values, of which each follows its member.
template <typename Member, typename Value, typename... More>
void set(PulsarParameters &parameters, Member member, const Value &value, const More &...more)
{
    parameters.*member = value;
    if constexpr (sizeof...(more) > 0)
        set(parameters, more...);
}

} // namespace

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
    void killedRunsGoOn();
    void stopsAtSignal();
    void examples_data();
    void examples();

private:
    void makeBadInputs();
    Ended stopped(const QString &arguments) const;
};

void TestProgram::initTestCase()
{
    QVERIFY(folder.isValid());
    // The examples of the manuals speak of this recording.
    succeed("simulate --demo --points 80000 demo.pnt");
    const auto sample = [](int point, int, int channel, int) {
        return float((point * 37 + channel * 11) % 101);
    };
    const QByteArray bytes = TestSupport::recordingBytes({600, 1, 33, 1}, sample);
    writeFile(path("short.pnt"), bytes);
    writeFile(path("cut.pnt"), bytes.chopped(4));
    writeFile(path("bands.pnt"), TestSupport::recordingBytes({600, 1, 9, 1}, sample));
    writeFile(path("numbers.pnt"), TestSupport::recordingBytes({600, 2, 33, 1}, sample)
                                       .replace("modulus 1 2\n", "modulus 4 6\n"));
    QDir(folder.path()).mkdir("many");
    for (int i = 10; i < 22; ++i)
        writeFile(path(QString("many/%1.pnt").arg(i)), bytes);
    makeBadInputs();
}

void TestProgram::makeBadInputs()
{
    writeFile(path("text.pnt"), "this is no recording\n");
    const float level = 445400.3F; // no base line takes it off without rounding
    writeFile(
        path("constant.pnt"),
        TestSupport::recordingBytes({5000, 1, 33, 1}, [=](int, int, int, int) { return level; }));
    QDir(folder.path()).mkdir("empty");
    writeFile(path("folders"), "# a comment\n\nempty\n");
    QVERIFY(QFile::copy(path("short.pnt"), path(QString(240, 'x') + ".pnt")));
    QCOMPARE(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);

    Results::ResultTable table;
    table.request = {{"program", "zrt-batch"}};
    table.columns = Results::candidateColumns(std::vector<Results::Candidate>(2), true);
    writeFile(path("candidates.txt"), table.toBytes(Results::Format::Text));
    table.columns = {{"name", {}, QStringList{"a", "b"}}};
    writeFile(path("names.csv"), table.toBytes(Results::Format::Csv));
    table.columns = {{"sum", {}, std::vector<float>{1, 2}}};
    writeFile(path("result.png"), table.toBytes(Results::Format::Text));
    writeFile(path("nocounts.res"), "type: float\nfirst_point: 0\n");
    writeFile(path("nodays.res"), "points: 9\ntype: float\n");
}

void TestProgram::failures_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("words"); // that the message has
    const auto row = [](const QString &arguments, int code, const char *words) {
        QTest::newRow(qPrintable(arguments)) << code << QString(words);
    };
    const QString native = "native --ray 1 --first-point 0 ";
    row("sum --plot png --size 500x500@9 demo.pnt", 64, "1280x720");
    row("sum --ray 1 --ray-number 5 demo.pnt", 64, "excludes");
    row(native + "-o out short.pnt many/../empty/../short.pnt many/10.pnt many/../many/10.pnt", 0,
        "2 done");
    row("sum empty", 66, "no recordings");
    row("sum @folders", 66, "not an ordinary file");
    row("sum cut.pnt", 65, "cut.pnt ends early: of 600 points");
    row("fourier bands.pnt --ray 1", 65, "8 frequency bands");
    row("fold --ray 9 short.pnt", 65, "Error ray");
    row("sum --ray 1 short.pnt", 65, "need more than 16384");
    row("sum --utc 01:00:00 demo.pnt", 65, "not in the recording");
    row("sum --module-number 3 numbers.pnt", 65,
        "no module number 3 in the recording. It has 4, 6.");
    row("sum text.pnt nothing.pnt", 65, "nothing.pnt"); // the first failure counts
    row("ffa --bins-min 2147483647 --bins-max 2147483647 demo.pnt", 65, "period_min >=");
    row("ffa --dm 0 --period-max 2 constant.pnt", 65, "bands is constant");
    row("plot demo.pnt", 65, "no result of zrt-batch");
    row("plot names.csv", 65, "neither curves nor candidates");
    row("plot result.png", 64, "take the place of an input");
    row("native --json demo.pnt demo.pnt", 64, "is an input");
    row("sum @pipe", 66, "pipe that nothing comes from");
    row("merge -o t.txt pipe", 66, "nothing comes from");
    row("totext pipe", 66, "not an ordinary file");
    row("sum pipe", 66, "not an ordinary file");
    row("native --json pipe short.pnt", 73, "--json");
    row("merge -o pipe candidates.txt", 73, "not an ordinary file");
    row("simulate --points 9 pipe", 73, "not an ordinary file");
    row("totext nocounts.res", 65, "нет points в паспорте");
    row("totext nodays.res", 65, "Error! No days in");
    row("import short.pnt", 65, "SIGPROC");
    row(native + QString(240, 'x') + ".pnt", 73, "File name too long");
    row(native + "-o text.pnt/x short.pnt", 73, "cannot be made");
}

void TestProgram::failures()
{
    QFETCH(int, code);
    QFETCH(QString, words);
    const QString arguments = QTest::currentDataTag();
    const Ended end = run(arguments);
    QCOMPARE(end.code, code);
    QVERIFY2(end.errors.contains(words), qPrintable(end.errors));
    if (arguments == "sum cut.pnt")
        QVERIFY2(end.out.contains("File " + path("cut.pnt") + " has wrong size. Ignoring it.\n"),
                 qPrintable(end.out));
}

void TestProgram::sameAsForm_data()
{
    QTest::addColumn<PulsarParameters>("parameters");
    const auto row = [](const char *action, const auto &...changes) {
        PulsarParameters parameters = pulsarPresets();
        set(parameters, changes...);
        QTest::newRow(action) << parameters;
    };
    using P = PulsarParameters;
    row("showNative", &P::channel, 33, &P::points, 700, &P::startTime, "12:01:02", &P::deleteStep,
        true);
    row("sumPeriod", &P::period, 1.274, &P::ray, 3, &P::noise, "median", &P::normalise, true);
    row("sumPeriodOfBands", &P::period, 1.274, &P::channelsOff, "7", &P::points, 16384);
    row("sumChannelsDemoNoise", &P::firstPoint, 63615, &P::noise, "backSum", &P::deductNoise, true);
    row("sumChannelsAndAverage", &P::averageCount, 3, &P::dispersion, 50.125);
    row("sumChannelsAndFourier", &P::ray, 5, &P::firstPoint, 60000, &P::deleteStep, true,
        &P::withNull, true, &P::harmonicNum, 40, &P::sigmaMultiple, 4);
    row("sum4Dispersions", &P::dispersions, std::array{0.0, 3000.5, 26.2, 1.0}, &P::noise,
        "without");
    row("sumMultiDispersions", &P::averageCount, 1, &P::harmonicNum, 900, &P::dispersion, 40);
    row("sumTimeDispersions", &P::firstPoint, 10, &P::startDelta, 40000.4, &P::harmonicNum, 500);
}

// The command that a form copies gives what the form shows, though it reads less of the file.
void TestProgram::sameAsForm()
{
    QFETCH(PulsarParameters, parameters);
    const QString action = QTest::currentDataTag();
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
    const std::size_t bands = expected.bands ? expected.bands->frequencies.size() : 0;
    QCOMPARE(read.table.columns.size(), expected.curves.size() + bands + 1);
    for (std::size_t i = 0; i < expected.curves.size(); ++i) {
        const auto &numbers = std::get<std::vector<double>>(read.table.columns[i + 1].values);
        QCOMPARE(std::vector<float>(numbers.begin(), numbers.end()), expected.curves[i]);
    }
    QString report;
    for (const Results::HeaderLine &line : read.table.request)
        report += line.key == "report" ? line.value + "\n" : QString();
    QStringList lines = expected.report.lines();
    for (const Results::Report &note : expected.notes())
        lines << note.lines();
    lines.removeAll({});
    QCOMPARE(report, lines.join('\n') + "\n");
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
    const Ended end = run("ffa --ray 7 --dm 26.2 --period-min 1.499136 --period-max 6.2 --most 4 "
                          "--refine --tag whole demo.pnt");
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
    const QString harmonic = "2 x " + QString::number(pulsar.period, 'g', 9) + " s";
    QVERIFY(std::any_of(read.candidates.begin(), read.candidates.end(),
                        [&](const auto &candidate) { return candidate.remark == harmonic; }));

    // Merged by the true S/N, and no remark of its own.
    const double threshold = (pulsar.strength() + double(pulsar.snr)) / 2;
    succeed(QString("merge --only-base --threshold %1 -o strong.txt demo.pnt.ffa.whole.txt")
                .arg(threshold));
    const Results::ReadCandidates strong = Results::readCandidates(contentOf(path("strong.txt")));
    QCOMPARE(strong.candidates.size(), std::size_t(1));
    QCOMPARE(strong.candidates[0].peak.snrFactor, pulsar.snrFactor);
}

// Killed at random moments and begun again, with other jobs in another order: the same files to
// the last byte, no other file, and every recording once in the log.
void TestProgram::killedRunsGoOn()
{
    const QString command = "native --ray 1 --first-point 0 --plot png --size 200x150 ";
    succeed(command + "--jobs 1 -o undisturbed many");
    const auto undisturbed = filesOf(path("undisturbed"));
    QCOMPARE(undisturbed.size(), 24);

    QByteArray reversed;
    for (int i = 21; i >= 10; --i)
        reversed += "many/" + QByteArray::number(i) + ".pnt\n";
    writeFile(path("reversed"), reversed);
    // What a kill may leave in the middle of a write.
    QDir(folder.path()).mkdir("disturbed");
    writeFile(path("disturbed/10.pnt.native.txt.AbCdEf"), "program: zrt-ba");
    const QString again = command + "--jobs 3 --json log -o disturbed @reversed";
    QRandomGenerator random(1);
    int kills = 0;
    double longest = 30; // ms
    for (int code = -1; code != 0;) {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(ZRT_BATCH, again.split(' '));
        QVERIFY(process.waitForStarted());
        // Each run gets a little longer, so that the last one ends by itself.
        longest *= 1.3;
        if (!process.waitForFinished(random.bounded(10, int(longest)))) {
            process.kill();
            ++kills;
        }
        const Ended end = ended(process);
        code = end.code;
        QVERIFY2(code == 0 || code == -1, qPrintable(end.errors));
        QVERIFY(kills < 200);
    }
    QVERIFY(kills > 0);
    QCOMPARE(filesOf(path("disturbed")), undisturbed);
    QSet<QString> done;
    for (const QByteArray &line : contentOf(path("log")).split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        const QString file = object["file"].toString();
        QVERIFY(object["status"] != "failed" &&
                !(object["status"] == "done" && done.contains(file)));
        done += file;
    }
    QCOMPARE(done.size(), 13); // the end of the log is an empty line
}

// Begins a run and asks it to end as soon as it says something.
Ended TestProgram::stopped(const QString &arguments) const
{
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(ZRT_BATCH, arguments.split(' '));
    if (!process.waitForReadyRead() || ::kill(pid_t(process.processId()), SIGTERM) != 0)
        return {};
    return ended(process);
}

void TestProgram::stopsAtSignal()
{
    const Ended search =
        stopped("ffa --ray all --dm 0:500:1 --jobs 1 --tag stopped demo.pnt short.pnt");
    QCOMPARE(search.code, 75);
    QVERIFY2(search.errors.contains("2 not begun or stopped"), qPrintable(search.errors));
    QVERIFY(!QFile::exists(path("demo.pnt.ffa.stopped.txt")));

    // A result of 400 MB of zeros, of which the disk has none.
    const QByteArray header = "points: 100000000\ndays: 1\n";
    writeFile(path("long.res"), header);
    QVERIFY(QFile::resize(path("long.res"), header.size() + 400000000));
    const Ended text = stopped("totext --jobs 1 long.res");
    QCOMPARE(text.code, 75);
    QVERIFY2(text.errors.contains(path("long.res") + " was stopped"), qPrintable(text.errors));
    QVERIFY(!QFile::exists(path("long.res.txt")));
}

// Manuals and README: a block of commands each, tried in its order in one folder, but for what
// needs a site, a file of another program or several days.
void TestProgram::examples_data()
{
    QTest::addColumn<QString>("commands");
    const auto commandsIn = [](QString text) {
        text.replace(QRegularExpression("\\\\\n\\s*"), "");
        QStringList commands;
        for (const QString &line : text.split('\n')) {
            if (line.trimmed().startsWith("zrt-batch ") && line.startsWith("  ") &&
                !line.contains(" COMMAND") && !line.contains("--par ") &&
                !line.contains("--source "))
                commands << line.trimmed();
        }
        return commands.join('\n');
    };
    const QString list = run("--help").out.section("Subcommands:\n", 1);
    auto names =
        QRegularExpression("^  (\\w+)", QRegularExpression::MultilineOption).globalMatch(list);
    int count = 0;
    for (; names.hasNext(); ++count) {
        const QString name = names.next().captured(1);
        if (name != "days")
            QTest::addRow("%s", qPrintable(name)) << commandsIn(run(name + " --help").out);
    }
    QCOMPARE(count, 25);
    QTest::newRow("README") << commandsIn(QString::fromUtf8(contentOf(ZRT_SOURCE "/README.md")));
}

void TestProgram::examples()
{
    QFETCH(QString, commands);
    QVERIFY(!commands.isEmpty());
    // What takes long is cut short; what searches find is tested elsewhere.
    commands.replace("--points 144083", "--points 2000");
    commands.replace("zrt-batch ffa ", "zrt-batch ffa --count 4000 ");
    commands.replace("--rays 1-8 ", "--rays 2-3 ");
    commands.replace("--dms 0:95:5", "--dms 0,30");
    // Folders in examples hold the demonstration only.
    QTemporaryDir own(folder.filePath("example-XXXXXX"));
    QVERIFY(QFile::link(path("demo.pnt"), own.filePath("demo.pnt")));
    const Ended end = runShell("cd " + own.path() + "\n" + commands);
    QVERIFY2(end.code == 0, qPrintable(commands + "\n" + end.errors));
}

ZRT_UNIT_TEST_MAIN(TestProgram)
#include "tst_program.moc"
