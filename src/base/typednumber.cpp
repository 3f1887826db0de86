#include "base/typednumber.h"

#include <QRegularExpression>
#include <QStringList>
#include <algorithm>
#include <cmath>

namespace Tools {

std::optional<double> typedNumber(const QString &text)
{
    bool isNumber = false;
    // Two points in place of two marks are no number either.
    const double value = text.trimmed().replace(',', '.').toDouble(&isNumber);
    if (!isNumber || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<qint64> typedWhole(const QString &text)
{
    const std::optional<double> value = typedNumber(text);
    if (!value || *value != std::trunc(*value) || text.contains('.') || text.contains(','))
        return std::nullopt;
    constexpr double limit = 9e18;
    return qint64(std::clamp(*value, -limit, limit));
}

std::vector<double> typedNumbers(const QString &text)
{
    static const QRegularExpression blanks("\\s+");
    std::vector<double> values;
    for (const QString &item : text.split(blanks, Qt::SkipEmptyParts)) {
        const std::optional<double> value = typedNumber(item);
        if (!value)
            return {};
        values.push_back(*value);
    }
    return values;
}

} // namespace Tools
