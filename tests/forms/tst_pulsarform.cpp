#include "app/shell/channelswitches.h"
#include "app/shell/settings.h"
#include "forms/pulsar/pulsarform.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QTimer>
#include <cmath>

using TestSupport::MessageBoxCatcher;
using TestSupport::Shape;

namespace {

constexpr Shape longShape = {40000, 1, 33, 1};

// Every band holds the same sine of amplitude 1 in bin 100 of 16384 points and a level.
float sineSample(int point, int, int, int)
{
    return float(10 + std::sin(2 * M_PI * 100 * point / 16384));
}

} // namespace

class TestPulsarForm : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void refusedFiles();
    void spectrum();
    void channelsAreLeftOutWhenAskedFor();
    void foldsAllBands();
    void everyMethodRecomputes();
    void fourDispersions();
    void refusalsKeepThePicture();
    void allFaultsInOneBox();
    void presetsSuitTheRecording();
    void badNumberCountsAsZero();
    void refusedNumberRunsNothing();
    void endsWithTheData();
    void harmonicOfThePeriod();
    void copiesTheCommand();
    void readingIsStopped();

private:
    /// Opens the form on a recording of sines, or another one, with ray 1 and first point 0.
    PulsarForm *openForm() { return openForm(sines); }
    PulsarForm *openForm(const QByteArray &bytes);

    const QByteArray sines = TestSupport::recordingBytes(longShape, sineSample);
};

PulsarForm *TestPulsarForm::openForm(const QByteArray &bytes)
{
    auto *const form = new PulsarForm(file(bytes), window.get());
    find<QSpinBox>("ray")->setValue(1);
    type("firstPoint", "0");
    return form;
}

void TestPulsarForm::refusedFiles()
{
    const QString noData = "Bad file!\nFile without data";
    const auto silence = [](int points) {
        return TestSupport::recordingBytes({points, 1, 2, 1},
                                           [](int, int, int, int) { return 0.0f; });
    };
    const QByteArray tooLarge =
        TestSupport::passportBytes({"npoints 2000000000", "nbands 2000", "modulus 1 2 3 4 5 6",
                                    "rays 1000", "tresolution 12.4928"});
    for (const auto &[bytes, text] :
         {std::pair(QByteArray(), noData),
          {tooLarge, noData},
          {silence(39999), "Bad file!\nFile with short data, must be long data"},
          {silence(40000), QString()}}) {
        const MessageBoxCatcher catcher;
        const QPointer<PulsarForm> form = new PulsarForm(file(bytes), window.get());
        QCOMPARE(catcher.lastText(), text);
        QCOMPARE(Settings::instance()->ui().centralwidget->layout() == nullptr, !text.isEmpty());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY2(form.isNull() == !text.isEmpty(), "a refused form deletes itself");
    }
}

void TestPulsarForm::spectrum()
{
    openForm();
    const MessageBoxCatcher catcher;
    click("pushButton");
    QCOMPARE(catcher.lastText(), QString("Check Action!"));
    find<QSpinBox>("harmonicNum")->setValue(100);
    type("dispersion", "0");
    click("sumChannelsAndFourier");
    QCOMPARE(shown().graphs.size(), std::size_t(3));
    QCOMPARE(shown().numPoints, 8192);
    // 32 bands of amplitude 1; the polynomial takes a little of a sine with 100 periods.
    QVERIFY(std::abs(shown().graphs[0][100] - 32) < 0.5);
    // Bin 100 of 16384 steps of 12.4928 ms.
    QCOMPARE(shown().textX1(100), QString("0.4886 Hz"));
    QVERIFY2(report().contains("First harmonic:\nnum = 100\nvalue = 3"), qPrintable(report()));
    QVERIFY(report().contains("Harmonics >= 6 sigma"));
    find<QSpinBox>("maxSigma")->setValue(9);
    click("redrawMaxSigmaButton");
    QVERIFY2(report().contains("Harmonics >= 9 sigma"), qPrintable(report()));
}

