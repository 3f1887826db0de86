#include "analyses/pulses/pulsetables.h"

#include "base/timetext.h"
#include "coords/barycentre.h"
#include "coords/skyclock.h"
#include "data/recordingtime.h"

#include <algorithm>
#include <cmath>

namespace Pulses {

using namespace Results;

namespace {

constexpr int mostMaskLines = 200;
constexpr double secondsPerHour = 3600;

double rounded(double value, int digits)
{
    return QString::number(value, 'g', digits).toDouble();
}

// Collects the columns of a table of pulses.
class Columns {
public:
    explicit Columns(const std::vector<Pulse> &tablePulses) : pulses(tablePulses) {}

    template <typename ValueOf>
    void addNumbers(const QString &name, const QString &unit, int digits, const ValueOf &valueOf)
    {
        std::vector<double> values;
        for (const Pulse &pulse : pulses)
            values.push_back(rounded(double(valueOf(pulse)), digits));
        columns.push_back({name, unit, values});
    }

    template <typename TextOf>
    void addTexts(const QString &name, const QString &unit, const TextOf &textOf)
    {
        QStringList texts;
        for (const Pulse &pulse : pulses) {
            const QString text = textOf(pulse);
            texts << (text.isEmpty() ? "-" : text);
        }
        columns.push_back({name, unit, texts});
    }

