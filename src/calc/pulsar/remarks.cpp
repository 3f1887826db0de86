#include "calc/pulsar/remarks.h"

#include "calc/pulsar/bandsum.h"

#include <algorithm>
#include <iterator>

namespace Pulsar {

QString baselineText(const QString &noise)
{
    if (noise == "polinom5")
        return "Approximation with polinom 5";
    if (noise == "median")
        return "Approximation with median line 256";
    if (noise == "backSum")
        return "Linear approximation of back sum";
    return "Withow deduct noise base line";
}

void addStart(const PulsarParameters &parameters, Results::Report &report)
{
    if (parameters.startTime.isEmpty())
        report.addValue("First point", QString::number(parameters.firstPoint));
    else
        report.addValue("First point time", parameters.startTime);
}

void append(const std::vector<Results::Report> &remarks, PulsarResult &result)
{
    for (const Results::Report &remark : remarks) {
        if (!remark.isEmpty())
            result.remarks.push_back(remark);
    }
}

std::vector<Results::Report> bandRemarks(const SumReach &sum, int wholeBands,
                                         const std::vector<int> &starts)
{
    std::vector<Results::Report> remarks;
    const int bands = sum.header.channels - 1;
    if (bands > sumBands)
        remarks.emplace_back(QString("bands 1-%1 of %2 used").arg(sumBands).arg(bands));
    const auto startsWhere = [&](auto isMeant) {
        QStringList meant;
        for (const int start : starts) {
            if (isMeant(start))
                meant << pointText(sum.header, sum.parameters, start);
        }
        return starts.size() > 1 ? " (first point " + meant.join(", ") + ")" : QString();
    };
    if (wholeBands < sumBands) {
        const int last = sum.lastFullStart();
        remarks.emplace_back(
            QString("The recording ends before the delayed samples of every band%1: "
                    "the sum holds %2 of the %3 bands whole; %4.")
                .arg(startsWhere([last](int start) { return start > last; }))
                .arg(wholeBands)
                .arg(sumBands)
                .arg(sum.fullStartText()));
    }
    const int missing = sum.pointsWithoutAllBands(starts.front());
    const int whole = starts.front() + missing;
    if (missing > 0)
        remarks.emplace_back(
            QString("The first %1 points%2 lack bands whose shifted samples lie "
                    "before the recording; from first point %3 on none is missing.")
                .arg(missing)
                .arg(startsWhere([whole](int start) { return start < whole; }))
                .arg(pointText(sum.header, sum.parameters, whole)));
    return remarks;
}

std::vector<Results::Report> bandRemarks(const SumReach &sum, int wholeBands)
{
    return bandRemarks(sum, wholeBands, {sum.parameters.firstPoint});
}

QString timesText(const ObservationData &header, int channel)
{
    if (channel > int(header.fbands.size()))
        return QString("Channel %1 is no frequency band; times and periods are topocentric.")
            .arg(channel);
    return QString("Times and periods are topocentric, at %1 MHz (band %2).")
        .arg(header.fbands[std::size_t(channel - 1)])
        .arg(channel);
}

} // namespace Pulsar