void TestPulsarForm::channelsAreLeftOutWhenAskedFor()
{
    std::vector<bool> off(33, false);
    off[3] = off[20] = true;
    ChannelSwitches::save(file(sines), off);
    openForm();
    type("dispersion", "0");
    find<QAbstractButton>("noiseWithout")->setChecked(true);
    click("sumChannelsDemoNoise");
    QCOMPARE(shown().graphs[0][0], 320.0f);
    QVERIFY(!report().contains("left out"));
    click("leaveOutChannels");
    click("pushButton");
    QCOMPARE(shown().graphs[0][0], 300.0f);
    QVERIFY(report().contains("channels left out: 4, 21"));
    QVERIFY(shown().source.contains("channels left out: 4, 21"));
    click("commandButton");
    QCOMPARE(QGuiApplication::clipboard()->text(),
             "zrt-batch sum --ray 1 --dm 0 --first-point 0 --noise without --channels-off 4,21 " +
                 folder->filePath("x.pnt"));
}

// The switch beside "Sum period" folds the sum and shows the bands above it; other actions do not.
void TestPulsarForm::foldsAllBands()
{
    openForm();
    type("dispersion", "0");
    type("period", "1");
    const auto *const bands = find<QWidget>("bands");
    click("sumPeriodOfBands");
    QVERIFY2(shown().graphs.empty(), "no action is chosen");
    click("sumPeriod");
    QVERIFY(report().contains("Summation on period of the sum of the bands"));
    QVERIFY(!bands->isHidden());
    click("commandButton");
    QCOMPARE(QGuiApplication::clipboard()->text(),
             "zrt-batch fold --ray 1 --sum --dm 0 --period 1 --first-point 0 " +
                 folder->filePath("x.pnt"));
    click("sumPeriodOfBands");
    QVERIFY(!report().contains("sum of the bands"));
    QVERIFY(bands->isHidden());
}

void TestPulsarForm::everyMethodRecomputes()
{
    openForm();
    type("dispersion", "0");
    click("sumChannelsDemoNoise");
    QCOMPARE(shown().textX2(1000), QString("12:00:12.492"));
    for (const auto &[method, curves] : {std::pair("noiseBack", 3),
                                         {"noiseMedian", 2},
                                         {"noiseWithout", 1},
                                         {"noisePolinom5", 2}}) {
        click(method);
        QCOMPARE(int(shown().graphs.size()), curves);
    }
    click("withNormalization");
    QVERIFY2(shown().yUnit.isEmpty(), "the sum itself is not normalised");
    QVERIFY(shown().source.contains("base line: polinom5, not taken off, not normalised"));
    click("showDeductNoise");
    QCOMPARE(shown().graphs.size(), std::size_t(1));
    QVERIFY2(std::abs(shown().yMax - std::sqrt(2)) < 0.1, "a sine of sigma 1");
    QCOMPARE(shown().yUnit, QString("sigma"));
    for (const QString &line : shown().source.mid(1))
        QVERIFY2(report().contains("\n" + line), qPrintable(line));
    click("withNormalization");
    QVERIFY2(shown().yMax > 30 && shown().yMax < 40, "the level of 320 is off");
}

void TestPulsarForm::fourDispersions()
{
    openForm();
    find<QSpinBox>("harmonicNum")->setValue(100);
    type("dispersion", "10,0");
    click("sum4Dispersions");
    QCOMPARE(find<QLineEdit>("dispersion4")->text().toDouble(), 20.0);
    QVERIFY2(report().contains("\n2\n5.0\n"), qPrintable(report()));
    type("dispersion", "1 2 3 4");
    click("pushButton");
    QVERIFY2(report().contains("\n3\n3.0\n"), qPrintable(report()));
    type("dispersion2", "7,5");
    click("changeDispersionsButton");
    QVERIFY2(report().contains("\n2\n7.5\n"), qPrintable(report()));
}

void TestPulsarForm::refusalsKeepThePicture()
{
    const struct {
        const char *field;
        const char *value;
        const char *reason;
    } refusals[] = {
        // The sum takes 16384 points and one more must follow: 40000 - 16384 - 1.
        {"firstPoint", "23616", "Allowed: 0 to 23615"},
        {"firstPoint", "1e300", "Allowed: 0 to"},
        {"dispersion", "1e300", "beyond all bounds"},
        {"ray", "2", "Allowed: 1 to 1"},
        {"averageCount", "8", "too few for a spectrum"},
        {"harmonicNum", "8192", "Allowed: 0 to 8191"},
    };
    openForm();
    click("sumChannelsAndFourier");
    const QString before = report();
    const std::vector<std::vector<float>> curves = shown().graphs;
    for (const auto &[field, value, reason] : refusals) {
        auto *const widget = find<QWidget>(field);
        const QMetaProperty content = widget->metaObject()->userProperty();
        const QVariant preset = content.read(widget);
        content.write(widget, value);
        const MessageBoxCatcher catcher;
        click("pushButton");
        QVERIFY2(catcher.lastText().contains(reason), qPrintable(catcher.lastText()));
        QCOMPARE(catcher.boxes().size(), 1);
        QVERIFY2(isMarked(field), field);
        QCOMPARE(report(), before);
        QCOMPARE(shown().graphs, curves);
        content.write(widget, preset);
        click("pushButton");
        QVERIFY2(!isMarked(field) && catcher.boxes().size() == 1, field);
    }
}

