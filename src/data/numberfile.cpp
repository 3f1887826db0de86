#include "data/numberfile.h"

#include "base/numbertext.h"
#include "base/systemmemory.h"
#include "data/lineparser.h"
#include "data/resulttotext.h"
#include "data/tableparser.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr qint64 blockBytes = 1 << 20;
constexpr qint64 headerLook = 1 << 16;
constexpr qint64 tableLook = 1 << 20; // a line above a table may name thousands of points
constexpr qint64 longRow = 17;        // numbers; rows from this length on are series
constexpr qint64 mostNumbers = std::numeric_limits<int>::max();
constexpr qint64 megabyte = 1 << 20;

QString shownPath(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// Float blocks of a result file into rows.
class BlockParser {
public:
    BlockParser(NumberFile &numberFile, const Tools::ResultHeader &resultHeader)
        : file(numberFile), header(resultHeader), left(header.points * header.blocks)
    {}

    void add(const char *begin, const char *end)
    {
        for (; end - begin >= qint64(sizeof(float)) && left > 0; begin += sizeof(float), --left) {
            file.table.add(double(qFromLittleEndian<float>(begin)));
            if (file.table.openLength() == header.points)
                file.table.endRow();
        }
    }

private:
    NumberFile &file;
    const Tools::ResultHeader &header;
    qint64 left;
};

class NumberReader {
public:
    NumberReader(const QString &filePath, qint64 byteLimit)
        : path(shownPath(filePath)), in(filePath), limit(byteLimit)
    {}

    NumberFile read(const std::function<void(int)> &progress,
                    const std::function<bool()> &cancelled)
    {
        if (const QFileInfo info(in); info.exists() && !info.isFile()) {
            file.error = path + " is no ordinary file.";
            return std::move(file);
        }
        if (!in.open(QIODevice::ReadOnly)) {
            file.error = QString("%1 cannot be opened: %2.").arg(path, in.errorString());
            return std::move(file);
        }
        // To seek a header line by line takes longer than to read the numbers.
        if (in.peek(headerLook).contains("points:"))
            header = Tools::readResultHeader(in);
        const bool isResult = header.isUsable();
        if (isResult)
            takeHeader();
        else
            seekText();
        begin = in.pos();
        if (isResult && !restIsText())
            readBlocks(progress, cancelled);
        else if (!isResult && head.mark)
            readTable(progress, cancelled);
        else
            readText(progress, cancelled);
        if (isResult && file.error.isEmpty())
            groupBlocks();
        if (file.error.isEmpty() && !file.wasCancelled && file.table.count() == 0)
            file.error = path + (in.size() == 0 ? " is empty."
                                 : head.mark    ? " is a table without rows."
                                                : " has no line of numbers.");
        const NumberTable &table = file.table;
        const bool areLong = table.columns() >= longRow && file.columnNames.isEmpty();
        file.rowsAreSeries = isResult || (table.rows() == 1 && !head.mark) || areLong;
        return std::move(file);
    }

private:
    // Names of the blocks and what X is along them stand in the headers of this system's results.
    void takeHeader()
    {
        file.header = QString::fromUtf8(header.text).split('\n', Qt::SkipEmptyParts);
        const auto valueOf = [this](const QString &key) {
            const QStringList lines = file.header.filter(QRegularExpression("^" + key + ": "));
            return lines.isEmpty() ? QString() : lines[0].section(": ", 1);
        };
        const QString names = valueOf("blocks");
        if (!names.isEmpty())
            file.rowNames = names.split("; ");
        file.rowAxis = {valueOf("x"), valueOf("x_first").toDouble(), valueOf("x_step").toDouble()};
    }

    // At the first row of a table. Otherwise the mark that some editors put in front of text is no
    // part of its first number.
    void seekText()
    {
        in.seek(0);
        head = NumberParser::tableHead(in.peek(tableLook));
        const QByteArray mark = "\xEF\xBB\xBF";
        if (head.mark)
            in.seek(head.bytes);
        else if (in.peek(mark.size()) == mark)
            in.seek(mark.size());
    }

    void readTable(const std::function<void(int)> &progress, const std::function<bool()> &cancelled)
    {
        NumberParser::TableParser parser(file, head);
        QByteArray rest; // a line whose end has not been read yet
        readPieces(progress, cancelled, [&](QByteArray &block) {
            block.prepend(rest);
            if (!isText(block) || !room(block.size() / 2 + 1))
                return;
            rest = block.mid(int(parser.add(block.constData(), block.constData() + block.size())));
            if (rest.size() >= blockBytes && !in.atEnd())
                file.error =
                    path + QString(" is no table: line %1 has more than a million characters.")
                               .arg(parser.lastLine() + 1);
        });
        parser.finish({rest.constData(), std::size_t(rest.size())}, !file.isWhole);
        if (parser.skippedLines() > file.table.rows() && file.error.isEmpty())
            file.error =
                path + QString(" is no table: of most lines the cells are not as many as the "
                               "words of line %1.")
                           .arg(head.lines);
    }

    bool isText(const QByteArray &block)
    {
        if (!block.contains('\0'))
            return true;
        file.error =
            path + " is no text: it holds binary data. Recordings open with \"Native data\".";
        return false;
    }

    bool restIsText()
    {
        const QByteArray look = in.peek(256);
        return std::all_of(look.begin(), look.end(), [](char c) {
            return NumberParser::isSeparator(c) || (c > ' ' && c <= '~');
        });
    }

    void readText(const std::function<void(int)> &progress, const std::function<bool()> &cancelled)
    {
        NumberParser::LineParser parser(file, header.isUsable() ? header.text.count('\n') + 1 : 1);
        QByteArray rest; // a word whose end has not been read yet
        readPieces(progress, cancelled, [&](QByteArray &block) {
            if (!isText(block))
                return;
            block.prepend(rest);
            qint64 whole = block.size();
            if (!in.atEnd()) {
                while (whole > 0 && !NumberParser::isSeparator(block[int(whole - 1)]))
                    --whole;
            }
            rest = block.mid(int(whole));
            if (rest.size() >= blockBytes) {
                parser.addHugeWord();
                rest.clear();
            }
            if (room(whole / 2 + 1))
                parser.add(block.constData(), block.constData() + whole);
        });
        parser.finish(!file.isWhole);
    }

    void readBlocks(const std::function<void(int)> &progress,
                    const std::function<bool()> &cancelled)
    {
        const QString problem = Tools::shortBlockText(header, in.size() - begin, path);
        if (!problem.isEmpty()) {
            file.error = problem + ".";
            return;
        }
        BlockParser parser(file, header);
        readPieces(progress, cancelled, [&](QByteArray &block) {
            if (room(block.size() / qint64(sizeof(float))))
                parser.add(block.constData(), block.constData() + block.size());
        });
        // A row that was cut off by the limit is left out, unless it is all there is.
        if (file.table.rows() == 0 && file.table.openLength() > 0)
            file.table.endRow();
        else
            file.table.dropOpenRow();
    }

    // A block of values in lines of one number is a row.
    void groupBlocks()
    {
        if (file.table.columns() == 1)
            file.table.regroup(header.points);
        const bool agrees = header.blocks <= mostNumbers / header.points &&
                            file.table.count() == header.points * header.blocks;
        if (file.isWhole && !agrees)
            file.remarks << QString("The header promises %1 blocks of %2 values, the file has %3 "
                                    "values.")
                                .arg(header.blocks)
                                .arg(header.points)
                                .arg(file.table.count());
    }

    template <typename Parse>
    void readPieces(const std::function<void(int)> &progress,
                    const std::function<bool()> &cancelled, const Parse &parse)
    {
        const qint64 size = std::max<qint64>(1, std::min(limit, in.size() - begin));
        while (!in.atEnd() && file.error.isEmpty()) {
            QByteArray block = in.read(std::min(blockBytes, limit - (in.pos() - begin)));
            if (block.isEmpty())
                break;
            parse(block);
            if (progress)
                progress(int(double(in.pos() - begin) / double(size) * 100));
            if (cancelled && cancelled()) {
                file.wasCancelled = true;
                return;
            }
            if (in.pos() - begin >= limit)
                break;
        }
        file.isWhole = in.atEnd();
        if (in.error() != QFileDevice::NoError)
            file.error = QString("%1 cannot be read: %2.").arg(path, in.errorString());
    }

    // Room for so many further numbers, with a guess at the rest of the file from what was read.
    bool room(qint64 numbers)
    {
        NumberTable &table = file.table;
        const qint64 needed = table.count() + numbers;
        if (needed > mostNumbers) {
            file.error = path + QString(" holds more than %1 numbers.").arg(mostNumbers);
            return false;
        }
        if (needed <= table.capacity())
            return true;
        const double read = double(std::max<qint64>(1, in.pos() - begin));
        const double whole = double(std::min(limit, in.size() - begin));
        constexpr double reserve = 1.05;
        const auto guess = qint64(double(table.count()) * whole / read * reserve);
        const qint64 wanted = std::min(std::max(needed, guess + numbers), mostNumbers);
        if (table.reserve(wanted))
            return true;
        file.error =
            path + QString(" is too large for this machine: its numbers take %1 MB, %2 MB are "
                           "free. Cut the file into parts.")
                       .arg(wanted * NumberTable::bytesPerNumber / megabyte)
                       .arg(availableMemory() / megabyte);
        return false;
    }

    const QString path;
    QFile in;
    const qint64 limit;
    qint64 begin = 0; // of the numbers
    Tools::ResultHeader header;
    NumberParser::TableHead head;
    NumberFile file;
};

} // namespace

