#include "coords/filenames.h"

#include "coords/datetext.h"

#include <QRegularExpression>
#include <QStringList>

namespace Tools {

namespace {

constexpr double highResolutionBelow = 0.09; // s
constexpr int longestOneLineTail = 34;       // characters

QString frequencyCode(int frequency)
{
    return frequency < 1 ? QString("0%1").arg(-qint64(frequency)) : QString("1%1").arg(frequency);
}

QString siteIn(const QString &path, const QRegularExpression &pattern)
{
    static const QStringList sites = {"N1", "N2", "N0", "N4"};
    const QString site = pattern.match(path).captured(1);
    return sites.contains(site) ? site : QString();
}

// What a recording is named by: its date as "ddMMyy" and its hour; both empty when the date
// cannot be read.
struct FileHour {
    QString date;
    QString hour;
};

FileHour fileHour(const QString &date, int hour, int timeZone)
{
    int endHour = hour + timeZone + 1;
    QString endDate = date;
    if (endHour > 23) {
        endHour -= 24;
        endDate = nextDay(date);
    }
    const QString day = shortFileDate(endDate);
    if (day.isEmpty())
        return {};
    return {day, QString("%1").arg(endHour, 2, 10, QChar('0'))};
}

} // namespace

QString ploshFromPath(const QString &path)
{
    static const QRegularExpression atEnd("_(N\\d)\\z"); // $ would let a line end follow
    static const QRegularExpression between("[/_](N\\d)[/_]");
    const QString site = siteIn(path, atEnd);
    return site.isEmpty() ? siteIn(path, between) : site;
}

QString ploshFromFileName(const QString &name)
{
    static const QRegularExpression pattern("_(N[0124])[_.]");
    return pattern.match(name).captured(1);
}

bool isCosCorrected(const QString &name)
{
    return name.contains("_cos");
}

QString twoLevelTail(const QString &path)
{
    static const QRegularExpression pattern("/([^/]+)/([^/]+)$");
    const QRegularExpressionMatch match = pattern.match(path);
    if (!match.hasMatch())
        return path;
    if (match.capturedLength() > longestOneLineTail)
        return QString("../%1/\n  /%2").arg(match.captured(1), match.captured(2));
    return match.captured();
}

QString threeLevelTail(const QString &path)
{
    static const QRegularExpression pattern("/([^/]+)/([^/]+)/([^/]+)$");
    const QRegularExpressionMatch match = pattern.match(path);
    return match.hasMatch() ? match.captured() : path;
}

QString spectrumFileName(int frequency, int count, int averaging, const QString &prefix)
{
    const QString name = spectrumBaseName(frequency, count, averaging) + ".txt";
    return prefix.isEmpty() ? name : prefix + "_" + name;
}

QString spectrumBaseName(int frequency, int count, int averaging)
{
    return QString("f%1_n%2_av%3").arg(frequencyCode(frequency)).arg(count).arg(averaging);
}

QString dispersedSpectrumName(int frequency, int count, int averaging, int dispersion)
{
    return spectrumBaseName(frequency, count, averaging) + QString("_d%1").arg(dispersion);
}

QString harmonicMapFileName(const QString &name, int points, int spectrumPoints, int bins,
                            const QString &baseline, int medianWidth)
{
    // All fields in one call: a name may itself hold "%2".
    const QString np = QString::number(points);
    const QString sp = QString::number(spectrumPoints);
    const QString b = QString::number(bins);
    if (baseline == "median")
        return QString("map_%1_np%2_sp%3_b%4_median%5.txt")
            .arg(name, np, sp, b, QString::number(medianWidth));
    if (baseline == "polinom")
        return QString("map_%1_np%2_sp%3_b%4_polinom.txt").arg(name, np, sp, b);
    return {};
}

QString dataFileName(const QString &date, int hour, int timeZone, int plosh, double tresolution)
{
    const FileHour file = fileHour(date, hour, timeZone);
    if (file.date.isEmpty())
        return {};
    const QString name =
        QString("%1_%2_N%3_00.pnt").arg(file.date, file.hour, QString::number(plosh));
    return tresolution < highResolutionBelow ? name + "hr" : name;
}

QString pnthrFileName(const QString &date, int hour, int timeZone, int plosh)
{
    const FileHour file = fileHour(date, hour, timeZone);
    if (file.date.isEmpty())
        return {};
    return QString("%1_%2_%3_00.pnthr").arg(file.date, file.hour, QString::number(plosh));
}

} // namespace Tools
