#pragma once

#include "analyses/days/dayplace.h"
#include "analyses/days/ffatrials.h"
#include "analyses/days/fourierday.h"
#include "coords/pulsarcatalogue.h"

#include <QStringList>

/// The stack of the spectra of many days, and what speaks for and against each of its lines.
namespace Days {

/// Lines of the same days in another ray, with which interference is told from the sky.
struct OtherRay {
    int module = 0;
    int ray = 0;
    std::vector<double> frequencies; ///< Hz, of lines above 4 sigma, at the telescope
};

/// What can change without a recording being read again.
struct FourierDaysChoice {
    std::vector<bool> days;  ///< one per product; empty: all
    bool earthMotion = true; ///< turn the frequencies of the days to the barycentre
    int harmonics = 16;      ///< most that are summed
    int window = 257;        ///< bins, odd, whose median is the level around a bin
    double threshold = 5;    ///< sigma, below which no line is listed
    int most = 100;          ///< lines at most
    bool equalGains = false; ///< weight days by the inverse square of their sigma
    std::vector<Interference> leftOut;
    std::vector<OtherRay> otherRays;
    Beam beam;                    ///< for the known pulsars in it
    Tools::SkyPosition direction; ///< the same
};

/// A pulsar of the catalogue whose period, or a small fraction of it, a line has.
struct PulsarMatch {
    QString name;
    int p = 1; ///< the line is p / q times the pulsar's frequency
    int q = 1;
    double bins = 0;       ///< how far off, in bins of the spectrum
    double separation = 0; ///< radians, from the direction of the beam

    QString text() const;
};

/// What names a line, or speaks against a source in the sky.
struct LineMarks {
    bool isFewDays = false;           ///< not significant without the strongest days
    bool isSolar = false;             ///< keeps solar, not sidereal time
    bool isHum = false;               ///< mains hum or one of its multiples
    bool isInOtherRays = false;       ///< of isInRaysApart()
    std::vector<PulsarMatch> pulsars; ///< known ones, nearest first
    int relatedTo = -1; ///< index of a stronger one of which it is a fraction; -1: none
    int relatedP = 1;   ///< p / q times its frequency
    int relatedQ = 1;

    /// In words.
    ///
    /// @param kind  of what it is a fraction: "line"
    QStringList marksOf(const QString &kind) const;
};

struct GrowthPoint {
    int days = 0;
    double sigma = 0;    ///< one trial, with the first so many days
    double expected = 0; ///< that of all, in proportion to the root of the number
};

/// One line with all that is told of it.
struct FourierLine : LineMarks {
    double bin = 0;              ///< of the fundamental on the stack's axis; of the FFA, the trial
    int harmonics = 1;           ///< summed
    int width = 0;               ///< of the FFA: of the pulse, phase bins
    int foldBins = 0;            ///< of the FFA: of the fold
    double power = 0;            ///< mean per day and harmonic; noise has 1. Of the FFA, the mean
                                 ///< standardised S/N of a day; noise has about 0
    double sigma = 0;            ///< with the chosen days, after all trials
    double sigmaAll = 0;         ///< the same with all days
    double barycentric = 0;      ///< Hz; not a number where the direction is unknown
    double telescope = 0;        ///< Hz, mean of the days
    double withoutStrongest = 0; ///< sigma without the strongest 5 % of the days
    double firstHalf = 0;        ///< sigma, one trial, of the first half of the days
    double secondHalf = 0;
    std::vector<double> bySolarHour; ///< mean power in each of 24 hours of local solar time; not a
                                     ///< number where there is no day
    std::vector<GrowthPoint> growth;

    double period() const { return 1 / (barycentric > 0 ? barycentric : telescope); } ///< s
    QStringList marks() const { return marksOf("line"); }
};

struct FourierStack {
    std::shared_ptr<const FfaTrials> ffa; ///< whose trials the bins are; null in spectra
    /// Folds on a turned axis: the best standardised S/N of each product at the trials of the
    /// axis; null otherwise.
    std::shared_ptr<const std::vector<std::vector<float>>> rows;
    std::vector<int> widths;        ///< of the FFA: of the best boxcar of each trial, bins
    double binWidth = 0;            ///< Hz; of the FFA, half a turn over the stretch
    bool isTurned = false;          ///< the axis is that of the barycentre, not of the telescope
    double ratio = 1;               ///< mean of the days, telescope over barycentre
    std::vector<float> powers;      ///< mean per bin in units of the noise around it
    std::vector<float> sigma;       ///< the same, one trial
    std::vector<bool> leftOut;      ///< per bin: interference, counts as noise without scatter
    std::vector<FourierLine> lines; ///< strongest first, those of a few days behind the others
    int days = 0;                   ///< chosen
    int allDays = 0;
    double trials = 1;   ///< that the sigma of lines counts
    QStringList remarks; ///< what was left out and why
    QString problem;     ///< why there is no stack; empty otherwise

    /// Frequency of a bin, Hz; in folds that of the nearest trial.
    double frequency(double bin) const { return ffa ? 1 / ffa->periodAt(bin) : bin * binWidth; }
};

/// Stack of spectra.
///
/// @param products  of the same analysis; those with a problem, or of another length or step than
///                  most, are left out, which a remark says
/// @param control   asked between parts of the work; a stopped stack has a problem and no lines
FourierStack combineDays(const std::vector<FourierDay> &products, const FourierDaysChoice &choice,
                         const Jobs::Control &control = {});

} // namespace Days
