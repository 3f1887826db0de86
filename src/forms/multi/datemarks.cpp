#include "forms/multi/datemarks.h"

#include "app/shell/settings.h"

#include <QCryptographicHash>
#include <QDir>
#include <QSettings>
#include <algorithm>

namespace {

// A path holds slashes, which part keys from groups.
QString keyOf(const QString &directory)
{
    constexpr int digits = 16;
    const QByteArray hash = QCryptographicHash::hash(QDir(directory).absolutePath().toUtf8(),
                                                     QCryptographicHash::Sha256);
    return "markedDates/" + QString::fromLatin1(hash.toHex().left(digits));
}

} // namespace

DateMarks::DateMarks(const QString &directory) : key(keyOf(directory))
{
    for (const QString &text : Settings::store().value(key).toStringList())
        dates.insert(QDate::fromString(text, Qt::ISODate));
}

void DateMarks::set(const QDate &date, bool isMarked)
{
    if (isMarked)
        dates.insert(date);
    else
        dates.remove(date);
    QStringList texts;
    for (const QDate &one : dates)
        texts << one.toString(Qt::ISODate);
    std::sort(texts.begin(), texts.end());
    Settings::store().setValue(key, texts);
}
