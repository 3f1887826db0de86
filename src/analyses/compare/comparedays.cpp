#include "analyses/compare/comparedays.h"

#include "calc/robuststatistics.h"
#include "coords/skyclock.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Compare {

namespace {

constexpr double msPerSecond = 1000;
constexpr double hoursOfDay = 24;
constexpr double secondsPerHour = 3600;
constexpr double sharingSnr = 4;

// Sidereal seconds that pass in a second of UTC.
double siderealRate()
{
    return hoursOfDay * secondsPerHour / Tools::siderealDay();
}

std::vector<FieldProblem> problemsOf(const CompareParameters &parameters)
{
    std::vector<FieldProblem> problems;
    if (!parameters.firstDate.isEmpty() &&
        !QDate::fromString(parameters.firstDate, Qt::ISODate).isValid())
        problems.push_back(
            {"firstDate",
             QString("The date \"%1\" is not of the form yyyy-mm-dd.").arg(parameters.firstDate)});
    if (!(parameters.byChance > 0))
        problems.push_back({"byChance", "The number of differences by chance must be above 0."});
    return problems;
}

// The days from the first date on, as many as are shown.
void takeDays(const CompareParameters &parameters, Days::DayPlan &plan)
{
    std::vector<Days::Day> &days = plan.list.days;
    const QDate first = QDate::fromString(parameters.firstDate, Qt::ISODate);
    days.erase(std::remove_if(days.begin(), days.end(),
                              [&](const Days::Day &day) {
                                  return first.isValid() && day.begin.date() < first;
                              }),
               days.end());
    int usable = 0;
    const auto isBeyond = [&usable](const Days::Day &day) {
        return day.reason.isEmpty() && ++usable > mostDays;
    };
    const auto end = std::find_if(days.begin(), days.end(), isBeyond);
    if (end == days.end())
        return;
    plan.remarks << QString("%1 days are the most; those from %2 on are not among them. Give a "
                            "later first date.")
                        .arg(mostDays)
                        .arg(Days::dayName(end->begin));
    days.erase(end, days.end());
}

QDateTime utcOf(const Days::Day &day, const Days::DayPlan &plan)
{
    return day.begin.addMSecs(-qint64(std::llround(plan.choice.start.clockOffset * msPerSecond)));
}

// Places the days on the axis of the first one that can be used.
void placeDays(ComparePlan &plan)
{
    std::vector<Days::Day> &days = plan.days.list.days;
    plan.offsets.assign(days.size(), 0);
    const auto first = std::find_if(days.begin(), days.end(),
                                    [](const Days::Day &day) { return day.reason.isEmpty(); });
    if (first == days.end())
        return;
    plan.siderealTime = Tools::localSiderealTime(utcOf(*first, plan.days));
    for (std::size_t i = 0; i < days.size(); ++i) {
        if (!days[i].reason.isEmpty())
            continue;
        const double later = std::remainder(
            Tools::localSiderealTime(utcOf(days[i], plan.days)) - plan.siderealTime, hoursOfDay);
        const double offset = std::round(later / plan.hoursPerPoint());
        if (std::abs(offset) <= plan.points() / 2.0) {
            plan.offsets[i] = int(offset);
            continue;
        }
        constexpr double minutesPerHour = 60;
        days[i].reason = QString("Its stretch begins %1 min of sidereal time %2 than that of %3: "
                                 "less than half of the axis is shared. Choose a sidereal time or "
                                 "a source.")
                             .arg(std::abs(later) * minutesPerHour, 0, 'f', 1)
                             .arg(later > 0 ? "later" : "earlier", Days::dayName(first->begin));
    }
}

// Noise of one point: by the differences of neighbouring points, for the sky's own waves and those
// of the weather are slow; by the points themselves where they alternate, as with mains hum.
double noiseOf(const std::vector<double> &series)
{
    const std::vector<float> values(series.begin(), series.end());
    std::vector<float> steps;
    for (std::size_t i = 1; i < values.size(); ++i)
        steps.push_back(values[i] - values[i - 1]);
    std::vector<float> scratch;
    const double ofPoints = Tools::robustLevel(values.data(), int(values.size()), scratch).spread;
    const double ofSteps = Tools::robustLevel(steps.data(), int(steps.size()), scratch).spread;
    return std::min(ofPoints, ofSteps / std::sqrt(2.0));
}

CompareDay productOf(const Days::DaySeries &series, const Days::DaySeries &backSeries, int offset,
                     const CompareParameters &parameters)
{
    CompareDay day;
    day.remark = series.remark;
    day.problem = series.problem;
    day.wasStopped = series.wasStopped || backSeries.wasStopped;
    if (day.problem.isEmpty())
        day.problem = backSeries.problem;
    if (!day.problem.isEmpty() || day.wasStopped)
        return day;
    const Days::PreparedSeries prepared =
        Days::preparedSeries(series.sums, backSeries.sums, parameters.noise);
    day.sigma = prepared.sigma;
    day.problem = prepared.problem;
    if (!day.problem.isEmpty())
        return day;
    const double noise = noiseOf(prepared.values);
    if (!(noise > 0)) {
        day.problem = "Most neighbouring sums of the bands are equal: the stretch holds no noise.";
        return day;
    }
    const int points = int(prepared.values.size());
    day.values.assign(std::size_t(points), std::numeric_limits<float>::quiet_NaN());
    for (int i = std::max(0, -offset); i < points - std::max(0, offset); ++i)
        day.values[std::size_t(i + offset)] = float(prepared.values[std::size_t(i)] / noise);
    return day;
}

} // namespace

