#include "data/begintime.h"

#include "data/passport.h"

#include <QRegularExpression>
#include <cmath>

namespace {

constexpr qint64 localTimeOffset = 3 * 3600; // s; clock times without "UTC" are UTC+3
constexpr double farthestShift = 1e15;       // ms; a date that far away is no date

} // namespace

QDateTime exactBegin(const Passport &passport, const ObservationData &header)
{
    static const QRegularExpression pattern("^ *(\\d{1,2}: ?\\d{1,2}: ?\\d{1,2})([.,]\\d+)?");
    if (passport.entries.contains("stairs_names"))
        return {};
    const QString clockText = passport.entries.value("time_begin");
    const QString dateText = passport.entries.value("date_begin").trimmed().right(10);
    const QRegularExpressionMatch match = pattern.match(clockText);
    const QDate date = QDate::fromString(dateText, "dd.MM.yyyy");
    const QTime time = QTime::fromString(match.captured(1).remove(' '), "h:m:s");
    const double shift = double(header.point) * header.tresolution * 1000;
    if (!date.isValid() || !time.isValid() || !(std::abs(shift) < farthestShift))
        return header.beginTime;
    const double fraction = match.captured(2).replace(',', '.').toDouble() * 1000;
    const QDateTime begin(date, time, Qt::UTC);
    const bool isUtc = clockText.contains("UTC");
    return begin.addSecs(isUtc ? 0 : -localTimeOffset).addMSecs(std::llround(fraction + shift));
}
