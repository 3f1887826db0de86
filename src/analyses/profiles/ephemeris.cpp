#include "analyses/profiles/ephemeris.h"

#include "coords/barycentre.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace Profiles {

namespace {

constexpr double secondsPerDay = 86400;
constexpr double mjdOfUnixEpoch = 40587;
constexpr double msPerSecond = 1000;
constexpr qint64 longestFile = 1 << 20;

} // namespace

double Ephemeris::turnsAt(double seconds) const
{
    return seconds * (frequency + seconds * (derivative / 2 + seconds * second / 6));
}

double Ephemeris::frequencyAt(double seconds) const
{
    return frequency + seconds * (derivative + seconds * second / 2);
}

namespace {

// The values of a file by their keys; each key once.
class ParLines {
public:
    explicit ParLines(const QByteArray &text)
    {
        for (const QByteArray &line : text.split('\n')) {
            const QStringList words =
                QString::fromUtf8(line).split(QRegularExpression("\\s+"), Qt::SkipEmptyParts);
            if (words.size() < 2 || words[0].startsWith('#') || words[0] == "C")
                continue;
            values.insert(words[0].toUpper(), words[1]);
        }
    }

    bool has(const QString &key) const { return values.contains(key); }
    QString take(const QString &key) { return values.take(key); }

    // A number, also with the exponent letter D; tells what is wrong with it.
    double number(const QString &key, double otherwise, QString &problem)
    {
        if (!has(key))
            return otherwise;
        const QString text = take(key);
        bool isNumber = false;
        const double value = QString(text).replace('D', 'e').replace('d', 'e').toDouble(&isNumber);
        if (!isNumber || !std::isfinite(value))
            problem = QString("its %1 \"%2\" is no number.").arg(key, text);
        return value;
    }

    QStringList rest() const
    {
        QStringList keys = values.keys();
        keys.sort();
        return keys;
    }

private:
    QHash<QString, QString> values;
};

QString refusal(ParLines &lines)
{
    if (lines.has("BINARY"))
        return QString("it has the binary model %1. The orbit shifts the pulses by up to its size "
                       "in light seconds, which is not computed here: a fold would smear them. "
                       "Give the period on the day instead.")
            .arg(lines.take("BINARY"));
    const QString units = lines.has("UNITS") ? lines.take("UNITS").toUpper() : "TDB";
    if (units != "TDB")
        return QString("its units are %1: their seconds differ from those of TDB by 1.55e-8, and "
                       "all values with them. Convert the file to UNITS TDB.")
            .arg(units);
    if (!lines.has("F0"))
        return "it has no F0. Write the frequency of the rotation, Hz, as F0.";
    return {};
}

} // namespace

ReadEphemeris parseEphemeris(const QByteArray &text)
{
    ReadEphemeris read;
    ParLines lines(text);
    read.problem = refusal(lines);
    if (!read.problem.isEmpty())
        return read;
    Ephemeris &made = read.ephemeris;
    made.frequency = lines.number("F0", 0, read.problem);
    made.derivative = lines.number("F1", 0, read.problem);
    made.second = lines.number("F2", 0, read.problem);
    made.epoch = lines.number("PEPOCH", 0, read.problem);
    if (lines.has("DM"))
        made.dispersion = lines.number("DM", 0, read.problem);
    if (lines.has("RAJ") && lines.has("DECJ")) {
        const Tools::SkyPosition position = {Tools::rightAscensionOf(lines.take("RAJ")),
                                             Tools::declinationOf(lines.take("DECJ"))};
        if (!position.isNumber())
            read.problem = "its RAJ or DECJ is not of the form hh:mm:ss and +dd:mm:ss.";
        made.position = position;
    }
    made.ignored = lines.rest();
    if (read.problem.isEmpty() && !(made.frequency > 0))
        read.problem = "its F0 must be above 0.";
    if (read.problem.isEmpty() && made.epoch == 0 && (made.derivative != 0 || made.second != 0))
        read.problem = "it has F1 or F2 without PEPOCH, the epoch they hold for.";
    return read;
}

ReadEphemeris readEphemeris(const QString &path)
{
    QFile file(path);
    ReadEphemeris read;
    if (!file.open(QIODevice::ReadOnly)) {
        read.problem = path + ": " + file.errorString() + ". Choose another file.";
        return read;
    }
    read = parseEphemeris(file.read(longestFile));
    if (!read.problem.isEmpty())
        read.problem = path + ": " + read.problem;
    return read;
}

double DayPhase::at(double part) const
{
    const double last = double(turns.size()) - 2;
    const double place = part * (last + 1);
    const auto node = std::size_t(std::clamp(std::floor(place), 0.0, last));
    return turns[node] + (place - double(node)) * (turns[node + 1] - turns[node]);
}

DayPhase phaseOfDay(const Ephemeris &ephemeris, const QDateTime &begin, double seconds,
                    const Tools::SkyPosition &direction, int parts)
{
    DayPhase phase;
    phase.isTurned = direction.isNumber();
    const double atBegin = double(begin.toMSecsSinceEpoch()) / msPerSecond -
                           (ephemeris.epoch > 0 ? (ephemeris.epoch - mjdOfUnixEpoch) * secondsPerDay
                                                : double(begin.toMSecsSinceEpoch()) / msPerSecond);
    const auto delayAt = [&](double after) {
        return phase.isTurned
                   ? Tools::barycentricView(
                         Tools::ownSite(),
                         begin.addMSecs(qint64(std::llround(after * msPerSecond))), direction)
                         .delay
                   : 0.0;
    };
    for (int part = 0; part <= parts; ++part) {
        const double after = seconds * part / parts;
        phase.turns.push_back(ephemeris.turnsAt(atBegin + after + delayAt(after)));
    }
    const double whole = std::floor(phase.turns.front());
    for (double &turn : phase.turns)
        turn -= whole;
    phase.frequency = (phase.turns.back() - phase.turns.front()) / seconds;
    return phase;
}

} // namespace Profiles
