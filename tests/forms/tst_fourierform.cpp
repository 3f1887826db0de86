#include "forms/days/fourierform.h"

#include "analyses/days/interference.h"
#include "app/shell/settings.h"
#include "forms/days/daysmodel.h"
#include "forms/days/interferencedialog.h"
#include "forms/days/linesmodel.h"
#include "forms/days/recordingspectrum.h"
#include "forms/days/sourcefield.h"
#include "plot/pulsargrafik.h"
#include "results/resulttable.h"
#include "support/dayfiles.h"
#include "support/daysformtest.h"
#include "support/messageboxcatcher.h"
#include "support/testmain.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableView>
#include <cmath>

namespace {

constexpr int dayCount = 8;
constexpr int waitMs = 20000;

} // namespace

/// The form over a directory of days, found and worked by the names of its fields.
class TestFourierForm : public TestSupport::DaysFormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void isWhatTheBatchProgramMakes_data();
    void isWhatTheBatchProgramMakes();
    void hasTheFieldsOfItsProduct();
    void switchesDaysWithoutReading_data();
    void switchesDaysWithoutReading();
    void leavesOutALine();
    void leavesOutInThePictures_data();
    void leavesOutInThePictures();
    void listOfInterference_data();
    void listOfInterference();
    void tellsWhatDoesNotFit();
    void plansWhatArrowsChoose();
    void refusesDirectories_data();
    void refusesDirectories();
    void refusesInputs_data();
    void refusesInputs();
    void namesASource();
    void spectrumOfARecording();

private:
    QString makeDays(const QString &name);
    void open(const QString &directory, bool isFfa = false);
    void compute();
    void waitForDays(int count);
    DaysModel *days() const { return window.findChild<DaysModel *>(); }
    const std::vector<Days::FourierLine> &lines() const
    {
        return window.findChild<LinesModel *>()->lines();
    }
    QString used() const { return find<QLabel>("used")->text(); }
};

void TestFourierForm::initTestCase()
{
    showWindow();
    makeDays("days");
}

void TestFourierForm::cleanup()
{
    QFile::remove(Days::interferencePath());
    Settings::store().clear();
}

QString TestFourierForm::makeDays(const QString &name)
{
    QDir(folder.path()).mkpath(name);
    for (int day = 1; day <= dayCount; ++day)
        TestSupport::writeFile(folder, QString("%1/0%2_12_N1_00.pnthr").arg(name).arg(day),
                               TestSupport::dayBytes(day));
    return path(name);
}

void TestFourierForm::open(const QString &directory, bool isFfa)
{
    new FourierForm(directory, isFfa, 0, 0, &window);
    QTRY_VERIFY_WITH_TIMEOUT(days() && days()->rowCount() > 0, waitMs);
}

// Ray 2 from point 100 on.
void TestFourierForm::compute()
{
    find<QSpinBox>("ray")->setValue(2);
    find<QLineEdit>("firstPoint")->setText("100");
    find<QComboBox>("points")->setCurrentText("4096");
    find<QLineEdit>("threshold")->setText("4");
    find<QPushButton>("pushButton")->click();
    waitForDays(dayCount);
}

// Until the stack has so many of the days.
void TestFourierForm::waitForDays(int count)
{
    const QString wanted = QString("%1 of %2 days").arg(count).arg(dayCount);
    QVERIFY2(QTest::qWaitFor([&] { return used().contains(wanted); }, waitMs), qPrintable(used()));
}

void TestFourierForm::isWhatTheBatchProgramMakes_data()
{
    QTest::addColumn<bool>("isFfa");
    QTest::newRow("spectra") << false;
    QTest::newRow("periodograms") << true;
}

