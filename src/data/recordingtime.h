#pragma once

#include "data/observationdata.h"

#include <QDateTime>
#include <QString>
#include <optional>

/// UTC and sidereal time of a recording's points.

inline constexpr double siderealRate = 1.002737909; ///< sidereal seconds per second

/// Begin of the first sample, UTC, rounded down to milliseconds; invalid where the passport has
/// no begin.
QDateTime exactBegin(const ObservationData &data);

/// UTC at which each point of a recording begins. A small value: it keeps nothing of the record.
class RecordingClock {
public:
    /// A clock that knows no time.
    RecordingClock() = default;
    explicit RecordingClock(const ObservationData &data);

    /// False where the passport has no begin or its step is no time.
    bool isKnown() const { return begin.isValid(); }

    /// @param point  index within the record, may lie outside
    /// @return rounded down to milliseconds; invalid where no time is known or the point is too
    ///         far away for a date
    QDateTime utc(double point) const;
    /// The same as milliseconds since the midnight (UTC) before the begin; more than a day has
    /// for points of the following days. 0 where no time is known.
    qint64 msOfDay(double point) const;
    /// The inverse: the point, with fraction, at so many milliseconds since that midnight.
    double pointAt(qint64 msOfDay) const;

private:
    qint64 msSinceBegin(double point) const; // since `begin`
    QDateTime begin;                         // whole seconds, as in the record
    double rest = 0;                         // ms from there to the first sample
    double msPerPoint = 1;
};

/// Seconds of a sidereal clock "h:m:s", whole; none where the text has another form.
std::optional<int> siderealSeconds(const QString &text);

/// Moves `beginTime`, which is the parent recording's begin, to the first sample, `point` samples
/// later: its whole seconds there, the rest to `beginRest`. Invalid where that is no date.
void advanceBegin(ObservationData &data);

/// Moves the begin of a record by so many points: `point`, UTC and sidereal time.
void moveBegin(ObservationData &data, qint64 points);
