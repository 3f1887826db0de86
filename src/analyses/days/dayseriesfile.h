#pragma once

#include "analyses/days/dayseries.h"

/// The files that keep the series of days.
namespace Days {

/// One of them, whether it is there or not.
struct KeptSeries {
    QString path;
    QByteArray header; ///< all that the series depends on; the file begins with it
    int points = 0;
};

/// @param folder  of the files
KeptSeries keptSeriesOf(const RecordingSet &set, const Day &day, int points,
                        const SeriesRequest &request, const QString &folder);

/// Another product of one ray that is kept as a series is: numbers in place of sums.
struct ProductKind {
    QByteArray title;  ///< what the numbers are, one line
    QByteArray lines;  ///< all that they depend on beside the request, "key: value\n" each
    QString extension; ///< of the file's name
    int values = 0;    ///< numbers in the file
};
KeptSeries keptProductOf(const RecordingSet &set, const Day &day, const SeriesRequest &request,
                         const ProductKind &kind, const QString &folder);

/// Reads a kept series; one that is missing, damaged or made of anything else is none.
bool readKept(const KeptSeries &kept, DaySeries &series);

/// Keeps a series; where that fails it is made again the next time.
void keep(const KeptSeries &kept, const DaySeries &series);

} // namespace Days
