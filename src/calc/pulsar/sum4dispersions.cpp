#include "calc/pulsar/actions.h"

#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/checks.h"
#include "calc/pulsar/remarks.h"
#include "results/reporttext.h"

#include <algorithm>

namespace Pulsar {

namespace {

constexpr double spectrumRaise = 0.05; // distance between neighbouring spectra of four

// @param length  of the spectrum
void describeHarmonics(const Results::ReportTable &harmonics, int number, int length,
                       PulsarResult &result)
{
    Results::Report &report = result.report;
    report.addLine("Sum of channels and fourier");
    report.addLine("Fixed number of points = 16384");
    if (harmonics.rows.empty()) {
        result.remarks.emplace_back(
            QString("Harmonic number %1 is outside 1 to %2: no value is reported.")
                .arg(number)
                .arg(length - 1));
        return;
    }
    report.addGap();
    report.addHeading("First harmonic:");
    report.addGap();
    report.addValue("Harmonic number", QString::number(number));
    report.addTable(harmonics);
}

} // namespace

Problems checkFourDispersions(const ObservationData &header, const PulsarParameters &given)
{
    const auto &dispersions = given.dispersions;
    const double largest = *std::max_element(dispersions.begin(), dispersions.end());
    Problems all = joinProblems({checkSelection(header, given, fixedPoints, largest),
                                 checkSpectrum(given), checkCut(header, given.cut)});
    for (std::size_t k = 0; k < dispersions.size(); ++k)
        all = joinProblems(
            {all, checkDispersion(header, dispersions[k], QString("dispersion%1").arg(k + 1))});
    return all;
}

AnalysisOutcome sum4Dispersions(const PreparedSamples &samples, const PulsarParameters &given,
                                const Control &control)
{
    AnalysisOutcome outcome = begun(samples, given);
    PulsarResult &result = outcome.result;
    const int n = spectrumLength(given);
    const int harmonic = given.harmonicNum;
    int fewestBands = sumBands;
    Results::ReportTable harmonics = {{{"no."}, {"dispersion", "pc/cm^3"}, {"value"}},
                                      "disp%1 = %2 value = %3"};
    auto spectrum = std::vector<double>(std::size_t(n));
    for (int k = 0; k < 4; ++k) {
        const double dispersion = given.dispersions[std::size_t(k)];
        SumNotes notes;
        if (!getFourierOfSum(samples.data, given, spectrum.data(), fixedPoints, dispersion,
                             given.averageCount, given.withNull, notes))
            return refused(outcome, QString("The spectrum at dispersion %1 cannot be computed.")
                                        .arg(ReportText::general(dispersion)));
        fewestBands = std::min(fewestBands, notes.wholeBands);
        if (k == 0)
            append({cutReport(given.cut, notes.cut)}, result);
        if (harmonic > 0 && harmonic < n)
            harmonics.rows.push_back({QString::number(k + 1), QString::number(dispersion, 'f', 1),
                                      QString::number(spectrum[std::size_t(harmonic)], 'f', 5)});
        const double raise = (3 - k) * spectrumRaise;
        for (double &value : spectrum)
            value += raise;
        addCurve(result, spectrum, QString("dispersion %1").arg(k + 1));
        if (!goesOn(control, 25 * (k + 1)))
            return outcome;
    }
    describeHarmonics(harmonics, harmonic, n, result);
    result.remarks.emplace_back("The first three spectra are raised by 0.15, 0.10 and 0.05.");
    result.points = n;
    setSpectrumAxis(result, samples.data, given.averageCount);
    const double largest = *std::max_element(given.dispersions.begin(), given.dispersions.end());
    append(bandRemarks({samples.data, given, fixedPoints, largest}, fewestBands), result);
    return outcome;
}

} // namespace Pulsar
