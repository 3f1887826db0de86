#include "calc/pulsar/pulsarcalculate.h"

#include "calc/channelsum.h"

#include <algorithm>
#include <iterator>

// What the reports of several actions say beside the system's own texts.

// What a report says of the base line that was taken off.
QString PulsarCalculate::baselineText(const QString &noise)
{
    if (noise == "polinom5")
        return "\nApproximation with polinom 5";
    if (noise == "median")
        return "\nApproximation with median line 256";
    if (noise == "backSum")
        return "\nLinear approximation of back sum";
    return "\nWithow deduct noise base line";
}

// "First point" as a line of a report, by number or by time as it was chosen.
QString PulsarCalculate::startText() const
{
    if (parameters.startTime.isEmpty())
        return "\nFirst point = " + QString::number(parameters.firstPoint);
    return "\nFirst point time = " + parameters.startTime;
}

QString PulsarCalculate::startsText(const std::vector<int> &starts) const
{
    QStringList texts;
    for (const int start : starts)
        texts << pointText(start);
    return texts.join(", ");
}

void PulsarCalculate::remarkOnBands(const std::vector<int> &starts)
{
    const int bands = data.channels - 1;
    if (bands > sumBands)
        outcome.remarks << QString("bands 1-%1 of %2 used").arg(sumBands).arg(bands);
    const auto startsWhere = [&](auto isMeant) {
        std::vector<int> meant;
        std::copy_if(starts.begin(), starts.end(), std::back_inserter(meant), isMeant);
        return starts.size() > 1 ? " (first point " + startsText(meant) + ")" : QString();
    };
    if (fewestBands < sumBands) {
        const int last = lastFullStart(largestDispersion);
        outcome.remarks << QString("The recording ends before the delayed samples of every band%1: "
                                   "the sum holds %2 of the %3 bands whole; %4.")
                               .arg(startsWhere([last](int start) { return start > last; }))
                               .arg(fewestBands)
                               .arg(sumBands)
                               .arg(fullStartText(largestDispersion));
    }
    const int missing = pointsWithoutAllBands(largestDispersion, starts.front());
    const int whole = starts.front() + missing;
    if (missing > 0)
        outcome.remarks << QString("The first %1 points%2 lack bands whose shifted samples lie "
                                   "before the recording; from first point %3 on none is missing.")
                               .arg(missing)
                               .arg(startsWhere([whole](int start) { return start < whole; }))
                               .arg(pointText(whole));
}

// A sum shows every pulse at the time of its arrival in the reference band.
void PulsarCalculate::remarkOnTimes(int channel)
{
    outcome.times =
        channel <= int(data.fbands.size())
            ? QString("Times and periods are topocentric, at %1 MHz (band %2).")
                  .arg(data.fbands[std::size_t(channel - 1)])
                  .arg(channel)
            : QString("Channel %1 is no frequency band; times and periods are topocentric.")
                  .arg(channel);
    outcome.remarks << outcome.times;
}
