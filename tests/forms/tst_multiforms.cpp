#include "app/shell/clicklable.h"
#include "app/shell/settings.h"
#include "forms/days/daysmodel.h"
#include "forms/multi/datelist.h"
#include "forms/multi/differencesmodel.h"
#include "forms/multi/nativemultiform.h"
#include "forms/multi/searchnativeform.h"
#include "plot/pulsargrafik.h"
#include "results/resulttable.h"
#include "support/daysformtest.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <random>

namespace {

constexpr int waitMs = 20000;
constexpr int dayCount = 6;
constexpr int burstPoint = 1500;
constexpr int burstDay = 3; // index

// One strip of the sky: a file a sidereal day, with a burst on one day in both rays.
QByteArray dayBytes(int day, int points = 3000)
{
    std::mt19937 random(unsigned(day + 1));
    std::normal_distribution<float> law(100, 1);
    const QByteArray bytes =
        TestSupport::recordingBytes({points, 1, 33, 2}, [&](int point, int, int channel, int) {
            const bool isBurst =
                day == burstDay && channel < 32 && point >= burstPoint && point < burstPoint + 8;
            return law(random) + (isBurst ? 2.F : 0.F);
        });
    const QDateTime begin = QDateTime({2015, 4, 1}, {12, 0}, Qt::UTC).addSecs(qint64(day) * 86164);
    return QByteArray(bytes)
        .replace("01.04.2015", begin.toString("dd.MM.yyyy").toLatin1())
        .replace("12:00:00", begin.toString("hh:mm:ss").toLatin1());
}

} // namespace

/// The forms of days under each other, found and worked by the names of their fields.
class TestMultiForms : public TestSupport::DaysFormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup() { Settings::store().clear(); }

    void findsTheBurstAsTheBatchProgramDoes();
    void switchesDaysWithoutReading();
    void opensADifference();
    void fewDays();
    void refusesDirectories_data();
    void refusesDirectories();
    void refusesInputs();
    void goesFromDateToDate();
    void marksStay();
    void tellsWhatCannotBeShown();

private:
    QString makeDays(const QString &name, int count);
    void compute();
    void openDates(const QString &directory);
    const PlotData &plot() const { return find<PulsarGrafik>("grafik")->data(); }
    DifferencesModel *differences() const { return window.findChild<DifferencesModel *>(); }
    DateList *dates() const { return find<DateList>("dates"); }
};

void TestMultiForms::initTestCase()
{
    showWindow();
    makeDays("days", dayCount);
}

QString TestMultiForms::makeDays(const QString &name, int count)
{
    QDir(folder.path()).mkpath(name);
    for (int day = 0; day < count; ++day)
        writeFile(path(QString("%1/%2.pnt").arg(name).arg(day)), dayBytes(day));
    return path(name);
}

void TestMultiForms::compute()
{
    QTRY_VERIFY_WITH_TIMEOUT(find<QPushButton>("pushButton")->isEnabled() &&
                                 find<QComboBox>("points")->currentText() == "2048",
                             waitMs);
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("used")->text().contains("days"), waitMs);
}

void TestMultiForms::openDates(const QString &directory)
{
    new SearchNativeForm(directory, "native", &window);
    QTRY_VERIFY_WITH_TIMEOUT(dates()->current() >= 0 && !plot().messageMode, waitMs);
}

void TestMultiForms::findsTheBurstAsTheBatchProgramDoes()
{
    new NativeMultiForm(path("days"), &window);
    compute();
    QCOMPARE(differences()->rowCount(), 1);
    const Compare::ListedDifference &burst = differences()->difference(0);
    QCOMPARE(burst.day, burstDay);
    QCOMPARE(burst.width, 8);
    QCOMPARE(burst.rays.size(), std::size_t(1));
    QCOMPARE(burst.rays[0].ray, 2);

    find<QPushButton>("commandButton")->click();
    const QString command = QGuiApplication::clipboard()->text().trimmed();
    const TestSupport::Ended ended = runShell(command + " -o out --plot png");
    QVERIFY2(ended.code == 0, qPrintable(command + ended.errors));
    const Results::ReadTable read =
        Results::readTable(TestSupport::contentOf(path("out/m1_r1.days.differences.txt")));
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.table.rows(), 1);
    QVERIFY(std::get<std::vector<double>>(read.table.columns[7].values)[0] == burst.snr);
    QVERIFY(TestSupport::contentOf(path("out/m1_r1.days.days.png")).startsWith("\x89PNG"));
    QVERIFY(runShell(command + " -o out --plot png").errors.contains("is done"));
}

void TestMultiForms::switchesDaysWithoutReading()
{
    const QString directory = makeDays("gone", dayCount);
    new NativeMultiForm(directory, &window);
    compute();
    QVERIFY(QDir(directory).removeRecursively());
    auto *const days = window.findChild<DaysModel *>();
    QVERIFY(days->setData(days->index(burstDay, 0), Qt::Unchecked, Qt::CheckStateRole));
    QTRY_COMPARE_WITH_TIMEOUT(differences()->rowCount(), 0, waitMs);
    QVERIFY(find<QLabel>("used")->text().contains("5 of 6 days"));
    // Nothing is left of the files, nor of what was kept beside them.
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(!days->dayRows()[0].canCount, waitMs);
    QVERIFY(!days->dayRows()[0].reason.isEmpty());
}

