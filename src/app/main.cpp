#include "app/commandline.h"
#include "app/mainwindow.h"
#include "app/shell/applicationstyles.h"
#include "app/shell/settings.h"
#include "base/process.h"

#include <QApplication>
#include <QScreen>
#include <QTextStream>
#include <QTimer>

namespace {

constexpr int wrongUsage = 64;

// Prints what needs no window. Returns the exit code.
int answer(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const CommandLine line = readCommandLine(QCoreApplication::arguments());
    QTextStream(stdout) << line.answer;
    QTextStream(stderr) << line.error;
    return line.error.isEmpty() ? 0 : wrongUsage;
}

} // namespace

int main(int argc, char **argv)
{
    setUpProcess();
    if (asksForText(argc, argv))
        return answer(argc, argv);
    QApplication application(argc, argv);
    const CommandLine line = readCommandLine(QApplication::arguments());
    if (!line.error.isEmpty()) {
        QTextStream(stderr) << line.error;
        return wrongUsage;
    }
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