void TestFourierForm::isWhatTheBatchProgramMakes()
{
    QFETCH(bool, isFfa);
    open(path("days"), isFfa);
    compute();
    QVERIFY(days()->setData(days()->index(2, 0), Qt::Unchecked, Qt::CheckStateRole));
    waitForDays(dayCount - 1);
    QVERIFY(!lines().empty());
    const double turns =
        1 / (lines()[0].telescope * TestSupport::dayPeriod); // FFA: of the period, or more
    QVERIFY2(std::abs(turns - (isFfa ? std::round(turns) : 1)) < 0.01, "the pulses are not found");

    find<QPushButton>("commandButton")->click();
    QString commands = QGuiApplication::clipboard()->text();
    QCOMPARE(commands.count("zrt-batch "), 2);
    auto *const grafik = find<PulsarGrafik>("grafik");
    QCOMPARE(grafik->savePicture(path("form.png")), QString());
    commands.replace("zrt-batch stack", QString("zrt-batch stack --format csv --plot png "
                                                "--size %1x%2@3")
                                            .arg(grafik->width())
                                            .arg(grafik->height()));
    const TestSupport::Ended ended = runShell(commands);
    QVERIFY2(ended.code == 0, qPrintable(commands + ended.errors));

    const QStringList made =
        QDir(path("days")).entryList({isFfa ? "*stack-ffa.lines.csv" : "*stack.lines.csv"});
    QCOMPARE(made.size(), 1);
    const Results::ReadTable read =
        Results::readTable(TestSupport::contentOf(path("days/" + made[0])));
    QCOMPARE(read.problem, QString());
    const auto column = [&read](int index) {
        return std::get<std::vector<double>>(read.table.columns[std::size_t(index)].values);
    };
    QCOMPARE(std::size_t(read.table.rows()), lines().size());
    for (std::size_t i = 0; i < lines().size(); ++i) {
        QVERIFY(column(1)[i] == lines()[i].telescope);
        QVERIFY(column(isFfa ? 6 : 5)[i] == lines()[i].sigma);
    }
    const QStringList drawn =
        QDir(path("days")).entryList({isFfa ? "*stack-ffa.periods.png" : "*stack.spectrum.png"});
    QCOMPARE(drawn.size(), 1);
    QVERIFY(QImage(path("days/" + drawn[0])) == QImage(path("form.png")));
}

// What the other product reads is not there.
void TestFourierForm::hasTheFieldsOfItsProduct()
{
    for (const bool isFfa : {false, true}) {
        open(path("days"), isFfa);
        for (const char *const name : {"window", "harmonics", "averageCount", "equalGains"})
            QCOMPARE(find<QWidget>(name)->isVisibleTo(&window), !isFfa);
        for (const char *const name : {"period_min", "bins_max", "ducy_max", "rmed_width"})
            QCOMPARE(find<QWidget>(name)->isVisibleTo(&window), isFfa);
    }
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("estimate")->text().contains("trial periods"), waitMs);
    QVERIFY(!find<QLineEdit>("period_max")->placeholderText().isEmpty());
}

void TestFourierForm::switchesDaysWithoutReading_data()
{
    isWhatTheBatchProgramMakes_data();
}

void TestFourierForm::switchesDaysWithoutReading()
{
    QFETCH(bool, isFfa);
    const QString directory = makeDays("gone");
    open(directory, isFfa);
    compute();
    QVERIFY(QDir(directory).removeRecursively());
    find<QPushButton>("allOff")->click();
    QTRY_VERIFY_WITH_TIMEOUT(find<PulsarGrafik>("grafik")->data().messageMode, waitMs);
    QVERIFY(!find<PulsarGrafik>("grafik")->data().message.isEmpty());
    find<QPushButton>("asProposed")->click();
    QTRY_VERIFY_WITH_TIMEOUT(!find<PulsarGrafik>("grafik")->data().messageMode, waitMs);
    QVERIFY(used().contains(QString("%1 of %1 days").arg(dayCount)));

    // A click on a line brings its powers into the list of days.
    find<QTableView>("lines")->setCurrentIndex(find<QTableView>("lines")->model()->index(0, 0));
    QCOMPARE(find<PulsarGrafik>("grafik")->fundamental().has_value(), !isFfa);
    QCOMPARE(find<PulsarGrafik>("grafik")->data().markers.empty(), !isFfa);
    double sum = 0;
    for (int day = 0; day < dayCount; ++day)
        sum += days()->dayRows()[std::size_t(day)].power;
    QVERIFY2(sum > (isFfa ? 1 : 2) * dayCount, "the values of the days are not those of the line");
    // The series are kept beside the days, so that nothing is left of them either.
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(!days()->dayRows()[0].canCount, waitMs);
    QVERIFY(!days()->dayRows()[0].reason.isEmpty());
}

