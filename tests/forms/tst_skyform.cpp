#include "analyses/days/dayplace.h"
#include "app/shell/settings.h"
#include "forms/days/daysmodel.h"
#include "forms/days/fourierform.h"
#include "forms/days/linesmodel.h"
#include "forms/sky/mapview.h"
#include "forms/sky/skycandidatesmodel.h"
#include "forms/sky/smallplot.h"
#include "plot/pulsargrafik.h"
#include "results/resulttable.h"
#include "support/dayfiles.h"
#include "support/daysformtest.h"
#include "support/messageboxcatcher.h"
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
#include <algorithm>

namespace {

constexpr int dayCount = 5;
constexpr int waitMs = 90000;
constexpr int stretchPoints = 2048;
constexpr double pulseHeight = 0.3; // sigma

// Whether a period or frequency is that of the pulses, or a harmonic: a sum over harmonics takes
// quarters of a frequency too, a fold multiples of a period.
bool isOfPulses(double frequency, bool isFfa)
{
    const double turns = frequency * TestSupport::dayPeriod;
    return std::abs(isFfa ? std::remainder(1 / turns, 1) : std::remainder(turns, 0.25)) < 0.02;
}

} // namespace

/// The form over maps and searches, found and worked by the names of its fields.
class TestSkyForm : public TestSupport::DaysFormTest {
    Q_OBJECT

private slots:
    void initTestCase() { showWindow(); }
    void cleanup();

    void mapsRaysAndOpensACell_data() { products(); }
    void mapsRaysAndOpensACell();
    void mapHasTheSizeOfItsFields();
    void mapOverDispersions();
    void searchesAndKeepsVerdicts_data() { products(); }
    void searchesAndKeepsVerdicts();
    void isWhatTheBatchProgramMakes_data() { products(); }
    void isWhatTheBatchProgramMakes();
    void stopsAndResumes();
    void tellsWhatDoesNotFit();
    void refusesInputs_data();
    void refusesInputs();

private:
    static void products()
    {
        QTest::addColumn<bool>("isFfa");
        QTest::newRow("spectra") << false;
        QTest::newRow("folds") << true;
    }
    QString makeDays(const QString &name);
    void open(const QString &directory, bool isSearch, bool isFfa = false);
    void compute(const QString &rays = "all");
    MapView *map() const { return find<MapView>("map"); }
    SkyCandidatesModel *candidates() const { return window.findChild<SkyCandidatesModel *>(); }
    QString told() const { return find<QLabel>("told")->text(); }
};

void TestSkyForm::cleanup()
{
    Settings::instance()->graphWidth.clear();
    Settings::instance()->graphHeight.clear();
    Settings::store().clear();
}

QString TestSkyForm::makeDays(const QString &name)
{
    QDir(folder.path()).mkpath(name);
    static QByteArray made[dayCount]; // making noise takes longer than looking into it
    for (int day = 1; day <= dayCount; ++day) {
        QByteArray &bytes = made[day - 1];
        if (bytes.isEmpty())
            bytes = TestSupport::dayBytes(day, TestSupport::dayPoints, pulseHeight);
        const QString file = QString("%1/0%2_12_N1_00.pnthr").arg(name).arg(day);
        if (!QFile::exists(folder.filePath(file)))
            TestSupport::writeFile(folder, file, bytes);
    }
    return folder.filePath(name);
}

