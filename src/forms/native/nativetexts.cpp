#include "forms/native/nativetexts.h"

#include "data/recordingtime.h"
#include "picture/axistexts.h"

#include <QLocale>
#include <QStringList>
#include <cmath>

namespace NativeTexts {

namespace {

constexpr double longestTime = 1e15; // ms; beyond it a step is no time

QString bytesText(qint64 bytes)
{
    return QLocale::c().toString(bytes) + " bytes";
}

QString tableRow(const QString &name, const QString &value)
{
    return QString("<tr><td>%1&nbsp;</td><td align='right'>%2</td></tr>").arg(name, value);
}

} // namespace

SizeCheck sizeCheck(const RecordingFile &file)
{
    const qint64 announced = file.announcedSize();
    const qint64 difference = file.size() - announced;
    if (announced >= 0 && difference == 0)
        return {true, "Size: " + bytesText(file.size()) + ", as the passport says"};
    if (announced >= 0 && difference > 0)
        return {false, QString("Size: %1, %2 more than the passport says; they are not shown")
                           .arg(bytesText(file.size()), bytesText(difference))};
    return {false, QString("Size: %1, but the passport announces %2. %3 Copy the file again")
                       .arg(bytesText(file.size()),
                            announced < 0 ? QString("more than 8 EiB") : bytesText(announced),
                            dataEndText(file.header()))};
}

QString utcText(const ObservationData &header, double point)
{
    const RecordingClock clock(header);
    return clock.utc(point).isValid() ? Plot::timeOfDay(clock.msOfDay(point)) : QString();
}

QString siderealText(const ObservationData &header, double point)
{
    const std::optional<int> begin = siderealSeconds(header.starTime);
    const double seconds = point * header.tresolution * siderealRate;
    if (!begin || !(std::abs(seconds) * 1000 < longestTime))
        return {};
    return Plot::timeOfDay((*begin + qint64(std::floor(seconds))) * 1000).left(8);
}

QString coordsText(const ObservationData &header, double point, const QString &value)
{
    QStringList lines = {
        QString("point %1, %2 s").arg(qint64(point)).arg(point * header.tresolution, 0, 'f', 4),
        value};
    if (const QString utc = utcText(header, point); !utc.isEmpty())
        lines << "UTC " + utc;
    if (const QString sidereal = siderealText(header, point); !sidereal.isEmpty())
        lines << "sidereal " + sidereal;
    return lines.join("\n");
}

QString bandText(const ObservationData &header, double point, int band, double sigmas)
{
    QString channel = QString("channel %1").arg(band + 1);
    if (std::size_t(band) < header.fbands.size())
        channel += QString(", %1 MHz").arg(header.fbands[std::size_t(band)]);
    return coordsText(header, std::floor(point),
                      channel + QString(", %1 sigma").arg(sigmas, 0, 'f', 2));
}

QString valueText(double value)
{
    return QString::number(value, 'g', 6);
}

QString statisticsHtml(const StatisticsPart &part)
{
    const SeriesStatistics &s = part.statistics;
    QString html = QString("<p><span class='blue'>%1</span><br>%2: points %3 to %4, %5 s</p>")
                       .arg(part.name, part.isSelected ? "Selected" : "In sight")
                       .arg(part.first)
                       .arg(part.last)
                       .arg(valueText(part.seconds));
    const auto orDash = [&](double value) {
        return s.count == 0 ? QString("-") : valueText(value);
    };
    const auto ofSamples = [&](double value) { return part.isReduced ? "-" : orDash(value); };
    html += "<table width='100%'>" + tableRow("mean", orDash(s.mean)) +
            tableRow("sigma", orDash(s.sigma)) + tableRow("median", ofSamples(s.median)) +
            tableRow("MAD", ofSamples(part.deviation)) + tableRow("minimum", orDash(s.min)) +
            tableRow("maximum", orDash(s.max));
    if (part.isSelected)
        html += tableRow("S/N", part.isReduced || part.signal.surroundings == 0
                                    ? "-"
                                    : QString::number(part.signal.snr, 'f', 2));
    html += "</table>";
    if (part.isReduced)
        html += "<p>Zoom in for median, MAD and S/N.</p>";
    return html;
}

} // namespace NativeTexts
