#include "app/mainwindow.h"
#include "app/shell/channelswitches.h"
#include "app/shell/settings.h"
#include "forms/pulsar/pulsarform.h"
#include "plot/pulsargrafik.h"
#include "plot/pulsargrafikinfo.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTimer>
#include <cmath>

using TestSupport::MessageBoxCatcher;
using TestSupport::Shape;

namespace {

constexpr char failing[] = "background-color: #f4cccc;";
constexpr Shape longShape = {40000, 1, 33, 1};

// Every band holds the same sine of amplitude 1 in bin 100 of 16384 points and a level.
float sineSample(int point, int, int, int)
{
    return float(10 + std::sin(2 * M_PI * 100 * point / 16384));
}

} // namespace

class TestPulsarForm : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void refusedFiles_data();
    void refusedFiles();
    void actionIsNeeded();
    void spectrum();
    void channelsAreLeftOutWhenAskedFor();
    void everyMethodRecomputes();
    void fourDispersions();
    void refusals_data();
    void refusals();
    void refusalKeepsThePicture();
    void decimalMarks();
    void badNumberCountsAsZero();
    void refusedNumberRunsNothing();
    void stopsAtTheEnd();
    void endsWithTheData();
    void samplesThatAreNoNumbers();
    void changedPoints();
    void harmonicOfThePeriod();
    void reportsTellWhatTheyAreOf();
    void copiesTheCommand();
    void escapeStopsReading();
    void closingStopsReading();

private:
    QString file(const QByteArray &bytes);
    /// Opens the form on a recording of sines, or another one, with ray 1 and first point 0.
    PulsarForm *openForm() { return openForm(sines); }
    PulsarForm *openForm(const QByteArray &bytes);
    template <typename Widget>
    Widget *find(const char *name) const
    {
        Widget *const widget = window->findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    /// A recording that takes longer to read than one look at the pending events.
    QByteArray longReading() const;
    void type(const char *field, const QString &text);
    QString report() const { return find<QPlainTextEdit>("texts")->toPlainText(); }

    QByteArray sines; // a recording of sines
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<MainWindow> window;
};

void TestPulsarForm::initTestCase()
{
    sines = TestSupport::recordingBytes(longShape, sineSample);
}

void TestPulsarForm::init()
{
    folder = std::make_unique<QTemporaryDir>();
    window = std::make_unique<MainWindow>();
    window->show();
}

void TestPulsarForm::cleanup()
{
    window.reset();
    folder.reset();
}

QString TestPulsarForm::file(const QByteArray &bytes)
{
    return TestSupport::writeFile(*folder, "x.pnt", bytes);
}

PulsarForm *TestPulsarForm::openForm(const QByteArray &bytes)
{
    auto *const form = new PulsarForm(file(bytes), window.get());
    find<QSpinBox>("ray")->setValue(1);
    type("firstPoint", "0");
    return form;
}

QByteArray TestPulsarForm::longReading() const
{
    const int points = 400000;
    QByteArray bytes = TestSupport::passportBytes(
        {"npoints " + QByteArray::number(points), "nbands 32", "modulus 1", "rays 1"});
    bytes.append(points * 33 * int(sizeof(float)), '\0');
    return bytes;
}

void TestPulsarForm::type(const char *field, const QString &text)
{
    QLineEdit *const edit = find<QLineEdit>(field);
    edit->clear();
    QTest::keyClicks(edit, text);
}

void TestPulsarForm::refusedFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const QString noData = "Bad file!\nFile without data";
    const QString shortData = "Bad file!\nFile with short data, must be long data";
    const auto zero = [](int, int, int, int) { return 0.0f; };
    QTest::newRow("empty") << QByteArray() << noData;
    QTest::newRow("text without a number") << QByteArray("hello\nworld\n") << noData;
    QTest::newRow("no modules") << TestSupport::passportBytes({"npoints 50000", "nbands 32"})
                                << noData;
    QTest::newRow("too large for any machine")
        << TestSupport::passportBytes({"npoints 2000000000", "nbands 2000", "modulus 1 2 3 4 5 6",
                                       "rays 1000", "tresolution 12.4928"})
        << noData;
    QTest::newRow("39999 points") << TestSupport::recordingBytes({39999, 1, 2, 1}, zero)
                                  << shortData;
    QTest::newRow("40000 points") << TestSupport::recordingBytes({40000, 1, 2, 1}, zero)
                                  << QString();
}

