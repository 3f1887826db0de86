#include "analyses/days/dayseries.h"

#include "base/numbertext.h"
#include "base/systemmemory.h"
#include "base/timetext.h"
#include "base/wholefile.h"
#include "calc/finitesamples.h"
#include "calc/pulsar/bandsum.h"
#include "data/recordingfile.h"
#include "data/truenumbers.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Days {

namespace {

using Reading = StretchResult<ObservationData>;

const RecordingEntry &entryOf(const RecordingSet &set, const DayPart &part)
{
    return set.entries[std::size_t(part.recording)];
}

QByteArray oneLine(const QString &text)
{
    return QString(text).replace('%', "%25").replace('\n', "%0A").toUtf8();
}

// What the file of a series begins with: all that the series depends on. Lines that follow it,
// the remark and the number of days, do not belong to it.
QByteArray headerOf(const RecordingSet &set, const Day &day, int points,
                    const SeriesRequest &request)
{
    const ObservationData &first = entryOf(set, day.parts.front()).header;
    QByteArray header = "series: sum of bands 1 to " + QByteArray::number(Pulsar::sumBands) +
                        (request.isBackward ? ", delays of the opposite sign" : "") +
                        ", before the base line, form 1\n";
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
                  ", " + oneLine(entry.path);
    }
    return header + "\n";
}

constexpr char remarkKey[] = "remark: ";
constexpr char daysLine[] = "\ndays: 1\n";

// Reads a kept series; false where there is none that fits.
bool readKept(const QString &path, const QByteArray &header, int points, DaySeries &series)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.read(header.size()) != header)
        return false;
    const QByteArray remark = file.readLine();
    const QByteArray days = file.readLine();
    if (!remark.startsWith(remarkKey) || days != daysLine + 1)
        return false;
    const QByteArray values = file.readAll();
    if (values.size() != qint64(points) * qint64(sizeof(float)))
        return false;
    series.sums.resize(std::size_t(points));
    std::memcpy(series.sums.data(), values.constData(), std::size_t(values.size()));
    const int begin = int(std::strlen(remarkKey));
    series.remark =
        QString::fromUtf8(remark.mid(begin).trimmed()).replace("%0A", "\n").replace("%25", "%");
    series.wasKept = true;
    return true;
}

void keep(const QString &folder, const QString &path, const QByteArray &header,
          const DaySeries &series)
{
    if (!QDir().mkpath(folder))
        return;
    const auto *const values = reinterpret_cast<const char *>(series.sums.data());
    const QByteArray bytes = header + remarkKey + oneLine(series.remark) + daysLine +
                             QByteArray(values, int(series.sums.size() * sizeof(float)));
    // A series that cannot be kept is made again the next time.
    if (const WriteFailure failure = writeWhole(path, bytes))
        QFile::remove(path);
}

// The modules, or the rays, of a file that are wanted, in the file's order.
struct Held {
    std::vector<int> indices;
    std::vector<int> numbers; // the telescope's

    // Place of one of the numbers among them.
    int placeOf(int number) const
    {
        return int(std::find(numbers.begin(), numbers.end(), number) - numbers.begin());
    }
};

Held heldOf(const ObservationData &header, const std::vector<SeriesRequest> &wanted, int count,
            int (*numberOf)(const ObservationData &, int), int SeriesRequest::*wantedNumber)
{
    Held held;
    for (int i = 0; i < count; ++i) {
        const int number = numberOf(header, i);
        const bool isWanted = std::any_of(wanted.begin(), wanted.end(), [&](const auto &request) {
            return request.*wantedNumber == number;
        });
        if (!isWanted)
            continue;
        held.indices.push_back(i);
        held.numbers.push_back(number);
    }
    return held;
}

// What is read of a file.
struct Chosen {
    Held modules;
    Held rays;

    bool areAsIn(const Chosen &other) const
    {
        return modules.numbers == other.modules.numbers && rays.numbers == other.rays.numbers;
    }
};

