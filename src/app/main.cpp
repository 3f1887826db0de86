#include "app/commandline.h"
#include "app/mainwindow.h"
#include "app/shell/applicationstyles.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "base/process.h"

#include <QApplication>
#include <QFile>
#include <QScreen>
#include <QStyle>
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

// A first window has its status bar in sight on small screens too, below the title bar that the
// desktop puts on it.
void fitScreen(QWidget &window)
{
    constexpr int border = 2; // pixels
    const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight) + border;
    const QSize room = window.screen()->availableSize() - QSize(2 * border, title + border);
    window.resize(window.size().boundedTo(room));
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
    if (!Settings::store().contains("geometry"))
        fitScreen(window);
    window.show();
    if (line.paths.isEmpty())
        StatusLine::keep("Choose a command of the menus, or drop a recording or a folder here");
    else
        QTimer::singleShot(0, &window, [&] { window.openPaths(line.paths); });
    return QApplication::exec();
}