void TestFourierForm::leavesOutALine()
{
    open(path("days"));
    compute();
    const double frequency = lines()[0].telescope;
    find<QTableView>("lines")->setCurrentIndex(find<QTableView>("lines")->model()->index(0, 0));
    find<QPushButton>("leaveOut")->click();
    QTRY_VERIFY_WITH_TIMEOUT(used().contains("1 entries of the list"), waitMs);
    for (const Days::FourierLine &line : lines())
        QVERIFY(std::abs(line.telescope - frequency) > 0.001);
    QCOMPARE(Days::readInterference(Days::interferencePath()).entries.size(), std::size_t(1));
}

void TestFourierForm::leavesOutInThePictures_data()
{
    QTest::addColumn<QString>("picture");
    QTest::addColumn<bool>("byKey");
    QTest::newRow("click in the stack") << "grafik" << false;
    QTest::newRow("click on a day") << "dayPicture" << false;
    QTest::newRow("key over the stack") << "grafik" << true;
}

// The strongest line, and back again at the same place.
void TestFourierForm::leavesOutInThePictures()
{
    QFETCH(QString, picture);
    QFETCH(bool, byKey);
    open(path("days"));
    compute();
    auto *const grafik = find<PulsarGrafik>("grafik");
    auto *const shown = find<QWidget>(qPrintable(picture));
    const double bin = std::round(lines()[0].bin);
    grafik->setVisibleX(bin - 20, 40);
    const QPoint place(Plot::marginLeft +
                           (shown->width() - Plot::marginLeft - Plot::marginRight) / 2,
                       shown->height() / 2);
    const auto toggle = [&] {
        if (byKey) {
            QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, Qt::NoButton, {});
            QApplication::sendEvent(shown, &move);
            QTest::keyClick(grafik, Qt::Key_X);
        } else {
            QTest::mouseClick(shown, Qt::LeftButton, Qt::ControlModifier, place);
        }
    };
    const QImage before = shown->grab().toImage();
    const double frequency = lines()[0].telescope;
    const int harmonics = lines()[0].harmonics;
    const auto isListed = [&] {
        return std::any_of(lines().begin(), lines().end(), [&](const Days::FourierLine &line) {
            return std::abs(line.telescope - frequency) < 0.001;
        });
    };
    toggle();
    QTRY_VERIFY_WITH_TIMEOUT(!isListed(), waitMs);
    const auto entries = Days::readInterference(Days::interferencePath()).entries;
    QCOMPARE(entries.size(), std::size_t(1));
    QVERIFY(std::abs(entries[0].value - frequency) < 0.01);
    QCOMPARE(entries[0].harmonics, harmonics);
    QCOMPARE(grafik->data().leftOut.size(), std::size_t(harmonics));
    QVERIFY(grafik->data().leftOut[0].min < bin && grafik->data().leftOut[0].max > bin);
    QVERIFY(!grafik->selectedRange());
    QVERIFY(shown->grab().toImage() != before);

    toggle();
    QTRY_VERIFY_WITH_TIMEOUT(isListed(), waitMs);
    QVERIFY(Days::readInterference(Days::interferencePath()).entries.empty());
    QVERIFY(grafik->data().leftOut.empty());
}