Chosen chosenOf(const ObservationData &header, const std::vector<SeriesRequest> &wanted)
{
    return {heldOf(header, wanted, header.modules, moduleNumber, &SeriesRequest::module),
            heldOf(header, wanted, header.rays, rayNumber, &SeriesRequest::ray)};
}

Reading readPart(const RecordingSet &set, const DayPart &part, const Chosen &chosen,
                 const SampleReadingHooks &hooks)
{
    const RecordingEntry &entry = entryOf(set, part);
    RecordingFile file;
    if (!file.open(entry.path))
        return Reading::none(StretchEnd::Refused, file.reason());
    const ObservationData &header = file.header();
    if (file.size() != entry.size || header.fbands != entry.header.fbands)
        return Reading::none(StretchEnd::Refused,
                             entry.path + ": the file has changed since the folder was read. Read "
                                          "the folder again.");
    Stretch stretch;
    stretch.first = part.first;
    stretch.count = part.count;
    stretch.modules = chosen.modules.indices;
    stretch.rays = chosen.rays.indices;
    for (int band = 0; band < Pulsar::sumBands; ++band)
        stretch.channels.push_back(band);
    return file.read(stretch, hooks);
}

// The points of several parts, all of the same modules and rays, as one recording.
Reading joined(const std::vector<ObservationData> &parts)
{
    ObservationData whole = parts.front();
    whole.npoints = 0;
    for (const ObservationData &part : parts)
        whole.npoints += part.npoints;
    const qint64 bytes =
        SampleBlock::bytesNeeded(whole.modules, whole.channels, whole.rays, whole.npoints);
    const auto block =
        bytes < 0 || !hasMemoryFor(double(bytes))
            ? nullptr
            : SampleBlock::allocate(whole.modules, whole.channels, whole.rays, whole.npoints);
    if (!block)
        return Reading::none(StretchEnd::Refused,
                             whole.filePath +
                                 ": there is not enough memory. Close other programs.");
    int offset = 0;
    for (const ObservationData &part : parts) {
        for (int module = 0; module < whole.modules; ++module)
            for (int channel = 0; channel < whole.channels; ++channel)
                for (int ray = 0; ray < whole.rays; ++ray)
                    std::copy_n(part.samples[module][channel][ray], part.npoints,
                                block->ray(module, channel, ray) + offset);
        offset += part.npoints;
    }
    whole.samples = Samples(block);
    return Reading::complete(std::move(whole));
}

// All files must have what is chosen of the first one.
Reading readDay(const RecordingSet &set, const Day &day, const std::vector<SeriesRequest> &wanted,
                const Chosen &chosen, const SampleReadingHooks &hooks)
{
    std::vector<ObservationData> parts;
    for (const DayPart &part : day.parts) {
        const RecordingEntry &entry = entryOf(set, part);
        const Chosen own = chosenOf(entry.header, wanted);
        if (!own.areAsIn(chosen))
            return Reading::none(StretchEnd::Refused,
                                 entry.path + ": it has other modules or rays than the file "
                                              "before it. Leave one of them out.");
        Reading reading = readPart(set, part, own, hooks);
        const ObservationData *data = reading.whole();
        if (!data || day.parts.size() == 1)
            return reading;
        parts.push_back(*data);
    }
    return joined(parts);
}

