#include "app/shell/centralwidget.h"
#include "app/shell/settings.h"
#include "forms/days/daysmodel.h"
#include "forms/profiles/optimiseview.h"
#include "forms/profiles/profileform.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"
#include "results/resulttable.h"
#include "support/dayfiles.h"
#include "support/daysformtest.h"
#include "support/messageboxcatcher.h"
#include "support/testmain.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>

namespace {

constexpr int waitMs = 20000;
constexpr int dayCount = 6;
constexpr int strongDay = 2; // index; its pulses are three times as high
constexpr double pulseHeight = 0.3;

} // namespace

/// What a user does to the form.
using Change = std::function<void(const QWidget &form)>;
Q_DECLARE_METATYPE(Change)

/// The form of average profiles, found and worked by the names of its fields.
class TestProfileForm : public TestSupport::DaysFormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void showsWhatTheBatchProgramWrites();
    void pages_data();
    void pages();
    void viewsFollowTheDay();
    void addsUpWithoutReading_data();
    void addsUpWithoutReading();
    void takesValues();
    void takesADispersion();
    void stops();
    void optionsGoOn();
    void saves();
    void remembersTheFlux();
    void fewDays_data();
    void fewDays();
    void refusesInputs_data();
    void refusesInputs();
    void refusesAnEmptyDirectory();

private:
    QString makeDays(const QString &name, int count) const;
    void open(const QString &directory, const QString &mode = "periods");
    void compute();
    void acceptDialog(const QString &path) const;
    void click(const char *button) const { find<QPushButton>(button)->click(); }
    QString text(const char *label) const { return find<QLabel>(label)->text(); }
    const PlotData &plot(const char *name) const { return find<PulsarGrafik>(name)->data(); }
    DaysModel *days() const { return window.findChild<DaysModel *>(); }
};

void TestProfileForm::initTestCase()
{
    showWindow();
    makeDays("days", dayCount);
}

void TestProfileForm::cleanup()
{
    emptyCentralWidget();
    Settings::store().clear();
    Settings *const settings = Settings::instance();
    settings->profileAligns = settings->profileNormalises = settings->profileWeights = true;
}

QString TestProfileForm::makeDays(const QString &name, int count) const
{
    QDir(folder.path()).mkpath(name);
    for (int day = 0; day < count; ++day)
        writeFile(path(QString("%1/%2.pnt").arg(name).arg(day)),
                  TestSupport::stripBytes(day, 2600, 0,
                                          day == strongDay ? 3 * pulseHeight : pulseHeight));
    return path(name);
}

void TestProfileForm::open(const QString &directory, const QString &mode)
{
    new ProfileForm(directory, mode, &window);
    QTRY_VERIFY_WITH_TIMEOUT(find<QPushButton>("pushButton")->isEnabled(), waitMs);
    find<QSpinBox>("ray")->setValue(2);
    find<QComboBox>("bins")->setCurrentText("32");
    find<QLineEdit>("period")->setText("0.7");
    find<QLineEdit>("dispersion")->setText("0");
    find<QComboBox>("align")->setCurrentText("Template");
}

// Until the trials are there too.
void TestProfileForm::compute()
{
    click("pushButton");
    QTRY_VERIFY_WITH_TIMEOUT(text("used").contains("best period"), waitMs);
}