void TestFourierForm::listOfInterference_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("told");
    QTest::newRow("new list") << QByteArray() << "50 Hz +- 0.2 x 8"
                              << "";
    QTest::newRow("mended file") << QByteArray("fifty\n") << "50 Hz"
                                 << "";
    QTest::newRow("unreadable line") << QByteArray("9 Hz\n") << "50 Hz\nfifty"
                                     << "line 2";
    QTest::newRow("too long to be shown") << QByteArray("9 Hz\n").repeated(300000) << "50 Hz"
                                          << "longer than";
}

// What is accepted is written; a file stays as it was where something is wrong.
void TestFourierForm::listOfInterference()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, typed);
    QFETCH(QString, told);
    const QString list = TestSupport::writeFile(folder, "interference.txt", file);
    InterferenceDialog dialog(list, &window);
    auto *const lines = dialog.findChild<QPlainTextEdit *>("interferenceLines");
    QCOMPARE(lines->toPlainText().isEmpty(), file.isEmpty());
    lines->setPlainText(typed);
    dialog.show();
    dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    QCOMPARE(dialog.isVisible(), !told.isEmpty());
    const Days::InterferenceList read = Days::readInterference(list);
    if (told.isEmpty()) {
        QCOMPARE(read.entries.size(), std::size_t(1));
        QCOMPARE(read.entries[0].text(), typed);
        return;
    }
    const auto *const problem = dialog.findChild<QLabel *>("interferenceProblem");
    QVERIFY2(problem->isVisible() && problem->text().contains(told), qPrintable(problem->text()));
    QVERIFY(TestSupport::contentOf(list) == file);
}

void TestFourierForm::tellsWhatDoesNotFit()
{
    const QString directory = makeDays("mixed");
    TestSupport::writeFile(folder, "mixed/09.pnt", TestSupport::dayBytes(9, 900));
    TestSupport::writeFile(folder, "mixed/10.pnt",
                           TestSupport::dayBytes(10).replace("12.4928", "99.9424"));
    TestSupport::writeFile(folder, "mixed/11.pnt", "no recording");
    open(directory);
    compute();
    QStringList told;
    for (const DayRow &row : days()->dayRows()) {
        if (!row.canCount)
            told << row.name + "|" + row.reason;
    }
    QCOMPARE(told.size(), 3);
    QVERIFY2(told[0].startsWith("|") && told[0].contains("after the recording"),
             qPrintable(told[0]));
    QVERIFY2(told[1].startsWith("10.pnt|") && told[1].contains("99.9424 ms"), qPrintable(told[1]));
    QVERIFY2(told[2].startsWith("11.pnt|"), qPrintable(told[2]));
}

// The arrows of a field change its text without a word of the line in it.
void TestFourierForm::plansWhatArrowsChoose()
{
    open(path("days"));
    QTRY_COMPARE_WITH_TIMEOUT(days()->rowCount(), dayCount, waitMs);
    find<QSpinBox>("ray")->setValue(3);
    find<QSpinBox>("ray")->stepUp();
    QTRY_VERIFY_WITH_TIMEOUT(days()->dayRows()[0].reason.contains("ray 4"), waitMs);
}

void TestFourierForm::refusesDirectories_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("missing") << "missing" << QByteArray();
    QTest::newRow("no recordings") << "texts/readme.txt" << QByteArray("1\n");
    QTest::newRow("no usable recording") << "bad/a.pnt" << QByteArray("no passport");
}

void TestFourierForm::refusesDirectories()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, file);
    if (!file.isEmpty()) {
        QDir(folder.path()).mkpath(name.section('/', 0, 0));
        TestSupport::writeFile(folder, name, file);
    }
    const TestSupport::MessageBoxCatcher catcher;
    new FourierForm(path(name.section('/', 0, 0)), 0, 0, 0, &window);
    QTRY_VERIFY_WITH_TIMEOUT(!window.centralWidget()->layout(), waitMs);
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(catcher.boxes()[0].title, QString("Error"));
    QVERIFY(catcher.boxes()[0].text.contains("Bad directory!"));
}

