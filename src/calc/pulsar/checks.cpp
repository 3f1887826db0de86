#include "calc/pulsar/checks.h"

#include "calc/fourier.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/channelsoff.h"
#include "calc/pulsar/sumreach.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Pulsar {

namespace {

constexpr int shortestChannel = 512;  // points for a base line
constexpr int shortestSpectrum = 128; // points that getFourier takes at least

bool hasBands(const ObservationData &header)
{
    return header.channels > sumBands && int(header.fbands.size()) >= sumBands;
}

bool hasInterval(const ObservationData &header)
{
    return header.tresolution > 0 && !std::isinf(header.tresolution);
}

Problems checkPlace(const ObservationData &header, const PulsarParameters &given)
{
    const auto outside = [](const QString &what, int number, int most) {
        return QString("%1 %2 is not in the recording.\nAllowed: 1 to %3.")
            .arg(what)
            .arg(number)
            .arg(most);
    };
    Problems problems;
    if (given.module < 1 || given.module > header.modules)
        problems.push_back({"module", outside("Module", given.module, header.modules)});
    if (given.ray < 1 || given.ray > header.rays)
        problems.push_back({"ray", outside("Ray", given.ray, header.rays)});
    return problems;
}

Problems checkStart(const SumReach &sum)
{
    const int last = sum.header.npoints - sum.points - 1;
    if (last < 0)
        return {{"", QString("The recording has %1 points; sums need more than %2.")
                         .arg(sum.header.npoints)
                         .arg(sum.points)}};
    const int start = sum.parameters.firstPoint;
    if (start >= 0 && start <= last)
        return {};
    const QString reason =
        start < 0 ? "lies before the recording"
        : sum.points == 1
            ? "is not before the last one of the recording, which sums do not take"
            : QString("leaves fewer than %1 points before the last one of the recording, "
                      "which sums do not take")
                  .arg(sum.points);
    const auto textOf = [&](int point) { return pointText(sum.header, sum.parameters, point); };
    return {{"firstPoint",
             QString("First point %1 %2.\nAllowed: %3 to %4; %5.")
                 .arg(textOf(start), reason, textOf(0), textOf(last), sum.fullStartText())}};
}

// The texts of these three are the system's own.
Problems checkChannelPlace(const ObservationData &header, const PulsarParameters &given)
{
    Problems problems;
    if (given.module < 1 || given.module > header.modules)
        problems.push_back(
            {"module", "Error of module, must be: module <" + QString::number(header.modules + 1)});
    if (given.channel < 1 || given.channel > header.channels)
        problems.push_back({"channel", "Error of channel, must be: channels <" +
                                           QString::number(header.channels + 1)});
    if (given.ray < 1 || given.ray > header.rays)
        problems.push_back(
            {"ray", "Error ray, must be: rays <" + QString::number(header.rays + 1)});
    return problems;
}

Problems checkChannelPoints(const ObservationData &header, const PulsarParameters &given)
{
    if (header.npoints < shortestChannel)
        return {{"", "Error of data! data.npoints=" + QString::number(header.npoints)}};
    if (!hasInterval(header))
        return {{"", QString("The passport gives a step of %1 ms (tresolution): times cannot be "
                             "computed.")
                         .arg(header.tresolution * 1000)}};
    if (given.points > 0 && given.points < shortestChannel)
        return {{"", QString("%1 points are too few for a base line.\nAllowed: %2 and more.")
                         .arg(given.points)
                         .arg(shortestChannel)}};
    const int last = header.npoints - shortestChannel;
    if (given.firstPoint >= 0 && given.firstPoint <= last)
        return {};
    return {{"firstPoint", QString("First point %1 leaves too few points before the end of the "
                                   "recording.\nAllowed: %2 to %3.")
                               .arg(pointText(header, given, given.firstPoint),
                                    pointText(header, given, 0), pointText(header, given, last))}};
}

Problems checkChannelsOff(const ObservationData &header, const PulsarParameters &given)
{
    if (given.channelsOff.isEmpty() || channelsOff(given.channelsOff, header.channels))
        return {};
    return {{"leaveOutChannels",
             QString("\"%1\" does not tell channels to leave out.\nAllowed: numbers from 1 to %2, "
                     "with commas.")
                 .arg(given.channelsOff)
                 .arg(header.channels)}};
}

} // namespace

Problems checkChannel(const ObservationData &header, const PulsarParameters &given)
{
    return joinProblems({checkChannelPlace(header, given), checkChannelPoints(header, given)});
}

Problems checkSelection(const ObservationData &header, const PulsarParameters &given, int points,
                        double dispersion)
{
    const Problems place = checkPlace(header, given);
    if (!hasBands(header))
        return joinProblems(
            {place,
             {{"", QString("The recording has %1 frequency bands with a known frequency; "
                           "sums need at least %2.")
                       .arg(std::min(header.channels - 1, int(header.fbands.size())))
                       .arg(sumBands)}}});
    if (!hasInterval(header))
        return joinProblems(
            {place,
             {{"", QString("The passport gives a step of %1 ms (tresolution): delays and "
                           "frequencies cannot be computed.")
                       .arg(ReportText::general(header.tresolution * 1000))}}});
    return joinProblems(
        {place, checkChannelsOff(header, given), checkStart({header, given, points, dispersion})});
}

Problems checkDispersion(const ObservationData &header, double dispersion, const QString &field)
{
    if (!(dispersion >= 0) || std::isinf(dispersion))
        return {{field, QString("Dispersion %1 is not possible.\nAllowed: 0 pc/cm^3 and more.")
                            .arg(ReportText::general(dispersion))}};
    if (!hasBands(header) || !hasInterval(header)) // which is refused by itself
        return {};
    const Tools::BandDelays delays = bandDelays(header, dispersion);
    for (int band = 0; band < sumBands - 1; ++band) {
        if (!(std::abs(delays.delay(band)) < std::numeric_limits<int>::max()))
            return {{field, QString("Dispersion %1 delays band %2 (%3 MHz) beyond all bounds.\n"
                                    "Check the dispersion and the frequencies of the passport.")
                                .arg(ReportText::general(dispersion))
                                .arg(band + 1)
                                .arg(header.fbands[std::size_t(band)])}};
    }
    return {};
}

Problems checkSumOf(int points, const ObservationData &header, const PulsarParameters &given)
{
    return joinProblems({checkSelection(header, given, points, given.dispersion),
                         checkDispersion(header, given.dispersion)});
}

Problems checkFixedSum(const ObservationData &header, const PulsarParameters &given)
{
    return checkSumOf(fixedPoints, header, given);
}

int spectrumLength(const PulsarParameters &given)
{
    return Tools::averagedLength(fixedPoints, given.averageCount, given.withNull) / 2;
}

Problems checkSpectrum(const PulsarParameters &given)
{
    const int length = Tools::averagedLength(fixedPoints, given.averageCount, given.withNull);
    if (length >= shortestSpectrum)
        return {};
    return {{"averageCount",
             QString("Averaging %1 leaves %2 points, too few for a spectrum (at least %3).\n"
                     "Allowed: 0 to %4, or 0 to %5 with null.")
                 .arg(given.averageCount)
                 .arg(length)
                 .arg(shortestSpectrum)
                 .arg(7)
                 .arg(8)}};
}

} // namespace Pulsar
