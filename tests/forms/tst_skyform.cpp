#include "analyses/days/dayplace.h"
#include "app/mainwindow.h"
#include "app/shell/settings.h"
#include "forms/days/daysmodel.h"
#include "forms/days/fourierform.h"
#include "forms/days/linesmodel.h"
#include "forms/sky/mapview.h"
#include "forms/sky/skycandidatesmodel.h"
#include "plot/pulsargrafik.h"
#include "results/resulttable.h"
#include "support/batchfolder.h"
#include "support/dayfiles.h"
#include "support/messageboxcatcher.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <algorithm>

namespace {

constexpr int dayCount = 8;
constexpr int waitMs = 90000;
constexpr int stretchPoints = 2048;
constexpr double pulseHeight = 0.3; // sigma

} // namespace

/// The form over maps and searches, found and worked by the names of its fields.
class TestSkyForm : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void mapsRaysAndOpensACell();
    void mapHasTheSizeOfItsFields();
    void mapOverDispersions();
    void searchesAndKeepsVerdicts();
    void isWhatTheBatchProgramMakes();
    void stopsAndResumes();
    void tellsWhatDoesNotFit();
    void refusesInputs_data();
    void refusesInputs();

private:
    QString makeDays(const QString &name);
    void open(const QString &directory, bool isSearch);
    void compute(const QString &rays = "all");
    template <typename Widget>
    Widget *find(const char *name) const
    {
        Widget *const widget = window.findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    MapView *map() const { return find<MapView>("map"); }
    SkyCandidatesModel *candidates() const { return window.findChild<SkyCandidatesModel *>(); }
    QString told() const { return find<QLabel>("told")->text(); }

    MainWindow window;
};

void TestSkyForm::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", folder.path().toUtf8()); // of the batch program too
    window.resize(1280, 720);
    window.show();
}

void TestSkyForm::cleanup()
{
    Settings::instance()->graphWidth.clear();
    Settings::instance()->graphHeight.clear();
    Settings::store().clear();
}

QString TestSkyForm::makeDays(const QString &name)
{
    QDir(folder.path()).mkpath(name);
    for (int day = 1; day <= dayCount; ++day)
        TestSupport::writeFile(folder, QString("%1/0%2_12_N1_00.pnthr").arg(name).arg(day),
                               TestSupport::dayBytes(day, TestSupport::dayPoints, pulseHeight));
    return folder.filePath(name);
}

void TestSkyForm::open(const QString &directory, bool isSearch)
{
    window.activateWindow(); // keys of the search work in the active window
    QVERIFY(QTest::qWaitForWindowActive(&window));
    new FourierForm(directory, 0, isSearch ? 0 : 1, isSearch ? 1 : 0, &window);
    QTRY_VERIFY_WITH_TIMEOUT(told().contains("stretches"), waitMs);
    find<QLineEdit>("firstPoint")->setText("0"); // the same hour of every date, not of the sky
    const auto *const found = find<QLabel>("daysText");
    const QString wanted = QString("days: %1").arg(dayCount);
    QVERIFY2(QTest::qWaitFor([&] { return found->text().contains(wanted); }, waitMs),
             qPrintable(found->text() + "; " + told()));
}

void TestSkyForm::compute(const QString &rays)
{
    find<QLineEdit>("rays")->setText(rays);
    find<QLineEdit>("dispersions")->setText("0,5");
    find<QComboBox>("points")->setCurrentText(QString::number(stretchPoints));
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(told().contains("days added"), waitMs);
}