void TestFourierForm::refusesInputs_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("start"); // radio button
    QTest::newRow("unknown pulsar") << "source"
                                    << "B9999+99"
                                    << "isSource";
    QTest::newRow("bad time") << "zrtUtc"
                              << "25:00:00"
                              << "isZrtUtc";
    QTest::newRow("no sidereal time") << "siderealTime"
                                      << ""
                                      << "isSidereal";
    QTest::newRow("no number") << "dispersion"
                               << "12,3.4"
                               << "isFirstPoint";
    QTest::newRow("bad rays") << "otherRays"
                              << "1;2"
                              << "isFirstPoint";
}

void TestFourierForm::refusesInputs()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, start);
    open(path("days"));
    auto *const edit = find<QLineEdit>(qPrintable(field));
    find<QRadioButton>(qPrintable(start))->setChecked(true);
    edit->setText(text);
    find<QPushButton>("pushButton")->click();
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("problems")->isVisible(), waitMs);
    QVERIFY(edit->styleSheet().contains("#f4cccc"));
    QVERIFY(used().isEmpty());
    find<QRadioButton>("isFirstPoint")->setChecked(true);
    edit->setText(field == "dispersion" ? "0" : "");
    QTRY_VERIFY_WITH_TIMEOUT(!find<QLabel>("problems")->isVisible(), waitMs);
    QVERIFY(edit->styleSheet().isEmpty());
}

void TestFourierForm::namesASource()
{
    open(path("days"));
    const auto *const field = find<SourceField>("sourceField");
    auto *const source = find<QLineEdit>("source");
    QTest::keyClicks(source, "b0329");
    QVERIFY(find<QRadioButton>("isSource")->isChecked());
    QVERIFY(source->completer()->completionModel()->rowCount() > 0);
    QCOMPARE(source->completer()->completionModel()->index(0, 0).data().toString().left(5),
             QString("B0329"));
    source->setText("B0329+54");
    QVERIFY(field->position().has_value());
    // 03h 32m 59s, +54 deg 34'
    QVERIFY(std::abs(field->position()->alfa * 12 / M_PI - 3.5497) < 0.001);
    QVERIFY(std::abs(field->position()->delta * 180 / M_PI - 54.5787) < 0.001);
    QVERIFY(find<QLineEdit>("alfa")->placeholderText().startsWith("03:32:5"));
    QTRY_VERIFY_WITH_TIMEOUT(find<QLabel>("sourceText")->text().contains("N1 module"), waitMs);
    // Typed coordinates take the place of the name.
    find<QLineEdit>("alfa")->setText("12:00:00");
    find<QLineEdit>("delta")->setText("-05:30");
    QCOMPARE(source->text(), QString());
    QVERIFY(std::abs(field->position()->delta * 180 / M_PI + 5.5) < 1e-9);
}

void TestFourierForm::spectrumOfARecording()
{
    // All of the file but what the delays take: 4096 of 5000 points.
    const QString file = path("days/01_12_N1_00.pnthr");
    const auto *const spectrum = new RecordingSpectrum({file, 1, 2, 0}, &window);
    const auto *const found = spectrum->findChild<LinesModel *>();
    const auto *const told = spectrum->findChild<QLabel *>("used");
    QTRY_VERIFY_WITH_TIMEOUT(told->text().contains("4096 points"), waitMs);
    for (const Days::FourierLine &line : found->lines())
        QVERIFY2(std::abs(std::remainder(line.telescope * TestSupport::dayPeriod, 0.25)) < 0.01,
                 "a line that the pulses do not have");
    delete spectrum;

    const QString tiny = TestSupport::writeFile(folder, "tiny.pnt", TestSupport::dayBytes(1, 900));
    const auto *const refused = new RecordingSpectrum({tiny, 1, 1, 0}, &window);
    QTRY_VERIFY_WITH_TIMEOUT(refused->findChild<QLabel *>("spectrumProblem")
                                 ->text()
                                 .contains("The recording has 900 points"),
                             waitMs);
    delete refused;
}

ZRT_GUI_TEST_MAIN(TestFourierForm)
#include "tst_fourierform.moc"
