#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

QString ReportText::withError(double value, double error)
{
    const int decimals = error > 0 ? std::clamp(1 - int(std::floor(std::log10(error))), 0, 9) : 3;
    return QString("%1 +- %2").arg(value, 0, 'f', decimals).arg(error, 0, 'f', decimals);
}
