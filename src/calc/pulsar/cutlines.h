#pragma once

#include "calc/problems.h"
#include "data/observationdata.h"
#include "results/report.h"

#include <QString>
#include <functional>
#include <vector>

/// Hum and lines that a user wants out of a series before it is searched. The list is a text:
/// "hum" for mains hum as measured, frequencies in Hz as the sampling shows them, "33.3" for a line
/// or "24.9-25.1" for a band; separated by commas. Hum and a line go with 0.1 Hz to either side.
/// Empty: nothing is cut.
namespace Pulsar {

/// A range of frequencies that was taken out.
struct CutBand {
    double low = 0;      ///< Hz, as the sampling shows it
    double high = 0;     ///< Hz
    double variance = 0; ///< part of the variance of the series that went with it
    bool isHum = false;
};

/// What is wrong with a list for a recording.
Problems checkCut(const ObservationData &header, const QString &list);

/// The bands that a list without problems names, in rising order; hum where this series shows it.
/// Bands that overlap or that are less than two turns over the series apart are one.
std::vector<CutBand> bandsToCut(const QString &list, double tresolution,
                                const std::vector<double> &series);

/// Takes bands out of a series: everything that oscillates within them, see Tools::notch.
///
/// @param bands  receive their variance
/// @param goOn   asked again and again, may be empty; false ends it, and the series is of no use
/// then
void cutOut(std::vector<CutBand> &bands, double tresolution, std::vector<double> &series,
            const std::function<bool()> &goOn = {});

/// Takes out of a series what bandsToCut() finds in it.
///
/// @return what was taken out
std::vector<CutBand> cutOut(const QString &list, double tresolution, std::vector<double> &series,
                            const std::function<bool()> &goOn = {});

/// Memory that cutOut() takes at most for a series of so many points, itself included; of a list
/// with problems what the rest of it takes.
double cutBytes(const QString &list, int points, double tresolution);

/// Noise of a sample, as Tools::robustSigma tells it of differences, in a series of which bands
/// were taken out: what white noise had before they took their part of it.
double noiseAfterCut(const std::vector<double> &series, const std::vector<CutBand> &bands,
                     double tresolution);

/// What a report says of it.
///
/// @param series  what was cut: "sum" or "channel"
Results::Report cutReport(const QString &list, const std::vector<CutBand> &bands,
                          const char *series = "sum");

} // namespace Pulsar
