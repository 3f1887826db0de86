#include "app/errorbox.h"

#include <QMessageBox>

void showError(QWidget *parent, const QString &text, const QString &reason)
{
    QMessageBox box(QMessageBox::Warning, "Error", text, QMessageBox::Ok, parent);
    box.setInformativeText(reason);
    box.exec();
}
