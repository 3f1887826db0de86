#include "data/lineparser.h"

#include <QRegularExpression>
#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>
#include <utility>

namespace NumberParser {

namespace {

constexpr int longestWord = 40; // characters of a word shown in a remark
constexpr double notThere = std::numeric_limits<double>::quiet_NaN();

bool isGap(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool isMark(char c)
{
    return c == ',' || c == ';';
}

} // namespace

bool isSeparator(char c)
{
    return isGap(c) || isMark(c) || c == '\n';
}

Word readWord(std::string_view word)
{
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
        word.remove_prefix(1);
    double value = 0;
    const char *const end = word.data() + word.size();
    const auto [rest, problem] = std::from_chars(word.data(), end, value);
    if (problem == std::errc() && rest == end)
        return {value, false};
    return {std::nullopt, problem == std::errc::result_out_of_range};
}

QString shownWord(std::string_view word)
{
    return QString::fromUtf8(word.data(), int(std::min<std::size_t>(longestWord, word.size())));
}

void LineParser::add(const char *begin, const char *end)
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

// A row that was cut off by the limit is left out, unless it is all there is.
void LineParser::finish(bool isCutOff)
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

const char *LineParser::addWord(const char *begin, const char *end)
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
    const Word read = readWord(word);
    if (read.number) {
        file.table.add(*read.number);
        if (isRecording && file.table.rows() == 0)
            file.columnNames << QString("%1 channel %2").arg(title).arg(++channel);
        return wordEnd;
    }
    const QString shown = "\"" + shownWord(word) + "\"";
    spoil(shown + (read.isBeyond ? " is beyond the range of numbers" : " is no number"));
    return wordEnd;
}

// Whether the first word of a line belongs to the text of a recording.
bool LineParser::beginsTitle(std::string_view word)
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
void LineParser::addToTitle(std::string_view word)
{
    if (file.table.rows() == 0)
        title += (title.isEmpty() ? "" : " ") + QString::fromUtf8(word.data(), int(word.size()));
    if (!word.empty() && word.back() == ':') {
        title.chop(1);
        isInTitle = false;
    }
}

void LineParser::spoil(const QString &reason)
{
    if (!isBad)
        badReason = reason;
    isBad = true;
}

void LineParser::endLine(std::string_view text)
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

void LineParser::skipLine(std::string_view text)
{
    file.table.dropOpenRow();
    if (++skipped <= mostRemarks)
        file.remarks << QString("Line %1 skipped: %2.").arg(line).arg(badReason);
    if (file.table.rows() > 0)
        return;
    file.columnNames.clear();
    titles = QByteArray(text.data(), int(text.size()));
}

void LineParser::endRow()
{
    file.table.endRow();
    if (file.table.rows() != 1 || titles.isEmpty())
        return;
    static const QRegularExpression between("[\\s,;]+");
    QStringList words = QString::fromUtf8(titles).remove('#').split(between, Qt::SkipEmptyParts);
    const bool isNumbers = std::any_of(words.begin(), words.end(), [](const QString &word) {
        return QString("+-.0123456789").contains(word[0]);
    });
    if (isNumbers || words.size() != file.table.columns())
        return;
    file.columnNames = words;
    if (skipped-- <= mostRemarks)
        file.remarks.removeLast();
}

} // namespace NumberParser
