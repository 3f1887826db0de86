#include "data/recordingsummary.h"

#include "base/timetext.h"
#include "data/recordingtime.h"
#include "data/truenumbers.h"

namespace {

// The digits of a passport's milliseconds, which were divided by 1000 on the way.
QString digits(double value, int count)
{
    return QString::number(value, 'g', count);
}

QString bandsText(const ObservationData &header)
{
    const int bands = header.channels - 1;
    const QString count = QString("%1 band%2").arg(bands).arg(bands == 1 ? "" : "s");
    if (header.fbands.empty())
        return count;
    const QString first = digits(header.fbands.front(), 7);
    const QString last = digits(header.fbands.back(), 7);
    return count + ", " + (first == last ? first : first + " to " + last) + " MHz";
}

QString many(const QString &what, int count, const QString &numbers)
{
    return what + (count == 1 ? " " : "s ") + numbers;
}

} // namespace

QStringList recordingSummary(const ObservationData &header)
{
    QStringList lines;
    QString length = QString("%1 points").arg(header.npoints);
    if (header.tresolution > 0)
        length += QString(" of %1 ms, %2 s")
                      .arg(digits(header.tresolution * 1000, 9),
                           digits(header.npoints * header.tresolution, 6));
    lines << length;
    if (const QDateTime begin = exactBegin(header); begin.isValid())
        lines << textOfTime(begin, "yyyy-MM-dd hh:mm:ss.zzz") + " UTC";
    QStringList content;
    if (header.modules > 0 && header.rays > 0)
        content << many("module", header.modules, moduleNumbersText(header)) + ", " +
                       many("ray", header.rays, rayNumbersText(header));
    if (header.channels > 1)
        content << bandsText(header);
    if (!content.isEmpty())
        lines << content.join("; ");
    return lines;
}
