#include "analyses/days/dayseriesfile.h"

#include "analyses/days/oneline.h"
#include "base/numbertext.h"
#include "base/timetext.h"
#include "base/wholefile.h"
#include "calc/pulsar/bandsum.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstring>

// A header with all that the series depends on, a line with a remark and the check sum, the number
// of days, and the values.

namespace Days {

namespace {

constexpr char remarkKey[] = "remark: ";
constexpr char checkKey[] = "check: ";
constexpr char daysLine[] = "days: 1\n";

QByteArray headerOf(const RecordingSet &set, const Day &day, const QByteArray &title, int points,
                    const SeriesRequest &request)
{
    const ObservationData &first = entryOf(set, day.parts.front()).header;
    QByteArray header = title + "\n";
    header += "points: " + QByteArray::number(points) + "\ntype: float\nfirst_point: " +
              QByteArray::number(day.parts.front().first + day.before) +
              "\ndisp: " + QByteArray::number(qint64(request.dispersion)) +
              "\ndispersion: " + exactText(request.dispersion).toUtf8() +
              "\nmodule: " + QByteArray::number(request.module) +
              "\nray: " + QByteArray::number(request.ray) +
              "\ndate: " + textOfTime(day.begin, "yyyy-MM-dd hh:mm:ss.zzz").toUtf8() +
              "\ntresolution: " + exactText(first.tresolution).toUtf8() + "\nbands:";
    for (const double frequency : first.fbands)
        header += " " + exactText(frequency).toUtf8();
    for (const DayPart &part : day.parts) {
        const RecordingEntry &entry = entryOf(set, part);
        const QFileInfo file(entry.path);
        header += "\nfile: " + QByteArray::number(part.count) + " points from " +
                  QByteArray::number(part.first) + " of " + QByteArray::number(file.size()) +
                  " bytes of " +
                  textOfTime(file.lastModified().toUTC(), "yyyy-MM-dd hh:mm:ss.zzz").toUtf8() +
                  ", " + toOneLine(entry.path);
    }
    return header + "\n";
}

QByteArray hexHash(const QByteArray &bytes, QCryptographicHash::Algorithm algorithm)
{
    constexpr int digits = 12;
    return QCryptographicHash::hash(bytes, algorithm).toHex().left(digits);
}

QByteArray checkOf(const QByteArray &remark, const QByteArray &values)
{
    return hexHash(remark + values, QCryptographicHash::Md5);
}

// A line "key: value"; nothing else gives a value.
QByteArray valueOf(const QByteArray &line, const char *key)
{
    return line.startsWith(key) ? line.mid(int(std::strlen(key))).trimmed() : QByteArray("\n");
}

KeptSeries keptAs(const Day &day, const SeriesRequest &request, const QByteArray &header,
                  const QString &extension, int values, const QString &folder)
{
    const QString name =
        QString("%1_m%2_r%3_%4.%5")
            .arg(textOfTime(day.begin, "yyyyMMdd_hhmmss"), QString::number(request.module),
                 QString::number(request.ray),
                 QString::fromLatin1(hexHash(header, QCryptographicHash::Sha256)), extension);
    return {QDir(folder).absoluteFilePath(name), header, values};
}

} // namespace

KeptSeries keptSeriesOf(const RecordingSet &set, const Day &day, int points,
                        const SeriesRequest &request, const QString &folder)
{
    const QByteArray title = "series: sum of bands 1 to " + QByteArray::number(Pulsar::sumBands) +
                             (request.isBackward ? ", delays of the opposite sign" : "") +
                             ", before the base line, form 2";
    return keptAs(day, request, headerOf(set, day, title, points, request), "series", points,
                  folder);
}

KeptSeries keptProductOf(const RecordingSet &set, const Day &day, const SeriesRequest &request,
                         const ProductKind &kind, const QString &folder)
{
    const QByteArray header = headerOf(set, day, kind.title, kind.values, request) + kind.lines;
    return keptAs(day, request, header, kind.extension, kind.values, folder);
}

bool readKept(const KeptSeries &kept, DaySeries &series)
{
    QFile file(kept.path);
    if (!file.open(QIODevice::ReadOnly) || file.read(kept.header.size()) != kept.header)
        return false;
    const QByteArray remark = valueOf(file.readLine(), remarkKey);
    const QByteArray check = valueOf(file.readLine(), checkKey);
    const bool hasDays = file.readLine() == daysLine;
    const QByteArray values = file.readAll();
    if (!hasDays || values.size() != kept.points * qint64(sizeof(float)) ||
        checkOf(remark, values) != check)
        return false;
    series.sums.resize(std::size_t(kept.points));
    std::memcpy(series.sums.data(), values.constData(), std::size_t(values.size()));
    series.remark = fromOneLine(remark);
    series.wasKept = true;
    return true;
}

void keep(const KeptSeries &kept, const DaySeries &series)
{
    if (!QDir().mkpath(QFileInfo(kept.path).path()))
        return;
    const QByteArray values =
        QByteArray::fromRawData(reinterpret_cast<const char *>(series.sums.data()),
                                int(series.sums.size() * sizeof(float)));
    const QByteArray remark = toOneLine(series.remark).trimmed();
    const QByteArray bytes = kept.header + remarkKey + remark + "\n" + checkKey +
                             checkOf(remark, values) + "\n" + daysLine + values;
    if (!writeReplaceable(kept.path, bytes))
        QFile::remove(kept.path);
}

} // namespace Days
