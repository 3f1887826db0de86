#include "data/numberfile.h"

#include "base/systemmemory.h"
#include "data/resulttotext.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

constexpr qint64 blockBytes = 1 << 20;
constexpr qint64 headerLook = 1 << 16;
constexpr int mostRemarks = 20; // skipped lines that are named one by one
constexpr int longestWord = 40; // characters of a word shown in a remark
constexpr qint64 longRow = 17;  // numbers; rows from this length on are series
constexpr qint64 mostNumbers = std::numeric_limits<int>::max();
constexpr qint64 megabyte = 1 << 20;
constexpr double notThere = std::numeric_limits<double>::quiet_NaN();

bool isGap(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool isMark(char c)
{
    return c == ',' || c == ';';
}

bool isSeparator(char c)
{
    return isGap(c) || isMark(c) || c == '\n';
}

QString shownPath(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// Text of numbers into a table, piece by piece. A piece ends behind a separator.
//
// In the text of a recording a line "i=<point>" stands before the lines of that point, and these
// begin with "module 1 ray 1:"; all numbers of a point make a row.
class TextParser {
public:
    TextParser(NumberFile &numberFile, qint64 firstLine) : file(numberFile), line(firstLine) {}

    void add(const char *begin, const char *end)
    {
        const char *lineBegin = begin;
        for (const char *p = begin; p < end;) {
            const char c = *p;
            if (c == '\n') {
                endLine({lineBegin, std::size_t(p - lineBegin)});
                lineBegin = ++p;
            } else if (isGap(c)) {
                ++p;
            } else if (isMark(c)) {
                if (!afterWord && !isBad)
                    file.table.add(notThere);
                afterWord = false;
                ++p;
            } else {
                p = addWord(p, end);
            }
        }
        if (end > begin)
            unfinished = end[-1] != '\n';
    }

    // Marks the line as none of numbers, for what is too long to be one.
    void addHugeWord() { spoil("a word of more than a million characters"); }

    // A row that was cut off by the limit is left out, unless it is all there is.
    void finish(bool isCutOff)
    {
        if (isCutOff && file.table.rows() > 0)
            file.table.dropOpenRow();
        else if (unfinished)
            endLine({});
        if (isRecording && file.table.openLength() > 0)
            file.table.endRow();
        if (skipped > mostRemarks)
            file.remarks << QString("%1 lines in all were skipped.").arg(skipped);
    }

private:
    const char *addWord(const char *begin, const char *end)
    {
        const char *const wordEnd = std::find_if(begin, end, isSeparator);
        if (isBad)
            return wordEnd;
        const bool isFirst = std::exchange(isLineStart, false);
        const std::string_view word(begin, std::size_t(wordEnd - begin));
        if (isInTitle || (isFirst && beginsTitle(word))) {
            addToTitle(word);
            return wordEnd;
        }
        afterWord = true;
        double value = 0;
        const char *const digits = *begin == '+' && begin + 1 < wordEnd ? begin + 1 : begin;
        const auto [rest, problem] = std::from_chars(digits, wordEnd, value);
        if (problem == std::errc() && rest == wordEnd && !(digits > begin && *digits == '-')) {
            file.table.add(value);
            if (isRecording && file.table.rows() == 0)
                file.columnNames << QString("%1 channel %2").arg(title).arg(++channel);
            return wordEnd;
        }
        const QString shown =
            QString::fromUtf8(begin, int(std::min<qint64>(longestWord, wordEnd - begin)));
        spoil(problem == std::errc::result_out_of_range
                  ? "\"" + shown + "\" is beyond the range of numbers"
                  : "\"" + shown + "\" is no number");
        return wordEnd;
    }

    // Whether the first word of a line belongs to the text of a recording.
    bool beginsTitle(std::string_view word)
    {
        if (word.substr(0, 2) == "i=") {
            isRecording = isRecording || file.table.rows() == 0;
            if (isRecording && file.table.openLength() > 0)
                file.table.endRow();
            isInTitle = isRecording;
        } else {
            isInTitle = isRecording && word == "module";
        }
        title.clear();
        channel = 0;
        return isInTitle;
    }

    // A point's title goes to the end of its line, that of module and ray to the colon.
    void addToTitle(std::string_view word)
    {
        if (file.table.rows() == 0)
            title +=
                (title.isEmpty() ? "" : " ") + QString::fromUtf8(word.data(), int(word.size()));
        if (!word.empty() && word.back() == ':') {
            title.chop(1);
            isInTitle = false;
        }
    }

    void spoil(const QString &reason)
    {
        if (!isBad)
            badReason = reason;
        isBad = true;
    }

    void endLine(std::string_view text)
    {
        if (isBad)
            skipLine(text);
        else if (!isRecording && file.table.openLength() > 0)
            endRow();
        ++line;
        isBad = false;
        isInTitle = false;
        isLineStart = true;
        afterWord = false;
    }

    void skipLine(std::string_view text)
    {
        file.table.dropOpenRow();
        if (++skipped <= mostRemarks)
            file.remarks << QString("Line %1 skipped: %2.").arg(line).arg(badReason);
        if (file.table.rows() > 0)
            return;
        file.columnNames.clear();
        titles = QByteArray(text.data(), int(text.size()));
    }

    void endRow()
    {
        file.table.endRow();
        if (file.table.rows() != 1 || titles.isEmpty())
            return;
        static const QRegularExpression between("[\\s,;]+");
        QStringList words =
            QString::fromUtf8(titles).remove('#').split(between, Qt::SkipEmptyParts);
        const bool isNumbers = std::any_of(words.begin(), words.end(), [](const QString &word) {
            return QString("+-.0123456789").contains(word[0]);
        });
        if (isNumbers || words.size() != file.table.columns())
            return;
        file.columnNames = words;
        if (skipped-- <= mostRemarks)
            file.remarks.removeLast();
    }

    NumberFile &file;
    qint64 line;
    qint64 skipped = 0;
    bool isBad = false;
    bool afterWord = false;  // since the last comma or semicolon
    bool unfinished = false; // the last line has no end yet
    bool isLineStart = true;
    bool isRecording = false;
    bool isInTitle = false; // of a line of a recording
    QString title;
    int channel = 0; // last named one of that module and ray
    QString badReason;
    QByteArray titles; // the last skipped line above the numbers
};

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
            file.header = QString::fromUtf8(header.text).split('\n', Qt::SkipEmptyParts);
        else
            seekText();
        begin = in.pos();
        if (isResult && !restIsText())
            readBlocks(progress, cancelled);
        else
            readText(progress, cancelled);
        if (isResult && file.error.isEmpty())
            groupBlocks();
        if (file.error.isEmpty() && !file.wasCancelled && file.table.count() == 0)
            file.error = path + (in.size() == 0 ? " is empty." : " has no line of numbers.");
        const NumberTable &table = file.table;
        const bool areLong = table.columns() >= longRow && file.columnNames.isEmpty();
        file.rowsAreSeries = isResult || table.rows() == 1 || areLong;
        return std::move(file);
    }

private:
    // The mark that some editors put in front of text is no part of its first number.
    void seekText()
    {
        const QByteArray mark = "\xEF\xBB\xBF";
        in.seek(0);
        if (in.peek(mark.size()) == mark)
            in.seek(mark.size());
    }

    bool restIsText()
    {
        const QByteArray look = in.peek(256);
        return std::all_of(look.begin(), look.end(),
                           [](char c) { return isSeparator(c) || (c > ' ' && c <= '~'); });
    }

    void readText(const std::function<void(int)> &progress, const std::function<bool()> &cancelled)
    {
        TextParser parser(file, header.isUsable() ? header.text.count('\n') + 1 : 1);
        QByteArray rest; // a word whose end has not been read yet
        readPieces(progress, cancelled, [&](QByteArray &block) {
            if (const int zero = block.indexOf('\0'); zero >= 0) {
                file.error = path + " is no text: it holds binary data. Recordings open with "
                                    "\"Native data\".";
                return;
            }
            block.prepend(rest);
            qint64 whole = block.size();
            if (!in.atEnd()) {
                while (whole > 0 && !isSeparator(block[int(whole - 1)]))
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
        const qint64 blockLength = header.points * qint64(sizeof(float));
        const qint64 whole = (in.size() - begin) / blockLength;
        if (whole < header.blocks) {
            file.error =
                QString("Block %1 of %2 in %3 is short: it needs %4 bytes, the file has %5.")
                    .arg(whole + 1)
                    .arg(header.blocks)
                    .arg(path)
                    .arg(blockLength)
                    .arg((in.size() - begin) % blockLength);
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
            file.error = QString("%1 holds more than %2 numbers.").arg(path).arg(mostNumbers);
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
        file.error = QString("%1 is too large for this machine: its numbers take %2 MB, %3 MB are "
                             "free. Cut the file into parts.")
                         .arg(path)
                         .arg(wanted * NumberTable::bytesPerNumber / megabyte)
                         .arg(availableMemory() / megabyte);
        return false;
    }

    const QString path;
    QFile in;
    const qint64 limit;
    qint64 begin = 0; // of the numbers
    Tools::ResultHeader header;
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

namespace Tools {

NumberFile readNumberFile(const QString &path, qint64 limit,
                          const std::function<void(int)> &progress,
                          const std::function<bool()> &cancelled)
{
    return NumberReader(path, limit).read(progress, cancelled);
}

} // namespace Tools
