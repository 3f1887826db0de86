#include "app/shell/settings.h"
#include "fields/tableview.h"
#include "forms/sky/smallplot.h"
#include "forms/transient/periodview.h"
#include "forms/transient/pulseimage.h"
#include "forms/transient/pulsesmodel.h"
#include "forms/transient/transientform.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTabWidget>
#include <QTimer>
#include <cmath>
#include <random>

namespace {

constexpr int waitMs = 60000;
constexpr double step = 0.0124928; // s
constexpr double dispersion = 20;
constexpr double period = 1.7; // s
const std::vector<int> pulseTurns = {3, 8, 19, 40, 47, 66, 90, 101};

// Delay of a band against the last one, points.
double delayOf(int band)
{
    const auto square = [](int index) { return std::pow(120 + 0.078125 * index, -2); };
    return 4148.8 * dispersion * (square(band) - square(31)) / step;
}

// Noise, and in the second of the rays strong pulses in some turns.
QByteArray recordingWithPulses(int points, int rays)
{
    std::mt19937 random(1);
    std::normal_distribution<float> law(100, 1);
    return TestSupport::recordingBytes(
        {points, 1, 33, rays}, [&](int point, int, int channel, int ray) {
            double height = 0;
            for (const int turn : ray == 1 ? pulseTurns : std::vector<int>()) {
                const double off = point - turn * period / step - delayOf(std::min(channel, 31));
                height += 3.5 * std::exp(-off * off / 4);
            }
            return law(random) + float(height);
        });
}

} // namespace

class TestTransientForm : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void showsWhatItFinds();
    void pointersAreLinked();
    void verdictsSurviveARestart();
    void strangeVerdictsAreNotOverwritten();
    void tellsThePeriod();
    void copiesTheCommandAndSaves();
    void refusesFields_data();
    void refusesFields();
    void stopsAndGoesOn();

private:
    QString recording() const { return file(bytes, "burst.pnt"); }
    void open(const QString &path)
    {
        window->activateWindow(); // keys work in the active window
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        const auto *const form = new TransientForm(path, window.get());
        QTRY_VERIFY(form->isVisible());
        type("dispersionMax", "60");
        type("widths", "1,2,3,4,6,9");
        type("falseAlarms", "0.01");
    }
    QString told() const { return find<QLabel>("told")->text(); }
    bool isDone() const
    {
        const QProgressBar *const bar = Settings::instance()->progressBar();
        return QTest::qWaitFor([&] { return bar->isHidden() && !told().startsWith("Searching"); },
                               waitMs);
    }
    void search() const
    {
        click("pushButton");
        QVERIFY2(isDone(), qPrintable(told()));
    }
    PulsesModel *pulses() const { return window->findChild<PulsesModel *>(); }
    void press(int key) const { QTest::keyClick(find<TableView>("pulses"), Qt::Key(key)); }

    QByteArray bytes;
};

void TestTransientForm::initTestCase()
{
    bytes = recordingWithPulses(16000, 3);
}

