#include "app/mainwindow.h"
#include "forms/pulsar/pulsarform.h"
#include "plot/pulsargrafik.h"
#include "support/batchfolder.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <cmath>
#include <random>

namespace {

// A sine in noise, so that spectra have a line and curves fill columns.
float sample(int point, int, int channel, int)
{
    static std::minstd_rand random(7);
    return float(10 + channel + std::sin(2 * M_PI * 100 * point / 16384) + random() % 1000 / 500.0);
}

// Which program drew it and from what stands in a file beside the drawing.
QString drawingOf(const QByteArray &svg)
{
    return QString::fromUtf8(svg).remove(QRegularExpression(
        "<(title|desc)>.*</\\1>\n", QRegularExpression::DotMatchesEverythingOption |
                                        QRegularExpression::InvertedGreedinessOption));
}

} // namespace

/// What a form saves is what the batch program makes of the command that the form copies.
class TestSamePictures : public TestSupport::BatchFolder {
    Q_OBJECT

private slots:
    void initTestCase();
    void pulsarForm_data();
    void pulsarForm();

private:
    MainWindow window;
    PulsarGrafik *grafik = nullptr;
};

void TestSamePictures::initTestCase()
{
    window.resize(1100, 700);
    window.show();
    const QByteArray bytes = TestSupport::recordingBytes({40000, 1, 33, 1}, sample);
    new PulsarForm(TestSupport::writeFile(folder, "x.pnt", bytes), &window);
    window.findChild<QSpinBox *>("ray")->setValue(1);
    window.findChild<QLineEdit *>("firstPoint")->setText("1000");
    window.findChild<QLineEdit *>("dispersion")->setText("5");
    window.findChild<QLineEdit *>("period")->setText("2.5");
    window.findChild<QSpinBox *>("harmonicNum")->setValue(200);
    grafik = window.findChild<PulsarGrafik *>();
    QVERIFY(grafik);
    QCoreApplication::processEvents();
}

void TestSamePictures::pulsarForm_data()
{
    QTest::addColumn<QString>("action");
    for (const char *const action :
         {"showNative", "sumPeriod", "sumChannelsDemoNoise", "sumChannelsAndFourier",
          "sum4Dispersions", "sumAllDispersions"})
        QTest::newRow(action) << action;
}

void TestSamePictures::pulsarForm()
{
    QFETCH(QString, action);
    window.findChild<QRadioButton *>(action)->click();
    QVERIFY(!grafik->data().messageMode);
    window.findChild<QPushButton *>("commandButton")->click();
    const QString command = QGuiApplication::clipboard()->text();
    for (const QString kind : {"png", "svg"}) {
        QCOMPARE(grafik->savePicture(path("form." + kind)), QString());
        const QString size = QString("%1x%2@3").arg(grafik->width()).arg(grafik->height());
        const TestSupport::Ended ended = runShell(command + " --quiet --force --plot " + kind +
                                                  " --size " + size + " --tag " + action);
        QVERIFY2(ended.code == 0, qPrintable(command + ": " + ended.errors));
        const QStringList made = QDir(folder.path()).entryList({"x.pnt.*." + action + "." + kind});
        QCOMPARE(made.size(), 1);
        if (kind == "png")
            QVERIFY2(QImage(path(made[0])) == QImage(path("form.png")), qPrintable(command));
        else
            QVERIFY2(drawingOf(TestSupport::contentOf(path(made[0]))) ==
                         drawingOf(TestSupport::contentOf(path("form.svg"))),
                     qPrintable(command));
    }
    QCOMPARE(QImage(path("form.png")).width(), 3 * grafik->width());
}

ZRT_GUI_TEST_MAIN(TestSamePictures)
#include "tst_samepictures.moc"
