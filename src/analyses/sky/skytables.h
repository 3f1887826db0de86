#pragma once

#include "analyses/sky/skymap.h"
#include "analyses/sky/skysearch.h"
#include "results/resulttable.h"

/// Maps and candidates as files.
namespace Sky {

/// The parameters of an analysis as lines of a header, those without a value left out.
std::vector<Results::HeaderLine> parameterLines(const SkyAnalysis &analysis,
                                                const SkyParameters &parameters);
/// Which recordings, all with size and time in few digits, and which interference is left out: what
/// a result depends on besides the parameters.
std::vector<Results::HeaderLine> stateLines(const RecordingSet &set, const SkyPlan &plan);
/// What was found out about days, rays and starts.
std::vector<Results::HeaderLine> planLines(const SkyPlan &plan, const SkyRun &run);
std::vector<Results::HeaderLine> searchLines(const SkySearch &search);

/// One row per candidate, in their order, with verdicts and notes.
std::vector<Results::Column> candidateColumns(const std::vector<SkyCandidate> &candidates,
                                              const SkyPlan &plan);

/// One column of floats per row of the map, named by it.
std::vector<Results::Column> mapColumns(const SkyMap &map);
std::vector<Results::HeaderLine> mapLines(const SkyMap &map, const SkyPlan &plan);

/// A table of candidates that was written, with what a person decided.
struct CandidatesTable {
    Results::ResultTable table; ///< as it was read, all lines of its header in `request`
    /// Their rays, dispersions and starts are those of the plan; -1 where it does not hold them.
    std::vector<SkyCandidate> candidates;
    QString problem; ///< what is wrong and what can be done; empty: it is whole and understood
};
CandidatesTable readCandidates(const QByteArray &bytes, const SkyPlan &plan);

/// Sets verdict and note of a row; the other columns stay as they are, to the last digit.
void setVerdict(CandidatesTable &table, int row, Verdict verdict, const QString &note);

/// Takes over verdicts and notes for candidates that are the same: their frequencies agree within
/// 1 / T, their rays and starts are the same or neighbours.
void takeVerdicts(const CandidatesTable &older, const SkyPlan &plan, SkySearch &search);

} // namespace Sky
