#include "results/resulttable.h"

#include "base/bytetext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

namespace Results {

namespace {

template <typename Number>
QByteArray shortestText(Number value)
{
    if (!std::isfinite(value))
        return std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
    char buffer[64];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), value);
    return QByteArray(buffer, int(end.ptr - buffer));
}

// A header line stays one line whatever a file name or a report holds.
QString oneLine(QString text)
{
    return text.replace('\r', ' ').replace('\n', ' ');
}

QByteArray csvText(const QString &text)
{
    if (!text.contains(',') && !text.contains('"') && !text.contains('\n'))
        return bytesOfText(text);
    return bytesOfText('"' + QString(text).replace('"', "\"\"") + '"');
}

QByteArray headerText(const std::vector<HeaderLine> &lines, Format format)
{
    QByteArray text;
    for (const HeaderLine &line : lines) {
        if (format == Format::Json) {
            text += "  " + jsonText(line.key) + ": " + jsonText(line.value) + ",\n";
        } else {
            for (const QString &part : line.value.split('\n'))
                text += bytesOfText((format == Format::Csv ? "# " : "") + line.key + ": " + part +
                                    "\n");
        }
    }
    return text;
}

// Text of value `row` of a column. Tabs separate the columns in the text form, so a cell must not
// contain one there.
QByteArray valueText(const Column &column, int row, Format format)
{
    const auto index = std::size_t(row);
    if (const auto *texts = std::get_if<QStringList>(&column.values)) {
        const QString &text = texts->at(row);
        if (format == Format::Json)
            return jsonText(text);
        return format == Format::Csv ? csvText(text)
                                     : bytesOfText(oneLine(text).replace('\t', ' '));
    }
    const auto *floats = std::get_if<std::vector<float>>(&column.values);
    const QByteArray text = floats
                                ? numberText((*floats)[index])
                                : numberText(std::get<std::vector<double>>(column.values)[index]);
    return format == Format::Json && !(text[text.size() - 1] >= '0' && text[text.size() - 1] <= '9')
               ? QByteArray("null")
               : text;
}

// Collects the small texts of values into pieces that are worth writing.
class Pieces {
public:
    explicit Pieces(const std::function<void(const QByteArray &)> &receiver) : take(receiver)
    {
        text.reserve(pieceBytes + pieceBytes / 8);
    }
    void operator<<(const QByteArray &more)
    {
        text += more;
        if (text.size() >= pieceBytes)
            flush();
    }
    void flush()
    {
        take(text);
        text.resize(0);
    }

private:
    static constexpr int pieceBytes = 1 << 20;
    const std::function<void(const QByteArray &)> &take;
    QByteArray text;
};

void writeJsonColumns(const std::vector<Column> &columns, Pieces &pieces)
{
    pieces << " \"columns\": [\n";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column &column = columns[i];
        pieces << "  {\"name\": " + jsonText(column.name) + ", \"unit\": " + jsonText(column.unit) +
                      ", \"values\": [";
        for (int row = 0; row < column.size(); ++row)
            pieces << (row ? "," : "") + valueText(column, row, Format::Json);
        pieces << (i + 1 < columns.size() ? "]},\n" : "]}\n");
    }
    pieces << " ]\n}\n";
}

// Writes one column after the other, like the blocks of a result file.
void writeBlocks(const std::vector<Column> &columns, Pieces &pieces)
{
    for (const Column &column : columns) {
        for (int row = 0; row < column.size(); ++row)
            pieces << valueText(column, row, Format::Text) + "\n";
    }
}

void writeRows(const ResultTable &table, Format format, Pieces &pieces)
{
    const QByteArray separator = format == Format::Csv ? "," : "\t";
    for (int row = 0; row < table.rows(); ++row) {
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            pieces << (i ? separator : QByteArray()) + valueText(table.columns[i], row, format);
        pieces << "\n";
    }
}

} // namespace

int Column::size() const
{
    return std::visit([](const auto &list) { return int(list.size()); }, values);
}

QString Column::title() const
{
    return unit.isEmpty() ? name : name + " [" + unit + "]";
}

