#include "forms/native/bandpassview.h"
#include "forms/native/nativegrafik.h"
#include "forms/native/overviewstrip.h"
#include "forms/native/waterfallview.h"
#include "plot/picturemenu.h"
#include "support/formtest.h"
#include "support/testmain.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QProgressBar>
#include <QRadioButton>
#include <QTableView>
#include <cmath>
#include <unistd.h>

using TestSupport::Shape;

namespace {

// Noise of 0 to 2 and a pulse of 30 that reaches band c at point 3000 + delay at DM 60.
float sampleAt(int point, int /*module*/, int channel, int ray)
{
    const quint32 mixed = quint32(point * 33 + channel + ray) * 2654435761u;
    const double frequency = 120.0 + channel * 0.078125;
    const double delay =
        4148.8 * 60 * (std::pow(frequency, -2) - std::pow(122.421875, -2)) / 0.0124928;
    const bool isPulse = channel < 32 && point == 3000 + int(std::lround(delay));
    return float(mixed >> 22) / 512 + (isPulse ? 30.f : 0.f);
}

qint64 residentBytes()
{
    QFile status("/proc/self/statm");
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    return status.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

} // namespace

class TestNativeGrafik : public TestSupport::FormTest {
    Q_OBJECT

private slots:
    void passportPulseAndStatistics();
    void surroundingsOfAPoint();
    void viewAndSelectionSurviveChanges();
    void switchesAreRemembered();
    void burst();
    void unusualRecordings();
    void hugeRecordingInLittleMemory();

private:
    void open(const QString &path, int withoutStep = 1) const
    {
        new NativeGrafik(path, withoutStep, window.get());
    }
    bool isDrawn() const { return !shown().graphs.empty(); }

    QString statistics() const { return find<QLabel>("statistics")->text(); }
    // Index of the greatest value of the plot's first curve.
    int peak() const
    {
        const std::vector<float> &curve = shown().graphs[0];
        return int(std::max_element(curve.begin(), curve.end()) - curve.begin());
    }

