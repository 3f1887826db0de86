#pragma once

#include "analyses/profiles/profilestack.h"

/// Arrival times of the pulses of days.
namespace Profiles {

/// Of the pulse nearest to the middle of the day's stretch, at the reference band.
struct Arrival {
    int day = 0;            ///< index of the product
    qint64 utcDay = 0;      ///< MJD, whole
    double utcPart = 0;     ///< of that day
    double barycentric = 0; ///< MJD (TDB); not a number where the direction is unknown
    double error = 0;       ///< s: that of the phase and that of the begin together
    double frequency = 0;   ///< MHz, to which the bands were brought
    double snr = 0;

    /// "57113.1234567890123"
    QString utcText() const;
};

/// Days with an S/N of leastAlignedSnr or more. The phase is that by which a day differs from the
/// average of the others; the pulse of the average has its middle at the arrival.
///
/// @param stack       of the products by that choice
/// @param beginError  s
std::vector<Arrival> arrivalsOf(const std::vector<ProfileDay> &products, const ProfileStack &stack,
                                double beginError);

/// A .tim file: "FORMAT 1", then name, MHz, MJD, error in microseconds, site.
QByteArray timBytes(const std::vector<Arrival> &arrivals, const QStringList &names,
                    const QString &site);

} // namespace Profiles
