#include "batch/candidates.h"

#include "batch/axis.h"
#include "batch/outputfiles.h"

#include <QFile>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <tuple>

namespace Batch {

namespace {

// A merged table of a survey has some hundred bytes per candidate.
constexpr qint64 largestTable = qint64(2) << 30;

// Where two tables name the same search of the same file, both have the same candidates.
auto identity(const Candidate &candidate)
{
    return std::tuple(candidate.file, candidate.module, candidate.ray, candidate.peak.period,
                      candidate.dispersion, candidate.peak.width, candidate.peak.bins);
}

bool isStronger(const Candidate &a, const Candidate &b)
{
    if (a.peak.snr != b.peak.snr)
        return a.peak.snr > b.peak.snr;
    return identity(a) < identity(b);
}

const Column *columnNamed(const std::vector<Column> &columns, const QString &name)
{
    const auto column = std::find_if(columns.begin(), columns.end(),
                                     [&](const Column &other) { return other.name == name; });
    return column == columns.end() ? nullptr : &*column;
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
    const double number = numberAt(column, row);
    return std::abs(number) < 1e9 ? int(number) : 0;
}

} // namespace

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
    // With as many digits as mean something.
    const auto addNumbers = [&](const QString &name, const QString &unit, const auto &valueOf,
                                int digits = 6) {
        std::vector<double> values;
        values.reserve(candidates.size());
        for (const Candidate &candidate : candidates)
            values.push_back(QString::number(double(valueOf(candidate)), 'g', digits).toDouble());
        columns.push_back({name, unit, values});
    };
    addNumbers("snr", {}, [](const Candidate &c) { return c.peak.snr; });
    addNumbers(
        "period", "s", [](const Candidate &c) { return c.peak.period; }, 12);
    addNumbers(
        "period_error", "s", [](const Candidate &c) { return c.periodError; }, 2);
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
    read.problem = table.problem;
    const std::vector<Column> &columns = table.table.columns;
    const Column *const snr = columnNamed(columns, "snr");
    const Column *const period = columnNamed(columns, "period");
    const Column *const remark = columnNamed(columns, "remark");
    const Column *const file = columnNamed(columns, "file");
    if (read.problem.isEmpty() && (!snr || !period || !remark))
        read.problem = "it is no table of candidates";
    if (!read.problem.isEmpty())
        return read;
    const QString fileOfAll = valueOf(table.table.request, "file");
    for (int row = 0; row < table.table.rows(); ++row) {
        Candidate candidate;
        candidate.peak.snr = float(numberAt(snr, row));
        candidate.peak.period = numberAt(period, row);
        candidate.periodError = numberAt(columnNamed(columns, "period_error"), row);
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

Failure mergeCandidates(const QStringList &inputs, const MergeRequest &request)
{
    std::vector<Candidate> candidates;
    int tables = 0;
    for (const QString &input : inputs) {
        QFile file(input);
        if (!file.open(QIODevice::ReadOnly))
            return {ExitCode::NoInput,
                    QString("%1 cannot be opened: %2.").arg(input, file.errorString())};
        if (file.size() > largestTable)
            return {ExitCode::BadData, QString("%1 is too long for a table.").arg(input)};
        const ReadCandidates read = readCandidates(file.readAll());
        if (!read.problem.isEmpty())
            return {ExitCode::BadData,
                    QString("%1 cannot be merged: %2.").arg(input, read.problem)};
        ++tables;
        for (const Candidate &candidate : read.candidates) {
            if (double(candidate.peak.snr) >= request.threshold &&
                (!request.onlyBase || candidate.remark.isEmpty()))
                candidates.push_back(candidate);
        }
    }
    sortCandidates(candidates);
    const auto last = std::unique(candidates.begin(), candidates.end(),
                                  [](const Candidate &a, const Candidate &b) {
                                      return a.peak.snr == b.peak.snr && identity(a) == identity(b);
                                  });
    candidates.erase(last, candidates.end());

    ResultTable table;
    table.request = {{"program", "zrt-batch " ZRT_VERSION},
                     {"command", "merge"},
                     {"threshold", numberText(request.threshold)},
                     {"only_base", request.onlyBase ? "yes" : "no"},
                     {"tables", QString::number(tables)}};
    table.columns = candidateColumns(candidates, true);
    removeAbandoned({request.output});
    return writeTogether({{request.output, table.toBytes(request.format)}});
}

} // namespace Batch