double Column::numberAt(int row) const
{
    if (const auto *texts = std::get_if<QStringList>(&values)) {
        bool isNumber = false;
        const double value = texts->at(row).toDouble(&isNumber);
        return isNumber ? value : std::numeric_limits<double>::quiet_NaN();
    }
    const auto at = std::size_t(row);
    if (const auto *floats = std::get_if<std::vector<float>>(&values))
        return double((*floats)[at]);
    return std::get<std::vector<double>>(values)[at];
}

QString Column::textAt(int row) const
{
    if (const auto *texts = std::get_if<QStringList>(&values))
        return texts->at(row);
    return numberText(numberAt(row));
}

const Column *columnNamed(const std::vector<Column> &columns, const QString &name)
{
    const auto column = std::find_if(columns.begin(), columns.end(),
                                     [&](const Column &one) { return one.name == name; });
    return column == columns.end() ? nullptr : &*column;
}

QByteArray jsonText(const QString &text)
{
    QByteArray json = "\"";
    const auto append = [&](const QString &part) {
        const QByteArray array = QJsonDocument(QJsonArray{part}).toJson(QJsonDocument::Compact);
        json += array.mid(2, array.size() - 4); // between [" and "]
    };
    // A byte that is not UTF-8 is written as the escape that other programs use for it too.
    int begin = 0;
    for (int i = 0; i < text.size(); ++i) {
        if (!isLoneByte(text, i))
            continue;
        append(text.mid(begin, i - begin));
        json += "\\u" + QByteArray::number(text[i].unicode(), 16);
        begin = i + 1;
    }
    append(text.mid(begin));
    return json + '"';
}

Format formatOf(const QString &name)
{
    if (name.compare("csv", Qt::CaseInsensitive) == 0)
        return Format::Csv;
    return name.compare("json", Qt::CaseInsensitive) == 0 ? Format::Json : Format::Text;
}

QString extensionOf(Format format)
{
    return format == Format::Csv ? "csv" : format == Format::Json ? "json" : "txt";
}

QByteArray numberText(double value)
{
    return shortestText(value);
}

QByteArray numberText(float value)
{
    return shortestText(value);
}

QString valueOf(const std::vector<HeaderLine> &lines, const QString &key)
{
    const auto line = std::find_if(lines.begin(), lines.end(),
                                   [&](const HeaderLine &header) { return header.key == key; });
    return line == lines.end() ? QString() : line->value;
}

QByteArray requestBytes(const std::vector<HeaderLine> &request, Format format)
{
    return (format == Format::Json ? "{\n \"header\": {\n" : "") + headerText(request, format);
}

QByteArray ResultTable::toBytes(Format format) const
{
    QByteArray bytes;
    write(format, [&bytes](const QByteArray &piece) { bytes += piece; });
    return bytes;
}

void ResultTable::write(Format format, const std::function<void(const QByteArray &)> &take) const
{
    Pieces pieces(take);
    pieces << requestBytes(request, format) + headerText(result, format);
    QStringList titles;
    for (const Column &column : columns)
        titles << column.title();
    const QString count = QString::number(rows());
    if (format == Format::Json) {
        pieces << "  \"points\": " + count.toUtf8() + "\n },\n";
        writeJsonColumns(columns, pieces);
    } else if (format == Format::Csv) {
        QByteArrayList names;
        for (const QString &title : std::as_const(titles))
            names << csvText(title);
        pieces << "# rows: " + count.toUtf8() + "\n" + names.join(",") + "\n";
        writeRows(*this, format, pieces);
    } else if (isSeries()) {
        pieces << ("points: " + count + "\ntype: float\nblocks: " + oneLine(titles.join("; ")) +
                   "\ndays: " + QString::number(columns.size()) + "\n")
                      .toUtf8();
        writeBlocks(columns, pieces);
    } else {
        pieces << ("rows: " + count + "\ncolumns: " + oneLine(titles.join("; ")) + "\n").toUtf8();
        writeRows(*this, format, pieces);
    }
    pieces.flush();
}

bool ResultTable::isSeries() const
{
    return std::all_of(columns.begin(), columns.end(), [](const Column &column) {
        return std::holds_alternative<std::vector<float>>(column.values);
    });
}

WriteFailure writeTable(const ResultTable &table, Format format, WholeFile &file)
{
    WriteFailure failure;
    table.write(format, [&](const QByteArray &piece) {
        if (!failure)
            failure = file.write(piece);
    });
    return failure;
}

} // namespace Results
