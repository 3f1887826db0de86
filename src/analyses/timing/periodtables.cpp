#include "analyses/timing/periodtables.h"

#include "calc/significance.h"
#include "results/reporttext.h"

#include <cmath>

namespace Timing {

using namespace Results;

namespace {

QString nameOf(TimeScale scale)
{
    switch (scale) {
    case TimeScale::Seconds:
        return "seconds";
    case TimeScale::Utc:
        return "UTC at the telescope";
    case TimeScale::Barycentric:
        return "TDB at the barycentre";
    }
    return {};
}

QString number(double value)
{
    return QString::number(value, 'g', 4);
}

} // namespace

std::vector<HeaderLine> parameterLines(const PeriodParameters &parameters)
{
    std::vector<HeaderLine> lines;
    for (const PeriodField &field : periodFields()) {
        const QString value = Tools::headerText(field.valueIn(parameters));
        if (!value.isEmpty())
            lines.push_back({field.key, field.unit.isEmpty() ? value : value + " " + field.unit});
    }
    return lines;
}

std::vector<HeaderLine> outcomeLines(const PeriodSearch &search)
{
    constexpr double rateOfH = 0.4;
    const PeriodFamily &first = search.families.front();
    const Tools::TurnFit &fit = search.count.fit;
    std::vector<HeaderLine> lines = {
        {"verdict", search.verdict},
        {"times_are", nameOf(search.used.scale)},
        {"times_used", QString::number(search.used.times.size())},
        {"days", QString::number(search.groups.size())},
        {"days_apart", QString::number(search.count.clusters)},
        {"best_period", numberText(fit.period) + " s"},
        {"best_period_error", numberText(fit.error) + " s"},
        {"best_period_error_95", numberText(fit.error95) + " s"},
        {"best_period_rms", number(fit.rms()) + " s"},
        {"random_rms_over_period", number(search.chanceRms)},
        {"random_rms_over_period_at_chance", number(search.rareChanceRms)},
        {"h", number(first.h)},
        {"h_sigma", number(Tools::sigmaOfTail(-rateOfH * first.h))}};
    if (search.count.hasDerivative) {
        lines.push_back({"period_derivative", ReportText::general(fit.derivative) + " s/s"});
        lines.push_back(
            {"period_derivative_error", ReportText::general(fit.derivativeError) + " s/s"});
    }
    lines.push_back({"f_test_of_derivative", number(search.count.derivativeChance)});
    for (const QString &remark : search.remarks + search.count.remarks)
        lines.push_back({"remark", remark});
    return lines;
}

std::vector<Column> familyColumns(const PeriodSearch &search)
{
    std::vector<Column> columns;
    const auto add = [&](const QString &name, const QString &unit, const auto &valueOf) {
        std::vector<double> values;
        for (const PeriodFamily &family : search.families)
            values.push_back(valueOf(family));
        columns.push_back({name, unit, values});
    };
    using F = const PeriodFamily &;
    add("period", "s", [](F family) { return family.period; });
    add("error", "s", [](F family) { return family.error; });
    add("error_95", "s", [](F family) { return family.error95; });
    add("rms", "s", [](F family) { return family.rms; });
    add("rms_over_period", "", [](F family) { return family.rmsOverPeriod; });
    add("expected_by_chance", "", [](F family) { return family.expected; });
    add("chance", "", [](F family) { return family.chance; });
    add("rank", "", [](F family) { return family.rank(); });
    add("h", "", [](F family) { return family.h; });
    QStringList submultiples;
    for (const PeriodFamily &family : search.families) {
        QStringList texts;
        for (const double period : family.submultiples)
            texts << QString::number(period, 'g', 7);
        submultiples << (texts.isEmpty() ? QString("-") : texts.join(' '));
    }
    columns.push_back({"submultiples", "s", submultiples});
    return columns;
}

std::vector<Column> timeColumns(const PeriodSearch &search)
{
    const Tools::TurnFit &fit = search.count.fit;
    QStringList texts;
    std::vector<double> parts;
    std::vector<double> turns;
    std::vector<double> phases;
    for (std::size_t i = 0; i < search.count.times.size(); ++i) {
        texts << search.used.times[i].text();
        parts.push_back(search.count.times[i].cluster + 1);
        turns.push_back(double(search.count.times[i].turn));
        phases.push_back(fit.residuals[i] / fit.period);
    }
    return {{"time", search.used.scale == TimeScale::Seconds ? "s" : "MJD", texts},
            {"part", "", parts},
            {"turn", "", turns},
            {"residual", "s", fit.residuals},
            {"residual_turns", "", phases}};
}

std::vector<Column> curveColumns(const PeriodSearch &search)
{
    return {{"period", "s", search.curvePeriods}, {"rank", "", search.curveRanks}};
}

} // namespace Timing
