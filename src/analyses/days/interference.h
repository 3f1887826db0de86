#pragma once

#include "base/wholefile.h"

#include <QString>
#include <vector>

/// Frequencies that a user knows to be no signals of the sky. One list serves the whole program: a
/// text file in the user's configuration.
namespace Days {

/// What is left out, as the telescope sees it.
struct Interference {
    double value = 0; ///< Hz, or s where it is a period
    bool isPeriod = false;
    double width = 0;  ///< half of it, in the same unit; at least a bin is left out
    int harmonics = 1; ///< left out as well, up to this one
    QString remark;

    double frequency() const { return isPeriod ? 1 / value : value; }
    /// Ends, Hz, of what is left out of the harmonic of that number.
    double from(int harmonic) const;
    double to(int harmonic) const;
    /// As a line of the file: "33.3 Hz +- 0.1 x 8 # lamp".
    QString text() const;

    bool operator==(const Interference &other) const = default;
};

struct InterferenceList {
    std::vector<Interference> entries;
    QString problem; ///< which line is wrong and how; empty: all were read
};

/// Reads lines "VALUE Hz" or "VALUE s", behind it where wanted "+- WIDTH" and "x HARMONICS". What
/// follows "#" is a remark; empty lines do not count.
///
/// @return no entries where a line is anything else
InterferenceList parseInterference(const QByteArray &text);

/// The list of a file; empty where it does not exist.
InterferenceList readInterference(const QString &path);

/// Writes the list whole or not at all; its folder is made.
WriteFailure writeInterference(const QString &path, const std::vector<Interference> &entries);

/// The user's own list.
QString interferencePath();

/// Takes the entries out of a list that leave a frequency out.
///
/// @param tolerance  Hz
/// @return those
std::vector<Interference> takeOutInterference(std::vector<Interference> &entries, double frequency,
                                              double tolerance);

} // namespace Days
