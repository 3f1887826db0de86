#include "data/tableparser.h"

#include "data/lineparser.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace NumberParser {

namespace {

const std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr double notThere = std::numeric_limits<double>::quiet_NaN();

QString textOf(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), int(bytes.size()));
}

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool startsWith(std::string_view text, std::string_view begin)
{
    return text.substr(0, begin.size()) == begin;
}

// Follows the bytes of a line and knows whether they are within quotes. Quotes begin with a cell;
// two of them within stand for one. Cells between tabs have none.
class Quotes {
public:
    explicit Quotes(char cellMark) : mark(cellMark) {}

    bool areOpen() const { return isOpen; }
    void take(char c)
    {
        if (c == '"' && mark != '\t') {
            isOpen = !isOpen && (isCellBegin || isClosed);
            isClosed = !isOpen;
        } else {
            isClosed = false;
        }
        isCellBegin = c == mark || (isCellBegin && c == ' ');
    }

private:
    const char mark;
    bool isOpen = false;
    bool isCellBegin = true;
    bool isClosed = false; // by the byte before
};

// The end of a line that begins there: the next line end outside of quotes. Null where the text
// ends before.
const char *lineEnd(const char *begin, const char *end, char mark)
{
    if (mark == '\t')
        return static_cast<const char *>(std::memchr(begin, '\n', std::size_t(end - begin)));
    Quotes quotes(mark);
    for (const char *p = begin; p < end; ++p) {
        if (*p == '\n' && !quotes.areOpen())
            return p;
        quotes.take(*p);
    }
    return nullptr;
}

// Cells with their blanks and quotes.
void split(std::string_view line, char mark, std::vector<std::string_view> &cells)
{
    cells.clear();
    Quotes quotes(mark);
    std::size_t begin = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        quotes.take(line[i]);
        if (line[i] != mark || quotes.areOpen())
            continue;
        cells.push_back(line.substr(begin, i - begin));
        begin = i + 1;
    }
    cells.push_back(line.substr(begin));
}

QString wordOf(std::string_view cell)
{
    if (cell.size() < 2 || cell.front() != '"' || cell.back() != '"')
        return textOf(cell);
    return textOf(cell.substr(1, cell.size() - 2)).replace("\"\"", "\"");
}

// One line after the other of the begin of a file.
class Lines {
public:
    explicit Lines(std::string_view whole) : text(whole) {}

    /// @param mark  between the cells of the line; tab where it is none of a table
    /// @return whether there was a further whole line
    bool next(char mark = '\t')
    {
        const char *const begin = text.data() + bytes;
        const char *const end = lineEnd(begin, text.data() + text.size(), mark);
        if (!end)
            return false;
        line = {begin, std::size_t(end - begin)};
        bytes += line.size() + 1;
        count += 1 + int(std::count(begin, end, '\n'));
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        return true;
    }

    std::string_view line;
    std::size_t bytes = 0; // behind the line
    int count = 0;

private:
    const std::string_view text;
};

void addHeaderLine(TableHead &head, std::string_view line)
{
    const std::string_view rowsKey = "rows: ";
    if (startsWith(line, rowsKey))
        head.promised = textOf(line.substr(rowsKey.size())).toLongLong();
    head.header << textOf(line);
}

// "program: ..." and further lines up to that with the names, "columns: ".
TableHead textTableHead(Lines &lines)
{
    const std::string_view namesKey = "columns: ";
    TableHead head;
    do {
        if (startsWith(lines.line, namesKey)) {
            head.names = textOf(lines.line.substr(namesKey.size())).split("; ");
            head.mark = '\t';
            head.bytes = qint64(lines.bytes);
            head.lines = lines.count;
            head.endsInLine = true;
            return head;
        }
        addHeaderLine(head, lines.line);
    } while (lines.next() && !startsWith(lines.line, "days:"));
    return {};
}

bool isNumberLine(const std::vector<std::string_view> &cells)
{
    return std::any_of(cells.begin(), cells.end(), [](std::string_view cell) {
        return readWord(trimmed(cell)).number.has_value();
    });
}

// The names in this line and a row in the next one with as many cells.
TableHead namedTableHead(Lines &lines, TableHead head)
{
    const std::string_view title = lines.line; // points into the text
    head.mark = ',';
    for (const char mark : {'\t', ',', ';'}) {
        if (title.find(mark) != std::string_view::npos) {
            head.mark = mark;
            break;
        }
    }
    std::vector<std::string_view> names;
    split(title, head.mark, names);
    head.bytes = qint64(lines.bytes);
    head.lines = lines.count;
    if (isNumberLine(names) || (names.size() == 1 && head.header.isEmpty()))
        return {};
    bool hasRow = false;
    while (!hasRow && lines.next(head.mark))
        hasRow = !trimmed(lines.line).empty() && lines.line.front() != '#';
    std::vector<std::string_view> cells;
    split(lines.line, head.mark, cells);
    if (hasRow && (cells.size() != names.size() || (cells.size() == 1 && !isNumberLine(cells))))
        return {};
    for (const std::string_view name : names)
        head.names << wordOf(trimmed(name));
    return head;
}

} // namespace

