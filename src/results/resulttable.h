#pragma once

#include "base/wholefile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <variant>
#include <vector>

namespace Results {

enum class Format { Text, Csv, Json };

/// "txt", "csv" or "json".
QString extensionOf(Format format);
/// The form that goes by "csv" or "json" in any case; text by every other name.
Format formatOf(const QString &name);

/// One line of a header: "key: value"; a value of several lines becomes as many lines of that key.
struct HeaderLine {
    QString key;
    QString value;
};

/// Value of the first line with that key; empty where there is none.
QString valueOf(const std::vector<HeaderLine> &lines, const QString &key);

/// One column of a table. Numbers are written with as many digits as bring back the same value.
struct Column {
    QString name;
    QString unit; ///< empty: a plain number or text
    std::variant<std::vector<float>, std::vector<double>, QStringList> values;

    int size() const;
    QString title() const; ///< "name [unit]"
    /// The value of a row; not a number where it is a text that is none.
    double numberAt(int row) const;
    /// The value of a row with as many digits as bring it back.
    QString textAt(int row) const;
};

/// The column of that name; null where there is none.
const Column *columnNamed(const std::vector<Column> &columns, const QString &name);

/// The numbers of a result with all that is needed to make them again.
///
/// Series, tables of floats only, are written as the readable form of a result file: "key: value"
/// lines, among them "points:", "type: float" and "blocks:" with the names, the last one
/// "days:" with the number of blocks, then block after block one value a line. Other tables as
/// text have a line per row, with tabs between the values, below a last header line
/// "columns:". As CSV the header stands behind "#" and the names of the columns in a line of
/// their own; as JSON there is one object with "header" and "columns". All say how many rows there
/// are, so that a table that was cut is known.
struct ResultTable {
    std::vector<HeaderLine> request; ///< known before the work: what was asked of which file
    std::vector<HeaderLine> result;  ///< found by the work
    std::vector<Column> columns;     ///< all of one length

    int rows() const { return columns.empty() ? 0 : columns.front().size(); }
    QByteArray toBytes(Format format) const;
    /// The same piece by piece, for a table whose text is longer than one array of bytes can be.
    ///
    /// @param take  gets the pieces in their order, some of them empty
    void write(Format format, const std::function<void(const QByteArray &piece)> &take) const;

private:
    bool isSeries() const;
};

/// Writes the text of a table into a file that is open.
WriteFailure writeTable(const ResultTable &table, Format format, WholeFile &file);

/// A table read back from what toBytes() wrote, with all header lines in `request`. One that is
/// not whole is a problem.
struct ReadTable {
    ResultTable table;
    QString problem; ///< empty when the file was understood and is whole
    QString remark;  ///< what a user should know of it; or empty
};
ReadTable readTable(const QByteArray &bytes);

/// What every file made for a request begins with: a file that does so is what the request
/// would give again.
QByteArray requestBytes(const std::vector<HeaderLine> &request, Format format);

/// A text as JSON writes it, with its quotes; bytes that are not UTF-8 (see base/bytetext.h) as
/// escapes of their code units.
QByteArray jsonText(const QString &text);

/// Shortest text that reads back as the same number; "nan" and "inf" where it is none.
QByteArray numberText(double value);
QByteArray numberText(float value);

} // namespace Results
