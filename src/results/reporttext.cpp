#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

ReportText::WithError ReportText::rounded(double value, double error)
{
    const int decimals = error > 0 ? std::clamp(1 - int(std::floor(std::log10(error))), 0, 9) : 3;
    return {QString::number(value, 'f', decimals), QString::number(error, 'f', decimals)};
}

QString ReportText::withError(double value, double error)
{
    const WithError texts = rounded(value, error);
    return texts.value + " +- " + texts.error;
}
