#include "calc/pulsar/pulsarcalculate.h"

#include "calc/fourier.h"
#include "results/reporttext.h"

#include <algorithm>

namespace {

constexpr double spectrumRaise = 0.05; // distance between neighbouring spectra of four

} // namespace

bool PulsarCalculate::acceptFourDispersions()
{
    const auto &dispersions = parameters.dispersions;
    const int length =
        Tools::averagedLength(fixedPoints, parameters.averageCount, parameters.withNull);
    bool isAccepted = acceptSelection(*std::max_element(dispersions.begin(), dispersions.end()));
    isAccepted = acceptSpectrum(length) && isAccepted;
    for (std::size_t k = 0; k < dispersions.size(); ++k)
        isAccepted =
            acceptDispersion(dispersions[k], QString("dispersion%1").arg(k + 1)) && isAccepted;
    return isAccepted;
}

bool PulsarCalculate::sum4Dispersions()
{
    const int count = Tools::powerOfTwoFloor(fixedPoints);
    const int length = Tools::averagedLength(count, parameters.averageCount, parameters.withNull);
    const int n = length / 2;
    const int harmonic = parameters.harmonicNum;
    QString harmonicText;
    auto spectrum = std::vector<double>(std::size_t(n));
    for (int k = 0; k < 4; ++k) {
        const double dispersion = parameters.dispersions[std::size_t(k)];
        if (!getFourierOfSum(spectrum.data(), count, dispersion, parameters.averageCount,
                             parameters.withNull))
            return refuse(QString("The spectrum at dispersion %1 cannot be computed.")
                              .arg(ReportText::general(dispersion)));
        if (harmonic > 0 && harmonic < n)
            harmonicText += QString("\ndisp%1 = %2 value = %3")
                                .arg(k + 1)
                                .arg(dispersion, 0, 'f', 1)
                                .arg(spectrum[std::size_t(harmonic)], 0, 'f', 5);
        const double raise = (3 - k) * spectrumRaise;
        for (double &value : spectrum)
            value += raise;
        addCurve(spectrum, QString("dispersion %1").arg(k + 1));
        if (!goOn(25 * (k + 1)))
            return false;
    }
    outcome.description = "Sum of channels and fourier\nFixed number of points = 16384";
    if (!harmonicText.isEmpty())
        outcome.description +=
            "\n\nFirst harmonic:\n\nHarmonic number = " + QString::number(harmonic) + harmonicText;
    else
        outcome.remarks << QString("Harmonic number %1 is outside 1 to %2: no value is reported.")
                               .arg(harmonic)
                               .arg(n - 1);
    outcome.remarks << "The first three spectra are raised by 0.15, 0.10 and 0.05.";
    outcome.points = n;
    setSpectrumAxis(parameters.averageCount);
    markSteps();
    remarkOnBands();
    return true;
}
