#include "support/testmain.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

// The road of a new user through the built program, in a window of its own X server: menu
// command, path typed into the dialog, one action, and a look at the picture.

namespace {

constexpr int width = 1280;
constexpr int height = 800;

int pixelsOfColour(const QImage &image, QRgb colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += (image.pixel(x, y) & 0xffffff) == colour;
    return count;
}

} // namespace

class TestFirstAnalysis : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void spectrumAppears();
    void cleanupTestCase();

private:
    void startServer();
    void start(QProcess &process, const QString &program, const QStringList &arguments);
    QString xdo(const QStringList &arguments);
    QImage screenshot();
    bool waitFor(const std::function<bool()> &condition);
    QString windowNamed(const QString &pattern);

    QTemporaryDir folder;
    QProcessEnvironment environment;
    QProcess server;
    QProcess windowManager;
    QProcess workbench;
};

void TestFirstAnalysis::initTestCase()
{
    for (const char *tool : {"Xvfb", "openbox", "xdotool", "import"}) {
        if (QStandardPaths::findExecutable(tool).isEmpty())
            QSKIP(qPrintable(QString("%1 is not installed").arg(tool)));
    }
    QVERIFY(folder.isValid());
    startServer();
    start(windowManager, "openbox", {});
}

void TestFirstAnalysis::startServer()
{
    // The server picks a free display and writes its number.
    server.setProcessChannelMode(QProcess::SeparateChannels);
    server.start("Xvfb", {"-displayfd", "1", "-screen", "0",
                          QString("%1x%2x24").arg(width).arg(height), "-nolisten", "tcp"});
    QVERIFY(server.waitForStarted());
    QVERIFY(server.waitForReadyRead(20000));
    environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", ":" + QString::fromUtf8(server.readLine()).trimmed());
    environment.insert("QT_QPA_PLATFORM", "xcb");
    environment.insert("HOME", folder.path());
    environment.insert("XDG_CONFIG_HOME", folder.path());
    environment.insert("XDG_RUNTIME_DIR", folder.path());
    environment.remove("WAYLAND_DISPLAY");
}

void TestFirstAnalysis::start(QProcess &process, const QString &program,
                              const QStringList &arguments)
{
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    QVERIFY2(process.waitForStarted(), qPrintable(program));
}

QString TestFirstAnalysis::xdo(const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start("xdotool", arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QImage TestFirstAnalysis::screenshot()
{
    const QString path = folder.filePath("screen.png");
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start("import", {"-silent", "-window", "root", path});
    process.waitForFinished();
    return QImage(path);
}

bool TestFirstAnalysis::waitFor(const std::function<bool()> &condition)
{
    for (int tries = 0; tries < 300; ++tries) {
        if (condition())
            return true;
        QTest::qWait(200);
    }
    return false;
}

QString TestFirstAnalysis::windowNamed(const QString &pattern)
{
    QString window;
    waitFor([&] {
        window = xdo({"search", "--onlyvisible", "--name", pattern});
        return !window.isEmpty();
    });
    return window;
}

void TestFirstAnalysis::spectrumAppears()
{
    const QString recording = folder.filePath("demo.pnt");
    QCOMPARE(QProcess::execute(ZRT_SIMULATE, {"--demo", recording}), 0);

    start(workbench, ZRT_WORKBENCH, {});
    const QString window = windowNamed("^ZRT-Analytics-2$");
    QVERIFY(!window.isEmpty());
    xdo({"windowactivate", "--sync", window});
    xdo({"windowsize", "--sync", window, QString::number(width), QString::number(height - 40)});

    // "Native data" is the first menu, "Fourier" its third command.
    xdo({"mousemove", "--window", window, "30", "10", "click", "1"});
    xdo({"key", "--delay", "100", "Down", "Down", "Down", "Return"});
    const QString dialog = windowNamed("^Opening file$");
    QVERIFY2(!dialog.isEmpty(), "the command asks for a file");
    xdo({"windowactivate", "--sync", dialog});
    xdo({"type", "--delay", "20", recording});
    xdo({"key", "Return"});

    QVERIFY2(waitFor([&] { return pixelsOfColour(screenshot(), 0xffffff) > width * height / 5; }),
             "the empty plot appears");
    xdo({"windowactivate", "--sync", window}); // keys before that would be lost
    QTest::qWait(1500);
    // From the dispersion on to the first action; below it the fourth is "Fourier of sum channels
    // with 1 disp".
    xdo({"key", "--delay", "100", "Tab", "Tab", "Tab", "Tab", "Tab", "Tab", "Tab", "Down", "Down",
         "Down", "space"});

    QImage picture;
    const bool drawn = waitFor([&] {
        picture = screenshot();
        return pixelsOfColour(picture, 0x0000ff) > 3000;
    });
    const QString kept = QDir(QCoreApplication::applicationDirPath())
                             .filePath(QStringLiteral("e2e-first-analysis.png"));
    picture.save(kept);
    QVERIFY2(drawn, qPrintable("the spectrum is drawn; the screen is kept in " + kept));
    QVERIFY2(pixelsOfColour(picture, 0x009900) > 200, "line of 1 sigma");
    QVERIFY2(pixelsOfColour(picture, 0xff0000) > 200, "line of N sigma");
    QCOMPARE(workbench.state(), QProcess::Running);

    xdo({"windowactivate", "--sync", window});
    xdo({"key", "alt+F4"});
    QVERIFY2(workbench.state() == QProcess::NotRunning || workbench.waitForFinished(20000),
             "closing the window ends the program");
    QCOMPARE(workbench.exitStatus(), QProcess::NormalExit);
    QCOMPARE(workbench.exitCode(), 0);
}

void TestFirstAnalysis::cleanupTestCase()
{
    for (QProcess *process : {&workbench, &windowManager, &server}) {
        if (process->state() == QProcess::NotRunning)
            continue;
        process->terminate();
        if (!process->waitForFinished(5000))
            process->kill();
        process->waitForFinished(5000);
    }
}

ZRT_UNIT_TEST_MAIN(TestFirstAnalysis)
#include "tst_firstanalysis.moc"