Days::FourierDaysParameters daysParameters(const CompareParameters &parameters)
{
    Days::FourierDaysParameters days;
    static_cast<Days::DayPlace &>(days) = parameters;
    days.dispersion = parameters.dispersion;
    days.noise = parameters.noise;
    days.otherRays = parameters.otherRays;
    return days;
}

double ComparePlan::hoursPerPoint() const
{
    return days.list.tresolution * siderealRate() / secondsPerHour;
}

double ComparePlan::siderealTimeAt(double point) const
{
    const double hours = siderealTime + point * hoursPerPoint();
    return hours - hoursOfDay * std::floor(hours / hoursOfDay);
}

QDateTime ComparePlan::utcAt(int day, double point) const
{
    const double seconds = (point - offsets[std::size_t(day)]) * days.list.tresolution;
    return days.list.days[std::size_t(day)].begin.addMSecs(
        qint64(std::llround(seconds * msPerSecond)));
}

ComparePlan planCompare(const RecordingSet &set, const CompareParameters &parameters)
{
    ComparePlan plan;
    plan.days = Days::planDays(set, daysParameters(parameters));
    for (const FieldProblem &problem : problemsOf(parameters))
        plan.days.problems.push_back(problem);
    if (!plan.days.problems.empty())
        return plan;
    takeDays(parameters, plan.days);
    placeDays(plan);
    return plan;
}

RecordingPoint recordingPointOf(const ComparePlan &plan, int day, int point)
{
    const Days::Day &own = plan.days.list.days[std::size_t(day)];
    int left = own.before + point - plan.offsets[std::size_t(day)];
    for (const Days::DayPart &part : own.parts) {
        if (left < part.count)
            return {part.recording, part.first + std::max(0, left)};
        left -= part.count;
    }
    return {};
}

CompareParameters usedParameters(CompareParameters parameters, const ComparePlan &plan)
{
    parameters.module = plan.days.choice.module;
    parameters.ray = plan.days.choice.ray;
    return parameters;
}

std::vector<int> otherRaysOf(const CompareParameters &parameters, const ComparePlan &plan)
{
    return Days::otherRaysOf(daysParameters(parameters), plan.days);
}

