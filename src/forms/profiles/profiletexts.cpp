#include "forms/profiles/profiletexts.h"

#include "base/timetext.h"
#include "results/reporttext.h"

#include <cmath>

const StackTexts &profileTexts()
{
    static const StackTexts texts = {
        .isFfa = false,
        .group = "Fold",
        .computeTip = {},
        .emptyPicture = "Choose a place in the day and a period, and press Compute",
        .picture = "%1 over phase",
        .scale = "%1 to %2 of a day's noise, dark is high",
        .leastHighest = 1,
        .value = "S/N",
        .valueTip = "S/N of the best boxcar of the day alone",
        .saveProducts = {},
        .saveTables = "Save tables: average, days and trials",
        .sees = {},
        .isGrey = true};
    return texts;
}

QString planText(const Profiles::ProfilePlan &plan, qint64 recordings)
{
    QStringList lines = {planText(plan.days, recordings)};
    if (plan.problems.empty())
        lines << QString("Period %1 s, DM %2, begin error %3 s")
                     .arg(1 / plan.ephemeris.frequency, 0, 'g', 10)
                     .arg(plan.parameters.dispersion)
                     .arg(plan.parameters.beginError, 0, 'g', 3);
    return (lines + plan.remarks).join('\n');
}

QString resultText(const Profiles::ProfileOutcome &outcome, const Profiles::ProfilePlan &plan,
                   const QString &keptPath)
{
    static const QStringList besideDays = {"begin_error_used", "tresolution", "site_of_recordings"};
    QStringList lines;
    for (const Results::HeaderLine &line : Profiles::outcomeLines(outcome, plan)) {
        const bool isOfSnr = line.key.startsWith("snr_") || line.key.startsWith("z2_") ||
                             line.key == "h" || line.key == "h_sigma" ||
                             line.key == "equivalent_width";
        if (isOfSnr || besideDays.contains(line.key))
            continue;
        lines << (line.key == "remark" ? line.value
                                       : QString(line.key).replace('_', ' ') + ": " + line.value);
    }
    lines << "Folds are kept in " + keptPath;
    return lines.join('\n');
}

namespace {

QString useText(const Profiles::StackedDay &day)
{
    switch (day.use) {
    case Profiles::DayUse::Alone:
        return "the only day";
    case Profiles::DayUse::ByEphemeris:
        return "aligned by the ephemeris";
    case Profiles::DayUse::ByTemplate:
        return "aligned by template";
    default:
        return "out: " + day.reason;
    }
}

} // namespace

QString dayText(const Profiles::ProfileOutcome &outcome, int day)
{
    const auto at = std::size_t(day);
    const Profiles::StackedDay &own = outcome.stack.days[at];
    QStringList lines = {textOfTime(outcome.days()[at].begin, "yyyy-MM-dd hh:mm:ss") + " UTC, " +
                         useText(own)};
    if (std::isfinite(own.shift) && own.shiftError > 0)
        lines << QString("Later than the others by %1 +- %2 periods")
                     .arg(own.shift, 0, 'f', 5)
                     .arg(own.shiftError, 0, 'f', 5);
    return lines.join('\n');
}

QString snrText(double value, double sigma)
{
    constexpr double wide = 1e4;
    const QString number =
        value < wide ? QString::number(value, 'f', 1) : QString::number(value, 'g', 4);
    return QString("%1 (%2 \u03c3)").arg(number).arg(sigma, 0, 'f', 1);
}
