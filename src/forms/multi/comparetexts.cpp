#include "forms/multi/comparetexts.h"

#include "analyses/compare/comparetables.h"
#include "coords/skyclock.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double secondsPerHour = 3600;
constexpr double hoursOfDay = 24;

} // namespace

const StackTexts &compareTexts()
{
    static const StackTexts texts = {.isFfa = false,
                                     .group = "Sum",
                                     .computeTip = {},
                                     .emptyPicture = "Choose a place in the day and press Compute",
                                     .picture = "%1 over sidereal time",
                                     .scale = "%1 to %2 sigma, dark is high",
                                     .leastHighest = 1,
                                     .value = "Differs",
                                     .valueTip = "Difference from the other days at %1, under the "
                                                 "cursor, sigma",
                                     .saveProducts = {},
                                     .saveTables = "Save tables: mean day, differences and days",
                                     .sees = {},
                                     .isGrey = true};
    return texts;
}

QString differencesText(const Compare::Comparison &comparison)
{
    if (!comparison.problem.isEmpty())
        return comparison.problem;
    QString text =
        QString("%1 above S/N %2").arg(comparison.found).arg(comparison.limit, 0, 'f', 2);
    if (comparison.found > int(comparison.list.size()))
        text += QString("; the strongest %1 are listed").arg(comparison.list.size());
    return text;
}

QString usedText(const Compare::CompareProducts &products, const Compare::Comparison &comparison)
{
    const Compare::ComparePlan &plan = products.plan;
    const Compare::CompareParameters &used = products.parameters;
    QStringList lines = {
        QString("%1 of %2 days").arg(comparison.days).arg(plan.offsets.size()),
        QString("Module %1, ray %2").arg(used.module).arg(used.ray),
        QString("Points %1, step %2 s").arg(plan.points()).arg(plan.days.list.tresolution),
        QString("Dispersion %1 pc/cm^3, base line %2").arg(used.dispersion).arg(used.noise),
        QString("Sidereal time %1 to %2")
            .arg(Compare::siderealText(plan.siderealTime),
                 Compare::siderealText(plan.siderealTimeAt(plan.points()))),
        "Each day in units of its noise; mean day: median per point; difference: day less the "
        "median of the other days",
        QString("Series are kept in %1%2")
            .arg(products.kept.path, products.kept.isBesideData
                                         ? QString()
                                         : QString(", for the directory cannot be written"))};
    return (lines + plan.days.remarks).join('\n');
}

SharedStart sharedStart(const RecordingSet &set, double clockOffset)
{
    constexpr double nearHours = 0.01; // the files of a strip; later ones go on behind a full hour
    constexpr double msPerSecond = 1000;
    const auto siderealOf = [clockOffset](const RecordingEntry &entry) {
        return Tools::localSiderealTime(
            entry.begin.addMSecs(-qint64(std::llround(clockOffset * msPerSecond))));
    };
    const auto hasBegin = [](const RecordingEntry &entry) {
        return entry.isUsable() && entry.begin.isValid();
    };
    const auto first = std::find_if(set.entries.begin(), set.entries.end(), hasBegin);
    if (first == set.entries.end())
        return {};
    const double own = siderealOf(*first);
    double latest = 0; // hours after the first
    for (const RecordingEntry &entry : set.entries) {
        const double later =
            hasBegin(entry) ? std::remainder(siderealOf(entry) - own, hoursOfDay) : 0;
        if (std::abs(later) < nearHours)
            latest = std::max(latest, later);
    }
    const double whole = std::ceil((own + latest) * secondsPerHour) + 1;
    const double seconds = whole - own * secondsPerHour;
    return {std::fmod(whole / secondsPerHour, hoursOfDay),
            int(std::ceil(seconds / first->header.tresolution)), true};
}
