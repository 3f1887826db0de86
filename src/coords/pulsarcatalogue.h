#pragma once

#include "coords/skyposition.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

/// The known pulsars. The program brings the values of the ATNF Pulsar Catalogue, version 2.65
/// (Manchester, Hobbs, Teoh & Hobbs 2005, AJ 129, 1993).
namespace Tools {

struct KnownPulsar {
    QString name;  ///< "B0329+54", or as jname where there is no older one
    QString jname; ///< "J0332+5434"
    SkyPosition position;
    double frequency = 0;  ///< of the rotation, barycentric, Hz; NaN where unknown
    double derivative = 0; ///< s^-2; 0 where unknown
    double epoch = 0;      ///< of both, MJD
    double dispersion = 0; ///< pc/cm^3; NaN where unknown
    double flux400 = 0;    ///< mJy; NaN where unknown
    double flux1400 = 0;   ///< mJy; NaN where unknown
    QString binary;        ///< model of the orbit; empty: none is known
    double orbit = 0;      ///< period of the orbit, days; NaN where unknown

    /// Rotation frequency on a day, barycentric, Hz. Orbits are not taken into account.
    double frequencyAt(double mjd) const;
};

struct PulsarCatalogue {
    std::vector<KnownPulsar> pulsars;
    QString problem; ///< what is wrong with which line; empty: all were read
};

/// Reads a catalogue: lines of values between commas, the first of them names the columns "name",
/// "jname", "raj", "decj", "f0_hz", "f1_hz_s", "pepoch_mjd", "dm_pc_cm3", "s400_mjy", "s1400_mjy",
/// "binary_model" and "pb_d"; a missing column reads as unknown, but a name and the position must
/// be there. Lines that begin with "#" are left out.
PulsarCatalogue parsePulsars(const QByteArray &text);

/// The catalogue that the program brings.
const std::vector<KnownPulsar> &knownPulsars();

/// The pulsar of that name. Either name does, with and without its letter, in any case: "b0329+54",
/// "0332+5434", "J0332+54" where that is only one pulsar's.
///
/// @return null where there is none, or more than one
const KnownPulsar *findPulsar(const std::vector<KnownPulsar> &pulsars, const QString &name);

/// Names for a text that is being typed: first those that begin with it, then those that hold
/// it, and where there are none the nearest by letters exchanged, left out or added.
///
/// @param most  at most so many
QStringList suggestPulsars(const std::vector<KnownPulsar> &pulsars, const QString &typed, int most);

} // namespace Tools
