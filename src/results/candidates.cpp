#include "results/candidates.h"

#include "results/reporttext.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

namespace Results {

namespace {

// Where two tables name the same search of the same file, both have the same candidates.
auto identity(const Candidate &candidate)
{
    return std::tuple(candidate.file, candidate.module, candidate.ray, candidate.peak.period,
                      candidate.dispersion, candidate.peak.width, candidate.peak.bins);
}

// A key that sorts NaN behind all numbers.
auto sortable(double number)
{
    return std::isnan(number) ? std::pair(true, 0.0) : std::pair(false, number);
}

// Every column counts, so that equal candidates are the same to the last letter and no order of
// the inputs shows.
bool isStronger(const Candidate &a, const Candidate &b)
{
    if (a.peak.strength() != b.peak.strength())
        return a.peak.strength() > b.peak.strength();
    const auto rest = [](const Candidate &c) {
        return std::tuple(identity(c), c.remark, sortable(c.peak.foldSnr),
                          sortable(c.peak.snrFactor), sortable(c.peak.periodError));
    };
    return rest(a) < rest(b);
}

double numberAt(const Column *column, int row)
{
    const auto *numbers = column ? std::get_if<std::vector<double>>(&column->values) : nullptr;
    return numbers ? (*numbers)[std::size_t(row)] : std::numeric_limits<double>::quiet_NaN();
}

QString textAt(const Column *column, int row)
{
    const auto *texts = column ? std::get_if<QStringList>(&column->values) : nullptr;
    return texts ? texts->at(row) : QString();
}

int wholeAt(const Column *column, int row)
{
    return column ? int(numberAt(column, row)) : 0;
}

constexpr double mostWhole = 1e9;

// Which numbers are allowed in a column of candidates.
struct NumberColumn {
    const char *name;
    bool isNeeded;  // in every table
    bool mayBeNone; // NaN: it was not measured
    bool isWhole;
};
constexpr std::array<NumberColumn, 10> numberColumns = {{
    {"snr", true, false, false},
    {"snr_factor", false, false, false},
    {"period", true, false, false},
    {"period_error", false, true, false},
    {"dispersion", false, false, false},
    {"module", false, false, true},
    {"ray", false, false, true},
    {"width_bins", false, false, true},
    {"fold_bins", false, false, true},
    {"fold_snr", false, true, false},
}};

bool isAllowed(const NumberColumn &kind, double number)
{
    if (std::isnan(number))
        return kind.mayBeNone;
    if (kind.isWhole)
        return std::abs(number) < mostWhole && number == std::trunc(number);
    return std::isfinite(float(number));
}

// Describes the first cell of a column that is not allowed there; empty when all are.
QString columnProblem(const NumberColumn &kind, const Column &column)
{
    for (int row = 0; row < column.size(); ++row) {
        bool isNumber = true;
        const auto *const texts = std::get_if<QStringList>(&column.values);
        const double number = texts ? texts->at(row).toDouble(&isNumber) : numberAt(&column, row);
        if (!isNumber || !isAllowed(kind, number))
            return QString("in row %1 the %2 \"").arg(row + 1).arg(kind.name) +
                   (texts ? texts->at(row).left(40) : QString(numberText(number))) +
                   "\" is no number that can be used";
    }
    return {};
}

QString tableProblem(const ReadTable &read)
{
    if (!read.problem.isEmpty())
        return read.problem;
    const std::vector<Column> &columns = read.table.columns;
    if (!columnNamed(columns, "remark"))
        return "it is no table of candidates";
    for (const NumberColumn &kind : numberColumns) {
        const Column *const column = columnNamed(columns, kind.name);
        if (!column && kind.isNeeded)
            return "it is no table of candidates";
        if (const QString problem = column ? columnProblem(kind, *column) : QString();
            !problem.isEmpty())
            return problem;
    }
    return {};
}

} // namespace

bool isSame(const Candidate &a, const Candidate &b)
{
    return a.peak.snr == b.peak.snr && identity(a) == identity(b);
}

void sortCandidates(std::vector<Candidate> &candidates)
{
    std::sort(candidates.begin(), candidates.end(), isStronger);
}

std::vector<Candidate> strongestOfDispersions(std::vector<Candidate> candidates, double length)
{
    sortCandidates(candidates);
    std::vector<Candidate> strongest;
    for (const Candidate &candidate : candidates) {
        const bool isKnown =
            std::any_of(strongest.begin(), strongest.end(), [&](const Candidate &other) {
                const double turns =
                    std::abs(length / other.peak.period - length / candidate.peak.period);
                return other.dispersion != candidate.dispersion && turns < 0.5;
            });
        if (!isKnown)
            strongest.push_back(candidate);
    }
    return strongest;
}

std::vector<Column> candidateColumns(const std::vector<Candidate> &candidates, bool withFiles)
{
    std::vector<Column> columns;
    // Rounds to the digits that mean something.
    const auto addNumbers = [&](const QString &name, const QString &unit, const auto &valueOf,
                                int digits = 6) {
        std::vector<double> values;
        values.reserve(candidates.size());
        for (const Candidate &candidate : candidates)
            values.push_back(QString::number(double(valueOf(candidate)), 'g', digits).toDouble());
        columns.push_back({name, unit, values});
    };
    addNumbers("snr", {}, [](const Candidate &c) { return c.peak.snr; });
    addNumbers("snr_factor", {}, [](const Candidate &c) { return c.peak.snrFactor; });
    addNumbers(
        "period", "s", [](const Candidate &c) { return c.peak.period; }, 12);
    addNumbers(
        "period_error", "s", [](const Candidate &c) { return c.peak.periodError; }, 2);
    addNumbers("dispersion", "pc/cm^3", [](const Candidate &c) { return c.dispersion; });
    addNumbers("module", {}, [](const Candidate &c) { return c.module; });
    addNumbers("ray", {}, [](const Candidate &c) { return c.ray; });
    addNumbers("width", "ms", [](const Candidate &c) { return c.peak.widthSeconds() * 1000; });
    addNumbers("width_bins", {}, [](const Candidate &c) { return c.peak.width; });
    addNumbers("fold_bins", {}, [](const Candidate &c) { return c.peak.bins; });
    addNumbers("fold_snr", {}, [](const Candidate &c) { return c.peak.foldSnr; });
    QStringList remarks;
    QStringList files;
    for (const Candidate &candidate : candidates) {
        remarks << (candidate.remark.isEmpty() ? "-" : candidate.remark);
        files << candidate.file;
    }
    columns.push_back({"remark", {}, remarks});
    if (withFiles)
        columns.push_back({"file", {}, files});
    return columns;
}

ReadCandidates readCandidates(const QByteArray &bytes)
{
    ReadCandidates read;
    const ReadTable table = readTable(bytes);
    read.remark = table.remark;
    read.problem = tableProblem(table);
    if (!read.problem.isEmpty())
        return read;
    const std::vector<Column> &columns = table.table.columns;
    const Column *const snr = columnNamed(columns, "snr");
    const Column *const period = columnNamed(columns, "period");
    const Column *const remark = columnNamed(columns, "remark");
    const Column *const file = columnNamed(columns, "file");
    const QString fileOfAll = valueOf(table.table.request, "file");
    for (int row = 0; row < table.table.rows(); ++row) {
        Candidate candidate;
        candidate.peak.snr = float(numberAt(snr, row));
        candidate.peak.period = numberAt(period, row);
        candidate.peak.periodError = numberAt(columnNamed(columns, "period_error"), row);
        if (const Column *const factor = columnNamed(columns, "snr_factor"))
            candidate.peak.snrFactor = numberAt(factor, row);
        candidate.dispersion = numberAt(columnNamed(columns, "dispersion"), row);
        candidate.module = wholeAt(columnNamed(columns, "module"), row);
        candidate.ray = wholeAt(columnNamed(columns, "ray"), row);
        candidate.peak.width = wholeAt(columnNamed(columns, "width_bins"), row);
        candidate.peak.bins = wholeAt(columnNamed(columns, "fold_bins"), row);
        candidate.peak.foldSnr = numberAt(columnNamed(columns, "fold_snr"), row);
        const QString text = textAt(remark, row);
        candidate.remark = text == "-" ? QString() : text;
        candidate.file = file ? textAt(file, row) : fileOfAll;
        read.candidates.push_back(candidate);
    }
    return read;
}

QStringList shownTitles()
{
    return {"no.",           "period, s",   "error, s",  "S/N",     "remark",
            "frequency, Hz", "width, bins", "width, ms", "duty, %", "fold, bins"};
}

QStringList shownFields(const Candidate &candidate, int number)
{
    const Peak &peak = candidate.peak;
    // A refined period is written to the second digit of its error.
    const bool isRefined = std::isfinite(peak.periodError);
    const ReportText::WithError refined = ReportText::rounded(peak.period, peak.periodError);
    QStringList remarks;
    if (peak.snrFactor > 1)
        remarks << QString("S/N %1 times too low").arg(peak.snrFactor, 0, 'f', 1);
    if (!candidate.remark.isEmpty())
        remarks << candidate.remark;
    return {QString::number(number),
            isRefined ? refined.value : QString::number(peak.period, 'f', 7),
            isRefined ? refined.error : QString("-"),
            QString::number(double(peak.snr), 'f', 1),
            remarks.join(", "),
            QString::number(1 / peak.period, 'f', 6),
            QString::number(peak.width),
            QString::number(1000 * peak.widthSeconds(), 'f', 2),
            QString::number(100 * peak.dutyCycle(), 'f', 1),
            QString::number(peak.bins)};
}

} // namespace Results
