#include "app/commandline.h"
#include "app/mainwindow.h"
#include "app/shell/applicationstyles.h"
#include "app/shell/settings.h"
#include "base/process.h"

#include <QApplication>
#include <QFile>
#include <QScreen>
#include <QTextStream>
#include <QTimer>

namespace {

constexpr int wrongUsage = 64;

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QFile::decodeName(argv[i]);
    return arguments;
}

} // namespace

int main(int argc, char **argv)
{
    setUpProcess();
    // Before the application, which needs a display.
    const CommandLine line = readCommandLine(argumentsOf(argc, argv));
    QTextStream(stdout) << line.answer;
    QTextStream(stderr) << line.error;
    if (!line.error.isEmpty())
        return wrongUsage;
    if (!line.answer.isEmpty())
        return 0;

    QApplication application(argc, argv);
    applyApplicationStyles();

    MainWindow window;
    window.setWindowTitle("ZRT-Analytics-2");
    // A first window has its status bar in sight on small screens too.
    constexpr double mostOfScreen = 0.95;
    if (!Settings::store().contains("geometry"))
        window.resize(window.size().boundedTo(window.screen()->availableSize() * mostOfScreen));
    window.show();
    if (!line.paths.isEmpty())
        QTimer::singleShot(0, &window, [&] { window.openPaths(line.paths); });
    return QApplication::exec();
}
