#pragma once

#include "analyses/days/fourierstack.h"
#include "analyses/days/powerstack.h"

#include <functional>
#include <set>

/// What is looked up for one line of a stack after it was found.
namespace Days {

/// The days of a stack with their weights, and how the powers of one line are read from them.
struct StackDays {
    std::vector<const FourierDay *> days;
    std::vector<double> ratios;  ///< of each day, 1 where frequencies are not turned
    std::vector<double> weights; ///< of each day; empty: all equal
    std::vector<bool> chosen;    ///< of each day
    std::vector<double> level;   ///< of the stack of the chosen, per bin
    std::vector<bool> leftOut;   ///< per bin: counts as noise without scatter
};

/// Powers of one harmonic sum, per day in units of the level.
struct LinePowers {
    std::vector<double> ofDay;      ///< sum over harmonics
    std::vector<double> ofHarmonic; ///< mean over the chosen days
};
LinePowers powersOfLine(const StackDays &stack, const StackLine &line);

/// Logarithm of the probability that noise has such a sum without its strongest days.
///
/// The sum of all but the k largest of n values is that of min(x, q) less k q, where q is exceeded
/// by a share k / n, to first order in its scatter. Powers follow a Gamma law, so
/// that mean and variance of min(x, q) are known; a Gamma law of the same mean and variance gives
/// the tail.
///
/// @param powers   of the days, each a sum of `harmonics` powers
/// @param leftOut  days
double logTailWithoutStrongest(std::vector<double> powers, int leftOut, int harmonics);

/// What noise makes of the values that the days have at a line.
struct LineLaw {
    double noise = 0; ///< mean of a day
    double unit = 1;  ///< what a value is divided by to be told
    std::function<double(const std::vector<std::size_t> &days)> logTail;
    std::function<double(const std::vector<double> &values, int leftOut)> logTailWithoutStrongest;
};

/// That of harmonic sums of powers; refers to both.
LineLaw lawOfPowers(const StackDays &stack, const LinePowers &powers, int harmonics);

/// Fills in what the days say of the line: robustness, solar hours, growth.
///
/// @param ofDay  value of each day
void addEvidence(const StackDays &stack, const std::vector<double> &ofDay, const LineLaw &law,
                 const FourierDaysChoice &choice, double trials, FourierLine &line);

/// Whether a frequency is mains hum, or a multiple of it up to that number, as the sampling shows
/// it.
///
/// @param rate       samples a second
/// @param tolerance  Hz
bool isHumAt(const std::vector<DayHum> &hum, double frequency, double rate, double tolerance,
             int multiples = highestHumMultiple);

/// Whether three rays or more have a line that are no neighbours of the line's own ray or of each
/// other: then it is no source.
///
/// @param places  of placeOfRay(), of the rays that have it
bool isInRaysApart(const std::set<int> &places, int own);

/// The pulsars that lie in a beam.
std::vector<const Tools::KnownPulsar *> pulsarsInBeam(const Beam &beam,
                                                      const Tools::SkyPosition &direction,
                                                      const QDate &date, double stretchSeconds);

/// Those of them whose frequency, or a small fraction of it, the line has; the nearest first.
std::vector<PulsarMatch> matchesOf(const std::vector<const Tools::KnownPulsar *> &pulsars,
                                   const Tools::SkyPosition &direction, double barycentric,
                                   double binWidth, double mjd);

} // namespace Days
