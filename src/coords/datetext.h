#pragma once

#include <QDate>
#include <QString>

/// Dates as file names and reports write them. What cannot be read gives an empty text.
namespace Tools {

/// The date of a text "yyyy.MM.dd": the first four characters, 6-7 and the last two; null
/// where these are no date.
QDate dateFromText(const QString &date);

/// The calendar day after "yyyy.MM.dd", in the same form.
QString nextDay(const QString &date);

/// "ddMMyy" of "yyyy.MM.dd".
QString shortFileDate(const QString &date);

/// Adds 90 seconds to a time stamp "hhmmss" that lies on a grid of 30 seconds; a stamp off
/// the grid keeps its time. Hours are not wrapped: file names of one night go on with 24.
QString shiftedTimeStamp(const QString &stamp);

} // namespace Tools
