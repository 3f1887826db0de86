#pragma once

#include "data/numberfile.h"

#include <QByteArray>
#include <optional>
#include <string_view>

/// How the bytes of text files become the numbers of a NumberFile, piece by piece.
namespace NumberParser {

/// Skipped lines that are named one by one.
inline constexpr int mostRemarks = 20;

/// Blank, tab, comma, semicolon or line end.
bool isSeparator(char c);

/// A word as a number with a point, "nan" and "inf" included.
struct Word {
    std::optional<double> number;
    bool isBeyond = false; ///< a number beyond the range of them
};
Word readWord(std::string_view word);

/// A word as remarks show it, cut where it is long.
QString shownWord(std::string_view word);

/// Lines of numbers with whatever separators between them.
///
/// In the text of a recording a line "i=<point>" stands before the lines of that point, and these
/// begin with "module 1 ray 1:"; all numbers of a point make a row.
class LineParser {
public:
    /// @param firstLine  number of the first line that is added
    LineParser(NumberFile &numberFile, qint64 firstLine) : file(numberFile), line(firstLine) {}

    /// Takes a piece that ends behind a separator or with the file.
    void add(const char *begin, const char *end);
    /// Marks the line as none of numbers, for what is too long to be one.
    void addHugeWord() { spoil("a word of more than a million characters"); }
    /// @param isCutOff  the file goes on: a row that was cut off is left out, unless it is all
    ///                  there is
    void finish(bool isCutOff);

private:
    const char *addWord(const char *begin, const char *end);
    bool beginsTitle(std::string_view word);
    void addToTitle(std::string_view word);
    void spoil(const QString &reason);
    void endLine(std::string_view text);
    void skipLine(std::string_view text);
    void endRow();

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

} // namespace NumberParser
