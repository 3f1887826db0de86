#include "analyses/pulses/repeating.h"

#include "analyses/days/dayplace.h"
#include "data/recordingtime.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace Pulses {

using namespace Results;

namespace {

constexpr double sigmasApart = 3;
constexpr double minutesPerHour = 60;

// Hours from one sidereal time to another, -12 to 12.
double hoursApart(double one, double other)
{
    return std::remainder(one - other, 24.0);
}

bool isStronger(const TablePulse *a, const TablePulse *b)
{
    const auto key = [](const TablePulse *pulse) {
        return std::tuple(!pulse->isCandidate, -pulse->snr, pulse->file, pulse->module, pulse->ray,
                          pulse->mjd);
    };
    return key(a) < key(b);
}

QString dateOf(const TablePulse &pulse)
{
    constexpr qint64 epochOfMjd = 2400001; // Julian day number of MJD 0 at noon
    return QDate::fromJulianDay(qint64(std::floor(pulse.mjd)) + epochOfMjd).toString(Qt::ISODate);
}

bool isSameSource(const TablePulse &a, const TablePulse &b, const RepeatingParameters &parameters)
{
    const int apart =
        std::abs(Days::placeOfRay(a.module, a.ray) - Days::placeOfRay(b.module, b.ray));
    const double errors = std::hypot(a.dispersionError, b.dispersionError);
    const double reach =
        std::max(parameters.dispersion, std::isfinite(errors) ? sigmasApart * errors : 0);
    return apart <= 1 &&
           std::abs(hoursApart(a.siderealTime, b.siderealTime)) * minutesPerHour <=
               parameters.minutes &&
           std::abs(a.dispersion - b.dispersion) <= reach;
}

// Hours that a recording of one of these rays spent within reach of a sidereal time.
double hoursOf(const PulseTable &table, const std::set<std::pair<int, int>> &rays,
               double siderealTime, double minutes)
{
    const bool hasRay = std::any_of(table.rays.begin(), table.rays.end(),
                                    [&](const auto &ray) { return rays.count(ray) > 0; });
    if (!hasRay || !std::isfinite(table.siderealBegin) || !std::isfinite(table.hours))
        return 0;
    const double reach = minutes / minutesPerHour;
    double sidereal = 0;
    const double length = table.hours * siderealRate;
    const double first = siderealTime - table.siderealBegin -
                         24 * std::ceil((siderealTime - table.siderealBegin + reach) / 24);
    for (double centre = first; centre - reach < length; centre += 24)
        sidereal += std::max(0.0, std::min(length, centre + reach) - std::max(0.0, centre - reach));
    return sidereal / siderealRate;
}

void addMeans(RepeatingSource &source)
{
    double weights = 0;
    double dispersions = 0;
    double turned = 0;
    const double first = source.pulses.front()->siderealTime;
    for (const TablePulse *pulse : source.pulses) {
        const double error = pulse->dispersionError;
        const double weight = error > 0 ? 1 / (error * error) : 0;
        weights += weight;
        dispersions += weight * pulse->dispersion;
        turned += hoursApart(pulse->siderealTime, first);
    }
    source.dispersion = weights > 0 ? dispersions / weights : source.pulses.front()->dispersion;
    source.dispersionError = weights > 0 ? 1 / std::sqrt(weights) : unknown;
    const double mean = first + turned / double(source.pulses.size());
    source.siderealTime = mean - 24 * std::floor(mean / 24);
}

void addRate(const std::vector<PulseTable> &tables, double minutes, RepeatingSource &source)
{
    std::set<std::pair<int, int>> rays;
    for (const TablePulse *pulse : source.pulses)
        rays.emplace(pulse->module, pulse->ray);
    for (const PulseTable &table : tables)
        source.hours += hoursOf(table, rays, source.siderealTime, minutes);
    if (source.hours > 0) {
        source.rate = double(source.pulses.size()) / source.hours;
        source.rateError = std::sqrt(double(source.pulses.size())) / source.hours;
    }
}

std::vector<const TablePulse *> pulsesOf(const std::vector<PulseTable> &tables)
{
    std::vector<const TablePulse *> all;
    for (const PulseTable &table : tables)
        for (const TablePulse &pulse : table.pulses)
            all.push_back(&pulse);
    std::sort(all.begin(), all.end(), isStronger);
    return all;
}

} // namespace

