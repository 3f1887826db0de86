#include "calc/pulsar/pulsarcalculate.h"

#include "calc/fourier.h"
#include "results/reporttext.h"

bool PulsarCalculate::sumChannelsAndAverage()
{
    const int n = parameters.averageCount;
    std::vector<double> sum(fixedPoints);
    if (!sumWithoutNoise(sum.data(), fixedPoints, parameters.dispersion))
        return refuse("The channels cannot be summed.");
    fewestBands = completeBands;
    std::vector<double> averaged(fixedPoints);
    if (!Tools::averagePairs(sum.data(), averaged.data(), fixedPoints, n, false))
        return refuse("The sum cannot be averaged.");
    // Zeros that pad a transform are no part of the series.
    const int length = Tools::averagedLength(fixedPoints, n, false);
    averaged.resize(std::size_t(length));
    addCurve(averaged, "Sum channels and average");

    const double factor = Tools::averagedStepFactor(n, false);
    outcome.points = length;
    outcome.axis.step = factor;
    outcome.description =
        QString("Sum channels and average\nDispersion = %1\nNumber of points is "
                "fixed - 16384%2\nAveraging number = %3\nStep = %4 ms, length = "
                "%5 points, %6 s")
            .arg(ReportText::general(parameters.dispersion), baselineText(parameters.noise))
            .arg(n)
            .arg(factor * data.tresolution * 1000)
            .arg(length)
            .arg(fixedPoints * data.tresolution);
    markSteps();
    remarkOnBands();
    remarkOnTimes(sumBands);
    return true;
}