void TestPulsarForm::refusedFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const MessageBoxCatcher catcher;
    const QPointer<PulsarForm> form = new PulsarForm(file(bytes), window.get());
    QCOMPARE(catcher.boxes().size(), text.isEmpty() ? 0 : 1);
    QCOMPARE(Settings::instance()->ui().centralwidget->layout() == nullptr, !text.isEmpty());
    if (text.isEmpty())
        return;
    QCOMPARE(catcher.boxes()[0].title, QString("Error"));
    QCOMPARE(catcher.boxes()[0].text, text);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY2(!form, "a refused form deletes itself");
}

void TestPulsarForm::actionIsNeeded()
{
    openForm();
    const MessageBoxCatcher catcher;
    QTest::mouseClick(find<QPushButton>("pushButton"), Qt::LeftButton);
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(catcher.boxes()[0].text, QString("Check Action!"));
}

void TestPulsarForm::spectrum()
{
    openForm();
    find<QSpinBox>("harmonicNum")->setValue(100);
    type("dispersion", "0");
    find<QRadioButton>("sumChannelsAndFourier")->click();
    const PlotData &plot = find<PulsarGrafik>("grafik")->data();
    QCOMPARE(plot.graphs.size(), std::size_t(3));
    QCOMPARE(plot.numPoints, 8192);
    // 32 bands of amplitude 1; the polynomial takes a little of a sine with 100 periods.
    QVERIFY(std::abs(plot.graphs[0][100] - 32) < 0.5);
    // Bin 100 of 16384 steps of 12.4928 ms.
    QCOMPARE(plot.textX1(100), QString("0.4886 Hz"));
    QVERIFY2(report().contains("\n100: 3"), qPrintable(report()));
    QVERIFY2(report().contains("First harmonic:\nnum = 100\nvalue = 3"), qPrintable(report()));
    QVERIFY(report().contains("Harmonics >= 6 sigma"));
    find<QSpinBox>("maxSigma")->setValue(9);
    find<QPushButton>("redrawMaxSigmaButton")->click();
    QVERIFY2(report().contains("Harmonics >= 9 sigma"), qPrintable(report()));
}

void TestPulsarForm::channelsAreLeftOutWhenAskedFor()
{
    std::vector<bool> off(33, false);
    off[3] = off[20] = true;
    ChannelSwitches::save(file(sines), off);
    openForm();
    type("dispersion", "0");
    find<QRadioButton>("noiseWithout")->setChecked(true);
    find<QRadioButton>("sumChannelsDemoNoise")->click();
    const PlotData &plot = find<PulsarGrafik>("grafik")->data();
    QCOMPARE(plot.graphs[0][0], 320.0f);
    QVERIFY(!report().contains("left out"));
    find<QCheckBox>("leaveOutChannels")->click();
    find<QPushButton>("pushButton")->click();
    QCOMPARE(plot.graphs[0][0], 300.0f);
    QVERIFY(report().contains("channels left out: 4, 21"));
    QVERIFY(plot.source.contains("channels left out: 4, 21"));
}

void TestPulsarForm::everyMethodRecomputes()
{
    openForm();
    type("dispersion", "0");
    find<QRadioButton>("sumChannelsDemoNoise")->click();
    const PlotData &plot = find<PulsarGrafik>("grafik")->data();
    QCOMPARE(plot.graphs.size(), std::size_t(2));
    QCOMPARE(plot.textX2(1000), QString("12:00:12.492"));
    find<QRadioButton>("noiseBack")->click();
    QCOMPARE(plot.graphs.size(), std::size_t(3));
    QVERIFY(report().contains("Linear approximation of back sum"));
    find<QRadioButton>("noiseMedian")->click();
    QCOMPARE(plot.graphs.size(), std::size_t(2));
    find<QRadioButton>("noiseWithout")->click();
    QCOMPARE(plot.graphs.size(), std::size_t(1));
    QVERIFY(report().contains("Withow deduct noise base line"));
    QCOMPARE(plot.graphs[0][0], 320.0f);

    find<QRadioButton>("noisePolinom5")->click();
    find<QCheckBox>("showDeductNoise")->click();
    QCOMPARE(plot.graphs.size(), std::size_t(1));
    QVERIFY2(plot.yMax < 40, "the level of 320 is off");
    find<QCheckBox>("withNormalization")->click();
    QVERIFY2(std::abs(plot.yMax - std::sqrt(2)) < 0.1, "a sine of sigma 1");
}

