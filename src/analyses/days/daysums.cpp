#include "analyses/days/daysums.h"

#include "base/numbertext.h"
#include "base/systemmemory.h"
#include "calc/finitesamples.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/passingsum.h"
#include "data/recordingfile.h"
#include "data/truenumbers.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Days {

namespace {

using Reading = StretchResult<ObservationData>;

// Where a ray stands in a file: indices from 0.
struct Place {
    int module = 0;
    int ray = 0;

    qint64 firstValue(const ObservationData &header) const
    {
        return (qint64(module) * header.rays + ray) * header.channels;
    }
};

std::optional<Place> placeIn(const ObservationData &header, const SeriesRequest &request)
{
    Place place;
    while (place.module < header.modules && moduleNumber(header, place.module) != request.module)
        ++place.module;
    while (place.ray < header.rays && rayNumber(header, place.ray) != request.ray)
        ++place.ray;
    const bool isHeld = place.module < header.modules && place.ray < header.rays;
    return isHeld ? std::optional(place) : std::nullopt;
}

qint64 pointsOf(const Day &day)
{
    qint64 points = 0;
    for (const DayPart &part : day.parts)
        points += part.count;
    return points;
}

// The shifts of a sum for which the day has the points; none otherwise.
std::optional<Tools::BandDelays> delaysOf(const RecordingSet &set, const Day &day, int points,
                                          const SeriesRequest &request)
{
    const ObservationData &header = entryOf(set, day.parts.front()).header;
    if (!(request.dispersion >= 0) || header.channels <= Pulsar::sumBands ||
        !Tools::areFrequencies(header.fbands, Pulsar::sumBands))
        return {};
    const Tools::BandDelays delays = Pulsar::bandDelays(header, request.dispersion);
    if (delays.highestWithoutShift() >= 0)
        return {};
    const Tools::BandDelays own = request.isBackward ? delays.reversed() : delays;
    // A sum ends before the last point.
    const double last = double(day.before) + points + std::max(1.0, own.longestLater());
    return last <= double(pointsOf(day)) ? std::optional(own) : std::nullopt;
}

// Opens a file of a day that is still the one whose header was read.
QString openPart(RecordingFile &file, const RecordingEntry &entry)
{
    if (!file.open(entry.path))
        return file.reason();
    if (file.size() != entry.size || file.header().fbands != entry.header.fbands)
        return entry.path +
               ": the file has changed since the folder was read. Read the folder again.";
    return {};
}

// The points of several parts as one recording.
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

// Modules or rays of a file that requests name.
struct Held {
    std::vector<int> indices;
    std::vector<int> numbers;
};

Held heldOf(const ObservationData &header, const std::vector<SeriesRequest> &requests, int count,
            int (*numberOf)(const ObservationData &, int), int SeriesRequest::*number)
{
    Held held;
    for (int i = 0; i < count; ++i) {
        const int own = numberOf(header, i);
        if (std::any_of(requests.begin(), requests.end(),
                        [&](const SeriesRequest &request) { return request.*number == own; })) {
            held.indices.push_back(i);
            held.numbers.push_back(own);
        }
    }
    return held;
}

// The sum with the median of its channel in the place of each sample that is no finite number.
DaySeries sumWithMedians(const RecordingSet &set, const Day &day, int points,
                         const SeriesRequest &request, const Jobs::Control &control)
{
    DaySeries series;
    const FiniteDay finite = finiteSamplesOfDay(set, day, request, control);
    series.problem = finite.problem;
    series.wasStopped = finite.wasStopped;
    if (!finite.isWhole)
        return series;
    PulsarParameters parameters;
    parameters.module = 1;
    parameters.ray = 1;
    parameters.firstPoint = day.before;
    std::vector<double> sums(static_cast<std::size_t>(points));
    Pulsar::sumChannels(finite.data, parameters, sums.data(), points, request.dispersion,
                        !request.isBackward);
    series.sums.assign(sums.begin(), sums.end());
    series.remark = finite.remark;
    return series;
}

// What is read of one day at once.
class DayReader {
public:
    DayReader(const RecordingSet &recordings, const Day &oneDay, int stretchPoints,
              const std::vector<SeriesRequest> &wanted, const Jobs::Control &whole)
        : set(recordings), day(oneDay), points(stretchPoints), requests(wanted), control(whole),
          all(wanted.size()), sums(wanted.size())
    {}

    std::vector<DaySeries> read()
    {
        prepare();
        qint64 before = 0;
        for (const DayPart &part : day.parts) {
            readPart(part, before);
            before += part.count;
        }
        for (std::size_t i = 0; i < requests.size(); ++i)
            finish(i);
        return std::move(all);
    }

private:
    void prepare()
    {
        for (std::size_t i = 0; i < requests.size(); ++i) {
            if (const auto delays = delaysOf(set, day, points, requests[i]))
                sums[i].emplace(*delays, day.before, points);
            else
                all[i].problem =
                    QString("%1: the bands cannot be summed at the dispersion %2 pc/cm^3.")
                        .arg(entryOf(set, day.parts.front()).path,
                             exactText(requests[i].dispersion));
        }
    }

    void refuse(std::size_t request, const QString &problem)
    {
        sums[request].reset();
        all[request].problem = problem;
    }