// The box leaves every field at fault in sight.
void TestPulsarForm::allFaultsInOneBox()
{
    openForm();
    find<QSpinBox>("ray")->setValue(2);
    type("firstPoint", "30000");
    type("dispersion", "-1");
    const MessageBoxCatcher catcher;
    click("sumChannelsDemoNoise");
    QCOMPARE(catcher.boxes().size(), 1);
    for (const char *fault : {"Ray 2", "First point 30000", "Dispersion -1"})
        QVERIFY2(catcher.lastText().contains(fault), qPrintable(catcher.lastText()));
    for (const char *field : {"ray", "firstPoint", "dispersion"})
        QVERIFY2(isMarked(field), field);
    QVERIFY(window->focusWidget() == find<QSpinBox>("ray"));
}

// What the recording lacks gives way, which is said once; what it has stays.
void TestPulsarForm::presetsSuitTheRecording()
{
    new PulsarForm(file(sines), window.get()); // 40000 points of ray 1 from 12:00:00 on
    QCOMPARE(find<QSpinBox>("ray")->value(), 1);
    QCOMPARE(find<QLineEdit>("firstPoint")->text(), QString("0"));
    QCOMPARE(find<QLineEdit>("zrtUtc")->text(), QString("12:00:00"));
    for (const char *said : {"ray 1: ", "first point 0: ", "ZRT UTC 12:00:00: "})
        QVERIFY2(report().contains(said), qPrintable(report()));
    QCOMPARE(find<QLabel>("recording")->text(),
             QString("40000 points of 12.4928 ms, 499.712 s; 2015-04-01 12:00:00.000 UTC; "
                     "module 1, ray 1; 32 bands, 120 to 122.4219 MHz"));
    const MessageBoxCatcher catcher;
    click("sumChannelsDemoNoise");
    click("isZrtUtc");
    QCOMPARE(catcher.boxes().size(), 0);

    const QByteArray whole =
        TestSupport::recordingBytes({75000, 1, 2, 7}, [](int, int, int, int) { return 1.0f; });
    new PulsarForm(file(whole), window.get());
    QCOMPARE(find<QSpinBox>("ray")->value(), 7);
    QCOMPARE(find<QLineEdit>("firstPoint")->text(), QString("58000"));
    QCOMPARE(find<QLineEdit>("zrtUtc")->text(), QString("12:10:52"));
    QCOMPARE(report(), QString());
}

// A text that is no number counts as 0, which the report says first, in red.
void TestPulsarForm::badNumberCountsAsZero()
{
    openForm();
    type("dispersion", "1,234.5");
    type("firstPoint", "58,000");
    click("sumChannelsDemoNoise");
    QVERIFY2(report().startsWith("Dispersion: \"1,234.5\" counts as 0. Allowed: digits"),
             qPrintable(report()));
    QVERIFY2(report().contains("\nFirst point: \"58,000\" counts as 0. Allowed: a whole number.\n"),
             qPrintable(report()));
    QVERIFY2(report().contains("Dispersion = 0\n"), qPrintable(report()));
    const QTextDocument *const texts = &reportDocument();
    const auto colourOf = [&](const char *text) {
        return texts->find(text).charFormat().foreground().color();
    };
    QCOMPARE(colourOf("whole number"), QColor("#b00020"));
    QVERIFY(colourOf("Action:") != QColor("#b00020"));
    QVERIFY(isMarked("dispersion") && isMarked("firstPoint"));
    QCOMPARE(shown().numPoints, 16384);
    QGuiApplication::clipboard()->setText("before");
    const MessageBoxCatcher catcher;
    click("commandButton");
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
}

