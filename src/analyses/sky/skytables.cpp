#include "analyses/sky/skytables.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace Sky {

using namespace Results;

namespace {

constexpr char formKey[] = "candidates_form";
constexpr char formOfCandidates[] = "1"; // another one is refused
constexpr char none[] = "-";
constexpr double secondsPerRadian = 43200 / std::numbers::pi;
constexpr double arcminutesPerRadian = 10800 / std::numbers::pi;
constexpr int digits = 6;
constexpr int manyDigits = 12;

// Rounded to the digits that mean something.
double rounded(double value, int count)
{
    return QString::number(value, 'g', count).toDouble();
}

template <typename ValueOf>
Column numbers(const std::vector<SkyCandidate> &candidates, const QString &name,
               const QString &unit, const ValueOf &valueOf, int count = digits)
{
    std::vector<double> values;
    for (const SkyCandidate &candidate : candidates)
        values.push_back(rounded(double(valueOf(candidate)), count));
    return {name, unit, values};
}

template <typename TextOf>
Column texts(const std::vector<SkyCandidate> &candidates, const QString &name, const TextOf &textOf)
{
    QStringList values;
    for (const SkyCandidate &candidate : candidates) {
        const QString text = textOf(candidate);
        values << (text.isEmpty() ? QString(none) : text);
    }
    return {name, {}, values};
}

// A note in one cell of a table.
QString oneLine(const QString &note)
{
    return note.simplified();
}

double numberAt(const Column &column, int row)
{
    const auto *const values = std::get_if<std::vector<double>>(&column.values);
    return values ? (*values)[std::size_t(row)] : std::numeric_limits<double>::quiet_NaN();
}

// A column of texts that all look like numbers was read as one of numbers.
QString textAt(const Column &column, int row)
{
    if (const auto *const values = std::get_if<QStringList>(&column.values))
        return (*values)[row] == none ? QString() : (*values)[row];
    return numberText(numberAt(column, row));
}

int indexOfRay(const SkyPlan &plan, double module, double ray)
{
    for (int i = 0; i < plan.rayCount(); ++i) {
        if (plan.rays[std::size_t(i)].module == module && plan.rays[std::size_t(i)].ray == ray)
            return i;
    }
    return -1;
}

int indexOfDispersion(const SkyPlan &plan, double dispersion)
{
    for (std::size_t i = 0; i < plan.dispersions.size(); ++i) {
        if (rounded(plan.dispersions[i], digits) == dispersion)
            return int(i);
    }
    return -1;
}

// A number of a file as one that an integer holds; the least one where it is none.
int countOf(double number, int least)
{
    constexpr double most = 1e6;
    return number >= least && number <= most ? int(number) : least;
}

// The columns without which a row says nothing.
struct NeededColumns {
    const Column *barycentric = nullptr;
    const Column *telescope = nullptr;
    const Column *period = nullptr;
    const Column *sigma = nullptr;
    const Column *harmonics = nullptr;
    const Column *module = nullptr;
    const Column *ray = nullptr;
    const Column *dispersion = nullptr;
    const Column *start = nullptr;
    const Column *verdict = nullptr;
    const Column *note = nullptr;

    explicit NeededColumns(const std::vector<Column> &columns)
        : barycentric(columnNamed(columns, "frequency_barycentre")),
          telescope(columnNamed(columns, "frequency_telescope")),
          period(columnNamed(columns, "period")), sigma(columnNamed(columns, "significance")),
          harmonics(columnNamed(columns, "harmonics") ? columnNamed(columns, "harmonics")
                                                      : columnNamed(columns, "width")),
          module(columnNamed(columns, "module")), ray(columnNamed(columns, "ray")),
          dispersion(columnNamed(columns, "cell_dispersion")), start(columnNamed(columns, "start")),
          verdict(columnNamed(columns, "verdict")), note(columnNamed(columns, "note"))
    {}

    bool areThere() const
    {
        return barycentric && telescope && period && sigma && harmonics && module && ray &&
               dispersion && start && verdict && note;
    }
};

// What a row tells besides, as far as it was written.
void readMeasured(SkyCandidate &candidate, const std::vector<Column> &columns, int row)
{
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    const auto number = [&](const QString &name) {
        const Column *const column = columnNamed(columns, name);
        return column ? numberAt(*column, row) : unknown;
    };
    const auto text = [&](const QString &name) {
        const Column *const column = columnNamed(columns, name);
        return column ? textAt(*column, row) : QString();
    };
    candidate.period.error = number("period_error");
    candidate.dispersion = {number("dispersion"), number("dispersion_error")};
    candidate.alfa = {Tools::rightAscensionOf(text("alfa")),
                      number("alfa_error") / secondsPerRadian};
    candidate.delta = {Tools::declinationOf(text("delta")),
                       number("delta_error") / arcminutesPerRadian};
    candidate.days = countOf(number("days"), 0);
}

SkyCandidate candidateAt(const NeededColumns &columns, int row, const SkyPlan &plan)
{
    SkyCandidate candidate;
    candidate.barycentric = numberAt(*columns.barycentric, row);
    candidate.telescope = numberAt(*columns.telescope, row);
    candidate.period.value = numberAt(*columns.period, row);
    candidate.sigma = numberAt(*columns.sigma, row);
    candidate.harmonics = countOf(numberAt(*columns.harmonics, row), 1);
    candidate.ray = indexOfRay(plan, numberAt(*columns.module, row), numberAt(*columns.ray, row));
    candidate.dispersionIndex = indexOfDispersion(plan, numberAt(*columns.dispersion, row));
    const double start = numberAt(*columns.start, row);
    candidate.start = start >= 1 && start <= plan.starts ? int(start) - 1 : -1;
    candidate.verdict = verdictOf(textAt(*columns.verdict, row));
    candidate.note = textAt(*columns.note, row);
    return candidate;
}

} // namespace