    // A file may lack some of the rays.
    std::vector<std::size_t> takersOf(const RecordingEntry &entry)
    {
        std::vector<std::size_t> takers;
        for (std::size_t i = 0; i < requests.size(); ++i) {
            if (!sums[i])
                continue;
            if (placeIn(entry.header, requests[i]))
                takers.push_back(i);
            else
                refuse(i, entry.path + QString(": it does not hold module %1, ray %2.")
                                           .arg(requests[i].module)
                                           .arg(requests[i].ray));
        }
        return takers;
    }

    void readPart(const DayPart &part, qint64 before)
    {
        const RecordingEntry &entry = entryOf(set, part);
        const std::vector<std::size_t> takers = takersOf(entry);
        if (takers.empty())
            return;
        RecordingFile file;
        QString problem = openPart(file, entry);
        if (problem.isEmpty() && !readPoints(file, part, before, takers))
            problem = file.reason();
        for (const std::size_t i : takers) {
            if (control.isStopped())
                all[i].wasStopped = true;
            if (!problem.isEmpty())
                refuse(i, problem);
        }
    }

    // False where the file ends or the day is stopped.
    bool readPoints(RecordingFile &file, const DayPart &part, qint64 before,
                    const std::vector<std::size_t> &takers)
    {
        const ObservationData &header = file.header();
        const qint64 stride = qint64(header.modules) * header.rays * header.channels;
        const double allPoints = double(pointsOf(day));
        int done = 0;
        return file.readPoints(part.first, part.count, [&](const float *values, int count) {
            for (const std::size_t i : takers) {
                const Place place = placeIn(header, requests[i]).value_or(Place());
                sums[i]->add(values + place.firstValue(header), stride, before + done, count);
            }
            done += count;
            control.progress(int(100 * double(before + done) / allPoints));
            return !control.isStopped();
        });
    }

    void finish(std::size_t i)
    {
        if (!sums[i] || all[i].wasStopped)
            return;
        const std::vector<double> &made = sums[i]->sums();
        const bool isFinite =
            std::all_of(made.begin(), made.end(), [](double sum) { return std::isfinite(sum); });
        if (isFinite)
            all[i].sums.assign(made.begin(), made.end());
        else
            all[i] = sumWithMedians(set, day, points, requests[i], control);
    }

    const RecordingSet &set;
    const Day &day;
    const int points;
    const std::vector<SeriesRequest> &requests;
    const Jobs::Control &control;
    std::vector<DaySeries> all;
    std::vector<std::optional<Pulsar::PassingSum>> sums; // none where there is a problem
};

} // namespace

std::vector<DaySeries> sumsOfDay(const RecordingSet &set, const Day &day, int points,
                                 const std::vector<SeriesRequest> &requests,
                                 const Jobs::Control &control)
{
    return DayReader(set, day, points, requests, control).read();
}

Reading samplesOfDay(const RecordingSet &set, const Day &day,
                     const std::vector<SeriesRequest> &requests, const Jobs::Control &control)
{
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    const ObservationData &first = entryOf(set, day.parts.front()).header;
    const Held modules =
        heldOf(first, requests, first.modules, moduleNumber, &SeriesRequest::module);
    const Held rays = heldOf(first, requests, first.rays, rayNumber, &SeriesRequest::ray);
    std::vector<ObservationData> parts;
    for (const DayPart &part : day.parts) {
        RecordingFile file;
        if (const QString problem = openPart(file, entryOf(set, part)); !problem.isEmpty())
            return Reading::none(StretchEnd::Refused, problem);
        const ObservationData &header = file.header();
        const Held own =
            heldOf(header, requests, header.modules, moduleNumber, &SeriesRequest::module);
        const Held ownRays = heldOf(header, requests, header.rays, rayNumber, &SeriesRequest::ray);
        if (own.numbers != modules.numbers || ownRays.numbers != rays.numbers)
            return Reading::none(StretchEnd::Refused,
                                 file.header().filePath +
                                     ": it has other modules or rays than the file before it. "
                                     "Leave one of them out.");
        Stretch stretch;
        stretch.first = part.first;
        stretch.count = part.count;
        stretch.modules = own.indices;
        stretch.rays = ownRays.indices;
        for (int band = 0; band < Pulsar::sumBands; ++band)
            stretch.channels.push_back(band);
        Reading reading = file.read(stretch, hooks);
        const ObservationData *data = reading.whole();
        if (!data || day.parts.size() == 1)
            return reading;
        parts.push_back(*data);
    }
    return joined(parts);
}

FiniteDay finiteSamplesOfDay(const RecordingSet &set, const Day &day, const SeriesRequest &request,
                             const Jobs::Control &control)
{
    FiniteDay made;
    const Reading reading = samplesOfDay(set, day, {request}, control);
    const ObservationData *const data = reading.whole();
    if (!data) {
        made.problem = reading.reason();
        made.wasStopped = reading.end() == StretchEnd::Cancelled;
        return made;
    }
    const Tools::FiniteSamples finite =
        Tools::finiteSamples(*data, 0, 0, Tools::wholeChannels(*data, Pulsar::sumBands));
    if (!finite.samples || !finite.empty.empty()) {
        made.problem = data->filePath + ": " +
                       (finite.samples ? Tools::noFiniteText(finite.empty) +
                                             ". Choose another ray, or leave the day out."
                                       : "there is not enough memory. Close other programs.");
        return made;
    }
    made.isWhole = true;
    made.data = *data;
    made.data.samples = finite.samples;
    made.remark = Tools::nonFiniteText(finite.replaced, data->point);
    return made;
}

} // namespace Days
