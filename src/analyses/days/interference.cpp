#include "analyses/days/interference.h"

#include "base/numbertext.h"
#include "base/typednumber.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <algorithm>

namespace Days {

namespace {

constexpr qint64 largestFile = 1 << 20; // bytes
constexpr int mostHarmonics = 1000;

bool holds(const Interference &entry, double frequency, double tolerance)
{
    for (int harmonic = 1; harmonic <= entry.harmonics; ++harmonic) {
        if (frequency >= entry.from(harmonic) - tolerance &&
            frequency <= entry.to(harmonic) + tolerance)
            return true;
    }
    return false;
}

// The entry of one line; nothing but a problem where it is none.
InterferenceList parseLine(const QString &line)
{
    static const QRegularExpression form(
        "^(\\S+)\\s*(Hz|s)(?:\\s*\\+-\\s*(\\S+))?(?:\\s*x\\s*(\\d{1,4}))?$");
    const QRegularExpressionMatch match = form.match(line.section('#', 0, 0).trimmed());
    const QString allowed = " Write a number with Hz or s, as \"33.3 Hz +- 0.1 x 8\".";
    if (!match.hasMatch())
        return {{}, QString("\"%1\" is no frequency or period.").arg(line.trimmed()) + allowed};
    const auto value = Tools::typedNumber(match.captured(1));
    const auto width = match.captured(3).isEmpty() ? 0.0 : Tools::typedNumber(match.captured(3));
    const int harmonics = match.captured(4).isEmpty() ? 1 : match.captured(4).toInt();
    if (!value || !width || !(*value > 0) || !(*width >= 0) || !(*width < *value))
        return {{},
                QString("\"%1\": both numbers must be above 0, the second below the first.")
                    .arg(line.trimmed())};
    if (harmonics < 1 || harmonics > mostHarmonics)
        return {{},
                QString("\"%1\": allowed are 1 to %2 harmonics.")
                    .arg(line.trimmed())
                    .arg(mostHarmonics)};
    return {{{*value, match.captured(2) == "s", *width, harmonics, line.section('#', 1).trimmed()}},
            {}};
}

} // namespace

double Interference::from(int harmonic) const
{
    return harmonic * (isPeriod ? 1 / (value + width) : value - width);
}

double Interference::to(int harmonic) const
{
    return harmonic * (isPeriod ? 1 / (value - width) : value + width);
}

QString Interference::text() const
{
    QString line = exactText(value) + (isPeriod ? " s" : " Hz");
    if (width > 0)
        line += " +- " + exactText(width);
    if (harmonics > 1)
        line += QString(" x %1").arg(harmonics);
    return remark.isEmpty() ? line : line + " # " + remark;
}

InterferenceList parseInterference(const QByteArray &text)
{
    InterferenceList list;
    int number = 0;
    for (const QByteArray &line : text.split('\n')) {
        ++number;
        const QString content = QString::fromUtf8(line.constData(), line.size());
        if (content.section('#', 0, 0).trimmed().isEmpty())
            continue;
        const InterferenceList one = parseLine(content);
        if (!one.problem.isEmpty())
            return {{}, QString("line %1: %2").arg(number).arg(one.problem)};
        list.entries.push_back(one.entries.front());
    }
    return list;
}

InterferenceList readInterference(const QString &path)
{
    QFile file(path);
    if (!QFileInfo::exists(path))
        return {};
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {{}, path + ": it cannot be read. Check its permissions."};
    if (file.size() > largestFile)
        return {{}, path + QString(": it is longer than %1 bytes.").arg(largestFile)};
    InterferenceList list = parseInterference(file.read(largestFile));
    if (!list.problem.isEmpty())
        list.problem.prepend(path + ", ");
    return list;
}

WriteFailure writeInterference(const QString &path, const std::vector<Interference> &entries)
{
    QByteArray text = "# Frequencies and periods that are left out of stacks: \"33.3 Hz +- 0.1 x "
                      "8\", \"0.02 s\".\n";
    for (const Interference &entry : entries)
        text += QString(entry.text()).replace('\n', ' ').toUtf8() + "\n";
    QDir().mkpath(QFileInfo(path).absolutePath());
    return writeWhole(path, text);
}

QString interferencePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           "/zrt/interference.txt";
}

std::vector<Interference> takeOutInterference(std::vector<Interference> &entries, double frequency,
                                              double tolerance)
{
    const auto kept =
        std::stable_partition(entries.begin(), entries.end(), [&](const Interference &entry) {
            return !holds(entry, frequency, tolerance);
        });
    std::vector<Interference> taken(kept, entries.end());
    entries.erase(kept, entries.end());
    return taken;
}

} // namespace Days
