#include "analyses/days/fourierdays.h"
#include "analyses/days/oneline.h"
#include "analyses/days/trialstack.h"

#include "base/timetext.h"
#include "coords/filenames.h"
#include "results/resulttable.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>

// Spectra of days as a result file: a header with all parameters and a line per day, then a block
// per day: its powers, and behind them of periodograms the standardised S/N [width][trial].

namespace Days {

namespace {

constexpr char timeForm[] = "yyyy-MM-dd hh:mm:ss.zzz";
constexpr int fieldsOfDay = 7; // before the hum
constexpr int periodogramsForm = 1;
constexpr int longestLine = 1 << 20; // of a day

QByteArray exact(double value)
{
    return Results::numberText(value);
}

int binsOf(const FourierDaysParameters &parameters)
{
    return parameters.points >> std::clamp(parameters.averageCount, 0, 30);
}

// The trials that a file of the days has; null in spectra.
std::shared_ptr<const FfaTrials> trialsIn(const std::vector<FourierDay> &days)
{
    for (const FourierDay &day : days) {
        if (day.isWhole() && day.periodogram.trials)
            return day.periodogram.trials;
    }
    return nullptr;
}

qint64 valuesOf(const FourierDaysParameters &parameters, const FfaTrials *trials)
{
    return binsOf(parameters) + (trials ? qint64(trials->noise.size()) : 0);
}

QByteArray bytesOf(const std::vector<float> &values)
{
    return {reinterpret_cast<const char *>(values.data()), int(values.size() * sizeof(float))};
}

bool readValues(QFile &file, std::vector<float> &values, std::size_t count)
{
    values.resize(count);
    const auto bytes = qint64(count * sizeof(float));
    return file.read(reinterpret_cast<char *>(values.data()), bytes) == bytes;
}

bool areFinite(const std::vector<float> &values)
{
    return std::all_of(values.begin(), values.end(),
                       [](float value) { return std::isfinite(value); });
}

// What a file of spectra begins with. Parameters that only the stack reads are in it too: they cost
// nothing, and all that made a file stands in it.
QByteArray headerOf(const FourierDaysParameters &parameters, const FfaTrials *trials)
{
    const qint64 values = valuesOf(parameters, trials);
    QByteArray header =
        "spectra: whitened powers of the series padded to double its length, form " +
        QByteArray::number(spectraForm) + "\n";
    if (trials)
        header += "periodograms: behind the powers of a day S/N of " +
                  QByteArray::number(trials->count()) + " trials at " +
                  QByteArray::number(qint64(trials->widths.size())) +
                  " widths, width by width, form " + QByteArray::number(periodogramsForm) + "\n";
    header += "points: " + QByteArray::number(values) +
              "\ntype: float\nfirst_point: " + QByteArray::number(parameters.firstPoint) +
              "\ndisp: " + QByteArray::number(qint64(parameters.dispersion)) + "\n";
    for (const FourierDaysField *field : analysisOf(parameters).fields)
        header += field->key.toUtf8() + ": " +
                  toOneLine(Tools::headerText(field->valueIn(parameters))) + "\n";
    return header;
}

QByteArray dayLine(const FourierDay &day)
{
    QByteArray line = "day: " + textOfTime(day.begin, timeForm).toUtf8();
    for (const double value :
         {day.binWidth, day.sigma, double(day.above), day.ratio, day.solarHour})
        line += "\t" + exact(value);
    line += "\t" + toOneLine(day.remark);
    for (const DayHum &hum : day.hum)
        line += "\t" + exact(hum.from) + "\t" + exact(hum.to);
    return line + "\n";
}

bool readDayLine(const QByteArray &line, FourierDay &day)
{
    if (!line.startsWith("day: ") || !line.endsWith('\n'))
        return false;
    const QList<QByteArray> parts = line.mid(5, line.size() - 6).split('\t');
    if (parts.size() < fieldsOfDay || (parts.size() - fieldsOfDay) % 2 != 0)
        return false;
    day.begin = QDateTime::fromString(QString::fromLatin1(parts[0]), timeForm);
    day.begin.setTimeSpec(Qt::UTC);
    bool isRight = day.begin.isValid();
    // What no day has would lead beyond the ends of arrays.
    const auto number = [&](int i, double least, double most) {
        bool isNumber = false;
        const double value = parts[i].toDouble(&isNumber);
        isRight = isRight && isNumber && value >= least && value <= most;
        return isRight ? value : least;
    };
    constexpr double tiny = std::numeric_limits<double>::min();
    constexpr double huge = std::numeric_limits<double>::max();
    constexpr double mostOfRatio = 1e-3; // by which the Earth's motion could change it
    day.binWidth = number(1, tiny, huge);
    day.sigma = number(2, tiny, huge);
    day.above = int(number(3, 0, 1e9));
    day.ratio = parts[4] == exact(std::numeric_limits<double>::quiet_NaN())
                    ? std::numeric_limits<double>::quiet_NaN()
                    : number(4, 1 - mostOfRatio, 1 + mostOfRatio);
    day.solarHour = number(5, 0, 24);
    day.remark = fromOneLine(parts[6]);
    constexpr double mostOfHum = 1000; // Hz
    for (int i = fieldsOfDay; i < parts.size(); i += 2)
        day.hum.push_back({number(i, 0, mostOfHum), number(i + 1, 0, mostOfHum)});
    return isRight;
}

ReadSpectra refused(const QString &path, const QString &reason)
{
    return {{}, path + ": " + reason + ". Make it anew from the recordings."};
}

} // namespace

QString spectraFileName(const std::vector<FourierDay> &days,
                        const FourierDaysParameters &parameters)
{
    constexpr int digits = 12;
    const QByteArray hash = QCryptographicHash::hash(headerOf(parameters, trialsIn(days).get()),
                                                     QCryptographicHash::Sha256);
    const QDateTime first = days.empty() ? QDateTime() : days.front().begin;
    const QString prefix = QString("%1_m%2_r%3_%4")
                               .arg(textOfTime(first, "yyyyMMdd"))
                               .arg(parameters.module)
                               .arg(parameters.ray)
                               .arg(QString::fromLatin1(hash.toHex().left(digits)));
    const auto count = std::count_if(days.begin(), days.end(),
                                     [](const FourierDay &day) { return day.isWhole(); });
    return Tools::spectrumFileName(0, int(count), parameters.averageCount, prefix);
}

QByteArray spectraBytes(const std::vector<FourierDay> &days,
                        const FourierDaysParameters &parameters)
{
    QByteArray bytes = headerOf(parameters, trialsIn(days).get());
    QByteArray blocks;
    int count = 0;
    for (const FourierDay &day : days) {
        if (!day.isWhole())
            continue;
        ++count;
        bytes += dayLine(day);
        blocks += bytesOf(day.powers) + bytesOf(day.periodogram.snr);
    }
    return bytes + "days: " + QByteArray::number(count) + "\n" + blocks;
}

ReadSpectra readSpectra(const QString &path, const FourierDaysParameters &parameters,
                        double tresolution)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return refused(path, "it cannot be read");
    std::shared_ptr<const FfaTrials> trials;
    if (parameters.isFfa)
        trials = ffaTrials(parameters.ffa, parameters.points, tresolution);
    const QByteArray header = headerOf(parameters, trials.get());
    if (file.read(header.size()) != header)
        return refused(path, "it holds spectra of other parameters or of another version");
    ReadSpectra read;
    QByteArray line = file.readLine(longestLine);
    for (; line.startsWith("day: "); line = file.readLine(longestLine)) {
        read.days.emplace_back();
        if (!readDayLine(line, read.days.back()))
            return refused(path, "the line of a day is damaged");
    }
    if (line != "days: " + QByteArray::number(qint64(read.days.size())) + "\n")
        return refused(path, "it does not tell the number of its days");
    const qint64 blockBytes = valuesOf(parameters, trials.get()) * qint64(sizeof(float));
    if (file.size() - file.pos() != blockBytes * qint64(read.days.size()))
        return refused(path, "it is cut short or too long");
    for (FourierDay &day : read.days) {
        DayPeriodogram &own = day.periodogram;
        if (!readValues(file, day.powers, std::size_t(binsOf(parameters))) ||
            (trials && !readValues(file, own.snr, trials->noise.size())))
            return refused(path, "it cannot be read: " + file.errorString());
        if (!areFinite(day.powers) || !areFinite(own.snr))
            return refused(path, "a value of a day is no finite number");
        own.trials = trials;
        if (trials)
            own.best = bestOfWidths(own.snr, trials->count());
    }
    return read;
}

} // namespace Days
