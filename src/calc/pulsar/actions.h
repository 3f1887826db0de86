#pragma once

#include "calc/problems.h"
#include "calc/pulsar/preparedsamples.h"
#include "calc/pulsar/pulsarresult.h"
#include "jobs/control.h"

#include <vector>

/// The actions of PulsarCalculate as functions, each in the file of its name, with the checks that
/// no other action makes. They are called through pulsarAnalyses().
namespace Pulsar {

using Control = Jobs::Control;

AnalysisOutcome showNative(const PreparedSamples &samples, const PulsarParameters &given,
                           const Control &control);
AnalysisOutcome sumPeriod(const PreparedSamples &samples, const PulsarParameters &given,
                          const Control &control);
AnalysisOutcome sumPeriodOfBands(const PreparedSamples &samples, const PulsarParameters &given,
                                 const Control &control);
AnalysisOutcome sumChannelsAction(const PreparedSamples &samples, const PulsarParameters &given,
                                  const Control &control);
AnalysisOutcome sumChannelsAndAverage(const PreparedSamples &samples, const PulsarParameters &given,
                                      const Control &control);
AnalysisOutcome sumChannelsAndFourier(const PreparedSamples &samples, const PulsarParameters &given,
                                      const Control &control);
AnalysisOutcome sum4Dispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                const Control &control);
AnalysisOutcome sumAllDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                  const Control &control);
AnalysisOutcome sumMultiDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                    const Control &control);
AnalysisOutcome sumTimeDispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                   const Control &control);
AnalysisOutcome createFfa(const PreparedSamples &samples, const PulsarParameters &given,
                          const Control &control);

Problems checkFold(const ObservationData &header, const PulsarParameters &given);
Problems checkFoldSum(const ObservationData &header, const PulsarParameters &given);
Problems checkSum(const ObservationData &header, const PulsarParameters &given);
Problems checkFourier(const ObservationData &header, const PulsarParameters &given);
Problems checkFourDispersions(const ObservationData &header, const PulsarParameters &given);
Problems checkScan(const ObservationData &header, const PulsarParameters &given);
Problems checkStarts(const ObservationData &header, const PulsarParameters &given);
Problems checkFfa(const ObservationData &header, const PulsarParameters &given);

/// Points of the stretch that an action works on: a screenful of a channel, all of it to the end,
/// what leaves every band whole, the fixed length of sums, or what was asked for. Only where the
/// action accepts the parameters.
int screenPoints(const ObservationData &header, const PulsarParameters &given);
int foldPoints(const ObservationData &header, const PulsarParameters &given);
int foldSumPoints(const ObservationData &header, const PulsarParameters &given);
int fixedSumPoints(const ObservationData &header, const PulsarParameters &given);
int sumPoints(const ObservationData &header, const PulsarParameters &given);
/// Also where the recording or the parameters are not accepted: see PulsarCalculate::ffaPoints.
int ffaPoints(const ObservationData &header, const PulsarParameters &given);

/// Memory of the series and the result of an action, see PulsarAnalysis::bytes.
qint64 screenBytes(const ObservationData &header, const PulsarParameters &given);
qint64 foldBytes(const ObservationData &header, const PulsarParameters &given);
qint64 foldSumBytes(const ObservationData &header, const PulsarParameters &given);
qint64 sumBytes(const ObservationData &header, const PulsarParameters &given);
qint64 spectrumBytes(const ObservationData &header, const PulsarParameters &given);
qint64 ffaBytes(const ObservationData &header, const PulsarParameters &given);

// What the actions share.

/// Reports the progress; false when the user wants to stop. An action then returns what it has.
bool goesOn(const Control &control, int percent);

/// Shows the progress of one of several equal parts as that of the whole.
Control shareOf(const Control &control, int part, int parts);

/// An outcome over the stretch, without curves yet.
AnalysisOutcome begun(const PreparedSamples &samples, const PulsarParameters &given);

/// An outcome that ends with a problem of no field.
AnalysisOutcome refused(AnalysisOutcome outcome, const QString &text);

void addCurve(PulsarResult &result, const std::vector<double> &values, const QString &name);

/// The frequencies of the result's points, which are lines of the spectrum of the averaged sum.
void setSpectrumAxis(PulsarResult &result, const ObservationData &header, int averageCount);

} // namespace Pulsar
