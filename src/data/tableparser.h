#pragma once

#include "data/numberfile.h"

#include <string_view>

namespace NumberParser {

/// What a table with names above its columns begins with.
struct TableHead {
    char mark = 0;      ///< between the cells: tab, comma or semicolon; 0: this is no such table
    QStringList header; ///< lines above the names, without "# "
    QStringList names;  ///< of the columns, with their units
    qint64 bytes = 0;   ///< up to the first row
    qint64 lines = 0;
    qint64 promised = -1;    ///< rows; -1: the header does not say
    bool endsInLine = false; ///< every row of such a table has a line end
};

/// Looks for a table in the begin of a file: the tables of this system, whose lines above the names
/// begin with "#" or with "program:", and others with commas, semicolons or tabs between names
/// none of which is a number.
TableHead tableHead(const QByteArray &look);

/// Rows of such a table. Cells that are words are kept as such; a row with another number of cells
/// than the table has names is skipped with a remark.
class TableParser {
public:
    TableParser(NumberFile &numberFile, const TableHead &tableHead);

    /// Takes the whole lines of a piece.
    ///
    /// @return bytes that were taken
    qint64 add(const char *begin, const char *end);
    qint64 lastLine() const { return line; }
    qint64 skippedLines() const { return skipped; }
    /// @param rest  what follows the last line end of the file
    void finish(std::string_view rest, bool isCutOff);

private:
    void addLine(std::string_view text);
    void addCell(std::string_view cell, qint64 column);
    void skip(qint64 number, const QString &reason);
    void nameWords();

    NumberFile &file;
    const TableHead &head;
    qint64 line; // the last one that was read
    qint64 skipped = 0;
    std::vector<std::string_view> cells; // of a line; here for its memory
    std::vector<qint64> numbers;         // cells of each column that are numbers
    std::vector<qint64> words;           // and those that are not
};

} // namespace NumberParser
