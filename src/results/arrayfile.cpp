#include "results/arrayfile.h"

#include "base/systemmemory.h"
#include "results/resulttable.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <algorithm>
#include <cmath>
#include <limits>

namespace Results {

namespace {

// Memory that the values take for one byte of the file, while they are parsed and when they are
// kept.
constexpr qint64 bytesPerByte = 30;
constexpr qint64 megabyte = 1 << 20;

// Where and why a text is no JSON; empty where it is.
QString syntaxProblem(const QByteArray &bytes)
{
    QJsonParseError error = {};
    QJsonDocument::fromJson(bytes, &error);
    if (error.error == QJsonParseError::NoError)
        return {};
    const auto end = bytes.begin() + std::clamp(error.offset, 0, bytes.size());
    return QString("line %1: %2")
        .arg(std::count(bytes.begin(), end, '\n') + 1)
        .arg(error.errorString());
}

// The axis of a series stands in the header only; elsewhere it is the first column.
void addAxisColumn(ResultTable &table)
{
    const std::vector<HeaderLine> &header = table.request;
    const double first = valueOf(header, "x_first").toDouble();
    const double step = valueOf(header, "x_step").toDouble();
    if (step == 0)
        return;
    auto values = std::vector<double>(std::size_t(table.rows()));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = first + double(i) * step;
    table.columns.insert(table.columns.begin(), {valueOf(header, "x"), {}, values});
}

void addCells(const std::vector<Column> &columns, NumberFile &file)
{
    qint64 rows = 0;
    for (const Column &column : columns)
        rows = std::max<qint64>(rows, column.size());
    file.words.resize(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (const auto *words = std::get_if<QStringList>(&columns[i].values)) {
            file.textColumns.insert(qint64(i));
            file.words[i].assign(words->begin(), words->end());
        }
    }
    for (qint64 row = 0; row < rows; ++row) {
        for (const Column &column : columns) {
            const auto *numbers = std::get_if<std::vector<double>>(&column.values);
            const bool isThere = numbers && std::size_t(row) < numbers->size();
            file.table.add(isThere ? (*numbers)[std::size_t(row)] : NAN);
        }
        file.table.endRow();
    }
}

bool isJson(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.peek(64).trimmed().startsWith('{');
}

NumberFile readJsonTable(const QString &path, qint64 limit)
{
    NumberFile file;
    const QString shown = QDir::toNativeSeparators(path);
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly)) {
        file.error = QString("%1 cannot be opened: %2.").arg(shown, in.errorString());
        return file;
    }
    file.isWhole = in.size() <= limit;
    if (!file.isWhole)
        return file;
    const qint64 free = availableMemory();
    if (free > 0 && in.size() > free / bytesPerByte) {
        file.error =
            shown + QString(" is too large for this machine: as JSON it takes %1 MB, %2 MB are "
                            "free. Write the table as text or CSV.")
                        .arg(in.size() / megabyte * bytesPerByte)
                        .arg(free / megabyte);
        return file;
    }
    const QByteArray bytes = in.readAll();
    ReadTable read = readTable(bytes);
    if (!read.problem.isEmpty()) {
        const QString syntax = syntaxProblem(bytes);
        file.error = QString("%1 is no table in JSON, %2.")
                         .arg(shown, syntax.isEmpty() ? read.problem : syntax);
        return file;
    }
    addAxisColumn(read.table);
    for (const HeaderLine &line : read.table.request)
        file.header << line.key + ": " + line.value;
    for (const Column &column : read.table.columns)
        file.columnNames << column.title();
    addCells(read.table.columns, file);
    if (file.table.rows() == 0)
        file.error = shown + " is a table without rows.";
    return file;
}

// Whether a column, which is not the last one, rises by more than that from row to row.
bool rises(const NumberTable &table, int column, double least)
{
    if (column + 1 >= table.columns() || table.rows() < 2 || !std::isfinite(table.at(0, column)))
        return false;
    for (qint64 row = 1; row < table.rows(); ++row) {
        if (!(table.at(row, column) - table.at(row - 1, column) > least))
            return false;
    }
    return true;
}

} // namespace

bool ArrayAxis::isEven() const
{
    if (values.size() < 2)
        return true;
    const double step = (values.back() - values.front()) / double(values.size() - 1);
    constexpr double tolerance = 1e-6;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double expected = values.front() + step * double(i);
        if (!(std::abs(values[i] - expected) <= tolerance * std::abs(step)))
            return false;
    }
    return step != 0;
}

bool ArrayAxis::isLike(const ArrayAxis &other) const
{
    if (name != other.name || isIndex() != other.isIndex())
        return false;
    const std::size_t common = std::min(values.size(), other.values.size());
    const double step = common > 1 ? (values[common - 1] - values[0]) / double(common - 1) : 0;
    constexpr double tolerance = 1e-6;
    return std::equal(
        values.begin(), values.begin() + std::ptrdiff_t(common), other.values.begin(),
        [=](double a, double b) { return std::abs(a - b) <= tolerance * std::abs(step); });
}

NumberFile readArrays(const QString &path, qint64 limit, const std::function<void(int)> &progress,
                      const std::function<bool()> &cancelled)
{
    return isJson(path) ? readJsonTable(path, limit)
                        : Tools::readNumberFile(path, limit, progress, cancelled);
}

int xColumn(const NumberFile &file)
{
    if (!rises(file.table, 0, 0))
        return -1;
    // Neighbouring periods of a search may have equal texts.
    constexpr double orStays = -std::numeric_limits<double>::min();
    return file.columnNames.value(0) == "index" && rises(file.table, 1, orStays) ? 1 : 0;
}

std::vector<int> curveColumns(const NumberFile &file, int xColumn)
{
    std::vector<int> columns;
    for (int column = xColumn + 1; column < file.table.columns(); ++column) {
        if (!file.isText(column))
            columns.push_back(column);
    }
    return columns;
}

ArrayAxis axisOf(const NumberFile &file, int column)
{
    if (column < 0)
        return {};
    return {columnName(file, column), file.table.column(column)};
}

ArrayAxis axisOfRows(const NumberFile &file)
{
    if (file.rowAxis.step == 0)
        return {};
    ArrayAxis x = {file.rowAxis.name, std::vector<double>(file.table.columns())};
    for (std::size_t i = 0; i < x.values.size(); ++i)
        x.values[i] = file.rowAxis.first + file.rowAxis.step * double(i);
    return x;
}

QString columnName(const NumberFile &file, int column)
{
    return file.columnNames.value(column, "column " + QString::number(column + 1));
}

} // namespace Results