DaySeries sumOf(const ObservationData &data, const Chosen &chosen, int before, int points,
                const SeriesRequest &request)
{
    DaySeries series;
    const int module = chosen.modules.placeOf(request.module);
    const int ray = chosen.rays.placeOf(request.ray);
    const Tools::FiniteSamples finite =
        Tools::finiteSamples(data, module, ray, Tools::wholeChannels(data, Pulsar::sumBands));
    if (!finite.samples || !finite.empty.empty()) {
        series.problem = data.filePath + ": " +
                         (finite.samples ? Tools::noFiniteText(finite.empty) +
                                               ". Choose another ray, or leave the day out."
                                         : "there is not enough memory. Close other programs.");
        return series;
    }
    ObservationData usable = data;
    usable.samples = finite.samples;
    PulsarParameters parameters;
    parameters.module = module + 1;
    parameters.ray = ray + 1;
    parameters.firstPoint = before;
    std::vector<double> sums(static_cast<std::size_t>(points));
    if (Pulsar::sumChannels(usable, parameters, sums.data(), points, request.dispersion,
                            !request.isBackward) < Pulsar::sumBands) {
        series.problem = QString("%1: the bands cannot be summed at the dispersion %2 pc/cm^3.")
                             .arg(data.filePath, exactText(request.dispersion));
        return series;
    }
    series.sums.assign(sums.begin(), sums.end());
    series.remark = Tools::nonFiniteText(finite.replaced, data.point);
    return series;
}

} // namespace

int pointsBehind(const ObservationData &header, double dispersion)
{
    if (!Tools::areFrequencies(header.fbands, Pulsar::sumBands))
        return -1;
    const Tools::BandDelays delays = Pulsar::bandDelays(header, dispersion);
    if (delays.highestWithoutShift() >= 0)
        return -1;
    // A sum ends before the last point.
    return int(std::min<double>(delays.longestLater() + 1, std::numeric_limits<int>::max()));
}

QString seriesFileName(const RecordingSet &set, const Day &day, int points,
                       const SeriesRequest &request)
{
    constexpr int digits = 12;
    const QByteArray hash =
        QCryptographicHash::hash(headerOf(set, day, points, request), QCryptographicHash::Sha256);
    return QString("%1_m%2_r%3_%4.series")
        .arg(textOfTime(day.begin, "yyyyMMdd_hhmmss"), QString::number(request.module),
             QString::number(request.ray), QString::fromLatin1(hash.toHex().left(digits)));
}

bool areKept(const RecordingSet &set, const Day &day, int points,
             const std::vector<SeriesRequest> &requests, const QString &folder)
{
    return std::all_of(requests.begin(), requests.end(), [&](const SeriesRequest &request) {
        DaySeries series;
        return readKept(QDir(folder).filePath(seriesFileName(set, day, points, request)),
                        headerOf(set, day, points, request), points, series);
    });
}

std::vector<DaySeries> seriesOfDay(const RecordingSet &set, const Day &day, int points,
                                   const std::vector<SeriesRequest> &requests,
                                   const QString &folder, const SampleReadingHooks &hooks)
{
    const RecordingEntry &first = entryOf(set, day.parts.front());
    std::vector<DaySeries> all(requests.size());
    std::vector<SeriesRequest> missing;
    const auto pathOf = [&](const SeriesRequest &request) {
        return QDir(folder).filePath(seriesFileName(set, day, points, request));
    };
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const SeriesRequest &request = requests[i];
        if (!folder.isEmpty() &&
            readKept(pathOf(request), headerOf(set, day, points, request), points, all[i]))
            continue;
        if (holdsRay(first.header, request.module, request.ray))
            missing.push_back(request);
        else
            all[i].problem = first.path + QString(": it does not hold module %1, ray %2.")
                                              .arg(request.module)
                                              .arg(request.ray);
    }
    if (missing.empty())
        return all;
    const Chosen chosen = chosenOf(first.header, missing);
    const Reading reading = readDay(set, day, missing, chosen, hooks);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        if (all[i].wasKept || !all[i].problem.isEmpty())
            continue;
        const ObservationData *data = reading.whole();
        if (!data) {
            all[i].problem = reading.reason();
            all[i].wasStopped = reading.end() == StretchEnd::Cancelled;
            continue;
        }
        all[i] = sumOf(*data, chosen, day.before, points, requests[i]);
        if (!folder.isEmpty() && all[i].problem.isEmpty())
            keep(folder, pathOf(requests[i]), headerOf(set, day, points, requests[i]), all[i]);
    }
    return all;
}

} // namespace Days