// What stands in a field with arrows runs only when it is a number.
void TestPulsarForm::refusedNumberRunsNothing()
{
    openForm();
    click("sumChannelsAndFourier");
    const QString before = report();
    for (const char *field : {"averageCount", "maxSigma"}) { // of the form and of its panel
        auto *const box = find<QSpinBox>(field);
        const int value = box->value();
        box->selectAll();
        QTest::keyClicks(box, "1,5");
        click("pushButton");
        QVERIFY(isMarked(field));
        QCOMPARE(report(), before);
        box->setValue(value);
    }
}

// The window names the last point that is there, and no action goes beyond it.
void TestPulsarForm::endsWithTheData()
{
    const MessageBoxCatcher catcher;
    openForm(sines.chopped(15000 * 33 * 4 - 7)); // 24999 of 40000 points and most of one more
    QVERIFY(catcher.lastText().startsWith("File size is incorrect"));
    QVERIFY(!find<QLabel>("dataEnd")->isHidden());
    QCOMPARE(find<QLabel>("dataEnd")->text(),
             QString("The data end at point 24999, 12:05:12.307 UTC, of 40000 points announced."));
    type("firstPoint", "8616"); // 25000 - 16384
    click("sumChannelsAndFourier");
    QVERIFY2(catcher.lastText().contains("Allowed: 0 to 8615"), qPrintable(catcher.lastText()));
    find<QAbstractButton>("isZrtUtc")->setChecked(true);
    type("zrtUtc", "12:05:13");
    click("pushButton");
    QVERIFY2(catcher.lastText().contains("to 12:05:12.307"), qPrintable(catcher.lastText()));
}

void TestPulsarForm::harmonicOfThePeriod()
{
    openForm();
    auto *const number = find<QSpinBox>("harmonicNum");
    type("period", "2.0469"); // 16384 x 12.4928 ms / 100
    click("harmonicOfPeriod");
    QCOMPARE(number->value(), 100);
    find<QAbstractButton>("averageWithNull")->setChecked(true);
    click("harmonicOfPeriod");
    QCOMPARE(number->value(), 200);
    const MessageBoxCatcher catcher;
    type("period", "500");
    click("harmonicOfPeriod");
    QCOMPARE(number->value(), 200);
    QVERIFY(isMarked("period"));
    QVERIFY2(catcher.lastText().contains("Allowed: more than 0.0249856 s, up to 204.682 s"),
             qPrintable(catcher.lastText()));
}

// What "Run" computes is what the command computes, changed points included.
void TestPulsarForm::copiesTheCommand()
{
    openForm();
    click("showNative");
    type("zrtUtc", "12:00:01");
    click("isZrtUtc");
    find<QSpinBox>("points")->setValue(600);
    click("changePointsButton");
    QCOMPARE(shown().graphs[0].size(), std::size_t(600));
    click("noiseMedian");
    click("commandButton");
    QCOMPARE(QGuiApplication::clipboard()->text(),
             "zrt-batch native --ray 1 --utc 12:00:01 --count 600 --noise median " +
                 folder->filePath("x.pnt"));
    click("resetPointsButton");
    QCOMPARE(shown().numPoints, 40000 - 80); // a second takes 80 steps
}

void TestPulsarForm::readingIsStopped()
{
    const int points = 400000; // take longer to read than one look at the pending events
    const QString path = file(TestSupport::passportBytes({"npoints " + QByteArray::number(points),
                                                          "nbands 32", "modulus 1", "rays 1"}) +
                              QByteArray(points * 33 * int(sizeof(float)), '\0'));
    for (const bool isClosed : {false, true}) {
        const MessageBoxCatcher catcher;
        // Sent while the reading lets events through.
        QTimer::singleShot(0, window.get(), [this, isClosed] {
            if (isClosed)
                window->close();
            else
                QTest::keyClick(window.get(), Qt::Key_Escape);
        });
        const QPointer<PulsarForm> form = new PulsarForm(path, window.get());
        QTRY_VERIFY(!form);
        QCOMPARE(catcher.boxes().size(), 0);
        QTRY_COMPARE(window->isVisible(), !isClosed);
        QVERIFY(Settings::instance()->ui().menubar->isEnabled());
    }
}

ZRT_GUI_TEST_MAIN(TestPulsarForm)
#include "tst_pulsarform.moc"
