#pragma once

#include "data/numberfile.h"

/// Files of numbers, as text or as JSON, and which of their columns are curves.
namespace Results {

/// What stands on the X axis of curves.
struct ArrayAxis {
    QString name; ///< empty: the index
    std::vector<double> values;

    bool isIndex() const { return values.empty(); }
    /// Whether neighbouring values are equally far apart, to a millionth of the way.
    bool isEven() const;
    /// Whether another axis has the same name and, as far as both go, the same values, to a
    /// millionth of a step.
    bool isLike(const ArrayAxis &other) const;
};

/// Reads a text file of numbers, or a table of this system that was written as JSON. JSON that is
/// longer than the limit is left unread, for its end is needed to understand it.
///
/// @param limit      bytes after which the reading stops
/// @param progress   percent; may be empty
/// @param cancelled  asked every few milliseconds; may be empty
NumberFile readArrays(const QString &path, qint64 limit,
                      const std::function<void(int)> &progress = {},
                      const std::function<bool()> &cancelled = {});

/// The column that can stand on the X axis, because it rises all the way: the first of several; or
/// the second, where the first one only counts and is named "index".
///
/// @return below 0: none
int xColumn(const NumberFile &file);

/// Columns of numbers behind that of X, if there is one.
std::vector<int> curveColumns(const NumberFile &file, int xColumn);

/// A column as X, and what the header says of X along the rows; the index where it says nothing.
ArrayAxis axisOf(const NumberFile &file, int column);
ArrayAxis axisOfRows(const NumberFile &file);

/// Name of a column, from 0, in the file or else by its number.
QString columnName(const NumberFile &file, int column);

} // namespace Results
