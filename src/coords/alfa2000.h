#pragma once

#include <QDateTime>
#include <QString>

namespace Tools {

/// A second, independent estimate of the right ascension of 2000, "hh:mm:ss.ss".
///
/// @param dateTime  UTC, of the first sample; its time zone is ignored
/// @param point     sample of the culmination
/// @param tres      s between samples
/// @param delta     declination of the date, "dd:mm:ss"; a text with other separators is not
///                  understood and the result means nothing
/// @return empty, after one debug line, for a bad time or point; "nan" for a declination that
///         never crosses the beam plane
QString getAlfa2000(const QDateTime &dateTime, int point, double tres, const QString &delta);

} // namespace Tools
