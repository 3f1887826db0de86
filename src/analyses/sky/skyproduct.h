#pragma once

#include "analyses/days/fourierday.h"
#include "analyses/sky/skyplan.h"
#include "analyses/sky/skystack.h"

/// The arithmetic in which one kind of product differs from another.
namespace Sky {

/// One stretch of one ray at one dispersion.
struct CellStretch {
    const float *sums = nullptr;     ///< of the bands, one per point of the stretch
    const float *backSums = nullptr; ///< with opposite delays; null where they are not wanted
    int points = 0;
    double tresolution = 0; ///< s
    double ratio = 1; ///< frequency at the telescope over the one at the barycentre; not a number
                      ///< where it is unknown
};

/// What it adds to the stack of its cell.
struct CellProduct {
    std::vector<float> values; ///< one per position of the stack; empty where there is a problem
    int above = 0;             ///< values so high that they are rare in noise
    double expectedAbove = 0;  ///< as many in noise
    QString problem;
};

/// A peak of one stack.
struct CellLine {
    double position = 0; ///< on the axis of the stack, with its fraction
    int harmonics = 1;   ///< summed; of the FFA, the width of the pulse, bins
    double power = 0;    ///< summed, in units of the noise
    double logTail = 0;  ///< logarithm of the probability of one trial
};

/// What one day of noise adds to the power of a line.
struct DayNoise {
    double mean = 0;
    double variance = 1;
};

/// From the first to the last one; either may be a fraction.
struct PositionRange {
    double first = 0;
    double last = 0;
};

struct SkyCandidate;

struct SkyMethod {
    Product product = Product::Fourier;
    /// Values that the stack of a cell holds.
    int (*positions)(const SkyPlan &plan) = nullptr;
    /// A value above is cut off in the clipped stack: noise exceeds it on 5 % of the days.
    double clip = 3;
    /// Frequency, Hz, or period, s, of a position of the stack of a cell.
    double (*axisAt)(const SkyPlan &plan, double position) = nullptr;
    QString (*axisName)(const SkyPlan &plan) = nullptr; ///< with its unit
    /// Values that a map of it has over the axis.
    int (*columns)(const SkyPlan &plan) = nullptr;
    /// Hz, of the position of a line.
    double (*frequencyAt)(const SkyPlan &plan, double position) = nullptr;
    /// Whether the axis is that of the barycentre; otherwise it is the telescope's.
    bool (*isTurned)(const SkyPlan &plan) = nullptr;

    /// From several threads at once. The result depends on the arguments alone.
    CellProduct (*ofStretch)(const CellStretch &stretch, const SkyPlan &plan) = nullptr;

    /// Independent trials that the stack of one cell counts as.
    double (*trials)(const SkyPlan &plan) = nullptr;
    /// Peaks below a probability, the strongest first.
    std::vector<CellLine> (*linesOf)(const CellStack &stack, const SkyPlan &plan,
                                     double highestLogTail) = nullptr;
    /// Significance, sigma, over the axis of a map: that of the best harmonic sum at each place,
    /// after its trials. May have fewer values than a cell has positions, evenly spread.
    std::vector<float> (*significance)(const CellStack &stack, const SkyPlan &plan) = nullptr;

    /// What any stack has at the place of a line, in units of its noise.
    double (*powerAt)(const CellStack &stack, const SkyPlan &plan, const CellLine &line) = nullptr;
    /// Logarithm of the probability that noise of so many days has such a power.
    double (*logTail)(const SkyPlan &plan, int days, const CellLine &line, double power) = nullptr;
    /// The same of the clipped sums at the place of a line.
    double (*clippedLogTail)(const CellStack &stack, const SkyPlan &plan,
                             const CellLine &line) = nullptr;
    DayNoise (*noiseOfDay)(const SkyPlan &plan, const CellLine &line) = nullptr;
    /// As candidates tell it.
    double (*meanPower)(const SkyPlan &plan, const CellLine &line, int days) = nullptr;
    /// Bins of binWidth() by which the frequency of a line may be off.
    double (*tolerance)(const SkyPlan &plan, const CellLine &line) = nullptr;
    /// Where lines of neighbouring cells are the same.
    PositionRange (*sameLine)(const SkyPlan &plan, const CellLine &line) = nullptr;
    /// @param telescope  frequency of the line there, Hz
    bool (*isHum)(const CellStack &stack, const SkyPlan &plan, const CellLine &line,
                  double telescope, const std::vector<Days::DayHum> &hum) = nullptr;
    /// Fills in frequencies, period, dispersion and position with their errors, for the cell of the
    /// candidate.
    void (*measure)(const SkyStack &stack, const SkyPlan &plan, const CellLine &line,
                    SkyCandidate &candidate) = nullptr;
};

const SkyMethod &methodOf(Product product);

const SkyMethod &fourierMethod(); ///< of spectra
const SkyMethod &ffaMethod();     ///< of folds; its plan has trials

} // namespace Sky
