#pragma once

#include "analyses/days/dayanalysis.h"
#include "analyses/days/interference.h"
#include "jobs/control.h"

#include <QDateTime>
#include <QString>
#include <memory>
#include <vector>

/// The whitened spectrum of one day: the product that stacks are made of.
namespace Days {

struct FourierDaysParameters;

/// Mains hum as one day shows it.
struct DayHum {
    double from = 0; ///< Hz of the mains' base frequency
    double to = 0;
};

struct FfaTrials;

/// What a fast folding search finds in a day.
struct DayPeriodogram {
    std::shared_ptr<const FfaTrials> trials; ///< null in spectra
    std::vector<float> snr;                  ///< [width][trial], of standardisedTrials()
    std::vector<float> best;                 ///< of each trial: the best of its widths
};

struct FourierDay {
    QDateTime begin;           ///< of the first point, by the recordings' clock
    double binWidth = 0;       ///< Hz; bin k lies at k * binWidth at the telescope
    std::vector<float> powers; ///< whitened, of the series padded to double its length; noise has
                               ///< mean 1. Empty where the day has a problem
    double sigma = 0;          ///< of the series less its base line
    int above = 0;             ///< powers above 5, bins below lowestBin apart
    double ratio = 1;          ///< frequency at the telescope over the one at the barycentre; not a
                               ///< number where the direction is unknown
    double solarHour = 0;      ///< local solar time at the middle, hours
    std::vector<DayHum> hum;
    DayPeriodogram periodogram; ///< of the FFA alone
    QString remark;             ///< which samples were no finite numbers
    QString problem;            ///< why there is no spectrum
    bool wasStopped = false;

    bool isWhole() const { return !powers.empty(); }
    double frequency(double bin) const { return bin * binWidth; }
};

/// Multiples of the mains' frequency, up to this one, count as hum.
inline constexpr int highestHumMultiple = 8;

/// Bins below are the base line's leftovers: drawn grey, never ranked. It is 32 of the series that
/// is not padded.
inline constexpr int lowestBin = 64;
inline constexpr double highPower = 5;

/// Powers above highPower that noise is expected to have.
double expectedAbove(int bins);

/// A series less its base line and its mean.
struct PreparedSeries {
    std::vector<double> values;
    double sigma = 0;
    QString problem; ///< why it cannot be used; empty otherwise
};

/// @param backSums  with opposite delays, for the base line "backSum" alone
PreparedSeries preparedSeries(const std::vector<float> &sums, const std::vector<float> &backSums,
                              const QString &noise);

/// Whitened powers of a series padded to double its length.
///
/// @param averageCount  times that neighbouring pairs are averaged before
std::vector<float> whitenedPowers(const std::vector<double> &series, int averageCount, int window);

/// The mains' hum in a series.
std::vector<DayHum> humOf(const std::vector<double> &series, double step);

/// Local solar time at the telescope, hours.
double solarHourAt(const QDateTime &utc);

/// Base line, averaging and normalisation as in the pulsar form, then the spectrum of the series
/// padded to double its length.
///
/// @param stretch  the series, and for the base line "backSum" that with opposite delays
FourierDay fourierOfDay(const DayStretch &stretch, const FourierDaysParameters &parameters,
                        const Jobs::Control &control = {});

/// What a rule proposes for a day; the user decides.
struct DayVerdict {
    bool isGood = true;
    QString reason; ///< in words; empty where it is good
    int above = 0;  ///< powers above 5 that count
    double expected = 0;
};

/// What does not count against a day.
struct DayRule {
    std::vector<Interference> leftOut;
    double frequency = 0; ///< Hz, whose harmonics do not count however the Earth moves; 0: none
};

/// A day is good where the logarithm of its sigma lies within 5 robust sigma of the others, never
/// less than 10 %, and its powers above 5 are at most twice as many as expected.
std::vector<DayVerdict> proposeDays(const std::vector<FourierDay> &days, const DayRule &rule = {});

/// The form of the files that keep spectra; what another form has written is made anew.
inline constexpr int spectraForm = 3;

/// Name of such a file: the date of the first day, module and ray, a hash of all parameters, the
/// number of days and the averaging.
QString spectraFileName(const std::vector<FourierDay> &days,
                        const FourierDaysParameters &parameters);

/// Spectra as a result file with one block per day; days without one are left out.
QByteArray spectraBytes(const std::vector<FourierDay> &days,
                        const FourierDaysParameters &parameters);

struct ReadSpectra {
    std::vector<FourierDay> days;
    QString problem; ///< which file, what is wrong, what can be done; empty when whole
};
/// @param parameters   that the spectra must have been made with
/// @param tresolution  s, of the series; periodograms alone need it
ReadSpectra readSpectra(const QString &path, const FourierDaysParameters &parameters,
                        double tresolution = 0);

} // namespace Days
