#include "analyses/profiles/profiletables.h"

#include "analyses/days/fourierdays.h"
#include "analyses/days/stacktables.h"

#include <algorithm>
#include <cmath>

namespace Profiles {

using namespace Results;

namespace {

// With the digits that the error leaves.
QString withError(double value, double error, const QString &unit)
{
    const int decimals = error > 0 ? std::clamp(1 - int(std::floor(std::log10(error))), 0, 15) : 10;
    return QString("%1 +- %2 %3")
        .arg(QString::number(value, 'f', decimals), QString::number(error, 'f', decimals), unit);
}

QString number(double value, int digits = 4)
{
    return QString::number(value, 'g', digits);
}

// The S/N under their names.
void addSnr(const Tools::ProfileSnr &snr, std::vector<HeaderLine> &lines)
{
    lines.push_back({"snr_boxcar", number(snr.boxcar.snr)});
    lines.push_back({"snr_boxcar_sigma", number(snr.boxcarSigma)});
    lines.push_back({"boxcar_width", QString("%1 bins").arg(snr.boxcar.width)});
    lines.push_back({"boxcar_phase", number(snr.boxcar.phase)});
    lines.push_back({"snr_peak", number(snr.peak)});
    lines.push_back({"snr_peak_sigma", number(snr.peakSigma)});
    lines.push_back({QString("z2_%1").arg(snr.harmonics), number(snr.z2)});
    lines.push_back({"z2_sigma", number(snr.z2Sigma)});
    lines.push_back({"h", number(snr.h)});
    lines.push_back({"h_sigma", number(snr.hSigma)});
    lines.push_back({"equivalent_width", number(snr.equivalentWidth) + " of the period"});
    lines.push_back({"snr_equivalent", number(snr.equivalentSnr)});
}

void addPulse(const ProfileStack &stack, double period, std::vector<HeaderLine> &lines)
{
    const Tools::GaussianPulse &pulse = stack.pulse;
    constexpr double leastSnr = 5;
    if (pulse.snr < leastSnr)
        return;
    const double ms = 1000 * period;
    if (pulse.isResolved) {
        lines.push_back({"w50", withError(pulse.width * ms, pulse.widthError * ms, "ms")});
        lines.push_back(
            {"w10", withError(pulse.widthAtTenth() * ms, pulse.widthAtTenthError() * ms, "ms")});
        lines.push_back({"duty_cycle", number(pulse.width)});
    } else {
        constexpr double greatest = 0.5;
        lines.push_back(
            {"w50",
             pulse.widthLimit < greatest
                 ? QString("below %1 ms, in 39 of 40 cases").arg(number(pulse.widthLimit * ms, 3))
                 : QString("not told: the pulse is too broad or too weak")});
    }
}

void addScan(const ProfileScan &scan, std::vector<HeaderLine> &lines)
{
    const auto text = [](const ScanCurve &curve, const QString &unit) {
        return curve.isInside
                   ? withError(curve.best, curve.error, unit)
                   : QString("not told: no maximum above S/N 5 inside the scan, or fewer "
                             "than 8 periods");
    };
    if (scan.periods.values.empty())
        return;
    lines.push_back({"scan_is", scan.isCoherent ? "S/N of the average"
                                                : "root of the sum of squared S/N of the days"});
    lines.push_back({"best_period", text(scan.periods, "s")});
    lines.push_back({"best_dispersion", text(scan.dispersions, "pc/cm^3")});
}

// The boxcar's S/N grows with the days that are in the average.
void addFlux(const ProfileOutcome &outcome, const ProfilePlan &plan, std::vector<HeaderLine> &lines)
{
    const double sefd = sefdOf(plan.parameters);
    const Tools::BoxcarPeak &boxcar = outcome.stack.snr.boxcar;
    const ProfileDay *const first = firstWhole(outcome.days());
    if (!(sefd > 0) || boxcar.width == 0 || outcome.stack.profile.empty() || !first)
        return;
    const double width = double(boxcar.width) / first->bins;
    const double flux = fluxDensity(boxcar.snr, sefd, width, bandwidthOf(*first),
                                    first->seconds * outcome.stack.effectiveDays);
    lines.push_back({"flux_density", number(1000 * flux) + " mJy, for the middle of the beam"});
}

// Middles of bins.
std::vector<double> phasesOf(std::size_t bins)
{
    std::vector<double> phases;
    for (std::size_t i = 0; i < bins; ++i)
        phases.push_back((double(i) + 0.5) / double(bins));
    return phases;
}

} // namespace

std::vector<HeaderLine> parameterLines(const ProfileParameters &parameters)
{
    std::vector<HeaderLine> lines;
    for (const ProfileField &field : profileFields()) {
        const QString value = Tools::headerText(field.valueIn(parameters));
        if (!value.isEmpty())
            lines.push_back({field.key, field.unit.isEmpty() ? value : value + " " + field.unit});
    }
    return lines;
}

std::vector<HeaderLine> outcomeLines(const ProfileOutcome &outcome, const ProfilePlan &plan)
{
    const ProfileStack &stack = outcome.stack;
    const ProfileDay *const first = firstWhole(outcome.days());
    const double period =
        first ? barycentricPeriod(plan.ephemeris, *first) : 1 / plan.ephemeris.frequency;
    std::vector<HeaderLine> lines = {
        {"in_average", QString("%1 of %2 days").arg(stack.inAverage).arg(stack.days.size())},
        {"aligned_by_template", QString::number(stack.alignedByTemplate)},
        {"effective_days", number(stack.effectiveDays)},
        {"fold_period", numberText(period) + " s"},
        {"begin_error_used", numberText(plan.parameters.beginError) + " s"},
        {"tresolution", numberText(plan.days.list.tresolution) + " s"},
        {"site_of_recordings",
         plan.days.beam.site.isEmpty() ? QString("unknown") : plan.days.beam.site}};
    if (outcome.choice.moreFrequency != 0 || outcome.choice.moreDispersion != 0) {
        constexpr int digits = 8;
        lines.push_back({"moved_frequency", number(outcome.choice.moreFrequency, digits) + " Hz"});
        lines.push_back(
            {"moved_dispersion", number(outcome.choice.moreDispersion, digits) + " pc/cm^3"});
    }
    if (!stack.profile.empty()) {
        addSnr(stack.snr, lines);
        addPulse(stack, period, lines);
        addFlux(outcome, plan, lines);
    }
    lines.push_back({"incoherent_z2", number(stack.incoherent)});
    lines.push_back({"incoherent_sigma", number(stack.incoherentSigma)});
    lines.push_back({"incoherent_days", QString::number(stack.incoherentDays)});
    addScan(outcome.scan, lines);
    for (const QString &remark : plan.remarks + stack.remarks)
        lines.push_back({"remark", remark});
    if (!stack.problem.isEmpty())
        lines.push_back({"remark", stack.problem});
    return lines;
}

std::vector<Column> profileColumns(const ProfileStack &stack)
{
    const std::size_t bins = stack.profile.size();
    const double error = std::sqrt(stack.noise.binVariance());
    std::vector<Column> columns = {{"phase", "", phasesOf(bins)},
                                   {"average", "", stack.profile},
                                   {"error", "", std::vector<double>(bins, error)}};
    if (!stack.firstHalf.empty()) {
        columns.push_back({"first_half", "", stack.firstHalf});
        columns.push_back({"second_half", "", stack.secondHalf});
        columns.push_back({"error_of_halves", "",
                           std::vector<double>(bins, std::sqrt(stack.halfNoise.binVariance()))});
    }
    return columns;
}

std::vector<Column> daysColumns(const ProfileOutcome &outcome)
{
    QStringList names;
    QStringList uses;
    QStringList reasons;
    QStringList remarks;
    for (std::size_t i = 0; i < outcome.days().size(); ++i) {
        const StackedDay &day = outcome.stack.days[i];
        names << Days::dayName(outcome.days()[i].begin);
        uses << (day.use == DayUse::ByTemplate    ? "template"
                 : day.use == DayUse::ByEphemeris ? "ephemeris"
                 : day.use == DayUse::Alone       ? "alone"
                                                  : "out");
        reasons << day.reason;
        remarks << outcome.days()[i].remark;
    }
    std::vector<Column> columns = {{"day", "", names}, {"aligned_by", "", uses}};
    const auto add = [&](const QString &name, const QString &unit, const auto &valueOf) {
        std::vector<double> values;
        for (std::size_t i = 0; i < outcome.days().size(); ++i)
            values.push_back(valueOf(outcome.days()[i], outcome.stack.days[i]));
        columns.push_back({name, unit, values});
    };
    using P = const ProfileDay &;
    using S = const StackedDay &;
    add("snr_boxcar", "", [](P, S day) { return day.snr.boxcar.snr; });
    add("snr_boxcar_sigma", "", [](P, S day) { return day.snr.boxcarSigma; });
    add("boxcar_width", "bins", [](P, S day) { return double(day.snr.boxcar.width); });
    add("boxcar_phase", "", [](P, S day) { return day.snr.boxcar.phase; });
    add("snr_peak", "", [](P, S day) { return day.snr.peak; });
    add("snr_peak_sigma", "", [](P, S day) { return day.snr.peakSigma; });
    add("z2", "", [](P, S day) { return day.snr.z2; });
    add("z2_sigma", "", [](P, S day) { return day.snr.z2Sigma; });
    add("h", "", [](P, S day) { return day.snr.h; });
    add("h_sigma", "", [](P, S day) { return day.snr.hSigma; });
    add("snr_equivalent", "", [](P, S day) { return day.snr.equivalentSnr; });
    add("chi_squared_reduced", "", [](P product, S) { return product.chiSquared.reduced; });
    add("chi_squared_sigma", "", [](P product, S) { return product.chiSquared.sigma; });
    add("shift", "", [](P, S day) { return day.shift; });
    add("shift_error", "", [](P, S day) { return day.shiftError; });
    add("weight", "", [](P, S day) { return day.weight; });
    add("noise", "", [](P product, S) { return product.noise.sigma * product.unit; });
    add("bands", "", [](P product, S) { return double(product.usedBands()); });
    columns.push_back({"reason", "", reasons});
    columns.push_back({"remark", "", remarks});
    return columns;
}

std::vector<Column> growthColumns(const ProfileStack &stack)
{
    std::vector<double> numbers;
    std::vector<double> roots;
    std::vector<double> expected;
    const double days = double(stack.growth.size());
    for (std::size_t i = 0; i < stack.growth.size(); ++i) {
        numbers.push_back(double(i) + 1);
        roots.push_back(std::sqrt(numbers.back()));
        expected.push_back(stack.growth.back() * std::sqrt(numbers.back() / days));
    }
    return {{"days", "", numbers},
            {"root_of_days", "", roots},
            {"snr", "", stack.growth},
            {"expected", "", expected}};
}

std::vector<Column> scanColumns(const ScanCurve &curve, const QString &name, const QString &unit)
{
    std::vector<Column> columns = {{name, unit, curve.values}, {"snr", "", curve.snr}};
    if (!curve.cubic.empty())
        columns.push_back({"cubic", "", curve.cubic});
    return columns;
}

std::vector<Column> arrivalColumns(const ProfileOutcome &outcome, const QString &site)
{
    QStringList names;
    QStringList times;
    std::vector<double> barycentric;
    std::vector<double> errors;
    std::vector<double> snr;
    for (const Arrival &arrival : outcome.arrivals) {
        names << Days::dayName(outcome.days()[std::size_t(arrival.day)].begin);
        times << arrival.utcText();
        barycentric.push_back(arrival.barycentric);
        errors.push_back(arrival.error);
        snr.push_back(arrival.snr);
    }
    QStringList sites;
    for (int i = 0; i < names.size(); ++i)
        sites << site;
    return {{"day", "", names},
            {"arrival", "MJD UTC", times},
            {"arrival_barycentric", "MJD TDB", barycentric},
            {"error", "s", errors},
            {"snr", "", snr},
            {"site", "", sites}};
}

std::vector<Column> dayProfileColumns(const ProfileOutcome &outcome)
{
    std::vector<Column> columns;
    for (std::size_t i = 0; i < outcome.days().size(); ++i) {
        const std::vector<float> &profile = outcome.stack.days[i].profile;
        if (profile.empty())
            continue;
        if (columns.empty())
            columns.push_back({"phase", "", phasesOf(profile.size())});
        columns.push_back({Days::dayName(outcome.days()[i].begin), "",
                           std::vector<double>(profile.begin(), profile.end())});
    }
    return columns;
}

std::vector<std::pair<QString, ResultTable>> profileTables(const std::vector<HeaderLine> &request,
                                                           const ProfileOutcome &outcome,
                                                           const ProfilePlan &plan,
                                                           const RecordingSet &set)
{
    ResultTable table;
    table.request = request;
    table.result = outcomeLines(outcome, plan);
    std::vector<std::pair<QString, ResultTable>> tables;
    const auto add = [&](const QString &what, const std::vector<Column> &columns) {
        tables.emplace_back(what, table);
        tables.back().second.columns = columns;
    };
    add("average", profileColumns(outcome.stack));
    add("profiles", dayProfileColumns(outcome));
    add("growth", growthColumns(outcome.stack));
    add("periods", scanColumns(outcome.scan.periods, "period", "s"));
    add("dispersions", scanColumns(outcome.scan.dispersions, "dispersion", "pc/cm^3"));
    add("arrivals", arrivalColumns(outcome, plan.parameters.site));
    add("days", daysColumns(outcome));
    for (const HeaderLine &line : Days::leftOutLines(set, plan.days.list))
        tables.back().second.result.push_back(line);
    return tables;
}

QByteArray timBytes(const ProfileOutcome &outcome, const QString &site)
{
    QStringList names;
    for (const ProfileDay &day : outcome.days())
        names << Days::dayName(day.begin);
    return timBytes(outcome.arrivals, names, site);
}

} // namespace Profiles