// The viewer takes the place of the form, with the burst in the middle.
void TestMultiForms::opensADifference()
{
    new NativeMultiForm(path("days"), &window);
    compute();
    const QModelIndex first = find<QTableView>("differences")->model()->index(0, 0);
    find<QTableView>("differences")->setCurrentIndex(first);
    QCOMPARE(plot().markers.size(), std::size_t(2));
    emit find<QTableView>("differences")->clicked(first);
    QTRY_VERIFY_WITH_TIMEOUT(window.findChild<QWidget *>("NativeGrafik"), waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(window.windowTitle().contains("3.pnt"), waitMs);
}

void TestMultiForms::fewDays()
{
    new NativeMultiForm(makeDays("three", 3), &window);
    compute();
    QVERIFY(find<QLabel>("difference")->text().contains("at least 4 days"));
    QVERIFY(!plot().messageMode); // the mean day is there all the same
    const TestSupport::Ended ended = run("days --module 1 --ray 1 --count 1024 three");
    QCOMPARE(ended.code, 0);
    QVERIFY2(ended.errors.contains("at least 4 days"), qPrintable(ended.errors));
}

void TestMultiForms::refusesDirectories_data()
{
    QTest::addColumn<bool>("isSimple");
    QTest::newRow("dates") << true;
    QTest::newRow("days") << false;
}

void TestMultiForms::refusesDirectories()
{
    QFETCH(bool, isSimple);
    QDir(folder.path()).mkpath("empty");
    const TestSupport::MessageBoxCatcher catcher;
    if (isSimple)
        new SearchNativeForm(path("empty"), "native", &window);
    else
        new NativeMultiForm(path("empty"), &window);
    QTRY_VERIFY_WITH_TIMEOUT(!window.centralWidget()->layout(), waitMs);
    QCOMPARE(catcher.boxes().size(), 1);
    QVERIFY(catcher.boxes()[0].text.contains("Bad directory!"));
}

void TestMultiForms::refusesInputs()
{
    new NativeMultiForm(path("days"), &window);
    compute();
    find<QLineEdit>("firstDate")->setText("soon");
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("problems")->text().contains("yyyy-mm-dd"), waitMs);
    find<QLineEdit>("firstDate")->setText("2015-04-03");
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("problems")->text().isEmpty(), waitMs);
    find<QSpinBox>("ray")->setValue(7);
    find<QPushButton>("pushButton")->click();
    auto *const days = window.findChild<DaysModel *>();
    QTRY_VERIFY_WITH_TIMEOUT(!days->dayRows()[0].canCount, waitMs);
    QVERIFY2(days->dayRows()[0].reason.contains("ray 7"), qPrintable(days->dayRows()[0].reason));
}

void TestMultiForms::goesFromDateToDate()
{
    openDates(path("days"));
    QCOMPARE(dates()->count(), dayCount);
    QCOMPARE(plot().graphs.size(), std::size_t(2));
    auto *const grafik = find<PulsarGrafik>("grafik");
    grafik->setVisibleX(300, 500);
    const std::vector<float> first = plot().graphs[0];
    const std::pair<Qt::Key, int> steps[] = {{Qt::Key_Down, 1}, {Qt::Key_Right, 2},
                                             {Qt::Key_End, 5},  {Qt::Key_Down, 5},
                                             {Qt::Key_Up, 4},   {Qt::Key_Home, 0}};
    for (const auto &[key, date] : steps) {
        QTest::keyClick(dates(), key);
        QCOMPARE(dates()->current(), date);
        QTRY_COMPARE_WITH_TIMEOUT(plot().graphs[0] == first, date == 0, waitMs);
        QCOMPARE(grafik->visibleRange().points, 500.0);
    }
    QTest::mouseClick(find<ClickLable>("date_3"), Qt::LeftButton);
    QCOMPARE(dates()->current(), 3);
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("used")->text().contains("3.pnt"), waitMs);
    QVERIFY(find<QLabel>("statistics")->text().contains("points 300 to 799"));
}

void TestMultiForms::marksStay()
{
    openDates(path("days"));
    QTest::keyClick(dates(), Qt::Key_Down);
    QTest::keyClick(dates(), Qt::Key_M);
    QCOMPARE(find<ClickLable>("date_1")->styleSheet(), QString("color: red"));
    QCOMPARE(find<ClickLable>("date_0")->styleSheet(), QString("color: black"));
    openDates(path("days"));
    QCOMPARE(find<ClickLable>("date_1")->styleSheet(), QString("color: red"));
    QTest::keyClick(dates(), Qt::Key_Down);
    find<QPushButton>("markButton")->click();
    QCOMPARE(find<ClickLable>("date_1")->styleSheet(), QString("color: black"));
}

// A recording that is too short, and one that goes while the form stands.
void TestMultiForms::tellsWhatCannotBeShown()
{
    const QString directory = makeDays("holes", 4);
    writeFile(directory + "/1.pnt", dayBytes(1, 1100));
    openDates(directory);
    QCOMPARE(find<ClickLable>("date_1")->styleSheet(), QString("color: grey"));
    QVERIFY(!find<ClickLable>("date_1")->toolTip().isEmpty());
    QTest::keyClick(dates(), Qt::Key_Down);
    QCOMPARE(dates()->current(), 2);
    QVERIFY(QDir(directory).removeRecursively());
    find<QSpinBox>("ray")->setValue(2);
    const bool isTold = QTest::qWaitFor([this] { return plot().messageMode; }, waitMs);
    QVERIFY2(isTold, qPrintable(find<QLabel>("problems")->text() + find<QLabel>("used")->text()));
    QVERIFY(!plot().message.isEmpty());
}

ZRT_GUI_TEST_MAIN(TestMultiForms)
#include "tst_multiforms.moc"