std::vector<HeaderLine> parameterLines(const SkyAnalysis &analysis, const SkyParameters &parameters)
{
    std::vector<HeaderLine> lines;
    for (const SkyField *field : analysis.fields) {
        const QString value = Tools::headerText(field->valueIn(parameters));
        if (!value.isEmpty())
            lines.push_back(
                {field->key, field->unit.isEmpty() ? value : value + " " + field->unit});
    }
    return lines;
}

std::vector<HeaderLine> stateLines(const RecordingSet &set, const SkyPlan &plan)
{
    constexpr int hashDigits = 24;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const RecordingEntry &entry : set.entries) {
        const QFileInfo file(entry.path);
        hash.addData(entry.path.toUtf8() + '\n' + QByteArray::number(file.size()) + ' ' +
                     QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + '\n');
    }
    std::vector<HeaderLine> lines = {
        {"recordings", QString("%1 recordings, %2")
                           .arg(set.entries.size())
                           .arg(QString::fromLatin1(hash.result().toHex().left(hashDigits)))}};
    if (plan.dates.first.isValid() || plan.dates.last.isValid())
        lines.push_back({"dates", plan.dates.first.toString(Qt::ISODate) + ":" +
                                      plan.dates.last.toString(Qt::ISODate)});
    for (const Days::Interference &entry : plan.interference)
        lines.push_back({"interference", entry.text()});
    return lines;
}

std::vector<HeaderLine> planLines(const SkyPlan &plan, const SkyRun &run)
{
    QStringList rays;
    for (const SkyRay &ray : plan.rays)
        rays << QString("%1/%2").arg(ray.module).arg(ray.ray);
    const QString site = plan.rays.empty() ? QString() : plan.rays.front().beam.site;
    std::vector<HeaderLine> lines = {{"added_days", QString::number(run.stack.added.size())},
                                     {"added_rays", rays.join(' ')},
                                     {"added_starts", QString::number(plan.starts)},
                                     {"tresolution", numberText(plan.header.tresolution) + " s"},
                                     {"site", site.isEmpty() ? QString("unknown") : site}};
    // Remarks on the run are left to who watches it: a run on kept stacks has none, and the same
    // table.
    for (const QString &remark : plan.remarks)
        lines.push_back({"remark", remark});
    for (const FieldProblem &bad : run.badPassages)
        lines.push_back({"bad_day", bad.field + ": " + bad.text});
    return lines;
}

std::vector<HeaderLine> searchLines(const SkySearch &search)
{
    std::vector<HeaderLine> lines = {{formKey, formOfCandidates},
                                     {"cells", QString::number(search.searchedCells)},
                                     {"trials", numberText(rounded(search.trials, digits))}};
    for (const QString &remark : search.remarks)
        lines.push_back({"remark", remark});
    return lines;
}

std::vector<Column> candidateColumns(const std::vector<SkyCandidate> &candidates,
                                     const SkyPlan &plan)
{
    using C = SkyCandidate;
    const bool isFfa = plan.product == Product::Ffa;
    const auto rayOf = [&plan](const C &c) -> const SkyRay & {
        return plan.rays[std::size_t(c.ray)];
    };
    return {
        numbers(
            candidates, "frequency_barycentre", "Hz", [](const C &c) { return c.barycentric; },
            manyDigits),
        numbers(
            candidates, "frequency_telescope", "Hz", [](const C &c) { return c.telescope; },
            manyDigits),
        numbers(
            candidates, "period", "s", [](const C &c) { return c.period.value; }, manyDigits),
        numbers(
            candidates, "period_error", "s", [](const C &c) { return c.period.error; }, 2),
        numbers(candidates, "dispersion", "pc/cm^3", [](const C &c) { return c.dispersion.value; }),
        numbers(
            candidates, "dispersion_error", "pc/cm^3",
            [](const C &c) { return c.dispersion.error; }, 2),
        texts(candidates, "alfa",
              [](const C &c) { return Tools::rightAscensionText(c.alfa.value); }),
        numbers(
            candidates, "alfa_error", "s",
            [](const C &c) { return c.alfa.error * secondsPerRadian; }, 2),
        texts(candidates, "delta",
              [](const C &c) { return Tools::declinationText(c.delta.value); }),
        numbers(
            candidates, "delta_error", "arcmin",
            [](const C &c) { return c.delta.error * arcminutesPerRadian; }, 2),
        numbers(candidates, "significance", "sigma", [](const C &c) { return c.sigma; }),
        numbers(
            candidates, "false_alarms", "", [](const C &c) { return c.falseAlarms; }, 3),
        numbers(candidates, "without_strongest", "sigma",
                [](const C &c) { return c.withoutStrongest; }),
        numbers(candidates, isFfa ? "snr" : "power", "", [](const C &c) { return c.power; }),
        numbers(candidates, isFfa ? "width" : "harmonics", "",
                [](const C &c) { return c.harmonics; }),
        numbers(candidates, "days", "", [](const C &c) { return c.days; }),
        numbers(candidates, "cells", "", [](const C &c) { return c.cells; }),
        numbers(candidates, "module", "", [&](const C &c) { return rayOf(c).module; }),
        numbers(candidates, "ray", "", [&](const C &c) { return rayOf(c).ray; }),
        numbers(candidates, "cell_dispersion", "pc/cm^3",
                [&](const C &c) { return plan.dispersions[std::size_t(c.dispersionIndex)]; }),
        numbers(candidates, "start", "", [](const C &c) { return c.start + 1; }),
        texts(candidates, "remark", [](const C &c) { return c.marks().join("; "); }),
        texts(candidates, "verdict", [](const C &c) { return verdictName(c.verdict); }),
        texts(candidates, "note", [](const C &c) { return oneLine(c.note); })};
}