    std::vector<Column> columns;

private:
    const std::vector<Pulse> &pulses;
};

QString timeText(const QDateTime &utc)
{
    return utc.isValid() ? textOfTime(utc, "yyyy-MM-ddThh:mm:ss.zzz") : QString();
}

QString raysText(const Pulse &pulse)
{
    QStringList texts;
    for (const PulseInRay &one : pulse.rays)
        texts << QString("%1/%2: %3").arg(one.module).arg(one.ray).arg(one.snr, 0, 'f', 1);
    return texts.join(", ");
}

QString placesText(const std::vector<RayPlace> &rays)
{
    QStringList texts;
    for (const RayPlace &place : rays)
        texts << QString("%1/%2").arg(place.moduleNumber).arg(place.rayNumber);
    return texts.join(' ');
}

QString textAt(const Column &column, std::size_t row)
{
    if (const auto *texts = std::get_if<QStringList>(&column.values))
        return (*texts)[int(row)];
    if (const auto *floats = std::get_if<std::vector<float>>(&column.values))
        return numberText((*floats)[row]);
    return numberText(std::get<std::vector<double>>(column.values)[row]);
}

double numberIn(const std::vector<HeaderLine> &lines, const QString &key)
{
    bool isNumber = false;
    const double value = valueOf(lines, key).section(' ', 0, 0).toDouble(&isNumber);
    return isNumber ? value : unknown;
}

const char *const neededColumns[] = {"snr", "dm",     "dm_error", "sidereal", "mjd",
                                     "ra",  "module", "ray",      "dec",      "verdict"};

TablePulse pulseOf(const std::vector<Column> &columns, std::size_t row, const QString &file)
{
    TablePulse pulse;
    pulse.file = file;
    QString alfa;
    QString delta;
    for (const Column &column : columns) {
        const QString text = textAt(column, row);
        pulse.fields << text;
        const double number = text == "nan" || text == "-" ? unknown : text.toDouble();
        if (column.name == "snr")
            pulse.snr = number;
        else if (column.name == "dm")
            pulse.dispersion = number;
        else if (column.name == "dm_error")
            pulse.dispersionError = number;
        else if (column.name == "sidereal")
            pulse.siderealTime = number;
        else if (column.name == "mjd")
            pulse.mjd = number;
        else if (column.name == "module")
            pulse.module = int(number);
        else if (column.name == "ray")
            pulse.ray = int(number);
        else if (column.name == "ra")
            alfa = text;
        else if (column.name == "dec")
            delta = text;
        else if (column.name == "verdict")
            pulse.isCandidate = text == nameOf(VerdictKind::Candidate);
    }
    pulse.position = alfa + " " + delta;
    return pulse;
}

} // namespace

std::vector<HeaderLine> parameterLines(const PulseParameters &parameters)
{
    std::vector<HeaderLine> lines;
    for (const PulseField *field : pulseAnalysis().fields) {
        const QString value = Tools::headerText(field->valueIn(parameters));
        if (!value.isEmpty())
            lines.push_back(
                {field->key, field->unit.isEmpty() ? value : value + " " + field->unit});
    }
    return lines;
}

std::vector<HeaderLine> searchLines(const ObservationData &header, const PulsePlan &plan,
                                    const std::vector<RayPulses> &rays,
                                    const std::vector<Pulse> &pulses)
{
    const QDateTime begin = RecordingClock(header).utc(plan.firstPoint);
    std::vector<HeaderLine> lines = {
        {"searched_rays", placesText(plan.rays)},
        {"searched_begin", begin.isValid() ? timeText(begin) + " UTC" : QString("unknown")},
        {"searched_mjd", begin.isValid() ? QString(numberText(Tools::modifiedJulianDay(begin)))
                                         : QString("unknown")},
        {"searched_sidereal",
         begin.isValid() ? QString(numberText(rounded(Tools::localSiderealTime(begin), 9))) + " h"
                         : QString("unknown")},
        {"searched_points", QString::number(plan.points)},
        {"searched_hours",
         numberText(rounded(plan.points * header.tresolution / secondsPerHour, 9))},
        {"tresolution", numberText(header.tresolution) + " s"},
        {"trials", QString("%1 dispersions to %2 pc/cm^3 x %3 widths")
                       .arg(plan.dispersions.size())
                       .arg(plan.dispersions.back())
                       .arg(plan.widths.size())},
        {"threshold_used", QString::number(plan.threshold, 'f', 3)},
        {"expected_of_noise", QString::number(plan.expected, 'g', 3)}};
    const auto candidates = std::count_if(pulses.begin(), pulses.end(), [](const Pulse &pulse) {
        return pulse.verdict.isCandidate();
    });
    lines.push_back(
        {"found", QString("%1 pulses, %2 of them candidates").arg(pulses.size()).arg(candidates)});
    for (const QString &remark : plan.remarks)
        lines.push_back({"remark", remark});
    int masked = 0;
    for (const RayPulses &ray : rays) {
        const QString place =
            QString("module %1, ray %2: ").arg(ray.place.moduleNumber).arg(ray.place.rayNumber);
        for (const QString &remark : ray.remarks)
            lines.push_back({"remark", place + remark});
        for (const QString &line : maskLines(ray.mask)) {
            if (++masked <= mostMaskLines)
                lines.push_back({"masked", place + line});
        }
    }
    if (masked > mostMaskLines)
        lines.push_back({"masked", QString("and %1 more").arg(masked - mostMaskLines)});
    return lines;
}

std::vector<Column> pulseColumns(const std::vector<Pulse> &pulses, double tresolution)
{
    Columns table(pulses);
    const double ms = tresolution * 1000;
    table.addTexts("utc", "", [](const Pulse &p) { return timeText(p.utc); });
    table.addNumbers("mjd", "d", 15, [](const Pulse &p) { return p.infiniteMjd; });
    table.addNumbers("mjd_error", "s", 3, [](const Pulse &p) { return p.infiniteError; });
    table.addNumbers("point", "", 9, [](const Pulse &p) { return p.point.value; });
    table.addNumbers("point_error", "", 3, [](const Pulse &p) { return p.point.error; });
    table.addNumbers("module", "", 9, [](const Pulse &p) { return p.module; });
    table.addNumbers("ray", "", 9, [](const Pulse &p) { return p.ray; });
    table.addNumbers("snr", "", 4, [](const Pulse &p) { return p.snr; });
    table.addNumbers("dm", "pc/cm^3", 7, [](const Pulse &p) { return p.dispersion.value; });
    table.addNumbers("dm_error", "pc/cm^3", 3, [](const Pulse &p) { return p.dispersion.error; });
    table.addNumbers("width", "ms", 4, [ms](const Pulse &p) { return p.fwhm.value * ms; });
    table.addNumbers("width_error", "ms", 3, [ms](const Pulse &p) { return p.fwhm.error * ms; });
    table.addNumbers("boxcar", "points", 9, [](const Pulse &p) { return p.width; });
    table.addTexts("ra", "",
                   [](const Pulse &p) { return Tools::rightAscensionText(p.position.alfa); });
    table.addTexts("dec", "",
                   [](const Pulse &p) { return Tools::declinationText(p.position.delta); });
    table.addNumbers("sidereal", "h", 8, [](const Pulse &p) {
        return p.utc.isValid() ? Tools::localSiderealTime(p.utc) : unknown;
    });
    table.addTexts("known_source", "", [](const Pulse &p) { return p.knownSource; });
    table.addTexts("rays", "", raysText);
    table.addNumbers("snr_at_zero", "", 4, [](const Pulse &p) { return p.snrAtZero; });
    table.addNumbers("channel_share", "", 3, [](const Pulse &p) { return p.channelShare; });
    table.addTexts("verdict", "", [](const Pulse &p) { return nameOf(p.verdict.kind); });
    table.addTexts("reason", "", [](const Pulse &p) { return p.verdict.reason; });
    return std::move(table.columns);
}

PulseTable readPulseTable(const QByteArray &bytes)
{
    PulseTable made;
    const ReadTable read = readTable(bytes);
    made.problem = read.problem;
    if (!made.problem.isEmpty())
        return made;
    const std::vector<HeaderLine> &lines = read.table.request;
    made.file = valueOf(lines, "file");
    made.mjdBegin = numberIn(lines, "searched_mjd");
    made.siderealBegin = numberIn(lines, "searched_sidereal");
    made.hours = numberIn(lines, "searched_hours");
    for (const QString &ray : valueOf(lines, "searched_rays").split(' ', Qt::SkipEmptyParts))
        made.rays.emplace_back(ray.section('/', 0, 0).toInt(), ray.section('/', 1, 1).toInt());
    for (const char *const name : neededColumns) {
        const auto has = [name](const Column &column) { return column.name == name; };
        if (std::none_of(read.table.columns.begin(), read.table.columns.end(), has))
            made.problem = QString("it has no column \"%1\"; it is no table of pulses").arg(name);
    }
    if (!made.problem.isEmpty())
        return made;
    for (int row = 0; row < read.table.rows(); ++row)
        made.pulses.push_back(pulseOf(read.table.columns, std::size_t(row), made.file));
    for (const Column &column : read.table.columns)
        made.columns.push_back({column.name, column.unit, QStringList()});
    return made;
}

} // namespace Pulses
