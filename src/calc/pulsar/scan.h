#pragma once

#include "calc/approximation.h"
#include "calc/dispersionpeak.h"
#include "calc/pulsar/actions.h"
#include "calc/pulsar/bandsum.h"

#include <vector>

/// What the scans share: one harmonic of the spectrum of the sum over trial dispersions.
namespace Pulsar {

struct DispersionScan {
    std::vector<double> dispersions; ///< pc/cm^3
    std::vector<double> values;      ///< of the harmonic
    std::vector<double> cubic;       ///< fit of degree 3
    Approximation::Extrema extrema;  ///< of the fit, positions in trials
    Tools::DispersionPeak peak;
    int wholeBands = sumBands; ///< of the sum that has the fewest

    bool isWhole = false; ///< false: it was stopped, or there is a problem
    QString problem;

    bool tellsDispersion() const { return peak.unconstrained.isEmpty(); }
    /// Index of the trial with the highest value.
    std::size_t strongest() const;
};

/// The dispersions of a scan, from 0 to twice the typed one or a little further.
std::vector<double> trialDispersions(const PulsarParameters &given);

/// First points of the scans of "sumTimeDispersions".
std::vector<int> scanStarts(const ObservationData &header, const PulsarParameters &given);

/// Scans the stretch from the first point on.
DispersionScan scanDispersions(const ObservationData &data, const PulsarParameters &given,
                               int averageCount, const Control &control);

/// An outcome with the axis and the first lines of the report.
AnalysisOutcome begunScan(const PreparedSamples &samples, const PulsarParameters &given);

/// What a scan tells of the dispersion.
Results::Report scanReport(const DispersionScan &scan, int harmonic);

struct NamedScan {
    QString name;
    DispersionScan scan;
};

/// Adds a curve and a part of the report for each of several scans, and what is shown of it alone.
/// Why scans do not tell the dispersion is said once for all of them.
void addScans(const std::vector<NamedScan> &scans, int harmonic, PulsarResult &result);

/// Remarks on a harmonic that is none of the typed period, and on missing bands.
std::vector<Results::Report> scanRemarks(const ObservationData &data, const PulsarParameters &given,
                                         int wholeBands, const std::vector<int> &starts);

} // namespace Pulsar