    const QByteArray recording = TestSupport::recordingBytes({6000, 1, 33, 2}, sampleAt);
};

void TestNativeGrafik::passportPulseAndStatistics()
{
    open(file(recording + "tail"));
    QTRY_VERIFY(isDrawn());
    QCOMPARE(find<QTableView>("passport")->model()->rowCount(), 8);
    QVERIFY(find<QLabel>("fileSize")->text().contains("4 bytes more"));
    find<QDoubleSpinBox>("dispersion")->setValue(60);
    QTRY_COMPARE(peak(), 3000);
    QCOMPARE(shown().numPoints, 6000);
    QCOMPARE(shown().textX2(100), QString("12:00:01.249"));
    QVERIFY(!shown().textX3); // the passport has no sidereal time
    QTRY_VERIFY(statistics().contains("points 0 to 5999"));
    for (const auto &[mode, curves] :
         {std::pair("showStack", 32), {"showChannel", 1}, {"showSum", 1}}) {
        find<QRadioButton>(mode)->setChecked(true);
        QTRY_COMPARE(int(shown().graphs.size()), curves);
        QTRY_VERIFY(!find<WaterfallView>("waterfall")->isVisible());
    }
}

void TestNativeGrafik::surroundingsOfAPoint()
{
    for (const auto &[point, first] : {std::pair(3000, 500), {10, 0}, {5990, 1000}}) {
        auto *const form = new NativeGrafik(file(recording), 1, window.get());
        form->lookAt(point);
        const auto *const grafik = find<PulsarGrafik>("grafik");
        QTRY_COMPARE(int(std::lround(grafik->visibleRange().points)), 5000);
        QCOMPARE(int(std::lround(grafik->visibleRange().first)), first);
    }
}

void TestNativeGrafik::viewAndSelectionSurviveChanges()
{
    open(file(recording));
    QTRY_VERIFY(isDrawn());
    auto *const grafik = find<PulsarGrafik>("grafik");
    auto *const waterfall = find<WaterfallView>("waterfall");
    find<QDoubleSpinBox>("dispersion")->setValue(60);
    QTRY_COMPARE(peak(), 3000);
    grafik->setVisibleX(2990, 20);
    // Over the picture as over the plot: 43 % to 77 % of the width.
    const int left = 60;
    const int width = waterfall->pictureWidth();
    QTest::mousePress(waterfall, Qt::LeftButton, {}, {left + width * 43 / 100, 50});
    QTest::mouseMove(waterfall, {left + width * 3 / 5, 50});
    QMouseEvent move(QEvent::MouseMove, QPointF(left + width * 77 / 100, 60), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(waterfall, &move);
    QTest::mouseRelease(waterfall, Qt::LeftButton, {}, {left + width * 77 / 100, 60});
    const QString selected = "Selected: points 2999 to 3005";
    QTRY_VERIFY2(statistics().contains(selected), qPrintable(statistics()));
    QVERIFY(statistics().contains("S/N"));

    // A saved picture has the colours of the screen, three pixels for each.
    const QString path = folder->filePath("picture.png");
    QCOMPARE(waterfall->findChild<PictureMenu *>()->savePicture(path), QString());
    const QImage saved(path);
    const QImage screen = waterfall->grab().toImage();
    QCOMPARE(saved.size(), 3 * waterfall->sizeWithAxis()); // below it the time axis
    int same = 0;
    for (int x = left; x < left + width; ++x)
        same += saved.pixel(3 * x + 1, 3 * 60 + 1) == screen.pixel(x, 60);
    QVERIFY2(same > width * 9 / 10, qPrintable(QString("%1 of %2").arg(same).arg(width)));

    find<QRadioButton>("showChannel")->setChecked(true);
    QTRY_COMPARE(shown().names.value(0), QString("channel 1"));
    QCOMPARE(grafik->visibleRange().first, 2990.0);
    QCOMPARE(grafik->visibleRange().points, 20.0);
    QTest::keyClick(find<OverviewStrip>("overview"), Qt::Key_PageDown);
    QCOMPARE(grafik->visibleRange().first, 3010.0);
}

void TestNativeGrafik::switchesAreRemembered()
{
    const QString path = file(recording);
    double sum = 0;
    for (int c = 0; c < 32; ++c)
        sum += double(sampleAt(17, 0, c, 0));
    for (const bool isAgain : {false, true}) {
        open(path);
        QTRY_VERIFY(isDrawn());
        if (!isAgain) { // channels 5 and 6
            QTRY_VERIFY(statistics().contains("mean"));
            auto *const bandpass = find<BandpassView>("bandpass");
            QTest::mouseClick(bandpass, Qt::LeftButton, {},
                              {int(4.5 * bandpass->width() / 32), 30});
            QTest::keyClick(bandpass, Qt::Key_Right);
            QTest::keyClick(bandpass, Qt::Key_Space);
        }
        const float expected = float(sum) - sampleAt(17, 0, 4, 0) - sampleAt(17, 0, 5, 0);
        QTRY_VERIFY(std::abs(shown().graphs[0][17] - expected) < 1e-4f);
        QCOMPARE(find<QLabel>("switches")->text(), QString("2 switched off"));
    }
    QFile after(path);
    QVERIFY(after.open(QIODevice::ReadOnly));
    QCOMPARE(after.readAll(), recording);
}

// Published: DM 474.8; found at point 1614 with the value 4436.7 by separate code.
void TestNativeGrafik::burst()
{
    const QString path = TestSupport::realRecording("frb180417_1297MHz.pnt");
    if (path.isEmpty())
        QSKIP("there is no such recording in ../shared/data");
    open(path, 0);
    QTRY_VERIFY(isDrawn());
    find<QDoubleSpinBox>("dispersion")->setValue(474.8);
    QTRY_COMPARE(peak(), 1614);
    QCOMPARE(std::round(shown().yMax * 10) / 10, 4436.7);
}

void TestNativeGrafik::unusualRecordings()
{
    const auto bytes = [](const Shape &shape) {
        return TestSupport::recordingBytes(shape, sampleAt);
    };
    const QByteArray common = bytes({500, 1, 33, 2});
    for (const QByteArray &unusual :
         {bytes({1, 1, 1, 1}), bytes({3, 2, 2, 1}), common.chopped(5001),
          QByteArray(common).replace("tresolution 12.4928", "tresolution 0.00000")}) {
        const TestSupport::MessageBoxCatcher catcher;
        open(file(unusual), 0);
        QCOMPARE(catcher.lastText(), QString());
        QTRY_VERIFY(isDrawn() || shown().message.contains("cannot be summed"));
        find<QDoubleSpinBox>("dispersion")->setValue(1000);
        QApplication::processEvents();
        window->grab();
    }
    const TestSupport::MessageBoxCatcher catcher;
    open(file(common.left(300)), 0); // not even a point
    QVERIFY2(catcher.lastText().contains("Bad file!"), qPrintable(catcher.lastText()));
    QVERIFY(!window->findChild<PulsarGrafik *>());
}

void TestNativeGrafik::hugeRecordingInLittleMemory()
{
    // 3 GB that take no room on the disk.
    QByteArray passport = TestSupport::recordingBytes({500000, 6, 33, 0}, sampleAt);
    passport.replace("rays 0", "rays 8").replace("modulus 1 ", "modulus 9 ");
    const QString path = file(passport);
    QVERIFY(QFile::resize(path, passport.size() + qint64(500000) * 6 * 33 * 8 * 4));
    const qint64 before = residentBytes();
    qint64 most = 0;
    open(path);
    QTRY_VERIFY(isDrawn()); // long before all of it was read
    auto *const grafik = find<PulsarGrafik>("grafik");
    QCOMPARE(shown().xOffset, 0);
    QVERIFY(shown().source.contains("module 9")); // by the passport
    QVERIFY(shown().pointStep > 1);
    auto *const overview = find<OverviewStrip>("overview");
    for (int i = 0; i < 30; ++i)
        QTest::keyClick(overview, Qt::Key_Up);
    for (int i = 0; i < 3; ++i) {
        QTRY_VERIFY_WITH_TIMEOUT(shown().msPerPoint == 12.4928, 60000); // every sample
        most = std::max(most, residentBytes());
        QTest::mouseClick(overview, Qt::LeftButton, {}, {80 + 200 * i, 20});
        QApplication::processEvents();
    }
    QVERIFY2(most - before < qint64(300) << 20, qPrintable(QString::number(most - before)));

    // Home and Backspace reach beyond the part that is kept; what the user does meanwhile stays.
    const auto seconds = [this, grafik] { return grafik->visibleRange().points * shown().x.step; };
    const auto begin = [this, grafik] {
        return shown().x.first + grafik->visibleRange().first * shown().x.step;
    };
    const double partBegin = begin();
    const double partSeconds = seconds();
    const double allSeconds = 500000 * 0.0124928;
    QTest::keyClick(grafik, Qt::Key_Home);
    QTRY_VERIFY(std::abs(seconds() - allSeconds) < 1e-3);
    QTest::keyClick(grafik, Qt::Key_Plus);
    QTest::keyClick(grafik, Qt::Key_Plus);
    QTRY_VERIFY_WITH_TIMEOUT(!window->findChild<QProgressBar *>()->isVisible(), 60000);
    QVERIFY(seconds() < allSeconds * 0.7);
    QTest::keyClick(grafik, Qt::Key_Backspace);
    QTRY_VERIFY(std::abs(seconds() - allSeconds) < 1e-3);
    QTest::keyClick(grafik, Qt::Key_Backspace);
    QTRY_VERIFY(std::abs(seconds() - partSeconds) < 1e-3);
    QVERIFY(std::abs(begin() - partBegin) < 1e-3);
}

ZRT_GUI_TEST_MAIN(TestNativeGrafik)
#include "tst_nativegrafik.moc"
