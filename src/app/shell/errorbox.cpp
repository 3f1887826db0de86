#include "app/shell/errorbox.h"

#include <QMessageBox>
#include <QTextDocument>

void showError(QWidget *parent, const QString &text, const QString &reason)
{
    QMessageBox box(QMessageBox::Warning, "Error", text, QMessageBox::Ok, parent);
    // Paths may look like rich text.
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(Qt::mightBeRichText(reason) ? reason.toHtmlEscaped() : reason);
    box.exec();
}