void TestSkyForm::mapsRaysAndOpensACell()
{
    open(makeDays("map"), false);
    compute();
    find<QComboBox>("shownRay")->setCurrentText("All");
    QTRY_COMPARE_WITH_TIMEOUT(map()->picture().panels.size(), std::size_t(3), waitMs);
    // Pulses of ray 2 stand out, and their stack is opened.
    QTRY_COMPARE_WITH_TIMEOUT(map()->cell().panel, 1, waitMs);
    const auto *const grafik = find<PulsarGrafik>("grafik");
    QCOMPARE(grafik->data().numPoints, map()->picture().map().columns);
    const auto &lines = find<QTableView>("lines")->model();
    QVERIFY(lines->rowCount() > 0);
    const double frequency = map()->picture().map().axisAt(map()->cell().column);
    QVERIFY2(std::abs(std::remainder(frequency * TestSupport::dayPeriod, 0.25)) < 0.02,
             qPrintable(QString::number(frequency)));

    // A click on the map opens another cell.
    const QRectF pixels = Plot::mapPixels(map()->picture(), map()->size(), {2, 0, 500}, 501);
    QTest::mouseClick(map(), Qt::LeftButton, {}, pixels.center().toPoint());
    QCOMPARE(map()->cell().panel, 2);
    QCOMPARE(map()->cell().row, 0);
    QVERIFY(find<QLabel>("cell")->text().contains("ray 3"));

    // The plot below and the map are zoomed together.
    find<PulsarGrafik>("grafik")->setVisibleX(100, 300);
    QCOMPARE(map()->picture().columns.min, 100.0);
    QCOMPARE(map()->picture().columns.max, 400.0);
    QTest::keyClick(find<PulsarGrafik>("grafik"), Qt::Key_Up);
    QCOMPARE(map()->cell().row, 1);

    find<QPushButton>("commandButton")->click();
    QVERIFY(QGuiApplication::clipboard()->text().startsWith("zrt-batch map "));
    find<QPushButton>("openDays")->click();
    auto *const days = window.findChild<QWidget *>("cellWindow");
    QVERIFY(days);
    const auto *const used = days->findChild<QLabel *>("used");
    QTRY_VERIFY_WITH_TIMEOUT(used->text().contains("of 8 days count"), waitMs);
    delete days;
}

void TestSkyForm::mapHasTheSizeOfItsFields()
{
    open(makeDays("map"), false);
    const QSize follows = map()->size();
    find<QLineEdit>("graphWidth")->setText("1500");
    find<QLineEdit>("graphHeight")->setText("900");
    QTRY_COMPARE(map()->size(), QSize(1500, 900));
    QCOMPARE(Settings::instance()->graphWidth, QString("1500"));
    find<QLineEdit>("graphWidth")->clear();
    find<QLineEdit>("graphHeight")->setText("no number");
    QTRY_COMPARE(map()->size(), follows);
}

void TestSkyForm::mapOverDispersions()
{
    open(makeDays("map"), false);
    compute("2");
    QTRY_COMPARE_WITH_TIMEOUT(map()->picture().panels.size(), std::size_t(1), waitMs);
    QCOMPARE(map()->picture().allRows(), 3);
    find<QComboBox>("over")->setCurrentIndex(1);
    QTRY_COMPARE_WITH_TIMEOUT(map()->picture().allRows(), 2, waitMs);
    QCOMPARE(map()->picture().map().rows[1].value, 5.0);
}

void TestSkyForm::searchesAndKeepsVerdicts()
{
    const QString directory = makeDays("search");
    open(directory, true);
    compute();
    const auto *const found = find<QLabel>("searchText");
    QVERIFY2(QTest::qWaitFor([&] { return found->text().contains("trials"); }, waitMs),
             qPrintable(found->text()));
    QVERIFY2(candidates()->rowCount() > 0, qPrintable(found->text()));
    const Sky::SkyCandidate &best = candidates()->candidates()[0];
    QVERIFY2(std::abs(std::remainder(best.telescope * TestSupport::dayPeriod, 0.25)) < 0.02,
             qPrintable(QString::number(best.telescope)));
    QCOMPARE(best.ray, 1);
    QTRY_VERIFY_WITH_TIMEOUT(!map()->picture().isEmpty(), waitMs);

    auto *const table = find<QTableView>("candidates");
    table->setFocus();
    QTest::keyClick(table, Qt::Key_A);
    QCOMPARE(candidates()->candidates()[0].verdict, Sky::Verdict::Accept);
    QVERIFY(candidates()->setData(candidates()->index(0, SkyCandidatesModel::Note),
                                  "seen, \"twice\"", Qt::EditRole));

    // Another form shows them, before and after the stacks are there again.
    open(directory, true);
    QTRY_VERIFY_WITH_TIMEOUT(candidates()->rowCount() > 0, waitMs);
    QCOMPARE(candidates()->candidates()[0].verdict, Sky::Verdict::Accept);
    QCOMPARE(find<QLineEdit>("dispersions")->text(), QString("0,5"));
    compute();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("searchText")->text().contains("trials"), waitMs);
    QVERIFY(told().contains("8 of them kept"));
    QCOMPARE(candidates()->candidates()[0].verdict, Sky::Verdict::Accept);
    QCOMPARE(candidates()->candidates()[0].note, QString("seen, \"twice\""));
}

