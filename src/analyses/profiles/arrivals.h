#pragma once

#include "analyses/profiles/profilestack.h"

/// Arrival times of the pulses of days.
namespace Profiles {

/// Of the pulse nearest to the middle of the day's stretch, at the frequency whose delay is the
/// mean of the bands' delays: only there an error of the dispersion moves no arrival. In the last
/// band the arrivals of a day whose dispersion was found from the same day would be uncertain by
/// twice as much.
struct Arrival {
    int day = 0;            ///< index of the product
    qint64 utcDay = 0;      ///< MJD, whole
    double utcPart = 0;     ///< of that day
    double barycentric = 0; ///< MJD (TDB); not a number where the direction is unknown
    double error = 0;       ///< s: that of the phase and that of the begin together
    double frequency = 0;   ///< MHz, at which the pulse arrives then
    double snr = 0;

    /// "57113.1234567890123"
    QString utcText() const;
};

/// Days with an S/N of leastAlignedSnr or more. The phase is that by which a day differs from the
/// average of the others; the pulse of the average has its middle at the arrival. Errors are those
/// of days against each other: what the average's own middle may be off by is the same on all.
///
/// @param stack  of the products by that choice, whose begin error is in the errors
std::vector<Arrival> arrivalsOf(const std::vector<ProfileDay> &products, const ProfileStack &stack,
                                const StackChoice &choice);

/// A .tim file: "FORMAT 1", then name, MHz, MJD, error in microseconds, site.
QByteArray timBytes(const std::vector<Arrival> &arrivals, const QStringList &names,
                    const QString &site);

} // namespace Profiles