void TestTransientForm::showsWhatItFinds()
{
    open(recording());
    QVERIFY(find<QLabel>("estimate")->text().contains("3 rays"));
    search();
    QVERIFY2(told().contains(" candidates above S/N "), qPrintable(told()));
    int candidates = 0;
    for (int row = 0; row < pulses()->rowCount(); ++row) {
        const Pulses::Pulse &pulse = pulses()->pulses()[std::size_t(row)];
        if (!pulse.verdict.isCandidate())
            continue;
        ++candidates;
        const double turn = pulse.point.value * step / period;
        QVERIFY2(std::abs(turn - std::round(turn)) * period / step < 2,
                 qPrintable(QString::number(pulse.point.value)));
        QCOMPARE(pulse.ray, 2);
    }
    QCOMPARE(candidates, int(pulseTurns.size()));
    QCOMPARE(find<TableView>("pulses")->currentIndex().row(), 0);

    // The pictures of the strongest one.
    const auto *const dedispersed = find<PulseImage>("dedispersed");
    QTRY_VERIFY_WITH_TIMEOUT(!dedispersed->shown().rows.isEmpty(), waitMs);
    const Pulses::PulseRows &rows = dedispersed->shown().rows;
    QCOMPARE(rows.rows.size(), std::size_t(32));
    const SmallPlot::Content &profile = find<SmallPlot>("profile")->shown();
    const std::vector<double> &sums = profile.curves[0].values;
    const auto highest = std::max_element(sums.begin(), sums.end());
    QVERIFY(*highest > 8);
    QVERIFY(std::abs(profile.x[std::size_t(highest - sums.begin())]) < 2.5 * 1000 * step);
    const SmallPlot::Content &trials = find<SmallPlot>("overDispersion")->shown();
    QVERIFY(trials.hasMark && std::abs(trials.mark - dispersion) < 2);
    QCOMPARE(trials.curves.size(), std::size_t(2));
    QCOMPARE(find<SmallPlot>("channels")->shown().curves[0].values.size(), std::size_t(32));
    // As recorded the lowest band has the pulse later by its delay.
    const std::vector<double> &arrival = find<PulseImage>("dispersed")->shown().curve;
    QVERIFY(std::abs(arrival.front() - delayOf(0) * step) < 3 * step);
    // In dispersion against time the pulse is highest at its own dispersion and time.
    const Pulses::PulseRows &overTime = find<PulseImage>("overTime")->shown().rows;
    const auto best =
        std::max_element(overTime.values.begin(), overTime.values.end()) - overTime.values.begin();
    QVERIFY(std::abs(overTime.rows[std::size_t(best / overTime.columns)] - dispersion) < 4);
}

void TestTransientForm::pointersAreLinked()
{
    open(recording());
    search();
    auto *const image = find<PulseImage>("dedispersed");
    QTRY_VERIFY_WITH_TIMEOUT(!image->shown().rows.isEmpty(), waitMs);
    const QImage before = find<PulseImage>("overTime")->grab().toImage();
    const QImage profile = find<SmallPlot>("profile")->grab().toImage();
    QTest::mouseMove(image, image->rect().center());
    QTRY_VERIFY(find<PulseImage>("overTime")->grab().toImage() != before);
    QVERIFY(find<SmallPlot>("profile")->grab().toImage() != profile);
}

void TestTransientForm::verdictsSurviveARestart()
{
    const QString path = recording();
    open(path);
    search();
    press(Qt::Key_A);
    press(Qt::Key_R);
    press(Qt::Key_U);
    press(Qt::Key_P);
    QCOMPARE(find<TableView>("pulses")->currentIndex().row(), 2);
    pulses()->setNote(1, "a \"strange\"\tone, 5");
    const double point = pulses()->pulses()[0].point.value;
    QVERIFY(QFile::exists(path + ".verdicts.txt"));

    open(path);
    QVERIFY2(told().startsWith("3 verdicts from earlier"), qPrintable(told()));
    // Another stretch of another ray first: what it does not find is kept.
    type("rays", "1");
    search();
    type("rays", "");
    find<QLineEdit>("rays")->clear();
    search();
    QCOMPARE(pulses()->pulses()[0].point.value, point);
    QCOMPARE(pulses()->verdict(0), Sky::Verdict::Accept);
    QCOMPARE(pulses()->verdict(1), Sky::Verdict::Reject);
    QCOMPARE(pulses()->verdict(2), Sky::Verdict::Unsure);
    QCOMPARE(pulses()->verdict(3), Sky::Verdict::None);
    QCOMPARE(pulses()->note(1), "a \"strange\" one, 5");
}

void TestTransientForm::strangeVerdictsAreNotOverwritten()
{
    const QString path = recording();
    TestSupport::writeFile(*folder, "burst.pnt.verdicts.txt", "my own notes\n");
    open(path);
    QVERIFY2(told().contains("cannot be used"), qPrintable(told()));
    search();
    press(Qt::Key_A);
    QFile kept(path + ".verdicts.txt");
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("my own notes\n"));
    QVERIFY(told().contains("Verdicts are not kept"));
}

