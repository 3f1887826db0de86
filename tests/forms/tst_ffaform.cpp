#include "app/shell/settings.h"
#include "ffa/syntheticsignal.h"
#include "forms/calculator/calculatorform.h"
#include "forms/ffa/ffaform.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>
#include <cmath>

using TestSupport::MessageBoxCatcher;

namespace {

constexpr int points = 20000;
constexpr double step = 0.0124928; // s
constexpr double period = 1.3;     // s

} // namespace

class TestFfaForm : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void files();
    void editsAreJudgedAtOnce();
    void presetsFollowTheSeries();
    void wholeFactorsAreNamedAndAvoided();
    void searchFoldsAndSaves();
    void escapeStopsTheSearch();
    void formGoesWhileSearching();
    void realRecordings();

private:
    // Waits until the job that was begun last has ended.
    static bool isDone()
    {
        const QProgressBar *const bar = Settings::instance()->progressBar();
        return QTest::qWaitFor([bar] { return bar->isHidden(); }, 60000);
    }
    bool search() const
    {
        click("pushButton");
        return isDone();
    }
    QAbstractItemModel *candidates() const { return find<QTableView>("candidates")->model(); }
    QString cell(int row, const QString &title) const
    {
        const int column = Results::shownTitles().indexOf(title);
        return candidates()->index(row, column).data().toString();
    }

    QStringList copiedProfile() const
    {
        for (QAction *const action : find<QWidget>("foldView")->actions())
            if (action->text() == "Copy profile")
                action->trigger();
        return QApplication::clipboard()->text().split('\n');
    }
    QString savedTable() const
    {
        const QString path = folder->filePath("table.txt");
        QTimer::singleShot(0, qApp, [&] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        click("saveButton");
        QFile saved(path);
        return saved.open(QIODevice::ReadOnly) ? QString::fromUtf8(saved.readAll()) : QString();
    }

    QByteArray pulses; // a recording of them
};

void TestFfaForm::initTestCase()
{
    const auto train = Ffa::syntheticPulseSignal(points, period / step, 0.3, 0.05, 60, 1);
    pulses = TestSupport::recordingBytes({points, 1, 33, 2}, [&](int point, int, int, int ray) {
        return ray == 1 ? train[std::size_t(point)] : float(point % 7);
    });
    pulses.replace("modulus 1\n", "modulus 4\n");
}

