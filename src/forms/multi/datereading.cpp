#include "forms/multi/datereading.h"

#include "analyses/compare/comparetables.h"
#include "analyses/days/daysums.h"
#include "base/timetext.h"
#include "coords/skyclock.h"
#include "forms/native/nativetexts.h"
#include "picture/plotgeometry.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double msPerSecond = 1000;

QDateTime utcOfPoint(const Days::DayPlan &plan, int day, int point)
{
    const double seconds = point * plan.list.tresolution;
    return plan.list.days[std::size_t(day)].begin.addMSecs(
        qint64(std::llround(seconds * msPerSecond)));
}

// The sums and their base line.
void addSums(const DateReading &reading, const Days::Day &day, DateStretch &stretch,
             const Jobs::Control &control)
{
    const std::vector<Days::DaySeries> series =
        Days::seriesOfDay(*reading.recordings, day, reading.plan->choice.points,
                          reading.plan->series, reading.folder, control);
    for (const Days::DaySeries &one : series) {
        if (stretch.problem.isEmpty())
            stretch.problem = one.problem;
    }
    if (!stretch.problem.isEmpty() || control.isStopped())
        return;
    stretch.remark = series.front().remark;
    const std::vector<float> &sums = series.front().sums;
    const Days::PreparedSeries prepared =
        Days::preparedSeries(sums, series.back().sums, reading.parameters.noise);
    stretch.problem = prepared.problem;
    stretch.sigma = prepared.sigma;
    stretch.sums.assign(sums.begin(), sums.end());
    for (std::size_t i = 0; i < sums.size() && i < prepared.values.size(); ++i)
        stretch.baseline.push_back(double(sums[i]) - prepared.values[i]);
}

} // namespace

void readDates(const DateReading &reading, const Jobs::Control &control,
               const std::function<void(std::shared_ptr<const DateStretch>)> &deliver)
{
    for (const int index : reading.dates) {
        const auto stretch = std::make_shared<DateStretch>();
        stretch->day = index;
        const Days::Day &day = reading.plan->list.days[std::size_t(index)];
        stretch->problem = day.reason;
        stretch->before = day.before;
        if (stretch->problem.isEmpty())
            addSums(reading, day, *stretch, control);
        if (stretch->problem.isEmpty() && !control.isStopped()) {
            const auto samples = Days::samplesOfDay(*reading.recordings, day,
                                                    {reading.plan->series.front()}, control);
            if (const ObservationData *const whole = samples.whole())
                stretch->samples = *whole;
            else
                stretch->problem = samples.reason();
        }
        if (control.isStopped())
            return;
        deliver(stretch);
    }
}

PlotData datePlot(const DateStretch &stretch, const Days::DayPlan &plan, const QStringList &source)
{
    PlotData plot;
    plot.graphs.emplace_back(stretch.sums.begin(), stretch.sums.end());
    plot.graphs.emplace_back(stretch.baseline.begin(), stretch.baseline.end());
    plot.names << "sum of bands"
               << "base line";
    plot.colours << "#0000FF"
                 << "#FF0000";
    plot.numPoints = int(stretch.sums.size());
    plot.x = {"time", "s", 0, plan.list.tresolution, {}};
    plot.msPerPoint = plan.list.tresolution * msPerSecond;
    plot.rowNames = QStringList{"s", "UTC", "sidereal"};
    const double step = plan.list.tresolution;
    const QDateTime begin = utcOfPoint(plan, stretch.day, 0);
    const double offset = plan.choice.start.clockOffset;
    plot.textX1 = [step](int index) { return QString::number(index * step, 'f', 2); };
    plot.textX2 = [begin, step](int index) {
        return textOfTime(begin.addMSecs(qint64(std::llround(index * step * msPerSecond))),
                          "hh:mm:ss");
    };
    plot.textX3 = [begin, step, offset](int index) {
        const double seconds = index * step - offset;
        return Compare::siderealText(Tools::localSiderealTime(begin.addMSecs(
                                         qint64(std::llround(seconds * msPerSecond)))))
            .section('.', 0, 0);
    };
    const Plot::Range range = Plot::verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.source = source;
    return plot;
}

QString dateStatistics(const DateStretch &stretch, int first, int count, bool isSelected,
                       double tresolution)
{
    const int points = int(stretch.baseline.size());
    if (points == 0)
        return {};
    const int begin = std::clamp(first, 0, points - 1);
    const int end = std::clamp(first + count, begin + 1, points);
    std::vector<double> all(stretch.baseline.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = stretch.sums[i] - stretch.baseline[i];
    const std::vector<double> values(all.begin() + begin, all.begin() + end);
    NativeTexts::StatisticsPart part;
    part.name = "sum less base line";
    part.isSelected = isSelected;
    part.first = begin;
    part.last = end - 1;
    part.seconds = (end - begin) * tresolution;
    part.statistics = Tools::seriesStatistics(values);
    part.deviation = Tools::medianAbsoluteDeviation(values, part.statistics.median);
    if (isSelected)
        part.signal = Tools::partSignal(all, begin, end);
    return NativeTexts::statisticsHtml(part);
}
