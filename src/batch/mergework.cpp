#include "batch/mergework.h"

#include "batch/inputlist.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "batch/runner.h"
#include "results/candidates.h"

#include <algorithm>

namespace Batch {

using namespace Results;

namespace {

// A merged table of a survey has some hundred bytes per candidate; a text takes twice its bytes.
constexpr qint64 largestTable = qint64(1) << 29;

} // namespace

Failure mergeCandidates(const QStringList &inputs, const MergeRequest &request)
{
    std::vector<Candidate> candidates;
    int tables = 0;
    for (const QString &input : inputs) {
        QByteArray bytes;
        if (Failure failure = readInput(input, largestTable, bytes))
            return failure;
        const ReadCandidates read = readCandidates(bytes);
        if (!read.problem.isEmpty())
            return {ExitCode::BadData, input + " cannot be merged: " + read.problem + "."};
        if (!read.remark.isEmpty())
            printError(input + ": " + read.remark + ".");
        ++tables;
        for (const Candidate &candidate : read.candidates) {
            if (candidate.peak.strength() >= request.threshold &&
                (!request.onlyBase || candidate.remark.isEmpty()))
                candidates.push_back(candidate);
        }
    }
    sortCandidates(candidates);
    const auto last = std::unique(candidates.begin(), candidates.end(), Results::isSame);
    candidates.erase(last, candidates.end());

    ResultTable table;
    table.request = {{"program", programName()},
                     {"command", "merge"},
                     {"threshold", numberText(request.threshold)},
                     {"only_base", request.onlyBase ? "yes" : "no"},
                     {"tables", QString::number(tables)}};
    table.columns = candidateColumns(candidates, true);
    removeAbandoned({request.output});
    return writeOutputs({{request.output, {}, [&](WholeFile &file) {
                              return writeTable(table, request.format, file);
                          }}});
}

} // namespace Batch