std::vector<CompareDay> readDay(const RecordingSet &set, const ComparePlan &plan, int day,
                                const CompareParameters &parameters, const QString &folder,
                                const Jobs::Control &control)
{
    std::vector<CompareDay> rays(std::size_t(plan.days.rays));
    const Days::Day &own = plan.days.list.days[std::size_t(day)];
    if (!own.reason.isEmpty()) {
        for (CompareDay &ray : rays)
            ray.problem = own.reason;
        return rays;
    }
    const std::vector<Days::DaySeries> series =
        Days::seriesOfDay(set, own, plan.points(), plan.days.series, folder, control);
    const std::size_t perRay = series.size() / rays.size(); // the sum, and the one with opposite
                                                            // delays where the base line needs it
    for (std::size_t ray = 0; ray < rays.size(); ++ray)
        rays[ray] = productOf(series[ray * perRay], series[(ray + 1) * perRay - 1],
                              plan.offsets[std::size_t(day)], parameters);
    return rays;
}

qint64 bytesOf(const ComparePlan &plan)
{
    const qint64 days = qint64(plan.days.list.days.size()) * plan.points();
    constexpr qint64 boxcars = sizeof(double) + sizeof(int);
    return days * (plan.days.rays * qint64(sizeof(float)) +
                   2 * (boxcars + qint64(sizeof(float)))); // of the own ray and of one other
}

namespace {

struct RayComparison {
    MedianDay mean;
    std::vector<DayBoxcars> boxcars; // one per day; without a width where it does not count
};

RayComparison compareRay(const std::vector<CompareDay> &days, const std::vector<bool> &counts,
                         int points, const Jobs::Control &control)
{
    std::vector<const float *> rows;
    for (std::size_t i = 0; i < days.size(); ++i)
        rows.push_back(counts[i] && days[i].isWhole() ? days[i].values.data() : nullptr);
    RayComparison made;
    made.mean = medianDay(rows, points, control);
    for (const std::vector<float> &row : made.mean.differences)
        made.boxcars.emplace_back(row);
    DayBoxcars::shareScatters(made.boxcars);
    return made;
}

int widthIndexOf(int width)
{
    return int(std::lround(std::log2(width)));
}

void addSharing(const RayComparison &other, int ray, std::vector<ListedDifference> &list)
{
    for (ListedDifference &one : list) {
        const DayBoxcars &day = other.boxcars[std::size_t(one.day)];
        const int widthIndex = widthIndexOf(one.width);
        if (widthIndex >= day.widths())
            continue;
        const double snr = day.snr(one.first, widthIndex);
        if (std::abs(snr) >= sharingSnr && (snr > 0) == (one.snr > 0))
            one.rays.push_back({ray, snr});
    }
}

} // namespace

std::shared_ptr<const Comparison> compareDays(const CompareProducts &products,
                                              const std::vector<bool> &counts, double byChance,
                                              const Jobs::Control &control)
{
    const auto made = std::make_shared<Comparison>();
    const int points = products.plan.points();
    RayComparison own = compareRay(products.days(), counts, points, control);
    if (control.isStopped())
        return nullptr;
    for (const std::vector<float> &row : own.mean.differences)
        made->days += !row.empty();
    if (made->days <= fewestOthers) {
        made->problem = QString("Differences need at least %1 days that count; there are %2.")
                            .arg(fewestOthers + 1)
                            .arg(made->days);
    } else {
        made->limit = limitFor(own.boxcars, byChance);
        const std::vector<Difference> found = findDifferences(own.boxcars, made->limit, control);
        made->found = int(found.size());
        for (std::size_t i = 0; i < found.size() && int(i) < mostListed; ++i)
            made->list.push_back({found[i], {}});
        for (ListedDifference &one : made->list)
            one.byChance = expectedByChance(own.boxcars, one.snr);
    }
    made->own = std::move(own.mean);
    own = {};
    const std::vector<int> others = otherRaysOf(products.parameters, products.plan);
    for (std::size_t i = 0; i < others.size() && !made->list.empty(); ++i) {
        if (control.isStopped())
            return nullptr;
        control.progress(int(100 * i / others.size()));
        addSharing(compareRay(products.rays[i + 1], counts, points, control), others[i],
                   made->list);
    }
    return control.isStopped() ? nullptr : made;
}

QString compareCommand(const CompareParameters &parameters, const QStringList &daysOff,
                       const QStringList &folders)
{
    return Days::commandOfDays(compareAnalysis(), parameters, daysOff, folders);
}

} // namespace Compare
