#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <limits>
#include <set>
#include <vector>

/// Numbers in rows; the rows may differ in length.
class NumberTable {
public:
    /// Memory that a number takes until it is seen: here, in a curve, in what is drawn of that,
    /// and in the copies that statistics sort.
    static constexpr qint64 bytesPerNumber = 5 * sizeof(double);

    qint64 rows() const { return rowCount; }
    /// Numbers in the longest row.
    qint64 columns() const { return longest; }
    qint64 count() const { return qint64(values.size()); }

    qint64 rowLength(qint64 row) const { return endOf(row) - endOf(row - 1); }
    /// NaN where the row is too short.
    double at(qint64 row, qint64 column) const
    {
        return column < rowLength(row) ? values[std::size_t(endOf(row - 1) + column)]
                                       : std::numeric_limits<double>::quiet_NaN();
    }
    /// All numbers, row after row.
    const std::vector<double> &all() const { return values; }
    /// All numbers of one row; index from 0.
    std::vector<double> row(qint64 index) const;
    /// One number of every row; NaN where a row is too short for it.
    std::vector<double> column(qint64 index) const;

    /// Appends a number to the row that endRow() will close.
    void add(double value) { values.push_back(value); }
    /// Numbers of the open row.
    qint64 openLength() const { return count() - endOf(rowCount - 1); }
    void endRow();
    /// Forgets the open row.
    void dropOpenRow() { values.resize(std::size_t(endOf(rowCount - 1))); }
    /// Divides the numbers anew into rows of equal length, the last one maybe shorter.
    void regroup(qint64 length);

    /// Makes room for so many numbers. Memory is looked at first.
    ///
    /// @return false when this machine cannot give it
    bool reserve(qint64 numbers);
    qint64 capacity() const { return qint64(values.capacity()); }

private:
    qint64 endOf(qint64 row) const
    {
        return ends.empty() ? (row + 1) * longest : row < 0 ? 0 : ends[std::size_t(row)];
    }

    std::vector<double> values; // row after row
    std::vector<qint64> ends;   // index behind each row; empty while all are equally long
    qint64 rowCount = 0;
    qint64 longest = 0;
};

/// What X is along a series: first + i * step at its value i.
struct SeriesAxis {
    QString name; ///< with its unit
    double first = 0;
    double step = 0; ///< 0: not known
};

/// What a text file of numbers holds, or why there is nothing of it.
struct NumberFile {
    NumberTable table;
    QStringList columnNames;    ///< from a line above the numbers with as many words; or empty
    bool rowsAreSeries = false; ///< long rows, or the blocks of a result file: a row is a curve
    QStringList rowNames;       ///< of the blocks, where the header has them
    SeriesAxis rowAxis;         ///< along the blocks, where the header says so
    QStringList header;         ///< lines above a table or the blocks of a result file
    /// Cells of a table that are words, by column and row; null and behind the last one where the
    /// cell is none. The number is NaN there.
    std::vector<std::vector<QString>> words;
    std::set<qint64> textColumns; ///< columns with more words than numbers
    QStringList remarks;          ///< skipped lines with their numbers, counts that do not agree
    bool isWhole = true;          ///< false: the file goes on behind the limit
    bool wasCancelled = false;
    QString error; ///< for the user to read; the table is then of no use

    bool isText(qint64 column) const { return textColumns.count(column) > 0; }
    /// A cell as a table shows it: its word, or the number with all its digits.
    QString cell(qint64 row, qint64 column) const;
};

namespace Tools {

/// Reads any text file of numbers: one column, several, or rows, with blanks, tabs, commas or
/// semicolons between the numbers and a point in them; nothing between two commas or semicolons
/// is NaN. A line with anything else is skipped and remarked upon. In a result file (see
/// resulttotext.h), with its values as text or as the float blocks themselves, every block
/// becomes a row; in the text of a recording, all samples of a point do. A table with names above
/// its columns (see tableparser.h) keeps the cells that are words.
///
/// @param limit      bytes after which the reading stops; a row that is not complete then is
///                   left out unless it is the only one
/// @param progress   percent; may be empty
/// @param cancelled  asked every few milliseconds; may be empty
NumberFile readNumberFile(const QString &path, qint64 limit = std::numeric_limits<qint64>::max(),
                          const std::function<void(int)> &progress = {},
                          const std::function<bool()> &cancelled = {});

} // namespace Tools
