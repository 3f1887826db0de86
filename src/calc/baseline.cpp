#include "calc/baseline.h"

#include "calc/approximation.h"

#include <algorithm>

namespace Tools {

bool isBaseline(const QString &noise)
{
    return !baselineCurveName(noise).isEmpty();
}

bool findBaseline(const QString &noise, const double *in, double *out, int count)
{
    Approximation approximation(in, out, count);
    if (noise == "polinom5")
        return approximation.polynomial(baselineDegree, false);
    if (noise == "median")
        return approximation.medianLine(baselineMedianBlock);
    if (noise == "backSum")
        return approximation.linearLine(baselineMeanBlock);
    std::fill_n(out, count, 0.0);
    return true;
}

QString baselineCurveName(const QString &noise)
{
    if (noise == "polinom5")
        return "polinom5 approximation";
    if (noise == "median")
        return "median line approximation";
    if (noise == "backSum")
        return "noise approximation";
    return {};
}

} // namespace Tools
