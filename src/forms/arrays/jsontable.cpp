#include "forms/arrays/jsontable.h"

#include "base/systemmemory.h"
#include "results/resulttable.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <algorithm>
#include <cmath>

namespace ArrayReading {

namespace {

// Of the values, as they are parsed and as they are kept, for one byte of the file.
constexpr qint64 bytesPerByte = 30;
constexpr qint64 megabyte = 1 << 20;

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

QString titleOf(const Results::Column &column)
{
    return column.unit.isEmpty() ? column.name : column.name + " [" + column.unit + "]";
}

// The axis of a series stands in the header only; elsewhere it is the first column.
void addAxisColumn(Results::ResultTable &table)
{
    const std::vector<Results::HeaderLine> &header = table.request;
    const double first = valueOf(header, "x_first").toDouble();
    const double step = valueOf(header, "x_step").toDouble();
    if (step == 0)
        return;
    auto values = std::vector<double>(std::size_t(table.rows()));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = first + double(i) * step;
    table.columns.insert(table.columns.begin(), {valueOf(header, "x"), {}, values});
}

void addCells(const std::vector<Results::Column> &columns, NumberFile &file)
{
    qint64 rows = 0;
    for (const Results::Column &column : columns)
        rows = std::max<qint64>(rows, column.size());
    file.words.resize(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (const auto *words = std::get_if<QStringList>(&columns[i].values)) {
            file.textColumns.insert(qint64(i));
            file.words[i].assign(words->begin(), words->end());
        }
    }
    for (qint64 row = 0; row < rows; ++row) {
        for (const Results::Column &column : columns) {
            const auto *numbers = std::get_if<std::vector<double>>(&column.values);
            const bool isThere = numbers && std::size_t(row) < numbers->size();
            file.table.add(isThere ? (*numbers)[std::size_t(row)] : NAN);
        }
        file.table.endRow();
    }
}

} // namespace

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
    QString problem = syntaxProblem(bytes);
    Results::ReadTable read = problem.isEmpty() ? Results::readTable(bytes) : Results::ReadTable();
    if (problem.isEmpty())
        problem = read.problem;
    if (!problem.isEmpty()) {
        file.error = QString("%1 is no table in JSON, %2.").arg(shown, problem);
        return file;
    }
    addAxisColumn(read.table);
    for (const Results::HeaderLine &line : read.table.request)
        file.header << line.key + ": " + line.value;
    for (const Results::Column &column : read.table.columns)
        file.columnNames << titleOf(column);
    addCells(read.table.columns, file);
    if (file.table.rows() == 0)
        file.error = shown + " is a table without rows.";
    return file;
}

} // namespace ArrayReading
