#include "analyses/compare/comparetables.h"

#include "base/timetext.h"

#include <cmath>
#include <limits>

namespace Compare {

using namespace Results;

QString siderealText(double hours)
{
    constexpr qint64 tenthsPerHour = 36000;
    constexpr qint64 tenthsPerMinute = 600;
    const qint64 tenths = qint64(std::llround(hours * tenthsPerHour)) % (24 * tenthsPerHour);
    return QString("%1:%2:%3.%4")
        .arg(tenths / tenthsPerHour, 2, 10, QChar('0'))
        .arg(tenths % tenthsPerHour / tenthsPerMinute, 2, 10, QChar('0'))
        .arg(tenths % tenthsPerMinute / 10, 2, 10, QChar('0'))
        .arg(tenths % 10);
}

QString raysText(const std::vector<SharingRay> &rays)
{
    QStringList texts;
    for (const SharingRay &one : rays)
        texts << QString("%1: %2").arg(one.ray).arg(one.snr, 0, 'f', 1);
    return texts.isEmpty() ? QString("-") : texts.join(", ");
}

std::vector<HeaderLine> parameterLines(const CompareParameters &parameters)
{
    std::vector<HeaderLine> lines;
    for (const CompareField *field : compareAnalysis().fields) {
        const QString value = Tools::headerText(field->valueIn(parameters));
        if (!value.isEmpty())
            lines.push_back(
                {field->key, field->unit.isEmpty() ? value : value + " " + field->unit});
    }
    return lines;
}

std::vector<HeaderLine> comparisonLines(const CompareProducts &products,
                                        const Comparison &comparison)
{
    const ComparePlan &plan = products.plan;
    std::vector<HeaderLine> lines = {
        {"compared", QString("%1 of %2 days").arg(comparison.days).arg(plan.offsets.size())},
        {"tresolution", numberText(plan.days.list.tresolution) + " s"},
        {"sidereal_begin", siderealText(plan.siderealTime)},
        {"site", plan.days.beam.site.isEmpty() ? QString("unknown") : plan.days.beam.site}};
    if (comparison.problem.isEmpty()) {
        lines.push_back({"limit", numberText(comparison.limit)});
        lines.push_back({"differences", QString::number(comparison.found)});
    }
    for (const QString &remark : plan.days.remarks)
        lines.push_back({"remark", remark});
    if (!comparison.problem.isEmpty())
        lines.push_back({"remark", comparison.problem});
    return lines;
}

std::vector<Column> meanColumns(const ComparePlan &plan, const Comparison &comparison)
{
    std::vector<double> times(comparison.own.median.size());
    for (std::size_t i = 0; i < times.size(); ++i)
        times[i] = plan.siderealTimeAt(double(i));
    return {{"sidereal_time", "h", times}, {"mean_day", "sigma", comparison.own.median}};
}

std::vector<Column> differencesColumns(const CompareProducts &products,
                                       const Comparison &comparison)
{
    const ComparePlan &plan = products.plan;
    QStringList days, times, utc, rays;
    std::vector<double> hours, points, widths, seconds, snr, byChance;
    for (const ListedDifference &one : comparison.list) {
        days << Days::dayName(plan.days.list.days[std::size_t(one.day)].begin);
        times << siderealText(plan.siderealTimeAt(one.first));
        utc << textOfTime(plan.utcAt(one.day, one.first), "yyyy-MM-ddThh:mm:ss.zzz");
        hours.push_back(plan.siderealTimeAt(one.first));
        points.push_back(one.first);
        widths.push_back(one.width);
        seconds.push_back(one.width * plan.days.list.tresolution);
        snr.push_back(one.snr);
        byChance.push_back(one.byChance);
        rays << raysText(one.rays);
    }
    return {{"day", "UTC", days},          {"sidereal", "", times}, {"begin", "UTC", utc},
            {"sidereal_time", "h", hours}, {"point", "", points},   {"points", "", widths},
            {"width", "s", seconds},       {"snr", "", snr},        {"by_chance", "", byChance},
            {"other_rays", "", rays}};
}

std::vector<Column> daysColumns(const CompareProducts &products, const Comparison &comparison,
                                const std::vector<bool> &counts)
{
    const std::vector<CompareDay> &days = products.days();
    QStringList names, used, reasons;
    std::vector<double> sigmas, listed(days.size());
    for (const ListedDifference &one : comparison.list)
        listed[std::size_t(one.day)] += 1;
    for (std::size_t i = 0; i < days.size(); ++i) {
        names << Days::dayName(products.plan.days.list.days[i].begin);
        used << (counts[i] && days[i].isWhole() ? "yes" : "no");
        sigmas.push_back(days[i].isWhole() ? days[i].sigma
                                           : std::numeric_limits<double>::quiet_NaN());
        QStringList parts = {days[i].problem, days[i].remark};
        parts.removeAll({});
        const QString reason = parts.join("; ").replace('\n', ' ');
        reasons << (reason.isEmpty() ? QString("-") : reason);
    }
    return {{"day", "UTC", names},
            {"counts", "", used},
            {"sigma", "", sigmas},
            {"differences", "", listed},
            {"reason", "", reasons}};
}

} // namespace Compare