void TestPulsarForm::fourDispersions()
{
    openForm();
    find<QSpinBox>("harmonicNum")->setValue(100);
    type("dispersion", "10");
    find<QRadioButton>("sum4Dispersions")->click();
    QCOMPARE(find<QLineEdit>("dispersion4")->text().toDouble(), 20.0);
    QVERIFY2(report().contains("\ndisp2 = 5.0 value = "), qPrintable(report()));

    type("dispersion", "1 2 3 4");
    find<QPushButton>("pushButton")->click();
    QVERIFY2(report().contains("\ndisp3 = 3.0 value = "), qPrintable(report()));

    type("dispersion2", "7,5");
    find<QPushButton>("changeDispersionsButton")->click();
    QVERIFY2(report().contains("\ndisp2 = 7.5 value = "), qPrintable(report()));

    type("dispersion2", "-1");
    find<QPushButton>("changeDispersionsButton")->click();
    QCOMPARE(find<QLineEdit>("dispersion2")->styleSheet(), QString(failing));
}

void TestPulsarForm::refusals_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("reason");
    // The sum takes 16384 points and one more must follow: 40000 - 16384 - 1.
    QTest::newRow("first point too late") << QByteArray("firstPoint") << "23616"
                                          << "Allowed: 0 to 23615";
    QTest::newRow("first point negative") << QByteArray("firstPoint") << "-1"
                                          << "Allowed: 0 to";
    QTest::newRow("first point beyond an int") << QByteArray("firstPoint") << "1e300"
                                               << "Allowed: 0 to";
    QTest::newRow("negative dispersion") << QByteArray("dispersion") << "-1"
                                         << "0 pc/cm^3";
    QTest::newRow("dispersion beyond all delays") << QByteArray("dispersion") << "1e300"
                                                  << "beyond all bounds";
    QTest::newRow("module") << QByteArray("module") << "2"
                            << "Allowed: 1 to 1";
    QTest::newRow("ray") << QByteArray("ray") << "2"
                         << "Allowed: 1 to 1";
    QTest::newRow("averaging") << QByteArray("averageCount") << "8"
                               << "too few for a spectrum";
    QTest::newRow("harmonic") << QByteArray("harmonicNum") << "8192"
                              << "Allowed: 0 to 8191";
}

void TestPulsarForm::refusals()
{
    openForm();
    QFETCH(QByteArray, field);
    QFETCH(QString, value);
    QFETCH(QString, reason);
    QWidget *const widget = find<QWidget>(field.constData());
    if (auto *const spin = qobject_cast<QSpinBox *>(widget))
        spin->setValue(value.toInt());
    else
        type(field.constData(), value);

    const MessageBoxCatcher catcher;
    find<QRadioButton>("sumChannelsAndFourier")->click();
    QCOMPARE(catcher.boxes().size(), 1);
    QVERIFY2(catcher.boxes()[0].text.contains(reason), qPrintable(catcher.boxes()[0].text));
    QCOMPARE(widget->styleSheet(), QString(failing));
}

void TestPulsarForm::refusalKeepsThePicture()
{
    openForm();
    find<QRadioButton>("sumChannelsAndFourier")->click();
    const QString before = report();
    const std::vector<std::vector<float>> curves = find<PulsarGrafik>("grafik")->data().graphs;
    type("firstPoint", "39999");
    const MessageBoxCatcher catcher;
    find<QRadioButton>("sum4Dispersions")->click();
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(report(), before);
    QCOMPARE(find<PulsarGrafik>("grafik")->data().graphs, curves);

    type("firstPoint", "0");
    find<QPushButton>("pushButton")->click();
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(find<QLineEdit>("firstPoint")->styleSheet(), QString());
}

void TestPulsarForm::decimalMarks()
{
    for (const char *locale : {"de_DE", "ru_RU"}) {
        QLocale::setDefault(QLocale(locale));
        openForm();
        for (const char *dispersion : {"26.76", "26,76"}) {
            type("dispersion", dispersion);
            find<QRadioButton>("sumChannelsDemoNoise")->click();
            QVERIFY2(report().startsWith("Calculation:"), qPrintable(report()));
            QVERIFY2(report().contains("Dispersion = 26.76\n"), qPrintable(report()));
        }
        type("zrtUtc", "12:00:01.5"); // point 120 of 12.4928 ms
        find<QRadioButton>("isZrtUtc")->click();
        QCOMPARE(find<PulsarGrafik>("grafik")->data().textX2(0), QString("12:00:01.499"));
    }
    QLocale::setDefault(QLocale::c());
}