void TestSkyForm::open(const QString &directory, bool isSearch, bool isFfa)
{
    window.activateWindow(); // keys of the search work in the active window
    QVERIFY(QTest::qWaitForWindowActive(&window));
    new FourierForm(directory, isFfa ? 1 : 0, isSearch ? 0 : 1, isSearch ? 1 : 0, &window);
    QTRY_VERIFY_WITH_TIMEOUT(told().contains("stretch"), waitMs);
    find<QSpinBox>("bins_min")->setValue(30); // so that the period is not the shortest
    find<QSpinBox>("bins_max")->setValue(60);
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
    QFETCH(bool, isFfa);
    open(makeDays("map"), false, isFfa);
    compute();
    find<QComboBox>("shownRay")->setCurrentText("All");
    QTRY_COMPARE_WITH_TIMEOUT(map()->picture().panels.size(), std::size_t(3), waitMs);
    // Pulses of ray 2 stand out, and their stack is opened.
    QTRY_COMPARE_WITH_TIMEOUT(map()->cell().panel, 1, waitMs);
    const auto *const grafik = find<PulsarGrafik>("grafik");
    QCOMPARE(grafik->data().numPoints, map()->picture().map().columns);
    const auto &lines = find<QTableView>("lines")->model();
    QVERIFY(lines->rowCount() > 0);
    const double axis = map()->picture().map().axisAt(map()->cell().column);
    QVERIFY2(isOfPulses(isFfa ? 1 / axis : axis, isFfa), qPrintable(QString::number(axis)));
    find<QTableView>("lines")->selectRow(0);
    QCOMPARE(grafik->fundamental().has_value(), !isFfa);
    QCOMPARE(grafik->data().markers.empty(), !isFfa);

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
    const QString command = QGuiApplication::clipboard()->text();
    QVERIFY(command.startsWith("zrt-batch map "));
    QCOMPARE(command.contains(" --ffa "), isFfa);
    find<QPushButton>("openDays")->click();
    auto *const days = window.findChild<QWidget *>("cellWindow");
    QVERIFY(days);
    const auto *const used = days->findChild<QLabel *>("used");
    QTRY_VERIFY_WITH_TIMEOUT(used->text().contains("of 5 days count"), waitMs);
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
    QFETCH(bool, isFfa);
    const QString directory = makeDays("search"); // tables of spectra and folds beside each other
    open(directory, true, isFfa);
    QCOMPARE(candidates()->rowCount(), 0);
    compute();
    const auto *const found = find<QLabel>("searchText");
    QVERIFY2(QTest::qWaitFor([&] { return found->text().contains("trials"); }, waitMs),
             qPrintable(found->text()));
    QVERIFY2(candidates()->rowCount() > 0, qPrintable(found->text()));
    const Sky::SkyCandidate &best = candidates()->candidates()[0];
    QVERIFY2(isOfPulses(best.telescope, isFfa), qPrintable(QString::number(best.telescope)));
    QCOMPARE(best.ray, 1);
    const QModelIndex dispersion = candidates()->index(0, SkyCandidatesModel::Dispersion);
    QCOMPARE(dispersion.data().toString().endsWith("+- -"), isFfa);
    QCOMPARE(dispersion.data(Qt::ToolTipRole).toString().contains("strongest stack"), isFfa);

    // All views of it.
    QTRY_COMPARE_WITH_TIMEOUT(find<SmallPlot>("profile")->shown().curves.size(), std::size_t(3),
                              waitMs);
    QCOMPARE(find<SmallPlot>("overDispersion")->shown().x, (std::vector<double>{0, 5}));
    const int row = map()->cell().row;
    QCOMPARE(row, best.start);
    const double axis = map()->picture().map().axisAt(map()->cell().column);
    QVERIFY(isOfPulses(isFfa ? 1 / axis : axis, isFfa));

    auto *const table = find<QTableView>("candidates");
    table->setFocus();
    QTest::keyClick(table, Qt::Key_A);
    QCOMPARE(candidates()->candidates()[0].verdict, Sky::Verdict::Accept);
    QVERIFY(candidates()->setData(candidates()->index(0, SkyCandidatesModel::Note),
                                  "seen, \"twice\"", Qt::EditRole));

    // Another form shows them, before and after the stacks are there again.
    open(directory, true, isFfa);
    QTRY_VERIFY_WITH_TIMEOUT(candidates()->rowCount() > 0, waitMs);
    QCOMPARE(candidates()->candidates()[0].verdict, Sky::Verdict::Accept);
    QCOMPARE(find<QLineEdit>("dispersions")->text(), QString("0,5"));
    compute();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("searchText")->text().contains("trials"), waitMs);
    QVERIFY(told().contains("5 of them kept"));
    QCOMPARE(candidates()->candidates()[0].verdict, Sky::Verdict::Accept);
    QCOMPARE(candidates()->candidates()[0].note, QString("seen, \"twice\""));
}

// The table that the form keeps and the one of the copied command are the same bytes but for the
// name of the program.
void TestSkyForm::isWhatTheBatchProgramMakes()
{
    QFETCH(bool, isFfa);
    const QString directory = makeDays(isFfa ? "samefolds" : "same");
    open(directory, true, isFfa);
    compute();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("searchText")->text().contains("trials"), waitMs);
    const QDir kept(Days::keptFolder(directory).path);
    const QStringList tables = kept.entryList({"*_candidates.txt"});
    QCOMPARE(tables.size(), 1);
    find<QPushButton>("commandButton")->click();
    QString command = QGuiApplication::clipboard()->text();
    QCOMPARE(command.contains(" --ffa "), isFfa);
    const QString made = path(isFfa ? "madefolds" : "made");
    command.replace("zrt-batch search", "zrt-batch search --force -o " + made);
    const TestSupport::Ended ended = runShell(command);
    QVERIFY2(ended.code == 0, qPrintable(command + ended.errors));
    const QStringList tablesMade = QDir(made).entryList({"*.txt"});
    QCOMPARE(tablesMade.size(), 1);
    const auto lines = [](const QString &file) {
        QStringList all = QString(TestSupport::contentOf(file)).split('\n');
        all.erase(std::remove_if(all.begin(), all.end(),
                                 [](const QString &line) { return line.contains("program:"); }),
                  all.end());
        return all;
    };
    QCOMPARE(lines(QDir(made).filePath(tablesMade[0])), lines(kept.filePath(tables[0])));
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
    QVERIFY(!told().contains("5 of 5 days added"));
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(told().contains("5 of 5 days added"), waitMs);
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