std::vector<RepeatingSource> repeatingSources(const std::vector<PulseTable> &tables,
                                              const RepeatingParameters &parameters)
{
    std::vector<const TablePulse *> rest;
    for (const TablePulse *pulse : pulsesOf(tables)) {
        const bool counts = pulse->isCandidate || !parameters.onlyCandidates;
        if (counts && std::isfinite(pulse->siderealTime) && std::isfinite(pulse->mjd))
            rest.push_back(pulse);
    }
    std::vector<RepeatingSource> sources;
    while (!rest.empty()) {
        RepeatingSource source;
        const TablePulse &strongest = *rest.front();
        std::vector<const TablePulse *> others;
        for (const TablePulse *pulse : rest) {
            const bool isSame = isSameSource(strongest, *pulse, parameters);
            (isSame ? source.pulses : others).push_back(pulse);
            if (isSame)
                source.dates.insert(dateOf(*pulse));
        }
        // NaN of a dispersion is not even the same as itself.
        if (source.pulses.empty())
            others.erase(others.begin());
        rest = std::move(others);
        if (int(source.dates.size()) < std::max(1, parameters.dates))
            continue;
        addMeans(source);
        addRate(tables, parameters.minutes, source);
        sources.push_back(std::move(source));
    }
    std::stable_sort(sources.begin(), sources.end(),
                     [](const RepeatingSource &a, const RepeatingSource &b) {
                         return std::pair(a.dates.size(), a.pulses.size()) >
                                std::pair(b.dates.size(), b.pulses.size());
                     });
    return sources;
}

std::vector<Column> sourceColumns(const std::vector<RepeatingSource> &sources)
{
    QStringList positions, dates;
    std::vector<double> numbers, pulses, dispersions, errors, sidereal, hours, rates, rateErrors,
        best, modules, rays;
    for (const RepeatingSource &source : sources) {
        const TablePulse &strongest = *source.pulses.front();
        numbers.push_back(double(source.dates.size()));
        pulses.push_back(double(source.pulses.size()));
        dispersions.push_back(source.dispersion);
        errors.push_back(source.dispersionError);
        sidereal.push_back(source.siderealTime);
        hours.push_back(source.hours);
        rates.push_back(source.rate);
        rateErrors.push_back(source.rateError);
        best.push_back(strongest.snr);
        modules.push_back(strongest.module);
        rays.push_back(strongest.ray);
        positions << strongest.position;
        dates << QStringList(source.dates.begin(), source.dates.end()).join(' ');
    }
    return {{"dates", "", numbers},
            {"pulses", "", pulses},
            {"dm", "pc/cm^3", dispersions},
            {"dm_error", "pc/cm^3", errors},
            {"position", "", positions},
            {"sidereal", "h", sidereal},
            {"module", "", modules},
            {"ray", "", rays},
            {"best_snr", "", best},
            {"hours", "h", hours},
            {"rate", "1/h", rates},
            {"rate_error", "1/h", rateErrors},
            {"on", "UTC", dates}};
}

std::vector<Column> joinedColumns(const std::vector<PulseTable> &tables)
{
    std::vector<Column> columns;
    if (tables.empty())
        return columns;
    QStringList files;
    std::vector<QStringList> texts(tables.front().columns.size());
    for (const TablePulse *pulse : pulsesOf(tables)) {
        files << pulse->file;
        for (std::size_t i = 0; i < texts.size(); ++i)
            texts[i] << pulse->fields[int(i)];
    }
    columns.push_back({"file", "", files});
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const Column &like = tables.front().columns[i];
        columns.push_back({like.name, like.unit, texts[i]});
    }
    return columns;
}

} // namespace Pulses
