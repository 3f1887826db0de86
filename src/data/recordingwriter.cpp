#include "data/recordingwriter.h"

#include "base/bytetext.h"
#include "base/timetext.h"
#include "data/recordingtime.h"

#include <QFileInfo>
#include <QtEndian>
#include <cmath>
#include <limits>

QByteArray passportText(const QStringList &lines)
{
    QString text = QString("numpar %1\n").arg(lines.size() + 1);
    for (const QString &line : lines)
        text += QString(line).replace('\n', ' ') + '\n'; // names of files may hold line ends
    return bytesOfText(text);
}

WriteFailure RecordingWriter::open(const QString &path, const QByteArray &passport)
{
    if (WriteFailure failure = file.open(path))
        return failure;
    return file.write(passport);
}

WriteFailure RecordingWriter::write(const float *values, qint64 count)
{
    turned.resize(std::size_t(count));
    qToLittleEndian<quint32>(values, count, turned.data());
    return file.write(reinterpret_cast<const char *>(turned.data()), count * qint64(sizeof(float)));
}

QByteArray stretchPassport(const RecordingFile &file, int first, int count, double dispersion)
{
    Stretch stretch;
    stretch.first = first;
    stretch.count = count;
    const ObservationData &whole = file.header();
    const ObservationData part = stretchHeader(whole, stretch);
    const RecordingClock clock(part);

    QMap<QString, QString> entries = file.passport().entries;
    entries.remove(QString());
    entries["npoints"] = QString::number(count);
    if (entries.contains("star_time"))
        entries["star_time"] = part.starTime;
    if (clock.isKnown() && entries.contains("date_end") && entries.contains("time_end")) {
        const QDateTime end = clock.utc(count);
        entries["date_end"] = textOfTime(end, "dd.MM.yyyy");
        entries["time_end"] = textOfTime(end, "h:mm:ss") + " UTC";
    }
    entries["native_datetime"] = clock.isKnown()
                                     ? textOfTime(clock.utc(0), "dd.MM.yyyy hh:mm:ss.zzz") + " UTC"
                                     : whole.fileName + QString(" point %1").arg(part.point);
    entries["file_path"] = whole.filePath;
    entries["point"] = QString::number(part.point);
    entries["dispersion"] = QString::number(std::lround(dispersion));

    QStringList lines = {"npoints " + entries.take("npoints")};
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
        lines << entry.key() + " " + entry.value();
    return passportText(lines);
}

QString saveStretch(RecordingFile &file, int first, int count, double dispersion,
                    const QString &path, const std::function<bool(int percent)> &progress)
{
    const ObservationData &whole = file.header();
    if (first < 0 || count < 1 || qint64(first) + count > file.completePoints())
        return whole.filePath +
               QString(" has no points %1 to %2.").arg(first).arg(qint64(first) + count - 1);
    if (qint64(whole.point) + first > std::numeric_limits<int>::max() ||
        !(std::abs(dispersion) <= std::numeric_limits<int>::max()))
        return "The first point or the dispersion is too large for the file's passport.";
    if (QFileInfo(path) == QFileInfo(file.path()))
        return "The stretch would take the place of the recording it is cut from: " + path;

    RecordingWriter writer;
    if (const WriteFailure failure =
            writer.open(path, stretchPassport(file, first, count, dispersion)))
        return failure.text();
    const qint64 pointValues = file.pointBytes() / qint64(sizeof(float));
    int done = 0;
    bool isStopped = false;
    WriteFailure unwritten;
    const bool isRead = file.readPoints(first, count, [&](const float *values, int points) {
        unwritten = writer.write(values, pointValues * points);
        if (unwritten)
            return false;
        done += points;
        isStopped = progress && !progress(int((done - qint64(1)) * 100 / count));
        return !isStopped;
    });
    if (isStopped)
        return {};
    if (unwritten)
        return unwritten.text();
    if (!isRead)
        return file.reason().isEmpty() ? file.path() + " cannot be read." : file.reason();
    return writer.commit().text();
}
