#include "base/shellword.h"

#include <QRegularExpression>

QString shellWord(const QString &text)
{
    static const QRegularExpression plain("^[A-Za-z0-9_./:,+=-]+$");
    if (plain.match(text).hasMatch())
        return text;
    return "'" + QString(text).replace("'", "'\\''") + "'";
}
