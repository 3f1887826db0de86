#pragma once

#include "calc/robuststatistics.h"
#include "calc/seriesstatistics.h"
#include "data/recordingfile.h"

#include <QString>

/// Texts of the viewer, without widgets.
namespace NativeTexts {

struct SizeCheck {
    bool isRight = false;
    QString text; ///< the file's size against that which the passport announces
};
SizeCheck sizeCheck(const RecordingFile &file);

/// UTC of a point, "hh:mm:ss.zzz", and its sidereal time, "hh:mm:ss"; empty where the passport
/// has none or the step is no time.
QString utcText(const ObservationData &header, double point);
QString siderealText(const ObservationData &header, double point);

/// Where the pointer stands, one line each: point and seconds, the given text, UTC and sidereal
/// time where they are known.
QString coordsText(const ObservationData &header, double point, const QString &value);

/// The same where the value is one of a band, in sigmas.
QString bandText(const ObservationData &header, double point, int band, double sigmas);

/// The part of a recording that statistics speak of.
struct StatisticsPart {
    QString name; ///< of the series, "channel 3"
    bool isSelected = false;
    qint64 first = 0; ///< point
    qint64 last = 0;
    double seconds = 0;
    bool isReduced = false; ///< median and MAD are not known
    SeriesStatistics statistics;
    double deviation = 0;     ///< MAD
    Tools::PartSignal signal; ///< of a selected part
};

/// The panel's table, as HTML with the class 'blue' for the heading.
QString statisticsHtml(const StatisticsPart &part);

/// A value with six significant digits.
QString valueText(double value);

} // namespace NativeTexts
