#include "picture/profileplot.h"

#include "analyses/days/fourierdays.h"
#include "picture/axistexts.h"
#include "picture/percentiles.h"
#include "picture/plotgeometry.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

namespace Plot {

using namespace Profiles;

namespace {

constexpr char bandColour[] = "#8c9cf0"; // of the error beside the average
constexpr int growthPositions = 400;     // equal steps of the root of the days

PlotData message(const QString &text)
{
    PlotData plot;
    plot.messageMode = true;
    plot.message = text;
    return plot;
}

void setRange(PlotData &plot)
{
    const Range range = verticalRange(plot);
    plot.yMin = range.min;
    plot.yMax = range.max;
    plot.yPrecision = labelDecimals(range.max - range.min);
}

std::vector<float> floatsOf(const std::vector<double> &values, double more = 0)
{
    std::vector<float> floats;
    for (const double value : values)
        floats.push_back(float(value + more));
    return floats;
}

void addCurve(PlotData &plot, const QString &name, const QString &colour, std::vector<float> values)
{
    plot.numPoints = int(values.size());
    plot.graphs.push_back(std::move(values));
    plot.names << name;
    plot.colours << colour;
}

} // namespace

PlotData averagePlot(const ProfileOutcome &outcome)
{
    const ProfileStack &stack = outcome.stack;
    PlotData plot;
    if (stack.profile.empty()) {
        plot = message((QStringList(stack.problem) + stack.remarks).join(' '));
        for (const StackedDay &day : stack.days) // their picture has the same axis
            plot.numPoints = day.profile.empty() ? plot.numPoints : int(day.profile.size());
        return plot;
    }
    const double error = std::sqrt(stack.noise.binVariance());
    if (!stack.firstHalf.empty()) {
        addCurve(plot, "first half of the time", plotColour(1).code, floatsOf(stack.firstHalf));
        addCurve(plot, "second half", plotColour(5).code, floatsOf(stack.secondHalf));
    }
    addCurve(plot, "average + error", bandColour, floatsOf(stack.profile, error));
    addCurve(plot, "average - error", bandColour, floatsOf(stack.profile, -error));
    addCurve(plot, "average", plotColour(0).code, floatsOf(stack.profile));
    const double bins = plot.numPoints;
    plot.x = {"phase", "", 0.5 / bins, 1 / bins, {}};
    plot.textX1 = [bins](int i) { return QString::number((i + 0.5) / bins, 'f', 3); };
    plot.rowNames << "phase";
    plot.yName = "average profile";
    plot.yUnit = outcome.choice.normalises ? "noise of a day" : "";
    setRange(plot);
    return plot;
}

std::vector<int> daysWithProfile(const ProfileOutcome &outcome)
{
    std::vector<int> days;
    for (std::size_t i = 0; i < outcome.days().size(); ++i) {
        if (outcome.days()[i].isWhole())
            days.push_back(int(i));
    }
    return days;
}

PlotData daysSnrPlot(const ProfileOutcome &outcome)
{
    const std::vector<int> days = daysWithProfile(outcome);
    if (days.size() < 2)
        return message(days.empty() ? "No day has a profile" : "One day does not make a curve");
    PlotData plot;
    std::vector<float> snr;
    QVector<QString> names;
    for (const int day : days) {
        snr.push_back(float(outcome.stack.days[std::size_t(day)].snr.boxcar.snr));
        names << outcome.days()[std::size_t(day)].begin.date().toString(Qt::ISODate);
    }
    addCurve(plot, "S/N of the best boxcar of the day", plotColour(0).code, std::move(snr));
    plot.labelsX1 = names;
    plot.rowNames << "day";
    plot.x = {"day", "", 1, 1, {}};
    plot.yName = "S/N";
    setRange(plot);
    plot.yMin = std::min(plot.yMin, 0.0);
    return plot;
}

namespace {

double widestRoot(const ProfileStack &stack)
{
    return std::sqrt(double(stack.growth.size()));
}

// Between whole numbers of days, along the root of their number.
double growthAt(const ProfileStack &stack, double root)
{
    const std::size_t last = stack.growth.size();
    const auto before = std::clamp(std::size_t(root * root), std::size_t(0), last - 1);
    const double low = std::sqrt(double(before));
    const double high = std::sqrt(double(before) + 1);
    const double from = before == 0 ? 0 : stack.growth[before - 1];
    return from + (stack.growth[before] - from) * std::min(1.0, (root - low) / (high - low));
}

} // namespace

PlotData growthPlot(const ProfileStack &stack)
{
    if (stack.growth.size() < 2)
        return message(stack.growth.empty() ? stack.problem : "One day does not make a curve");
    const double step = widestRoot(stack) / growthPositions;
    std::vector<float> measured;
    std::vector<float> expected;
    for (int i = 0; i <= growthPositions; ++i) {
        measured.push_back(float(growthAt(stack, i * step)));
        expected.push_back(float(stack.growth.back() * i / growthPositions));
    }
    PlotData plot;
    addCurve(plot, "expected", plotColour(6).code, std::move(expected));
    addCurve(plot, "S/N of the first days", plotColour(0).code, std::move(measured));
    plot.x = {"root of the days", "", 0, step, {}};
    plot.textX1 = [step](int i) { return QString::number(i * step, 'f', 1); };
    plot.textX2 = [step](int i) { return QString::number(std::lround(std::pow(i * step, 2))); };
    plot.rowNames = QStringList{"root", "days"};
    plot.yName = "S/N";
    setRange(plot);
    return plot;
}

int daysAtGrowth(const ProfileStack &stack, double index)
{
    const double root = index * widestRoot(stack) / growthPositions;
    return std::clamp(int(std::lround(root * root)), 1, std::max(1, int(stack.growth.size())));
}

double growthIndexOf(const ProfileStack &stack, int days)
{
    return stack.growth.empty() ? 0 : std::sqrt(double(days)) / widestRoot(stack) * growthPositions;
}

namespace {

int nearestIndex(const std::vector<double> &ascending, double value)
{
    const auto above = std::lower_bound(ascending.begin(), ascending.end(), value);
    if (above == ascending.begin() ||
        (above != ascending.end() && *above - value <= value - above[-1]))
        return int(above - ascending.begin());
    return int(above - ascending.begin()) - 1;
}

} // namespace

PlotData scanPlot(const ProfileScan &scan, Scanned what)
{
    const bool isPeriods = what == Scanned::Periods;
    const ScanCurve &curve = isPeriods ? scan.periods : scan.dispersions;
    if (curve.values.size() < 2)
        return message("No day takes part in the trials");
    PlotData plot;
    addCurve(plot,
             scan.isCoherent ? "S/N of the average" : "root of the sum of squared S/N of days",
             plotColour(0).code, floatsOf(curve.snr));
    if (!curve.cubic.empty())
        addCurve(plot, "cubic", plotColour(2).code, floatsOf(curve.cubic));
    for (const double extreme : curve.extremes) {
        plot.markers.push_back(nearestIndex(curve.values, extreme));
        plot.markerStyles.push_back({"extreme", {2, 4}});
    }
    plot.markers.push_back(nearestIndex(curve.values, curve.best));
    plot.markerStyles.push_back({"best", {}});
    plot.x = {isPeriods ? "period" : "DM", isPeriods ? "s" : "pc/cm^3", 0, 1, curve.values};
    const int digits = isPeriods ? 8 : 5;
    plot.textX1 = [values = curve.values, digits](int i) {
        const auto at = std::size_t(std::clamp(i, 0, int(values.size()) - 1));
        return QString::number(values[at], 'g', digits);
    };
    plot.rowNames << (isPeriods ? "period, s" : "DM"); // longer ones run into the first number
    plot.yName = "S/N";
    setRange(plot);
    return plot;
}

namespace {

// Each value as wide as its share of the picture.
void addRow(const float *values, std::size_t count, RowPicture &picture)
{
    const std::vector<float> row =
        columnMaxima(std::vector<float>(values, values + count), picture.columns);
    picture.values.insert(picture.values.end(), row.begin(), row.end());
    ++picture.rows;
}

// What 2 and 99.8 % lie below, with as many digits as a scale has room for.
void findScale(RowPicture &picture)
{
    const std::vector<float> ends = percentiles(picture.values, {0.02, 0.998});
    if (ends.empty())
        return;
    const auto rounded = [](float value) {
        return QString::number(double(value), 'g', 3).toFloat();
    };
    picture.low = rounded(ends[0]);
    picture.high = std::max(rounded(ends[1]), picture.low + 1);
}

} // namespace

RowPicture dayProfilesPicture(const ProfileOutcome &outcome, const QSize &size)
{
    RowPicture picture;
    picture.columns = columnsOf(size);
    const bool hasAverage = outcome.stack.inAverage > 0;
    for (std::size_t i = 0; i < outcome.days().size(); ++i) {
        const StackedDay &day = outcome.stack.days[i];
        if (day.profile.empty() || (hasAverage && day.use == DayUse::Out))
            continue;
        picture.rowNames << Days::dayName(outcome.days()[i].begin);
        addRow(day.profile.data(), day.profile.size(), picture);
    }
    findScale(picture);
    picture.isGrey = true;
    picture.lastX = 1;
    picture.xName = "phase";
    picture.scaleName = "noise";
    picture.title = ReportText::counted(picture.rows, "day") + ", each in units of its noise" +
                    (hasAverage ? "" : ", not aligned");
    return picture;
}

Range scanEdges(const std::vector<double> &values)
{
    if (values.size() < 2)
        return {0, 1};
    const double half = (values.back() - values.front()) / double(values.size() - 1) / 2;
    return {values.front() - half, values.back() + half};
}

RowPicture scanPicture(const ProfileScan &scan, const QSize &size)
{
    const std::size_t columns = scan.mapPeriods.size();
    RowPicture picture;
    picture.columns = columnsOf(size);
    for (std::size_t row = scan.mapDispersions.size(); row-- > 0;) {
        picture.rowNames << QString::number(scan.mapDispersions[row], 'f', 2);
        addRow(&scan.both[row * columns], columns, picture);
    }
    findScale(picture);
    picture.rowsName = "DM, pc/cm^3";
    const Range edges = scanEdges(scan.mapPeriods);
    picture.firstX = edges.min;
    picture.lastX = edges.max;
    picture.xName = "period, s";
    picture.xText = [](double x) { return QString::number(x, 'g', 7); };
    picture.scaleName = "S/N";
    picture.title = scan.isCoherent ? "S/N over period and DM" : "Sum of the days' S/N";
    return picture;
}

} // namespace Plot