// The table that the form keeps and the one of the copied command are the same bytes but for the
// name of the program.
void TestSkyForm::isWhatTheBatchProgramMakes()
{
    const QString directory = makeDays("same");
    open(directory, true);
    compute();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("searchText")->text().contains("trials"), waitMs);
    const QDir kept(Days::keptFolder(directory).path);
    const QStringList tables = kept.entryList({"*_candidates.txt"});
    QCOMPARE(tables.size(), 1);
    find<QPushButton>("commandButton")->click();
    QString command = QGuiApplication::clipboard()->text();
    command.replace("zrt-batch search", "zrt-batch search -o made --force");
    const TestSupport::Ended ended = runShell(command);
    QVERIFY2(ended.code == 0, qPrintable(command + ended.errors));
    const QStringList made = QDir(path("made")).entryList({"*.txt"});
    QCOMPARE(made.size(), 1);
    const auto lines = [](const QString &file) {
        QStringList all = QString(TestSupport::contentOf(file)).split('\n');
        all.erase(std::remove_if(all.begin(), all.end(),
                                 [](const QString &line) { return line.contains("program:"); }),
                  all.end());
        return all;
    };
    QCOMPARE(lines(path("made/" + made[0])), lines(kept.filePath(tables[0])));
}

void TestSkyForm::stopsAndResumes()
{
    open(makeDays("stopped"), false);
    find<QLineEdit>("dispersions")->setText("0:100:2"); // long enough to be stopped
    find<QPushButton>("pushButton")->click();
    const auto *const grafik = find<PulsarGrafik>("grafik");
    QTRY_VERIFY_WITH_TIMEOUT(grafik->data().message.contains("Adding up"), waitMs);
    QTest::keyClick(&window, Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(told().contains("Compute goes on"), waitMs);
    QVERIFY(!told().contains("8 of 8 days added"));
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(told().contains("8 of 8 days added"), waitMs);
}

void TestSkyForm::tellsWhatDoesNotFit()
{
    const QString directory = makeDays("mixed");
    TestSupport::writeFile(folder, "mixed/10.pnt",
                           TestSupport::dayBytes(10).replace("12.4928", "99.9424"));
    TestSupport::writeFile(folder, "mixed/11.pnt", "no recording");
    open(directory, false);
    QStringList told;
    const auto *const days = qobject_cast<DaysModel *>(find<QTableView>("days")->model());
    for (const DayRow &row : days->dayRows()) {
        if (!row.canCount)
            told << row.name + "|" + row.reason;
    }
    QCOMPARE(told.size(), 2);
    QVERIFY2(told[0].startsWith("10.pnt|") && told[0].contains("99.9424 ms"), qPrintable(told[0]));
    QVERIFY2(told[1].startsWith("11.pnt|"), qPrintable(told[1]));
    find<QLineEdit>("rays")->setText("30"); // that no file has
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(
        find<PulsarGrafik>("grafik")->data().message.contains("No day holds these stretches"),
        waitMs);
}

void TestSkyForm::refusesInputs_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::newRow("no rays") << "rays"
                             << "1;2";
    QTest::newRow("no dispersions") << "dispersions"
                                    << "0:10:0";
    QTest::newRow("unknown pulsar") << "source"
                                    << "B9999+99";
}

void TestSkyForm::refusesInputs()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    open(makeDays("map"), true);
    auto *const edit = find<QLineEdit>(qPrintable(field));
    edit->clear();
    QTest::keyClicks(edit, text);
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("problems")->isVisible(), waitMs);
    QVERIFY(edit->styleSheet().contains("#f4cccc"));
    QCOMPARE(candidates()->rowCount(), 0);
}

ZRT_GUI_TEST_MAIN(TestSkyForm)
#include "tst_skyform.moc"
