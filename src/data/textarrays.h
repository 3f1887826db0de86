#pragma once

#include <QString>
#include <vector>

/// Series of numbers as text, and the headers of result files. Numbers have a point in every
/// locale.
namespace Tools {

/// Writes one value per line, with three decimals, in place of what the file held. The file is
/// replaced whole or not at all.
///
/// @return false, after one debug line, when it cannot be written
bool writeArrToFile(const std::vector<double> &values, const QString &path);

/// Appends one line: each value with six decimals and one blank. The file is made where it is
/// missing; a line that cannot be written whole is taken back.
///
/// @return false, after one debug line, when it cannot be written
bool addArrToFile(const std::vector<float> &values, const QString &path);

/// Dispersion measure, pc/cm^3, of the first line that begins with "disp:".
///
/// @return 0 where no line does so or it holds no whole number, and, after one debug line,
///         where the file cannot be opened
int findDispInFile(const QString &path);

/// Values per block of the first line that begins with "points:".
///
/// @return 0 under the same conditions
int findPointsInFile(const QString &path);

} // namespace Tools