TableHead tableHead(const QByteArray &look)
{
    std::string_view text(look.constData(), std::size_t(look.size()));
    const bool isMarked = startsWith(text, byteOrderMark);
    Lines lines(isMarked ? text.substr(byteOrderMark.size()) : text);
    TableHead head;
    while (lines.next()) {
        if (lines.count == 1 && startsWith(lines.line, "program: "))
            return textTableHead(lines);
        if (!lines.line.empty() && lines.line.front() == '#')
            addHeaderLine(head, trimmed(lines.line.substr(1)));
        else if (!trimmed(lines.line).empty())
            break;
    }
    head.endsInLine = !head.header.isEmpty();
    head = namedTableHead(lines, std::move(head));
    if (isMarked && head.mark)
        head.bytes += qint64(byteOrderMark.size());
    return head;
}

TableParser::TableParser(NumberFile &numberFile, const TableHead &tableHead)
    : file(numberFile), head(tableHead), line(tableHead.lines),
      numbers(std::size_t(tableHead.names.size()), 0), words(numbers)
{
    file.header = head.header;
    file.columnNames = head.names;
}

qint64 TableParser::add(const char *begin, const char *end)
{
    const char *p = begin;
    while (const char *const stop = lineEnd(p, end, head.mark)) {
        addLine({p, std::size_t(stop - p)});
        p = stop + 1;
    }
    return p - begin;
}

void TableParser::finish(std::string_view rest, bool isCutOff)
{
    if (!isCutOff && !trimmed(rest).empty()) {
        if (head.endsInLine)
            skip(line + 1, "the file ends within it");
        else
            addLine(rest);
    }
    if (skipped > mostRemarks)
        file.remarks << QString("%1 lines in all were skipped.").arg(skipped);
    if (!isCutOff && head.promised >= 0 && head.promised != file.table.rows())
        file.remarks << QString("The header promises %1 rows, the file has %2.")
                            .arg(head.promised)
                            .arg(file.table.rows());
    nameWords();
}

void TableParser::addLine(std::string_view text)
{
    const qint64 first = line + 1;
    line = first + std::count(text.begin(), text.end(), '\n'); // those within quotes
    const std::string_view content = trimmed(text);
    if (content.empty())
        return;
    if (content.front() == '#') {
        file.header << textOf(content.substr(1)).trimmed();
        return;
    }
    split(text, head.mark, cells);
    if (cells.size() != numbers.size()) {
        skip(first, QString("%1 cells below %2 names").arg(cells.size()).arg(numbers.size()));
        return;
    }
    for (std::size_t column = 0; column < cells.size(); ++column)
        addCell(trimmed(cells[column]), qint64(column));
    file.table.endRow();
}

// Most rows repeat a word, the name of a file for example.
void TableParser::addCell(std::string_view cell, qint64 column)
{
    const auto index = std::size_t(column);
    const std::optional<double> number = readWord(cell).number;
    file.table.add(number.value_or(notThere));
    if (number)
        ++numbers[index];
    if (number || cell.empty())
        return;
    ++words[index];
    if (file.words.empty())
        file.words.resize(numbers.size());
    std::vector<QString> &columnWords = file.words[index];
    const QString word = wordOf(cell);
    const bool isRepeated = !columnWords.empty() && columnWords.back() == word;
    const QString shared = isRepeated ? columnWords.back() : word;
    columnWords.resize(std::size_t(file.table.rows()));
    columnWords.push_back(shared);
}

void TableParser::skip(qint64 number, const QString &reason)
{
    if (++skipped <= mostRemarks)
        file.remarks << QString("Line %1 skipped: %2.").arg(number).arg(reason);
}

// A column is one of words when it has more of them than numbers.
void TableParser::nameWords()
{
    for (std::size_t column = 0; column < words.size(); ++column) {
        if (words[column] > numbers[column])
            file.textColumns.insert(qint64(column));
        else if (words[column] > 0)
            file.remarks << QString("%1 cells of the column \"%2\" are no numbers.")
                                .arg(words[column])
                                .arg(head.names[int(column)]);
    }
}

} // namespace NumberParser
