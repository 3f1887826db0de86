#include "coords/datetext.h"

#include <QLocale>
#include <QRegularExpression>

namespace Tools {

QDate dateFromText(const QString &date)
{
    return {date.left(4).toInt(), date.mid(5, 2).toInt(), date.right(2).toInt()};
}

QString nextDay(const QString &date)
{
    return QLocale::c().toString(dateFromText(date).addDays(1), "yyyy.MM.dd");
}

QString shortFileDate(const QString &date)
{
    if (!dateFromText(date).isValid())
        return {};
    return date.right(2) + date.mid(5, 2) + date.mid(2, 2);
}

QString shiftedTimeStamp(const QString &stamp)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern("\\d{6}"));
    if (!pattern.match(stamp).hasMatch())
        return {};
    int hours = stamp.left(2).toInt();
    int minutes = stamp.mid(2, 2).toInt();
    int seconds = stamp.right(2).toInt();
    if (seconds == 30) {
        seconds = 0;
        minutes += 2;
    } else if (seconds == 0) {
        seconds = 30;
        minutes += 1;
    }
    if (minutes == 60 || minutes == 61) {
        minutes -= 60;
        hours += 1;
    }
    return QString("%1%2%3")
        .arg(hours, 2, 10, QChar('0'))
        .arg(minutes, 2, 10, QChar('0'))
        .arg(seconds, 2, 10, QChar('0'));
}

} // namespace Tools
