#include "analyses/days/stretchparameters.h"

#include "calc/pulsar/pulsarfields.h"

#include <algorithm>

namespace Days {

std::vector<FieldProblem> problemsOfSpectrum(const StretchParameters &parameters)
{
    std::vector<FieldProblem> problems;
    const std::vector<FieldChoice> &noises = pulsarField("--noise").choices;
    const auto isNoise = [&](const FieldChoice &choice) {
        return choice.value == parameters.noise;
    };
    if (std::none_of(noises.begin(), noises.end(), isNoise))
        problems.push_back(
            {"groupBox_method", QString("There is no base line \"%1\".").arg(parameters.noise)});
    if (parameters.window < 129 || parameters.window > 513 || parameters.window % 2 == 0)
        problems.push_back({"window", "The window must be an odd number from 129 to 513."});
    const int averages = std::clamp(parameters.averageCount, 0, 30);
    if (parameters.averageCount < 0 || (parameters.points >> averages) < 2 * parameters.window)
        problems.push_back(
            {"averageCount",
             QString("%1 points averaged %2 times leave less than two windows of %3 bins. Average "
                     "less, or take more points.")
                 .arg(parameters.points)
                 .arg(parameters.averageCount)
                 .arg(parameters.window)});
    constexpr int harmonics[] = {1, 2, 4, 8, 16};
    if (std::find(std::begin(harmonics), std::end(harmonics), parameters.harmonics) ==
        std::end(harmonics))
        problems.push_back({"harmonics", "Allowed: 1, 2, 4, 8 or 16 harmonics."});
    return problems;
}

} // namespace Days
