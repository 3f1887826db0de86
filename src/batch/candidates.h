#pragma once

#include "batch/failure.h"
#include "batch/resulttable.h"
#include "calc/ffacandidates.h"

#include <QStringList>
#include <limits>
#include <vector>

namespace Batch {

/// A peak of a search with the place it was found at.
struct Candidate {
    FfaCandidate peak;
    int module = 1;                                                ///< number by the passport
    int ray = 1;                                                   ///< number by the passport
    double dispersion = 0;                                         ///< pc/cm^3
    double periodError = std::numeric_limits<double>::quiet_NaN(); ///< s; NaN: not refined
    QString remark; ///< refers to candidates of the same search
    QString file;
};

/// The strongest first; equal ones by file, module, ray, period and dispersion, so that the order
/// depends on nothing else.
void sortCandidates(std::vector<Candidate> &candidates);

/// Of candidates of one ray whose periods agree within half a turn over the length (s) of the
/// series the strongest dispersion.
std::vector<Candidate> strongestOfDispersions(std::vector<Candidate> candidates, double length);

/// One row per candidate; with files a column says which file it is of.
std::vector<Column> candidateColumns(const std::vector<Candidate> &candidates, bool withFiles);

/// Reads the candidates of a result; the problem is empty when it holds a whole table of them,
/// every number of it usable.
struct ReadCandidates {
    std::vector<Candidate> candidates;
    QString problem;
    QString remark; ///< what a user should know of the table; or empty
};
ReadCandidates readCandidates(const QByteArray &bytes);

/// What is merged, and what is kept of it.
struct MergeRequest {
    QString output;
    Format format = Format::Text;
    double threshold = 0;  ///< S/N
    bool onlyBase = false; ///< leave out harmonics, mains hum and what does not fold
};

/// Joins the candidates of many results into one table: each candidate once, sorted, the same
/// whatever the order of the inputs.
Failure mergeCandidates(const QStringList &inputs, const MergeRequest &request);

} // namespace Batch
