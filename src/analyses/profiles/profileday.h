#pragma once

#include "analyses/days/dayplace.h"
#include "analyses/profiles/ephemeris.h"
#include "calc/profileharmonics.h"
#include "calc/profilesnr.h"
#include "jobs/control.h"

#include <QDateTime>
#include <QString>
#include <vector>

/// A day folded in sub-integrations and bands, so that other periods and dispersions near by need
/// no recording.
namespace Profiles {

/// What a fold of a day depends on beside its place and its phase.
struct Folding {
    double dispersion = 0;      ///< pc/cm^3
    QString noise = "polinom5"; ///< base line of each band
    bool removesJumps = false;  ///< level jumps of each band
    int bins = 64;              ///< a power of two, 16 to 1024
};

struct ProfileDay {
    QDateTime begin; ///< of the first sample, by the recordings' clock
    QDateTime utc;   ///< the same by UTC
    double seconds = 0;
    Tools::SkyPosition direction;
    DayPhase phase;
    double dispersion = 0; ///< pc/cm^3, of the fold
    int bins = 0;
    std::vector<double> frequencies; ///< MHz, of the bands; the last one is the reference
    std::vector<bool> used;          ///< bands with noise; others count nowhere
    /// [sub-integration][band][bin]: mean of the samples less that of the band, in sigmas of a
    /// sample of the band. Empty where the day has a problem.
    std::vector<float> values;
    Tools::ProfileNoise noise;    ///< of the mean over bands and sub-integrations
    double unit = 1;              ///< mean sigma of a sample of a band, units of the recording
    Tools::ChiSquared chiSquared; ///< at the period of the fold
    QString remark;
    QString problem; ///< why there is no profile
    bool wasStopped = false;

    bool isWhole() const { return !values.empty(); }
    int parts() const { return int(phase.turns.size()) - 1; }
    int bands() const { return int(frequencies.size()); }
    int usedBands() const;
};

/// The first day that has a profile; null where there is none.
const ProfileDay *firstWhole(const std::vector<ProfileDay> &days);

inline constexpr int mostParts = 8; ///< sub-integrations of a stretch

/// Sub-integrations of a stretch: 8, or fewer where each of them would have less than four periods,
/// for then its bins differ in noise.
int partsOf(double periods);

/// Folds the samples of a day. Bands are turned by the part of a sample that their delays leave.
///
/// @param data   all points of a day, one module and ray, finite
/// @param first  point of the stretch in it
/// @param phase  of the stretch, with as many parts as the product gets
ProfileDay foldDay(const ObservationData &data, int first, int points, const Folding &folding,
                   const DayPhase &phase, const Jobs::Control &control = {});

/// The product of one day: kept, or made of its recordings and kept then.
///
/// @param folder  that keeps products; empty: nothing is kept
ProfileDay profileOfDay(const RecordingSet &set, const Days::DayPlan &plan, const Days::Day &day,
                        const Folding &folding, const Ephemeris &ephemeris, const QString &folder,
                        const Jobs::Control &control = {});

/// What the phases of a day are changed by.
struct PhaseChange {
    double moreFrequency = 0;  ///< Hz; the phase in the middle of the stretch stays
    double moreDispersion = 0; ///< pc/cm^3; that of the last band stays
    double turns = 0;          ///< later
};

/// The harmonics of each sub-integration, the bands added up at the dispersion of the fold and so
/// much more.
std::vector<Tools::Harmonics> partHarmonics(const ProfileDay &day, double moreDispersion = 0);

/// Adds `weight` times the harmonics of each sub-integration and band, [part][band], to rows. They
/// are those at the dispersion and the frequency of the fold and so much more, moved later by so
/// many turns. The sum over the bands is their mean.
void addRows(const ProfileDay &day, const PhaseChange &change, double weight,
             std::vector<Tools::Harmonics> &rows);

/// The bands of such rows added up at so much more dispersion.
std::vector<Tools::Harmonics> partHarmonics(const ProfileDay &day,
                                            const std::vector<Tools::Harmonics> &rows,
                                            double moreDispersion);

/// The mean over the sub-integrations at the frequency of the fold and so much more; the phase in
/// the middle of the stretch stays.
Tools::Harmonics dayHarmonics(const ProfileDay &day, const std::vector<Tools::Harmonics> &parts,
                              double moreFrequency = 0);

/// Period of an ephemeris at the barycentre on a day, s.
double barycentricPeriod(const Ephemeris &ephemeris, const ProfileDay &day);

/// s by which a band is later than the reference band for each unit of dispersion.
double delayPerDispersion(const ProfileDay &day, int band);

} // namespace Profiles
