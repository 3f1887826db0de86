#pragma once

#include "coords/skyposition.h"

#include <QByteArray>
#include <QDateTime>
#include <QStringList>
#include <optional>
#include <vector>

/// How a pulsar turns, and what that is at the telescope on a day.
namespace Profiles {

/// Turns at the barycentre of the solar system, in barycentric dynamical time (TDB):
/// F0 t + F1 t^2 / 2 + F2 t^3 / 6, t s since the epoch.
struct Ephemeris {
    double frequency = 0;  ///< F0, Hz
    double derivative = 0; ///< F1, s^-2
    double second = 0;     ///< F2, s^-3
    double epoch = 0;      ///< MJD; 0: not known, phases of days do not belong together
    std::optional<Tools::SkyPosition> position;
    std::optional<double> dispersion; ///< pc/cm^3
    QStringList ignored;              ///< what a file says beside and is not used

    /// Turns since the epoch, at so many s of it.
    double turnsAt(double seconds) const;
    double frequencyAt(double seconds) const;
};

/// Reads the text of a .par file: lines of a key and a value, of which F0, F1, F2, PEPOCH, RAJ,
/// DECJ and DM are used. Files of pulsars in orbits, in other units than TDB, and without F0 are
/// refused.
struct ReadEphemeris {
    Ephemeris ephemeris;
    QString problem; ///< which line, what is wrong, what can be done; empty: it can be used
};
ReadEphemeris parseEphemeris(const QByteArray &text);
/// The same of a file; a problem names it.
ReadEphemeris readEphemeris(const QString &path);

/// The turning as the telescope receives it during a stretch.
struct DayPhase {
    /// Turns at the begins of the sub-integrations and at the end of the last, the first of them
    /// 0 to 1. Between them the phase runs evenly.
    std::vector<double> turns;
    double frequency = 0; ///< Hz, mean of the stretch at the telescope
    bool isTurned = true; ///< false: the direction is unknown, all is as the telescope sees it

    double at(double part) const; ///< turns, at a part of the stretch from 0 to 1
};

/// @param begin      UTC of the first sample
/// @param seconds    length of the stretch
/// @param parts      sub-integrations
/// @param direction  without numbers, the ephemeris is taken as that at the telescope
DayPhase phaseOfDay(const Ephemeris &ephemeris, const QDateTime &begin, double seconds,
                    const Tools::SkyPosition &direction, int parts);

} // namespace Profiles
