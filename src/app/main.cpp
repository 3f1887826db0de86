#include "app/mainwindow.h"
#include "app/shell/settings.h"
#include "base/process.h"

#include <QApplication>
#include <QFile>
#include <QScreen>

int main(int argc, char **argv)
{
    setUpProcess();
    QApplication application(argc, argv);

    QFile styles(":/styles/styles.qss");
    if (styles.open(QIODevice::ReadOnly))
        application.setStyleSheet(QString::fromUtf8(styles.readAll()));

    MainWindow window;
    window.setWindowTitle("ZRT-Analytics-2");
    // A first window has its status bar in sight on small screens too.
    constexpr double mostOfScreen = 0.95;
    if (!Settings::store().contains("geometry"))
        window.resize(window.size().boundedTo(window.screen()->availableSize() * mostOfScreen));
    window.show();
    return QApplication::exec();
}
