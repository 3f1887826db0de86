#include "calc/pulsar/pulsarcalculate.h"

#include "results/reporttext.h"

bool PulsarCalculate::acceptSum()
{
    if (parameters.points > 0)
        stretch = parameters.points;
    return acceptFixedSum();
}

bool PulsarCalculate::sumChannelsAction()
{
    outcome.description =
        "One summation of channels\nDispersion = " + ReportText::general(parameters.dispersion) +
        (stretch == fixedPoints ? QString("\nNumber of points is fixed - 16384")
                                : QString("\nNumber of points = %1").arg(stretch));

    auto sum = std::vector<double>(std::size_t(stretch));
    if (!sumChannels(sum.data(), stretch, parameters.dispersion, true))
        return refuse("The channels cannot be summed.");
    fewestBands = completeBands;
    std::vector<double> baseline(sum.size());
    std::vector<double> backSum;
    if (!noiseBaseline(sum, parameters.dispersion, baseline.data(), &backSum))
        return refuse("The noise base line cannot be computed.\nIt needs more points; take more, "
                      "or none of the base lines.");

    if (parameters.deductNoise) {
        removeBaseline(sum, baseline);
        addCurve(sum, "minus noise base line");
    } else {
        addCurve(sum, "sum on canals");
        if (parameters.noise == "polinom5")
            addCurve(baseline, "polinom5 approximation");
        else if (parameters.noise == "median")
            addCurve(baseline, "median line approximation");
        else if (parameters.noise == "backSum") {
            addCurve(backSum, "back sum on canals");
            addCurve(baseline, "noise approximation");
        }
    }
    outcome.description += baselineText(parameters.noise);
    if (parameters.normalise && !parameters.deductNoise)
        outcome.remarks << "Normalization applies to the sum less its base line only.";
    markSteps();
    remarkOnBands();
    remarkOnTimes(sumBands);
    return true;
}
