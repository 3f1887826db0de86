#include "results/resulttable.h"

#include "base/bytetext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace Results {

namespace {

// Splits "name [unit]".
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

// Splits a line of CSV into its cells.
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
    QJsonParseError error = {};
    const QJsonObject object = QJsonDocument::fromJson(bytes, &error).object();
    if (error.error != QJsonParseError::NoError)
        return QString("it is no whole JSON text (%1 at byte %2)")
            .arg(error.errorString())
            .arg(error.offset);
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
    const int rows = header["points"].toInt(-1);
    for (const Column &column : table.columns) {
        if (column.size() != rows)
            return "its column \"" + column.name +
                   QString("\" has %1 values, its header says %2").arg(column.size()).arg(rows);
    }
    return {};
}

QString rowsDiffer(int rows, const QString &announced)
{
    return QString("it has %1 rows, its header says %2").arg(rows).arg(announced);
}

QString readCsv(const QStringList &lines, ReadTable &read)
{
    ResultTable &table = read.table;
    QString announced;
    for (int i = 0; i < lines.size(); ++i) {
        if (table.columns.empty() && lines[i].startsWith("# ")) {
            table.request.push_back(
                {lines[i].mid(2).section(": ", 0, 0), lines[i].section(": ", 1)});
            if (table.request.back().key == "rows")
                announced = table.request.back().value;
            continue;
        }
        QString line = lines[i];
        while (line.count('"') % 2 != 0 && i + 1 < lines.size()) // a cell of several lines
            line += '\n' + lines[++i];
        if (table.columns.empty())
            for (const QString &title : csvCells(line))
                table.columns.push_back(columnOf(title));
        else if (!addRow(csvCells(line), table.columns))
            return QString("the line \"%1\" has not as many cells as columns").arg(line.left(60));
    }
    if (table.columns.empty())
        return "its header has no end";
    if (announced.isEmpty())
        read.remark =
            "it does not say how many rows it has: whether some are missing cannot be told";
    else if (announced != QString::number(table.rows()))
        return rowsDiffer(table.rows(), announced);
    return {};
}

// Gives each column its block of `points` values, in the order of the file.
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
    QString announced = "no number of them";
    for (int i = 0; i < lines.size(); ++i) {
        const QString key = lines[i].section(": ", 0, 0);
        const QString value = lines[i].section(": ", 1);
        table.request.push_back({key, value});
        if (key == "points")
            points = value.toInt();
        if (key == "rows")
            announced = value;
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
        const int rows = table.rows();
        return announced == QString::number(rows) ? QString() : rowsDiffer(rows, announced);
    }
    return "its header has no end";
}

} // namespace

ReadTable readTable(const QByteArray &bytes)
{
    ReadTable read;
    if (bytes.startsWith('{')) {
        read.problem = readJson(bytes, read.table);
    } else if (!bytes.startsWith("# program: ") && !bytes.startsWith("program: ")) {
        read.problem = "it is no result of zrt-batch";
    } else if (!bytes.endsWith('\n')) {
        read.problem = "it ends within a line";
    } else {
        QStringList lines = textOfBytes(bytes).split('\n');
        lines.removeLast(); // behind the last line end
        read.problem = bytes.startsWith('#') ? readCsv(lines, read) : readText(lines, read.table);
    }
    for (Column &column : read.table.columns)
        makeNumbers(column);
    return read;
}

} // namespace Results