void TestProfileForm::acceptDialog(const QString &path) const
{
    QTimer::singleShot(0, qApp, [path] {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

void TestProfileForm::showsWhatTheBatchProgramWrites()
{
    open(path("days"));
    compute();
    click("commandButton");
    const QString command = QGuiApplication::clipboard()->text().trimmed();
    auto *const grafik = find<PulsarGrafik>("grafik");
    QCOMPARE(grafik->savePicture(path("average.png")), QString());
    auto *const optimise = find<OptimiseView>("optimise");
    find<QTabWidget>("pages")->setCurrentWidget(optimise);
    QCOMPARE(optimise->findChild<PictureMenu *>()->savePicture(path("both.png")), QString());
    const std::pair<QString, QSize> pictures[] = {{"average", grafik->size()},
                                                  {"both", optimise->size()}};
    for (const auto &[what, size] : pictures) {
        const QString options = QString(" -o out --plot png --size %1x%2@3 --tag %3")
                                    .arg(size.width())
                                    .arg(size.height())
                                    .arg(what);
        const TestSupport::Ended ended = runShell(command + options);
        QVERIFY2(ended.code == 0, qPrintable(command + ended.errors));
        const QString made = path(QString("out/m1_r2.profile.%1.%1.png").arg(what));
        QVERIFY2(QImage(made) == QImage(path(what + ".png")), qPrintable(what));
    }
    const Results::ReadTable read =
        Results::readTable(TestSupport::contentOf(path("out/m1_r2.profile.average.days.txt")));
    QCOMPARE(read.table.rows(), dayCount);
    const auto &snr = std::get<std::vector<double>>(read.table.columns[2].values);
    for (int day = 0; day < dayCount; ++day)
        QVERIFY(snr[std::size_t(day)] == days()->dayRows()[std::size_t(day)].power);
    const QByteArray average =
        TestSupport::contentOf(path("out/m1_r2.profile.average.average.txt"));
    const QString best = text("used").section("best period: ", 1).section('\n', 0, 0);
    QVERIFY2(average.contains(("best_period: " + best + "\n").toUtf8()), qPrintable(best));
}

void TestProfileForm::pages_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QString>("tried");
    QTest::newRow("periods") << "periods"
                             << QStringList{"S/N by day", "Growth", "Periods", "Optimise",
                                            "Arrival times"}
                             << "period";
    QTest::newRow("dispersions") << "dispersions"
                                 << QStringList{"S/N by day", "Growth", "Dispersions",
                                                "Arrival times"}
                                 << "DM";
}

void TestProfileForm::pages()
{
    QFETCH(QString, mode);
    QFETCH(QStringList, titles);
    QFETCH(QString, tried);
    open(path("days"), mode);
    compute();
    const auto *const pages = find<QTabWidget>("pages");
    QStringList shown;
    for (int i = 0; i < pages->count(); ++i)
        shown << pages->tabText(i);
    QCOMPARE(shown, titles);
    QCOMPARE(plot("grafik").numPoints, 32);
    QVERIFY(plot("grafik").names.contains("average + error"));
    QVERIFY(plot("grafik").names.contains("second half"));
    QCOMPARE(plot("dayGrafik").numPoints, dayCount);
    QVERIFY(plot("growthGrafik").names.contains("expected"));
    QCOMPARE(plot("scanGrafik").x.name, tried);
    QVERIFY(plot("scanGrafik").names.contains("cubic"));
    const auto *const arrivals = find<QTableView>("arrivals")->model();
    QCOMPARE(arrivals->rowCount(), dayCount);
    QVERIFY(arrivals->index(0, 1).data().toString().startsWith("57113."));
    QVERIFY(!text("boxcarAverage").isEmpty());
    for (const char *const name : {"boxcar", "peak", "z2", "h", "equivalent", "chi"})
        QVERIFY2(!find<QLabel>((name + QByteArray("Name")).constData())->toolTip().isEmpty(), name);
}

void TestProfileForm::viewsFollowTheDay()
{
    open(path("days"));
    compute();
    emit find<PulsarGrafik>("dayGrafik")->coordsChanged(QPointF(strongDay, 1), {});
    QCOMPARE(text("dayTitle"), QString("2015-04-03"));
    QVERIFY(text("coords").contains("2015-04-03") && text("coords").contains("by template"));
    QCOMPARE(plot("dayGrafik").markers, std::vector<int>{strongDay});
    QCOMPARE(plot("growthGrafik").markers.size(), std::size_t(1));
    QCOMPARE(find<QTableView>("arrivals")->currentIndex().row(), strongDay);
    // The whole growth is that of all days.
    emit find<PulsarGrafik>("growthGrafik")
        ->coordsChanged(QPointF(plot("growthGrafik").numPoints - 1, 1), {});
    QCOMPARE(text("dayTitle"), QString("2015-04-06"));
    find<QTableView>("arrivals")->selectRow(0);
    QCOMPARE(text("dayTitle"), QString("2015-04-01"));
    find<QTableView>("days")->selectRow(1);
    QCOMPARE(text("dayTitle"), QString("2015-04-02"));
}

void TestProfileForm::addsUpWithoutReading_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("told");
    QTest::newRow("a day") << Change([](const QWidget &form) {
        auto *const days = form.findChild<DaysModel *>();
        QVERIFY(days->setData(days->index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
    }) << "in average: 5 of 6 days";
    QTest::newRow("no day") << Change([](const QWidget &form) {
        form.findChild<QPushButton *>("allOff")->click();
    }) << "in average: 0 of 6 days";
    QTest::newRow("the S/N") << Change([](const QWidget &form) {
        form.findChild<QLineEdit *>("leastSnr")->setText("40");
    }) << "in average: 1 of 6 days";
    QTest::newRow("weights") << Change([](const QWidget &form) {
        form.findChild<QCheckBox *>("weight")->click();
    }) << "effective days: 6\n";
    QTest::newRow("not aligned") << Change([](const QWidget &form) {
        form.findChild<QCheckBox *>("aligns")->click();
    }) << "in average: 0 of 6 days";
    QTest::newRow("whole seconds") << Change([](const QWidget &form) {
        form.findChild<QComboBox *>("align")->setCurrentText("Ephemeris");
    }) << "Align by template";
    QTest::newRow("a flux") << Change([](const QWidget &form) {
        form.findChild<QLineEdit *>("sefd")->setText("100");
    }) << "flux density: ";
}

void TestProfileForm::addsUpWithoutReading()
{
    QFETCH(Change, change);
    QFETCH(QString, told);
    const QString directory = makeDays("gone", dayCount);
    open(directory);
    compute();
    QVERIFY(QDir(directory).removeRecursively());
    QVERIFY2(!text("used").contains(told), qPrintable(text("used")));
    change(window);
    const bool isTold = QTest::qWaitFor([&] { return text("used").contains(told); }, waitMs);
    QVERIFY2(isTold, qPrintable(text("used")));
    const bool selects = find<QLineEdit>("leastSnr")->text() != "0";
    QCOMPARE(find<QLabel>("selects")->isVisible(), selects);
    QCOMPARE(plot("grafik").messageMode, text("used").contains("in average: 0 of"));
}

void TestProfileForm::takesValues()
{
    open(path("days"));
    find<QLineEdit>("period")->setText("0.701");
    compute();
    const double before = text("boxcarAverage").section(' ', 0, 0).toDouble();
    const auto fieldOf = [this](const char *name) { return find<QLineEdit>(name)->text(); };
    click("takeBest");
    QVERIFY2(std::abs(fieldOf("period").toDouble() - 0.7) < 1.2e-4, qPrintable(fieldOf("period")));
    QCOMPARE(fieldOf("epoch"), QString("57114"));
    QTRY_VERIFY_WITH_TIMEOUT(text("used").contains("moved frequency: "), waitMs);
    QVERIFY(text("boxcarAverage").section(' ', 0, 0).toDouble() > 1.05 * before);
    // A click on the picture takes the period and the dispersion under it.
    QTRY_VERIFY_WITH_TIMEOUT(text("used").contains("best period"), waitMs);
    auto *const optimise = find<OptimiseView>("optimise");
    find<QTabWidget>("pages")->setCurrentWidget(optimise);
    QTest::mouseClick(optimise, Qt::LeftButton, {}, {160, 40});
    QVERIFY(fieldOf("period").toDouble() < 0.6999);
    QVERIFY(fieldOf("dispersion").toDouble() > 1);
    click("takeBack");
    QTRY_VERIFY_WITH_TIMEOUT(!text("used").contains("moved"), waitMs);
    QTRY_COMPARE_WITH_TIMEOUT(text("boxcarAverage").section(' ', 0, 0).toDouble(), before, waitMs);
}

// A dispersion alone leaves the ephemeris as it was typed.
void TestProfileForm::takesADispersion()
{
    open(path("days"), "dispersions");
    find<QLineEdit>("period")->clear();
    find<QLineEdit>("frequency")->setText("1.42857142857");
    find<QLineEdit>("dispersion")->setText("1");
    compute();
    click("takeBest");
    QVERIFY(std::abs(find<QLineEdit>("dispersion")->text().toDouble()) < 0.6);
    QCOMPARE(find<QLineEdit>("frequency")->text(), QString("1.42857142857"));
    QCOMPARE(find<QLineEdit>("period")->text(), QString());
    QTRY_VERIFY_WITH_TIMEOUT(text("used").contains("moved dispersion: -"), waitMs);
}

void TestProfileForm::stops()
{
    open(path("days"));
    QDir(path("days/zrt-days")).removeRecursively(); // folding takes a moment
    click("pushButton");
    QTest::keyClick(&window, Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(plot("grafik").message.startsWith("Stopped"), waitMs);
    compute();
}

// From one form of periods to the next, with another form between, and to no other form.
void TestProfileForm::optionsGoOn()
{
    auto *const menu = window.findChild<QAction *>("actionProfile_periods");
    const auto openFromMenu = [&] {
        acceptDialog(path("days"));
        menu->trigger();
        QVERIFY(Settings::instance()->currentProfileForm());
    };
    openFromMenu();
    QVERIFY(find<QCheckBox>("normalise")->isChecked() && find<QCheckBox>("weight")->isChecked());
    find<QCheckBox>("normalise")->setChecked(false);
    find<QCheckBox>("aligns")->setChecked(false);
    openFromMenu();
    QVERIFY(!find<QCheckBox>("normalise")->isChecked());
    QVERIFY(!find<QComboBox>("align")->isEnabled());
    QVERIFY(find<QCheckBox>("weight")->isChecked());
    new ProfileForm(path("days"), "dispersions", &window);
    QVERIFY(find<QCheckBox>("normalise")->isChecked());
    QVERIFY(!Settings::instance()->currentProfileForm());
    openFromMenu();
    QVERIFY(!find<QCheckBox>("normalise")->isChecked());
    QVERIFY(!find<QCheckBox>("aligns")->isChecked());
}

void TestProfileForm::saves()
{
    open(path("days"));
    compute();
    QDir(folder.path()).mkpath("saved");
    acceptDialog(path("saved/p.txt"));
    click("saveTables");
    const QMap<QString, QByteArray> files = filesOf(path("saved"));
    QCOMPARE(files.size(), 7);
    QVERIFY(files["p_profiles.txt"].contains("2015-04-03T"));
    QVERIFY(files["p_average.txt"].contains("in_average: 6 of 6 days"));
    QCOMPARE(Settings::instance()->lastSavePath(), path("saved"));
    acceptDialog(path("saved/p.tim"));
    click("saveTim");
    const QByteArray tim = TestSupport::contentOf(path("saved/p.tim"));
    QVERIFY(tim.startsWith("FORMAT 1\n2015-04-01T12:00:00 "));
    QCOMPARE(tim.count('\n'), 1 + dayCount);
}

void TestProfileForm::remembersTheFlux()
{
    open(path("days"));
    find<QLineEdit>("temperature")->setText("100");
    find<QLineEdit>("gain")->setText("2");
    compute();
    QVERIFY(text("used").contains("flux density: "));
    open(path("days"));
    QCOMPARE(find<QLineEdit>("gain")->text(), QString("2"));
    QCOMPARE(find<QLineEdit>("sefd")->text(), QString());
}

void TestProfileForm::fewDays_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("average");
    QTest::newRow("one day") << 1 << "in average: 1 of 1 days";
    QTest::newRow("a hole and a short day") << 4 << "in average: 2 of 3 days";
}

void TestProfileForm::fewDays()
{
    QFETCH(int, count);
    QFETCH(QString, average);
    const QString directory = makeDays(QString("few%1").arg(count), count);
    if (count > 1) {
        QFile::remove(directory + "/1.pnt");
        writeFile(directory + "/0.pnt", TestSupport::stripBytes(0, 1500, 0, pulseHeight));
    }
    open(directory);
    find<QComboBox>("points")->setCurrentText("2048");
    compute();
    QVERIFY2(text("used").contains(average), qPrintable(text("used")));
    QVERIFY(!plot("grafik").messageMode && !plot("scanGrafik").messageMode);
    QCOMPARE(plot("growthGrafik").messageMode, count == 1);
    QCOMPARE(plot("dayGrafik").messageMode, count == 1);
    QCOMPARE(days()->dayRows()[0].canCount, count == 1);
    QCOMPARE(days()->dayRows()[0].reason.isEmpty(), count == 1);
}

void TestProfileForm::refusesInputs_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("problem");
    QTest::newRow("no period") << "period"
                               << ""
                               << "Give the period";
    QTest::newRow("no number") << "leastSnr"
                               << "many"
                               << "is not a number";
    QTest::newRow("longer than the stretch") << "period"
                                             << "100"
                                             << "take more points";
    QTest::newRow("below two samples") << "period"
                                       << "0.02"
                                       << "two at least";
    QTest::newRow("period and file") << "parFile"
                                     << "/none.par"
                                     << "not both";
    QTest::newRow("period and frequency") << "frequency"
                                          << "2"
                                          << "not both";
}

void TestProfileForm::refusesInputs()
{
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(QString, problem);
    open(path("days"));
    find<QLineEdit>(field.toUtf8().constData())->setText(typed);
    QTRY_VERIFY_WITH_TIMEOUT(text("problems").contains(problem), waitMs);
    QCOMPARE(int(days()->dayRows().size()), dayCount); // the list is there all the same
    click("pushButton");
    QTest::qWait(0);
    QVERIFY(plot("grafik").messageMode);
}

void TestProfileForm::refusesAnEmptyDirectory()
{
    QDir(folder.path()).mkpath("empty");
    const TestSupport::MessageBoxCatcher catcher;
    new ProfileForm(path("empty"), "periods", &window);
    QTRY_VERIFY_WITH_TIMEOUT(!window.centralWidget()->layout(), waitMs);
    QVERIFY(catcher.lastText().contains("Bad directory!"));
}

ZRT_GUI_TEST_MAIN(TestProfileForm)
#include "tst_profileform.moc"
