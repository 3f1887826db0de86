#pragma once

#include "analyses/profiles/profileday.h"
#include "calc/profileshift.h"

/// The average profile of many days, and how it grows with them.
namespace Profiles {

/// How the phases of days come together.
enum class Alignment {
    Ephemeris, ///< as the ephemeris says
    Template,  ///< by the other days' pulse where a day shows its own; the others as the ephemeris
               ///< says, or not at all
    None,      ///< not at all: only what needs no common phase is told
};

/// S/N of the best boxcar from which on a day may be aligned by a template: aligning noise to a
/// template makes a pulsar of it.
inline constexpr double leastAlignedSnr = 7;
/// Part of a bin that the begin error may be where phases of days are taken from the ephemeris.
inline constexpr double mostBeginError = 0.1;

/// What a user may change without a recording being read again.
struct StackChoice {
    Alignment alignment = Alignment::Ephemeris;
    bool normalises = true;    ///< each day in units of its noise
    bool weights = true;       ///< days by 1 / sigma^2
    double leastSnr = 0;       ///< days below are left out, which selects; 0: none
    int harmonics = 10;        ///< of Z^2_n
    double beginError = 0;     ///< s, one standard deviation, of each day's begin
    double moreFrequency = 0;  ///< Hz, to that of the fold
    double moreDispersion = 0; ///< pc/cm^3
    std::vector<bool> days;    ///< which the user wants, one per day
    QStringList reasons;       ///< why not, one per day
};

/// How a day came into the average.
enum class DayUse {
    Out,
    Alone, ///< the only one that counts, which needs no alignment
    ByEphemeris,
    ByTemplate,
};

struct StackedDay {
    DayUse use = DayUse::Out;
    QString reason;         ///< why it is out
    bool counts = false;    ///< it has a profile, is wanted and not below the least S/N
    Tools::ProfileSnr snr;  ///< of the day alone
    double shift = 0;       ///< turns by which it was later than the others; not a number where it
                            ///< was not measured
    double shiftError = 0;  ///< turns, without the begin error; that of the others is in it
    double offset = 0;      ///< turns by which its pulse is later than that of the average, of
                            ///< which it is a part; not a number where it was not measured
    double offsetError = 0; ///< turns: of the day alone, without the begin error
    double weight = 0;      ///< share of the average
    /// As it was added up; of a day that is out, as it was folded. In units of its noise.
    std::vector<float> profile;
};

struct ProfileStack {
    std::vector<StackedDay> days; ///< one per product
    int inAverage = 0;
    int alignedByTemplate = 0;
    double effectiveDays = 0; ///< (sum of weights)^2 / sum of their squares
    std::vector<double> profile;
    Tools::ProfileNoise noise;
    std::vector<double> firstHalf; ///< of the days in the average, by time
    std::vector<double> secondHalf;
    Tools::ProfileNoise halfNoise; ///< the larger of both
    Tools::ProfileSnr snr;
    Tools::GaussianPulse pulse;
    /// S/N of the first n days of the average in the boxcar of the whole, n from 1.
    std::vector<double> growth;
    double incoherent = 0;      ///< sum over the wanted days of Z^2_n, which needs no common phase
    double incoherentSigma = 0; ///< Gaussian sigma of noise that has such a sum
    int incoherentDays = 0;
    QStringList remarks; ///< what a user has to know of how it was made
    QString problem;     ///< why there is no average
};

/// Whether the begin error lets the ephemeris align days; else the reason in words.
QString ephemerisRefusal(const std::vector<ProfileDay> &products, const StackChoice &choice);

/// @param products  of one number of bins; days with a problem are left out
ProfileStack stackDays(const std::vector<ProfileDay> &products, const StackChoice &choice,
                       const Jobs::Control &control = {});

/// S/N of a boxcar at a given place, see Tools::boxcarPeaks().
double boxcarSnrAt(const std::vector<double> &profile, const Tools::ProfileNoise &noise, int begin,
                   int width);

} // namespace Profiles
