#include "plot/savedialog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>

namespace Plot {

QString askForPath(QWidget *parent, const QString &title, const QString &folder,
                   const QString &name, const QString &filters)
{
    QString filter;
    QString path =
        QFileDialog::getSaveFileName(parent, title, folder + "/" + name, filters, &filter);
    if (path.isEmpty() || !QFileInfo(path).suffix().isEmpty())
        return path;
    path += filter.section("*", 1).section(")", 0, 0);
    const bool replaces =
        !QFileInfo::exists(path) ||
        QMessageBox::question(parent, title,
                              path + " already exists.\nDo you want to replace it?") ==
            QMessageBox::Yes;
    return replaces ? path : QString();
}

} // namespace Plot