std::vector<double> NumberTable::row(qint64 index) const
{
    return {values.begin() + endOf(index - 1), values.begin() + endOf(index)};
}

std::vector<double> NumberTable::column(qint64 index) const
{
    std::vector<double> numbers(static_cast<std::size_t>(rowCount));
    for (qint64 i = 0; i < rowCount; ++i)
        numbers[std::size_t(i)] = at(i, index);
    return numbers;
}

void NumberTable::endRow()
{
    const qint64 length = openLength();
    if (rowCount == 0)
        longest = length;
    if (length != longest && ends.empty()) {
        for (qint64 i = 1; i <= rowCount; ++i)
            ends.push_back(i * longest);
    }
    if (!ends.empty() || length != longest)
        ends.push_back(count());
    longest = std::max(longest, length);
    ++rowCount;
}

void NumberTable::regroup(qint64 length)
{
    ends.clear();
    longest = std::min(length, count());
    rowCount = longest > 0 ? count() / longest : 0;
    if (openLength() > 0)
        endRow();
}

bool NumberTable::reserve(qint64 numbers)
{
    const qint64 free = availableMemory();
    if (free > 0 && numbers > free / bytesPerNumber)
        return false;
    values.reserve(std::size_t(numbers));
    return true;
}

QString NumberFile::cell(qint64 row, qint64 column) const
{
    if (std::size_t(column) < words.size()) {
        const std::vector<QString> &ofColumn = words[std::size_t(column)];
        if (std::size_t(row) < ofColumn.size() && !ofColumn[std::size_t(row)].isNull())
            return ofColumn[std::size_t(row)];
    }
    const double number = table.at(row, column);
    return std::isnan(number) && isText(column) ? QString() : exactText(number);
}

namespace Tools {

NumberFile readNumberFile(const QString &path, qint64 limit,
                          const std::function<void(int)> &progress,
                          const std::function<bool()> &cancelled)
{
    return NumberReader(path, limit).read(progress, cancelled);
}

} // namespace Tools
