#include "calc/pulsar/pulsarcommand.h"

#include "base/shellword.h"
#include "calc/pulsar/pulsaranalyses.h"

namespace {

QString commandOf(const PulsarAnalysis &analysis, const PulsarParameters &given,
                  const QString &recording)
{
    const QStringList words = QStringList{"zrt-batch", analysis.command} +
                              Tools::optionWords(analysis, given) +
                              QStringList(shellWord(recording));
    return words.join(' ');
}

} // namespace

PulsarParameters pulsarPresets()
{
    PulsarParameters presets;
    presets.module = 1;
    presets.ray = 7;
    presets.channel = 1;
    presets.dispersion = 26.2;
    presets.period = 3.032;
    presets.firstPoint = 58000;
    presets.harmonicNum = 1;
    presets.sigmaMultiple = 6;
    presets.dispersions = comparedDispersions(presets.dispersion);
    return presets;
}

std::array<double, 4> comparedDispersions(double dispersion)
{
    constexpr double step = 10; // pc/cm^3, of the scans from dispersion 0 on too
    const double dm = dispersion == 0 ? step : dispersion;
    return {0, dm / 2, dm, 2 * dm};
}

QString pulsarCommand(const QString &action, const PulsarParameters &given,
                      const QString &recording)
{
    const PulsarAnalysis *const analysis = findAnalysis(action);
    if (!analysis || analysis->command == "ffa")
        return {};
    PulsarParameters parameters = given;
    if (!given.startTime.isEmpty()) // which gave the first point
        parameters.firstPoint = analysis->presets.firstPoint;
    return commandOf(*analysis, parameters, recording);
}

QString ffaCommand(const PulsarParameters &given, const QString &recording)
{
    PulsarAnalysis search = *findAnalysis("createFFA");
    PulsarParameters parameters = given;
    if (!given.ffa.deredden) { // a window without a running median means nothing
        search.alwaysGiven.removeAll("--rmed-width");
        parameters.ffa.rmed_width = search.presets.ffa.rmed_width;
    }
    return commandOf(search, parameters, recording);
}
