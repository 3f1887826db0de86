#include "app/mainwindow.h"

#include <QApplication>
#include <QFile>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);

    QFile styles(":/styles/styles.qss");
    if (styles.open(QIODevice::ReadOnly))
        application.setStyleSheet(QString::fromUtf8(styles.readAll()));

    MainWindow window;
    window.setWindowTitle("ZRT-Analytics-2");
    window.show();
    return QApplication::exec();
}
