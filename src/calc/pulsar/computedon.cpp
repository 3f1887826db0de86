#include "calc/pulsar/computedon.h"

#include "base/numbertext.h"
#include "base/timetext.h"
#include "calc/baseline.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "data/recordingtime.h"
#include "data/truenumbers.h"
#include "results/reporttext.h"

namespace {

// A number of the telescope, with the place in the file that the fields count where it differs.
QString withPlace(int number, int place)
{
    const QString text = QString::number(number);
    return number == place ? text : text + QString(" (place %1 in the file)").arg(place);
}

// A place in the file with the number that the passport gives to what stands there.
QString withNumber(int place, int number)
{
    const QString text = QString::number(place);
    return number == place ? text : text + QString(" (number %1)").arg(number);
}

QString frequencyText(const ObservationData &data, int band)
{
    const auto index = std::size_t(band - 1);
    return index < data.fbands.size() ? QString("%1 MHz").arg(data.fbands[index], 0, 'g', 10)
                                      : QString("no frequency");
}

QString dispersionText(const QString &action, const PulsarParameters &parameters,
                       const PulsarResult &result)
{
    if (reads(action, "--compare")) {
        QStringList texts;
        for (const double dispersion : parameters.dispersions)
            texts << exactText(dispersion);
        return texts.join(", ");
    }
    if (isScan(action))
        return "0 to " + ReportText::general((result.points - 1) * result.axis.step);
    return exactText(parameters.dispersion);
}

QString startText(const PulsarResult &result, const PulsarParameters &parameters)
{
    QStringList starts;
    for (const int start : result.starts)
        starts << QString::number(start);
    return starts.size() > 1 ? "each of the first points " + starts.join(", ")
                             : "first point " + QString::number(parameters.firstPoint);
}

// A sum with its base line beside it.
bool isPlainSum(const QString &action, const PulsarParameters &parameters)
{
    return reads(action, "--deduct") && !parameters.deductNoise;
}

QString baselineText(const QString &action, const PulsarParameters &parameters)
{
    if (!Tools::isBaseline(parameters.noise))
        return "none";
    const bool isShown = action == "showNative" || isPlainSum(action, parameters);
    // A single channel has no sum with opposite delays.
    const QString name = worksOnChannel(action) && parameters.noise == "backSum"
                             ? QString("line through means of 128 points")
                             : parameters.noise;
    return name + (isShown ? ", not taken off" : ", taken off");
}

QString averagingText(const QString &action, const PulsarParameters &parameters)
{
    const bool pads = parameters.withNull && reads(action, "--with-null");
    const int n = parameters.averageCount;
    return (reads(action, "--each-average") ? QString("0 to %1 times").arg(n)
            : n == 0                        ? QString("none")
                     : QString("%1 times, %2 points each").arg(n).arg(1 << n)) +
           (pads ? ", with null" : "");
}

} // namespace

QString moduleText(const ObservationData &data, int module)
{
    return withNumber(module, moduleNumber(data, module - 1));
}

QString rayText(const ObservationData &data, int ray)
{
    return withNumber(ray, rayNumber(data, ray - 1));
}

Results::Report choicesReport(const QString &action, const ObservationData &data,
                              const PulsarParameters &parameters, int points)
{
    Results::Report report("Action:" + action);
    report.addLine("Module:" + moduleText(data, parameters.module));
    report.addLine("Channel:" + QString::number(parameters.channel));
    report.addLine("Ray:" + rayText(data, parameters.ray));
    report.addLine("Points:" + QString::number(points));
    return report;
}

bool worksOnChannel(const QString &action)
{
    const PulsarAnalysis *const analysis = findAnalysis(action);
    return analysis && analysis->onChannel;
}

bool isNormalised(const QString &action, const PulsarParameters &parameters)
{
    return parameters.normalise && reads(action, "--normalise") && !isPlainSum(action, parameters);
}

QString utcRange(const ObservationData &data, int firstPoint, int points)
{
    const RecordingClock clock(data);
    const QDateTime first = clock.utc(firstPoint);
    const QDateTime last = clock.utc(double(firstPoint) + points - 1);
    if (!first.isValid() || !last.isValid())
        return {};
    return textOfTime(first, "yyyy-MM-dd hh:mm:ss.zzz") + " to " + textOfTime(last, "hh:mm:ss.zzz");
}

QStringList computedOn(const QString &path, const QString &action, const ObservationData &data,
                       const PulsarParameters &parameters, const PulsarResult &result)
{
    const int module = moduleNumber(data, parameters.module - 1);
    const int ray = rayNumber(data, parameters.ray - 1);
    QStringList lines = {"file: " + path, "module: " + withPlace(module, parameters.module) +
                                              ", ray: " + withPlace(ray, parameters.ray)};
    constexpr int bands = Pulsar::sumBands;
    if (worksOnChannel(action))
        lines << QString("channel: %1, %2")
                     .arg(parameters.channel)
                     .arg(frequencyText(data, parameters.channel));
    else
        lines << QString("dispersion: %1 pc/cm^3, bands 1 to %2, reference %3")
                     .arg(dispersionText(action, parameters, result))
                     .arg(bands)
                     .arg(frequencyText(data, bands));
    lines << QString("points: %1 from %2 on, step %3 ms")
                 .arg(result.stretch)
                 .arg(startText(result, parameters), exactText(data.tresolution * 1000));
    if (const QString utc = utcRange(data, parameters.firstPoint, result.stretch); !utc.isEmpty())
        lines << "UTC: " + utc;
    lines << "base line: " + baselineText(action, parameters) +
                 (isNormalised(action, parameters) ? ", normalised" : ", not normalised");
    if (reads(action, "--average"))
        lines << "averaging: " + averagingText(action, parameters);
    if (reads(action, "--channels-off") && !parameters.channelsOff.isEmpty())
        lines << "channels left out: " + QString(parameters.channelsOff).replace(",", ", ");
    lines << (parameters.deleteStep ? QString("steps taken out: %1").arg(result.jumps)
                                    : QString("steps: not taken out"));
    return lines;
}
