#include "forms/days/stacktexts.h"

#include "results/reporttext.h"

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
        "spectrum",
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
        "periods",
        "Pulses of 5 % of the period that fold to S/N 1, 2, 3, 4 a day make 1.9, 6.9, 15.5, 24.4 "
        "sigma here in 100 days, and 1.9, 5.5, 11.2, 18.4 in Fourier, before trials. Pulses of "
        "30 % and S/N 2 make 5.7 here and 11.9 in Fourier"};
    return isFfa ? periodograms : spectra;
}

QString trialsText(const Days::FfaTrials &trials)
{
    return QString("%1 trial periods from %2 to %3 s, %4")
        .arg(trials.count())
        .arg(trials.periods.front())
        .arg(trials.periods.back())
        .arg(ReportText::counted(int(trials.widths.size()), "width"));
}
