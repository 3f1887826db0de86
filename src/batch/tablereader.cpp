#include "batch/resulttable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace Batch {

namespace {

// "name [unit]" apart.
Column columnOf(const QString &title)
{
    const int bracket = title.endsWith(']') ? title.lastIndexOf(" [") : -1;
    if (bracket < 0)
        return {title, {}, QStringList()};
    return {title.left(bracket), title.mid(bracket + 2, title.size() - bracket - 3), QStringList()};
}

// Columns are collected as texts; those that hold numbers only become numbers.
void makeNumbers(Column &column)
{
    const QStringList texts = std::get<QStringList>(column.values);
    std::vector<double> numbers;
    for (const QString &text : texts) {
        bool isNumber = false;
        numbers.push_back(text.toDouble(&isNumber));
        if (!isNumber)
            return;
    }
    column.values = numbers;
}

// Cells of a line of CSV.
QStringList csvCells(const QString &line)
{
    QStringList cells = {QString()};
    bool isQuoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == '"' && isQuoted && i + 1 < line.size() && line[i + 1] == '"') {
            cells.back() += c;
            ++i;
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == ',' && !isQuoted) {
            cells << QString();
        } else {
            cells.back() += c;
        }
    }
    return cells;
}

bool addRow(const QStringList &cells, std::vector<Column> &columns)
{
    if (std::size_t(cells.size()) != columns.size())
        return false;
    for (int i = 0; i < cells.size(); ++i)
        std::get<QStringList>(columns[std::size_t(i)].values) << cells[i];
    return true;
}

QString readJson(const QByteArray &bytes, ResultTable &table)
{
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    if (!object.contains("columns"))
        return "it is no table";
    const QJsonObject header = object["header"].toObject();
    for (auto line = header.begin(); line != header.end(); ++line)
        table.request.push_back({line.key(), line.value().toVariant().toString()});
    for (const QJsonValue value : object["columns"].toArray()) {
        Column column = {value["name"].toString(), value["unit"].toString(), QStringList()};
        for (const QJsonValue cell : value["values"].toArray())
            std::get<QStringList>(column.values)
                << (cell.isNull() ? "nan" : cell.toVariant().toString());
        table.columns.push_back(column);
    }
    return {};
}

QString readCsv(const QStringList &lines, ResultTable &table)
{
    for (const QString &line : lines) {
        if (line.startsWith("# "))
            table.request.push_back({line.mid(2).section(": ", 0, 0), line.section(": ", 1)});
        else if (table.columns.empty())
            for (const QString &title : csvCells(line))
                table.columns.push_back(columnOf(title));
        else if (!addRow(csvCells(line), table.columns))
            return QString("the line \"%1\" has not as many cells as columns").arg(line.left(60));
    }
    return {};
}

// Blocks: so many values one after the other belong to each column.
QString readBlocks(const QStringList &values, int points, std::vector<Column> &columns)
{
    if (points < 0 || values.size() != qint64(points) * qint64(columns.size()))
        return "it has not as many values as its header says";
    for (std::size_t i = 0; i < columns.size(); ++i)
        columns[i].values = QStringList(values.mid(int(i) * points, points));
    return {};
}

QString readText(const QStringList &lines, ResultTable &table)
{
    int points = 0;
    for (int i = 0; i < lines.size(); ++i) {
        const QString key = lines[i].section(": ", 0, 0);
        const QString value = lines[i].section(": ", 1);
        table.request.push_back({key, value});
        if (key == "points")
            points = value.toInt();
        if (key == "blocks" || key == "columns")
            for (const QString &title : value.split("; "))
                table.columns.push_back(columnOf(title));
        if (key == "days")
            return readBlocks(lines.mid(i + 1), points, table.columns);
        if (key != "columns")
            continue;
        for (const QString &line : lines.mid(i + 1)) {
            if (!addRow(line.split('\t'), table.columns))
                return QString("the line \"%1\" has not as many values as columns")
                    .arg(line.left(60));
        }
        return {};
    }
    return "its header has no end";
}

} // namespace

ReadTable readTable(const QByteArray &bytes)
{
    ReadTable read;
    const QStringList lines = QString::fromUtf8(bytes).split('\n', Qt::SkipEmptyParts);
    if (!bytes.startsWith('{') && !bytes.startsWith("# program: ") &&
        !bytes.startsWith("program: "))
        read.problem = "it is no result of zrt-batch";
    else if (!bytes.endsWith('\n'))
        read.problem = "it ends within a line";
    else if (bytes.startsWith('{'))
        read.problem = readJson(bytes, read.table);
    else
        read.problem =
            bytes.startsWith('#') ? readCsv(lines, read.table) : readText(lines, read.table);
    for (Column &column : read.table.columns)
        makeNumbers(column);
    return read;
}

} // namespace Batch