void TestTransientForm::tellsThePeriod()
{
    open(recording());
    search();
    auto *const view = window->findChild<PeriodView *>();
    find<QLineEdit>("periodMin")->setText("0.8");
    find<QLineEdit>("periodMax")->setText("20");
    press(Qt::Key_T);
    QCOMPARE(find<QTabWidget>("tabs")->currentWidget(), view);
    QTRY_VERIFY_WITH_TIMEOUT(view->result(), waitMs);
    const Timing::PeriodSearch &found = *view->result();
    QVERIFY2(found.isClaimed, qPrintable(found.verdict));
    QVERIFY(std::abs(found.count.fit.period - period) < 4 * found.count.fit.error95);
    QVERIFY(find<QLabel>("periodText")->text().startsWith("Period 1."));
    QVERIFY(find<TableView>("periods")->model()->rowCount() > 1);
    click("periodCommand");
    const QString command = QApplication::clipboard()->text();
    QVERIFY2(command.startsWith("zrt-batch period --times 57113."), qPrintable(command));
    // Three accepted ones cannot tell it.
    find<QTabWidget>("tabs")->setCurrentIndex(0);
    for (int i = 0; i < 3; ++i)
        pulses()->setVerdict(i, Sky::Verdict::Accept);
    click("findPeriod");
    const QLabel *const text = find<QLabel>("periodText");
    QTRY_VERIFY_WITH_TIMEOUT(
        !text->text().startsWith("Searching") && !text->text().startsWith("Period 1."), waitMs);
}

void TestTransientForm::copiesTheCommandAndSaves()
{
    const QString path = recording();
    open(path);
    type("rays", "2");
    search();
    click("commandButton");
    QCOMPARE(QApplication::clipboard()->text(),
             "zrt-batch pulses --rays 2 --dm-max 60 --widths 1,2,3,4,6,9 --false-alarms 0.01 " +
                 path);
    pulses()->setVerdict(0, Sky::Verdict::Accept);
    const QString saved = folder->filePath("table.csv");
    QTimer::singleShot(0, qApp, [&] {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(saved);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    click("save");
    QFile csv(saved);
    QVERIFY(csv.open(QIODevice::ReadOnly));
    const QByteArray table = csv.readAll();
    QCOMPARE(table.count(",candidate,accept,"), 1);
    // Its times are those that the period search of the batch program takes.
    const Timing::ArrivalTimes times = Timing::parseTimes(table);
    QVERIFY2(times.problem.isEmpty(), qPrintable(times.problem));
    QCOMPARE(int(times.times.size()), pulses()->rowCount());
}

void TestTransientForm::refusesFields_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::newRow("no number") << "dispersionMax"
                               << "much";
    QTest::newRow("below the lowest") << "dispersionMax"
                                      << "-1";
    QTest::newRow("no such ray") << "rays"
                                 << "9";
    QTest::newRow("no list") << "widths"
                             << "1,x";
    QTest::newRow("beyond the end") << "firstPoint"
                                    << "16000";
    QTest::newRow("bad share") << "falseAlarms"
                               << "0";
}

void TestTransientForm::refusesFields()
{
    QFETCH(QString, field);
    QFETCH(QString, value);
    open(recording());
    type(qPrintable(field), value);
    QVERIFY(isMarked(field));
    const QString text = find<QLabel>("estimate")->text();
    click("pushButton");
    QCOMPARE(QApplication::focusWidget(), find<QWidget>(field));
    QCOMPARE(find<QLabel>("estimate")->text(), text);
    QCOMPARE(pulses()->rowCount(), 0);
}

void TestTransientForm::stopsAndGoesOn()
{
    open(recording());
    type("dispersionMax", "2000");
    click("pushButton");
    press(Qt::Key_Escape);
    QVERIFY(isDone());
    QVERIFY2(told().startsWith("Stopped"), qPrintable(told()));
    type("dispersionMax", "60");
    click("pushButton");
    // A second search ends the first; a form that goes takes its search along.
    search();
    QVERIFY(pulses()->rowCount() >= int(pulseTurns.size()));
    click("pushButton");
    open(recording());
    QCOMPARE(pulses()->rowCount(), 0);
}

ZRT_GUI_TEST_MAIN(TestTransientForm)

#include "tst_transientform.moc"