std::vector<Column> mapColumns(const SkyMap &map)
{
    std::vector<Column> columns;
    if (!map.axis.empty())
        columns.push_back({"period", "s", map.axis});
    for (std::size_t row = 0; row < map.rows.size(); ++row) {
        const auto first = map.sigma.begin() + std::ptrdiff_t(row * std::size_t(map.columns));
        columns.push_back({map.rows[row].name, "", std::vector<float>(first, first + map.columns)});
    }
    return columns;
}

std::vector<HeaderLine> mapLines(const SkyMap &map, const SkyPlan &plan)
{
    QStringList days;
    for (const MapRow &row : map.rows)
        days << QString::number(row.days);
    const SkyRay &ray = plan.rays[std::size_t(map.choice.ray)];
    std::vector<HeaderLine> lines = {
        {"map", map.choice.axis == MapAxis::Starts ? "right ascension" : "dispersion"},
        {"shown_ray", QString("%1/%2").arg(ray.module).arg(ray.ray)},
        {"x", map.axisName}};
    if (map.axis.empty()) {
        lines.push_back({"x_first", numberText(map.first)});
        lines.push_back({"x_step", numberText(map.step)});
    }
    lines.push_back({"days_of_rows", days.join(' ')});
    return lines;
}

CandidatesTable readCandidates(const QByteArray &bytes, const SkyPlan &plan)
{
    CandidatesTable read;
    const ReadTable table = readTable(bytes);
    read.problem = table.problem;
    if (!read.problem.isEmpty())
        return read;
    const QString form = valueOf(table.table.request, formKey);
    const NeededColumns columns(table.table.columns);
    if (form.isEmpty()) {
        read.problem = "It is no table of candidates of a search over days.";
    } else if (form != formOfCandidates) {
        read.problem = QString("The table has the form %1; this program reads the form %2. Search "
                               "anew.")
                           .arg(form, formOfCandidates);
    } else if (table.table.rows() > 0 && !columns.areThere()) {
        read.problem = "A column is missing. Search anew.";
    }
    if (!read.problem.isEmpty())
        return read;
    for (int row = 0; row < table.table.rows(); ++row) {
        SkyCandidate candidate = candidateAt(columns, row, plan);
        readMeasured(candidate, table.table.columns, row);
        read.candidates.push_back(std::move(candidate));
    }
    read.table = table.table;
    return read;
}

void setVerdict(CandidatesTable &table, int row, Verdict verdict, const QString &note)
{
    SkyCandidate &candidate = table.candidates[std::size_t(row)];
    candidate.verdict = verdict;
    candidate.note = oneLine(note);
    for (Column &column : table.table.columns) {
        if (column.name == "verdict")
            column = texts(table.candidates, column.name,
                           [](const SkyCandidate &one) { return verdictName(one.verdict); });
        else if (column.name == "note")
            column = texts(table.candidates, column.name,
                           [](const SkyCandidate &one) { return one.note; });
    }
}

void takeVerdicts(const CandidatesTable &older, const SkyPlan &plan, SkySearch &search)
{
    const double stretch = plan.parameters.points * plan.header.tresolution;
    for (SkyCandidate &candidate : search.candidates) {
        for (const SkyCandidate &known : older.candidates) {
            const bool isSame = (known.verdict != Verdict::None || !known.note.isEmpty()) &&
                                known.ray >= 0 && known.start >= 0 &&
                                std::abs(known.telescope - candidate.telescope) * stretch <= 1 &&
                                std::abs(known.ray - candidate.ray) <= 1 &&
                                std::abs(known.start - candidate.start) <= 1;
            if (!isSame)
                continue;
            candidate.verdict = known.verdict;
            candidate.note = known.note;
            break;
        }
    }
}

} // namespace Sky
