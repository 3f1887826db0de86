#include "forms/days/stacktexts.h"

#include "coords/skyposition.h"
#include "results/reporttext.h"

#include <algorithm>

const StackTexts &stackTexts(bool isFfa)
{
    static const StackTexts spectra = {
        false,
        "Spectrum",
        "Makes the spectra of all days and their stack; Enter does too",
        "Choose a place in the day and press Compute",
        "power of %1 over frequency",
        "P from 0 to %1; noise has 1",
        8,
        "P",
        "Power at %1, under the cursor; noise has 1",
        "Save spectra...",
        "Save tables: spectrum, lines and days",
        "Pulses of 5 % of the period that fold to S/N 1, 2, 3, 4 a day make 1.9, 5.5, 11.2, 18.4 "
        "sigma here in 100 days, and 1.9, 6.9, 15.5, 24.4 in FFA, before trials. Pulses of 30 % "
        "and "
        "S/N 2 make 11.9 here and 5.7 in FFA"};
    static const StackTexts periodograms = {
        true,
        "Periodogram",
        "Folds all days at every trial period and stacks them; Enter does too",
        "Choose a place in the day and press Compute",
        "best S/N of %1 over period",
        "S/N from 0 to %1, in scatters of noise",
        6,
        "S/N",
        "Best S/N at %1, under the cursor, in scatters of noise around its median",
        "Save periodograms...",
        "Save tables: periods, lines and days",
        "Pulses of 5 % of the period that fold to S/N 1, 2, 3, 4 a day make 1.9, 6.9, 15.5, 24.4 "
        "sigma here in 100 days, and 1.9, 5.5, 11.2, 18.4 in Fourier, before trials. Pulses of "
        "30 % and S/N 2 make 5.7 here and 11.9 in Fourier"};
    return isFfa ? periodograms : spectra;
}

QString planText(const Days::DayPlan &plan, qint64 recordings)
{
    const auto usable = std::count_if(plan.list.days.begin(), plan.list.days.end(),
                                      [](const Days::Day &day) { return day.reason.isEmpty(); });
    QString text = QString("Recordings: %1, days: %2").arg(recordings).arg(usable);
    const auto unusable = qint64(plan.list.days.size()) - usable;
    if (unusable > 0)
        text += QString(", days that do not fit: %1").arg(unusable);
    if (!plan.list.leftOut.empty())
        text += QString(", recordings left out: %1").arg(plan.list.leftOut.size());
    if (usable == 0)
        text += ". The list says why";
    return text;
}

QString usedText(const QString &directory, const Days::DaySpectra &spectra,
                 const Days::StackOutcome &outcome)
{
    const Days::FourierDaysParameters &used = spectra.parameters;
    const Days::FourierStack &stack = outcome.stack;
    QStringList lines = {
        directory,
        QString("%1 of %2").arg(stack.days).arg(ReportText::counted(stack.allDays, "day")),
        QString("Module %1, ray %2").arg(used.module).arg(used.ray),
        QString("Points %1, step %2 s").arg(used.points).arg(spectra.plan.list.tresolution),
        QString("Dispersion %1 pc/cm^3").arg(used.dispersion),
        stack.ffa
            ? QString("%1 periods from %2 s on, %3 trials")
                  .arg(stack.ffa->count())
                  .arg(used.ffa.period_min)
                  .arg(stack.trials, 0, 'f', 0)
            : QString("Bin %1 Hz, %2 trials").arg(stack.binWidth).arg(stack.trials, 0, 'f', 0),
        QString("%1 at the %2")
            .arg(stack.ffa ? "Periods" : "Frequencies",
                 stack.isTurned ? "barycentre" : "telescope"),
        stackTexts(used.isFfa).sees};
    const Days::FourierDaysChoice &choice = outcome.choice;
    if (choice.direction.isNumber())
        lines << QString("Direction %1 %2")
                     .arg(Tools::rightAscensionText(choice.direction.alfa),
                          Tools::declinationText(choice.direction.delta));
    lines << QString("Series are kept in %1%2")
                 .arg(spectra.kept.path, spectra.kept.isBesideData
                                             ? QString()
                                             : QString(", for the directory cannot be written"));
    if (!choice.leftOut.empty())
        lines << QString("%1 entries of the list of interference are left out")
                     .arg(choice.leftOut.size());
    lines += spectra.plan.remarks;
    lines += stack.remarks;
    return lines.join('\n');
}

QString trialsText(const Days::FfaTrials &trials)
{
    return QString("%1 trial periods from %2 to %3 s, %4")
        .arg(trials.count())
        .arg(trials.periods.front())
        .arg(trials.periods.back())
        .arg(ReportText::counted(int(trials.widths.size()), "width"));
}
