#include "analyses/days/stacktables.h"

#include "coords/skyposition.h"

#include <cmath>
#include <limits>

namespace Days {

using namespace Results;

std::vector<HeaderLine> parameterLines(const FourierDaysParameters &parameters)
{
    std::vector<HeaderLine> lines;
    for (const FourierDaysField *field : analysisOf(parameters).fields) {
        const QString value = Tools::headerText(field->valueIn(parameters));
        if (!value.isEmpty())
            lines.push_back(
                {field->key, field->unit.isEmpty() ? value : value + " " + field->unit});
    }
    return lines;
}

std::vector<HeaderLine> stackLines(const FourierStack &stack, const DayPlan &plan,
                                   const FourierDaysChoice &choice)
{
    std::vector<HeaderLine> lines = {
        {"stacked", QString("%1 of %2 days").arg(stack.days).arg(stack.allDays)},
        {"tresolution", numberText(plan.list.tresolution) + " s"},
        stack.ffa ? HeaderLine{"trial_periods", QString::number(stack.ffa->count())}
                  : HeaderLine{"frequency_step", numberText(stack.binWidth) + " Hz"},
        {"frequencies", stack.isTurned ? "barycentre" : "telescope"},
        {"telescope_over_barycentre", numberText(stack.ratio)},
        {"trials", numberText(stack.trials)},
        {"site", plan.beam.site.isEmpty() ? QString("unknown") : plan.beam.site}};
    if (choice.direction.isNumber())
        lines.push_back({"direction", Tools::rightAscensionText(choice.direction.alfa) + " " +
                                          Tools::declinationText(choice.direction.delta)});
    for (const QString &remark : stack.remarks)
        lines.push_back({"remark", remark});
    return lines;
}

std::vector<HeaderLine> leftOutLines(const RecordingSet &set, const DayList &list)
{
    std::vector<HeaderLine> lines;
    for (const LeftOut &left : list.leftOut)
        lines.push_back(
            {"left_out", set.entries[std::size_t(left.recording)].path + ": " + left.reason});
    return lines;
}

std::vector<Column> spectrumColumns(const FourierStack &stack)
{
    std::vector<double> frequencies(stack.powers.size());
    for (std::size_t bin = 0; bin < frequencies.size(); ++bin)
        frequencies[bin] = stack.frequency(double(bin));
    if (stack.ffa) {
        const std::vector<double> bins(stack.ffa->foldBins.begin(), stack.ffa->foldBins.end());
        return {{"period", "s", stack.ffa->periods},
                {"fold_bins", "", bins},
                {"snr", "", stack.powers},
                {"significance", "sigma", stack.sigma}};
    }
    return {{"frequency", "Hz", frequencies},
            {"power", "", stack.powers},
            {"significance", "sigma", stack.sigma}};
}

std::vector<Column> linesColumns(const FourierStack &stack)
{
    const auto numbers = [&stack](double FourierLine::*member) {
        std::vector<double> values;
        for (const FourierLine &line : stack.lines)
            values.push_back(line.*member);
        return values;
    };
    std::vector<double> periods;
    std::vector<double> harmonics;
    std::vector<double> foldBins;
    QStringList hours;
    QStringList growth;
    QStringList marks;
    for (const FourierLine &line : stack.lines) {
        periods.push_back(line.period());
        harmonics.push_back(stack.ffa ? line.width : line.harmonics);
        foldBins.push_back(line.foldBins);
        QStringList powers;
        for (const double power : line.bySolarHour)
            powers << (std::isnan(power) ? QString("-") : QString::number(power, 'f', 2));
        hours << powers.join(' ');
        QStringList steps;
        for (const GrowthPoint &point : line.growth)
            steps << QString("%1:%2").arg(point.days).arg(point.sigma, 0, 'f', 1);
        growth << steps.join(' ');
        marks << (line.marks().isEmpty() ? QString("-") : line.marks().join("; "));
    }
    using L = FourierLine;
    std::vector<Column> columns = {{"frequency_barycentre", "Hz", numbers(&L::barycentric)},
                                   {"frequency_telescope", "Hz", numbers(&L::telescope)},
                                   {"period", "s", periods},
                                   {stack.ffa ? "width" : "harmonics", "", harmonics},
                                   {stack.ffa ? "snr" : "power", "", numbers(&L::power)},
                                   {"significance", "sigma", numbers(&L::sigma)},
                                   {"all_days", "sigma", numbers(&L::sigmaAll)},
                                   {"without_strongest", "sigma", numbers(&L::withoutStrongest)},
                                   {"first_half", "sigma", numbers(&L::firstHalf)},
                                   {"second_half", "sigma", numbers(&L::secondHalf)},
                                   {"by_solar_hour", "", hours},
                                   {"growth", "", growth},
                                   {"remark", "", marks}};
    constexpr int behindWidth = 4;
    if (stack.ffa)
        columns.insert(columns.begin() + behindWidth, {"fold_bins", "", foldBins});
    return columns;
}

std::vector<Column> daysColumns(const std::vector<FourierDay> &days,
                                const std::vector<DayVerdict> &verdicts,
                                const std::vector<bool> &chosen)
{
    QStringList names;
    QStringList counts;
    QStringList reasons;
    std::vector<double> sigmas;
    std::vector<double> above;
    std::vector<double> expected;
    std::vector<double> ratios;
    const double none = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t i = 0; i < days.size(); ++i) {
        const bool isWhole = days[i].isWhole();
        names << dayName(days[i].begin);
        counts << (chosen[i] ? "yes" : "no");
        sigmas.push_back(isWhole ? days[i].sigma : none);
        above.push_back(isWhole ? verdicts[i].above : none);
        expected.push_back(isWhole ? verdicts[i].expected : none);
        ratios.push_back(isWhole ? days[i].ratio : none);
        QStringList parts = {verdicts[i].reason, days[i].remark};
        parts.removeAll({});
        const QString reason = parts.join("; ");
        reasons << (reason.isEmpty() ? QString("-") : QString(reason).replace('\n', ' '));
    }
    return {{"day", "UTC", names},
            {"counts", "", counts},
            {"sigma", "", sigmas},
            {"above_5", "", above},
            {"expected_above_5", "", expected},
            {"telescope_over_barycentre", "", ratios},
            {"reason", "", reasons}};
}

std::vector<std::pair<QString, Results::ResultTable>>
stackTables(const std::vector<HeaderLine> &request, const DaySpectra &spectra,
            const StackOutcome &outcome, const RecordingSet &set)
{
    Results::ResultTable table;
    table.request = request;
    table.result = stackLines(outcome.stack, spectra.plan, outcome.choice);
    std::vector<std::pair<QString, Results::ResultTable>> all = {
        {outcome.parameters.isFfa ? "periods" : "spectrum", table},
        {"lines", table},
        {"days", table}};
    all[0].second.columns = spectrumColumns(outcome.stack);
    all[1].second.columns = linesColumns(outcome.stack);
    all[2].second.columns = daysColumns(spectra.days(), outcome.verdicts, outcome.choice.days);
    for (const HeaderLine &line : leftOutLines(set, spectra.plan.list))
        all[2].second.result.push_back(line);
    return all;
}

} // namespace Days
