#pragma once

#include "results/resulttable.h"

#include <QStringList>
#include <limits>
#include <vector>

namespace Results {

/// A peak of S/N over period.
struct Peak {
    double period = 0;                                             ///< s, topocentric
    double periodError = std::numeric_limits<double>::quiet_NaN(); ///< s; NaN: not refined
    float snr = 0;        ///< S/N at the best width, as the search gives it
    double snrFactor = 1; ///< the S/N is too low by it; above 1 at a whole downsampling factor
    int width = 0;        ///< boxcar width, bins
    int bins = 0;         ///< fold bins
    double foldSnr = 0;   ///< S/N of the series folded at exactly this period

    double dutyCycle() const { return double(width) / bins; }
    double widthSeconds() const { return dutyCycle() * period; }
    double strength() const { return double(snr) * snrFactor; } ///< the true S/N
};

/// A peak of a search with the place where it was found.
struct Candidate {
    Peak peak;
    int module = 1;        ///< number by the passport
    int ray = 1;           ///< number by the passport
    double dispersion = 0; ///< pc/cm^3
    QString remark;        ///< refers to candidates of the same search
    QString file;
};

/// The strongest true S/N first; equal ones by file, module, ray, period and dispersion, so that
/// the order depends on nothing else.
void sortCandidates(std::vector<Candidate> &candidates);

/// Whether two candidates come from the same search of the same file. Sorted lists have them side
/// by side.
bool isSame(const Candidate &a, const Candidate &b);

/// Keeps, among the candidates of one ray whose periods agree within half a turn over the length
/// (s) of the series, the one at the strongest dispersion.
std::vector<Candidate> strongestOfDispersions(std::vector<Candidate> candidates, double length);

/// The columns of a table that programs read: one row per candidate; with files a column names the
/// file of each.
std::vector<Column> candidateColumns(const std::vector<Candidate> &candidates, bool withFiles);

/// Reads the candidates of a result; the problem is empty when it holds a whole table of them,
/// every number of it usable.
struct ReadCandidates {
    std::vector<Candidate> candidates;
    QString problem;
    QString remark; ///< what a user should know of the table; or empty
};
ReadCandidates readCandidates(const QByteArray &bytes);

/// Titles of the table that a window shows of one search, units after a comma.
QStringList shownTitles();

/// One row of that table. The remark begins with the factor by which the S/N is too low where it
/// is.
///
/// @param number  of the candidate, from 1
QStringList shownFields(const Candidate &candidate, int number);

} // namespace Results
