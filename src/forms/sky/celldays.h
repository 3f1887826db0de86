#pragma once

#include "analyses/sky/skystack.h"
#include "forms/days/fourierjobs.h"
#include "forms/sky/skyjobs.h"
#include "picture/plotdata.h"

#include <memory>
#include <vector>

/// One cell of the stacks, and its days read once more: only stacks are kept.

struct SkyPlace {
    int ray = 0; ///< indices in the plan
    int dispersion = 0;
    int start = 0;

    bool operator==(const SkyPlace &other) const = default;
};

/// "module 1 ray 3, 26.7 pc/cm^3, RA 03:32:59, 200 days", for titles.
QString placeText(const Sky::SkyPlan &plan, const SkyPlace &place);

/// What the stack of a cell shows: its significance over the axis of maps, and its lines.
struct ShownCell {
    PlotData plot;
    std::vector<Days::FourierLine> lines;
    int days = 0;
};
ShownCell cellOf(const Sky::SkyStack &stack, const Sky::SkyPlan &plan, const SkyPlace &place,
                 const QStringList &source);

/// Where a candidate stands on the axis of its stack.
double axisOf(const Sky::SkyPlan &plan, const Sky::SkyCandidate &candidate);

/// The columns that show a signal with its harmonics, or its period with half and triple of it.
///
/// @param value  on that axis
Plot::Range rangeAround(const PlotAxis &axis, double value);

/// The days of a cell, each with its spectrum or periodogram, and their stack.
struct CellDays {
    std::shared_ptr<const DaySpectra> spectra;
    std::shared_ptr<const StackOutcome> stacked; ///< null where no day could be read
};
/// Throws where memory is too small.
CellDays readCellDays(const RecordingSet &set, const Sky::SkyPlan &plan, const SkyPlace &place,
                      const std::vector<Days::Interference> &leftOut, const Jobs::Control &control);

/// How the significance of a harmonic sum, or of a fold, grows with the days that count, one trial.
///
/// @param telescope  mean frequency of the days at the telescope, Hz
/// @param harmonics  of folds any number
std::vector<Days::GrowthPoint> growthOf(const CellDays &days, double telescope, int harmonics);

/// The folded profile of one day.
struct DayProfile {
    QDateTime begin;
    std::vector<double> bins; ///< in units of their noise
    double snr = 0;           ///< of the best boxcar
};

/// Profiles of the days that show a harmonic sum, or a fold, most strongly, the strongest first.
std::vector<DayProfile> bestProfiles(const RecordingSet &set, const CellDays &days,
                                     double telescope, int harmonics, int most,
                                     const Jobs::Control &control);