// A text that is no number counts as 0, which the report says first, in red.
void TestPulsarForm::badNumberCountsAsZero()
{
    openForm();
    type("dispersion", "1,234.5");
    type("firstPoint", "58,000");
    find<QRadioButton>("sumChannelsDemoNoise")->click();
    QVERIFY2(report().startsWith("Dispersion: \"1,234.5\" counts as 0. Allowed: digits"),
             qPrintable(report()));
    QVERIFY2(report().contains("\nFirst point: \"58,000\" counts as 0. Allowed: a whole number.\n"),
             qPrintable(report()));
    QVERIFY2(report().contains("Dispersion = 0\n"), qPrintable(report()));
    const QTextDocument *const texts = find<QPlainTextEdit>("texts")->document();
    const auto colourOf = [&](const char *text) {
        return texts->find(text).charFormat().foreground().color();
    };
    QCOMPARE(colourOf("whole number"), QColor("#b00020"));
    QVERIFY(colourOf("Action:") != QColor("#b00020"));
    for (const char *field : {"dispersion", "firstPoint"})
        QCOMPARE(find<QLineEdit>(field)->styleSheet(), QString(failing));
    QCOMPARE(find<PulsarGrafik>("grafik")->data().numPoints, 16384);
    QGuiApplication::clipboard()->setText("before");
    const MessageBoxCatcher catcher;
    find<QPushButton>("commandButton")->click();
    QCOMPARE(catcher.boxes().size(), 1);
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
}

// What stands in a field with arrows runs only when it is a number.
void TestPulsarForm::refusedNumberRunsNothing()
{
    openForm();
    find<QRadioButton>("sumChannelsAndFourier")->click();
    const QString before = report();
    for (const char *field : {"averageCount", "maxSigma"}) {
        auto *const box = find<QSpinBox>(field);
        const int value = box->value();
        box->selectAll();
        QTest::keyClicks(box, "1,5");
        find<QPushButton>("pushButton")->click();
        QCOMPARE(box->styleSheet(), QString(failing));
        QCOMPARE(report(), before);
        box->setValue(value);
    }
}

void TestPulsarForm::stopsAtTheEnd()
{
    openForm();
    type("firstPoint", "23615");
    type("dispersion", "26.2");
    find<QRadioButton>("sumChannelsDemoNoise")->click();
    QVERIFY2(report().contains("of the 32 bands whole"), qPrintable(report()));
}

// The window names the last point that is there, and no action goes beyond it.
void TestPulsarForm::endsWithTheData()
{
    MessageBoxCatcher catcher;
    openForm(sines.chopped(15000 * 33 * 4 - 7)); // 24999 of 40000 points and most of one more
    QVERIFY(catcher.boxes().value(0).text.startsWith("File size is incorrect"));
    QVERIFY(!find<QLabel>("dataEnd")->isHidden());
    QCOMPARE(find<QLabel>("dataEnd")->text(),
             QString("The data end at point 24999, 12:05:12.307 UTC, of 40000 points announced."));
    type("period", "1");
    find<QRadioButton>("sumPeriod")->click();
    QVERIFY2(report().contains("\nNumber of points = 25000\n"), qPrintable(report()));
    type("firstPoint", "8616"); // 25000 - 16384
    find<QRadioButton>("sumChannelsAndFourier")->click();
    QVERIFY2(catcher.boxes().last().text.contains("Allowed: 0 to 8615"),
             qPrintable(catcher.boxes().last().text));
    find<QRadioButton>("isZrtUtc")->setChecked(true);
    type("zrtUtc", "12:05:13");
    find<QPushButton>("pushButton")->click();
    QVERIFY2(catcher.boxes().last().text.contains("to 12:05:12.307"),
             qPrintable(catcher.boxes().last().text));
}

void TestPulsarForm::samplesThatAreNoNumbers()
{
    const auto bytes = TestSupport::recordingBytes(longShape, [](int p, int, int c, int) {
        return c == 2 || (c == 4 && p == 100) ? NAN : sineSample(p, 0, c, 0);
    });
    MessageBoxCatcher catcher;
    PulsarForm *const form = openForm(bytes);
    find<QRadioButton>("sumChannelsAndFourier")->click();
    QVERIFY2(catcher.boxes().value(0).text.startsWith("Channel 3 holds no finite number"),
             qPrintable(catcher.boxes().value(0).text));
    find<QSpinBox>("channel")->setValue(5);
    find<QRadioButton>("showNative")->click();
    QVERIFY2(report().contains("1 sample is no finite number: channel 5 at point 100."),
             qPrintable(report()));
    QVERIFY(std::isnan(find<PulsarGrafik>("grafik")->data().graphs[0][100]));
    QVERIFY(form->isVisible());
}