void TestFfaForm::files()
{
    const auto silence = [](int count, int channels) {
        return TestSupport::recordingBytes({count, 1, channels, 1},
                                           [](int, int, int, int) { return 0.0f; });
    };
    for (const auto &[bytes, problem] : {std::pair(pulses.left(pulses.size() / 2), ""),
                                         {silence(1, 33), "1 points"},
                                         {silence(300, 33), "period_max"},
                                         {silence(2000, 3), "2 frequency bands"}}) {
        const MessageBoxCatcher catcher;
        new FfaForm(file(bytes), window.get());
        const bool isGood = QString(problem).isEmpty();
        QCOMPARE(!find<QLabel>("dataEnd")->isHidden(), isGood); // half of it is missing
        const QString judged = find<QLabel>("estimate")->text();
        QVERIFY2(judged.contains(problem), qPrintable(judged));
        QCOMPARE(judged.contains(" periods x "), isGood);
        QVERIFY(search()); // does nothing where nothing can be searched
    }
    const MessageBoxCatcher catcher;
    const QPointer<FfaForm> form = new FfaForm(file({}), window.get());
    QCOMPARE(catcher.lastText(), QString("Bad file!\nFile without data"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!form);
}

void TestFfaForm::editsAreJudgedAtOnce()
{
    const struct {
        const char *field;
        const char *text;
        const char *problem;
    } edits[] = {
        {"dispersion", "1,000.5", "\"1,000.5\" is not a number. Allowed: digits"},
        {"dispersion", "1e6", "delays a band"},
        {"firstPoint", "1.5", "whole number"},
        {"firstPoint", "19999", "Allowed: 0 to 19998"},
        {"points", "19999", ""},
        {"points", "20000", "Allowed: 1 to 19999"},
        {"points", "0", "Allowed: 1 to 19999"},
        {"period_min", "0.4", "period_min >= tsamp * bins_min (0.0124928*40=0.499712)"},
        {"period_max", "24,98", ""},
        {"period_max", "24.99", "length / fpmin = 24.984 s"},
        {"period_max", "nan", "is not a number"},
        {"ducy_max", "1", "ducy_max must be > 0 and < 1"},
        {"wtsp", "0.9", "wtsp must be >= 1"},
        {"rmed_width", "250", "rmed_width"},
    };
    new FfaForm(file(pulses), window.get());
    const QLabel *const judged = find<QLabel>("estimate");
    for (const auto &[field, text, problem] : edits) {
        QLineEdit *const edit = find<QLineEdit>(field);
        const QString preset = edit->text();
        const QPoint place = find<QLineEdit>("rmed_width")->mapTo(window.get(), {});
        edit->setText(text);
        const bool isRefused = *problem;
        QVERIFY2(isMarked(field) == isRefused && judged->text().contains(problem),
                 qPrintable(field + (" = " + judged->text())));
        QCOMPARE(judged->text().contains(" periods x 5 widths"), !isRefused);
        QCOMPARE(find<QLineEdit>("rmed_width")->mapTo(window.get(), {}), place);
        if (isRefused)
            click("pushButton");
        QVERIFY2(Settings::instance()->progressBar()->isHidden(), "it searches nevertheless");
        edit->setText(preset);
        QVERIFY(!isMarked(field));
        QVERIFY(judged->text().contains(" periods x 5 widths"));
    }
}

// Until other periods are typed, those of the form suit the series, however short it gets.
void TestFfaForm::presetsFollowTheSeries()
{
    new FfaForm(file(pulses), window.get());
    const QLineEdit *const longest = find<QLineEdit>("period_max");
    QCOMPARE(longest->text(), QString("24.9")); // of 249.8 s
    for (const char *dispersion : {"100", "400"}) {
        type("dispersion", dispersion);
        QVERIFY2(find<QLabel>("estimate")->text().contains(" periods x 5 widths"), dispersion);
    }
    type("points", "10000");
    QCOMPARE(longest->text(), QString("12.4")); // of 124.9 s
    find<QSpinBox>("fpmin")->setValue(20);
    QCOMPARE(longest->text(), QString("6.24"));
    type("period_max", "5");
    find<QSpinBox>("fpmin")->setValue(10);
    QCOMPARE(longest->text(), QString("5"));
}

void TestFfaForm::wholeFactorsAreNamedAndAvoided()
{
    new FfaForm(file(pulses), window.get());
    const QLabel *const warning = find<QLabel>("wholeFactors");
    QPushButton *const offer = find<QPushButton>("withoutWholeFactors");
    QLineEdit *const shortest = find<QLineEdit>("period_min");
    QVERIFY(warning->isHidden() && offer->isHidden());
    shortest->setText("1.499136"); // 3 x 40 x the step
    QVERIFY(!warning->isHidden() && !offer->isHidden());
    QVERIFY2(warning->text().contains("1.4991 to 3.0358 s (1.3 times)"),
             qPrintable(warning->text()));
    QVERIFY(search()); // all the same, and says so
    QVERIFY(find<QLabel>("noiseMaximum")->text().contains(warning->text()));
    offer->click();
    QCOMPARE(shortest->text(), QString("1.499"));
    QVERIFY(warning->isHidden() && offer->isHidden());
    shortest->setText("x");
    QVERIFY(warning->isHidden());
}

void TestFfaForm::searchFoldsAndSaves()
{
    new FfaForm(file(pulses), window.get());
    click("pushButton"); // in ray 1, which has no pulses; the newest search counts
    find<QSpinBox>("ray")->setValue(2);
    QTest::keyClick(find<QLineEdit>("firstPoint"), Qt::Key_Return);
    QVERIFY(isDone());
    const double truth = period * 2 * M_PI / 6.283; // the generator's two pi is short
    QVERIFY2(std::abs(cell(0, "period, s").toDouble() - truth) < 4e-4,
             qPrintable(cell(0, "period, s")));
    const auto periodAt = [&](int index) { return shown().x.values.at(std::size_t(index)); };
    const std::vector<int> markers = shown().markers;
    QCOMPARE(markers.size(), std::size_t(4));
    QVERIFY(std::abs(periodAt(markers[0]) / (0.5 * truth) - 1) < 1e-3);
    QVERIFY(std::abs(periodAt(markers[3]) / (3 * truth) - 1) < 1e-3);

    // A row folds, a click near a peak folds there and selects its row, refining says how well.
    const QLabel *const foldText = find<QLabel>("foldText");
    auto *const table = find<QTableView>("candidates");
    const auto goTo = [table](int row) { table->setCurrentIndex(table->model()->index(row, 0)); };
    goTo(1);
    QVERIFY2(foldText->text().contains(cell(1, "period, s")), qPrintable(foldText->text()));
    emit find<PulsarGrafik>("grafik")->clicked({markers[1] + 1.0, 5});
    QVERIFY2(foldText->text().contains(cell(0, "period, s")), qPrintable(foldText->text()));
    QCOMPARE(table->currentIndex().row(), 0);
    click("refineButton");
    QVERIFY(isDone());
    // The noise differs from run to run: five times the error is never passed.
    const QRegularExpression refined("Period ([0-9.]+) \\+- ([0-9.]+) s");
    const QRegularExpressionMatch match = refined.match(foldText->text());
    const double error = match.captured(2).toDouble();
    QVERIFY2(error > 0 && error < 1e-4, qPrintable(foldText->text()));
    QVERIFY2(std::abs(match.captured(1).toDouble() - truth) < 5 * error,
             qPrintable(foldText->text()));

    // The row has the refined period now, and gives it when it is chosen again.
    QCOMPARE(cell(0, "period, s"), match.captured(1));
    QCOMPARE(cell(0, "error, s"), match.captured(2));
    QCOMPARE(cell(1, "error, s"), QString("-"));
    goTo(1);
    goTo(0);
    QVERIFY2(foldText->text().contains(match.captured(0)), qPrintable(foldText->text()));

    // The fold as numbers: a line per bin, with the bands beside it once they are wanted.
    QCOMPARE(copiedProfile()[1].split('\t').size(), 2);
    click("byFrequency");
    QTRY_COMPARE(copiedProfile()[1].split('\t').size(), 2 + 32);
    QVERIFY(copiedProfile()[0].contains(" MHz"));

    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    const QStringList copied = QApplication::clipboard()->text().split('\n');
    QCOMPARE(copied.size(), 3); // titles, the selected row and its end
    QVERIFY(copied[1].startsWith("1\t" + match.captured(1) + "\t" + match.captured(2) + "\t"));

    const QString text = savedTable();
    QVERIFY2(text.contains("module: 4, ray: 2") && text.contains("\n" + copied[1] + "\n"),
             qPrintable(text));
}

// Wherever the focus is: Esc stops, what is shown stays, and the next search runs.
void TestFfaForm::escapeStopsTheSearch()
{
    const QPointer<FfaForm> form = new FfaForm(file(pulses), window.get());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QTRY_VERIFY(form->isVisible());
    find<QSpinBox>("ray")->setValue(2);
    click("pushButton");
    QVERIFY(Settings::instance()->progressBar()->isVisible());
    QVERIFY(find<QMenuBar>("menubar")->isEnabled());
    QTest::keyClick(find<PulsarGrafik>("grafik"), Qt::Key_Escape);
    QVERIFY(isDone());
    QCOMPARE(candidates()->rowCount(), 0);
    QVERIFY(search());
    const int found = candidates()->rowCount();
    QVERIFY(found > 0);
    click("refineButton");
    QTest::keyClick(find<QTableView>("candidates"), Qt::Key_Escape);
    QVERIFY(isDone());
    QCOMPARE(cell(0, "error, s"), QString("-"));
    QCOMPARE(candidates()->rowCount(), found);
    QVERIFY(find<QPushButton>("refineButton")->isEnabled());
}

void TestFfaForm::formGoesWhileSearching()
{
    for (const bool isWindow : {false, true}) {
        const QPointer<FfaForm> form = new FfaForm(file(pulses), window.get());
        click("pushButton");
        QVERIFY(Settings::instance()->progressBar()->isVisible());
        if (isWindow) {
            window.reset();
        } else {
            new CalculatorForm(window.get());
            QVERIFY(Settings::instance()->progressBar()->isHidden());
        }
        QVERIFY(!form);
        QCoreApplication::processEvents(); // whatever the search sent comes too late
    }
}

void TestFfaForm::realRecordings()
{
    for (const auto &[name, truth, tolerance] : {std::tuple("b0329_54_1427MHz.pnt", 0.71457, 2e-5),
                                                 {"j1807_0847_820MHz.pnt", 0.16372, 2e-5},
                                                 {"b1508_55_1422MHz.pnt", 0.73968, 6.2e-5}}) {
        const QString path = TestSupport::realRecording(name);
        if (path.isEmpty())
            QSKIP("there is no such recording in ../shared/data");
        new FfaForm(path, window.get());
        QVERIFY(search());
        QVERIFY2(std::abs(cell(0, "period, s").toDouble() - truth) < tolerance,
                 qPrintable(cell(0, "period, s")));
        QCOMPARE(cell(0, "remark"), QString());
        bool hums = false;
        for (int row = 0; row < candidates()->rowCount(); ++row)
            hums = hums || cell(row, "remark").contains("mains");
        QCOMPARE(hums, path.contains("b1508"));
    }
}

ZRT_GUI_TEST_MAIN(TestFfaForm)
#include "tst_ffaform.moc"