void TestPulsarForm::changedPoints()
{
    openForm();
    find<QRadioButton>("sumChannelsDemoNoise")->click();
    const PlotData &plot = find<PulsarGrafik>("grafik")->data();
    QSpinBox *const points = find<PulsarGrafikInfo>("info")->findChild<QSpinBox *>("points");
    points->setValue(1000);
    find<QPushButton>("changePointsButton")->click();
    QCOMPARE(plot.numPoints, 1000);
    QCOMPARE(plot.graphs[0].size(), std::size_t(1000));
    find<QPushButton>("resetPointsButton")->click();
    QCOMPARE(plot.numPoints, 16384);
}

void TestPulsarForm::harmonicOfThePeriod()
{
    openForm();
    auto *const button = find<QPushButton>("harmonicOfPeriod");
    auto *const number = find<QSpinBox>("harmonicNum");
    type("period", "2.0469"); // 16384 x 12.4928 ms / 100
    button->click();
    QCOMPARE(number->value(), 100);
    find<QCheckBox>("averageWithNull")->setChecked(true);
    button->click();
    QCOMPARE(number->value(), 200);
    const MessageBoxCatcher catcher;
    for (const char *const beyond : {"500", "0.02", "0", "x"}) {
        type("period", beyond);
        button->click();
        QCOMPARE(number->value(), 200);
        QCOMPARE(find<QLineEdit>("period")->styleSheet(), QString(failing));
        QVERIFY2(
            catcher.boxes().last().text.contains("Allowed: more than 0.0249856 s, up to 204.682 s"),
            qPrintable(catcher.boxes().last().text));
    }
}

void TestPulsarForm::reportsTellWhatTheyAreOf()
{
    openForm();
    find<QCheckBox>("withNormalization")->setChecked(true);
    find<QRadioButton>("sumChannelsDemoNoise")->click();
    const PlotData &plot = find<PulsarGrafik>("grafik")->data();
    QVERIFY2(plot.yUnit.isEmpty(), "the sum itself is not normalised");
    QVERIFY(plot.source.contains("base line: polinom5, not taken off, not normalised"));
    QCOMPARE(report().count("Channel:"), 1);
    find<QCheckBox>("showDeductNoise")->click();
    QCOMPARE(plot.yUnit, QString("sigma"));
    for (const QString &line : plot.source.mid(1))
        QVERIFY2(report().contains("\n" + line), qPrintable(line));
    QVERIFY(plot.source.contains("points: 16384 from first point 0 on, step 12.4928 ms"));
}

void TestPulsarForm::copiesTheCommand()
{
    openForm();
    find<QRadioButton>("showNative")->click();
    type("zrtUtc", "12:00:01");
    find<QRadioButton>("isZrtUtc")->click();
    find<QSpinBox>("points")->setValue(600);
    find<QPushButton>("changePointsButton")->click();
    find<QRadioButton>("noiseMedian")->click();
    find<QPushButton>("commandButton")->click();
    QCOMPARE(QGuiApplication::clipboard()->text(),
             "zrt-batch native --ray 1 --utc 12:00:01 --count 600 --noise median " +
                 folder->filePath("x.pnt"));
}

void TestPulsarForm::escapeStopsReading()
{
    const QString path = file(longReading());
    const MessageBoxCatcher catcher;
    // Sent while the reading lets events through.
    QTimer::singleShot(0, window.get(), [this] { QTest::keyClick(window.get(), Qt::Key_Escape); });
    const QPointer<PulsarForm> form = new PulsarForm(path, window.get());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!form);
    QCOMPARE(catcher.boxes().size(), 0);
    QVERIFY(Settings::instance()->ui().menubar->isEnabled());
    QVERIFY2(openForm(), "the window is still usable");
}

void TestPulsarForm::closingStopsReading()
{
    const QString path = file(longReading());
    const MessageBoxCatcher catcher;
    QTimer::singleShot(0, window.get(), &QWidget::close);
    const QPointer<PulsarForm> form = new PulsarForm(path, window.get());
    QCOMPARE(catcher.boxes().size(), 0);
    QTRY_VERIFY(!window->isVisible());
    QVERIFY(!form);
}

ZRT_GUI_TEST_MAIN(TestPulsarForm)
#include "tst_pulsarform.moc"
