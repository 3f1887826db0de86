#include "forms/sky/searchjobs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace {

constexpr int mostProfiles = 3;
constexpr char tableEnd[] = "_candidates.txt";

QString tablePathOf(const SkyOutcome &made)
{
    const QFileInfo stack(Sky::stackFileName(*made.plan, 1, 1));
    return QDir(made.kept.path).filePath(stack.completeBaseName() + tableEnd);
}

// Spectra have no line of folds in their header.
bool isOfFolds(const Sky::CandidatesTable &table)
{
    return Results::valueOf(table.table.request, "ffa") == "yes";
}

} // namespace

SearchFound foundBy(const SkyOutcome &made, const Sky::SkyPlan &plan,
                    const std::vector<Results::HeaderLine> &request, const RecordingSet &set,
                    const Jobs::Control &control)
{
    SearchFound found;
    found.path = tablePathOf(made);
    Sky::SkySearch search = Sky::searchSky(made.run.stack, plan, 0, control);
    if (!search.problem.isEmpty())
        found.remarks << search.problem;
    QFile older(found.path);
    if (older.open(QIODevice::ReadOnly)) {
        const Sky::CandidatesTable before = Sky::readCandidates(older.readAll(), plan);
        if (before.problem.isEmpty())
            Sky::takeVerdicts(before, plan, search);
        else
            found.remarks << found.path + ": " + before.problem;
    }
    const Results::ResultTable table =
        skyTable(set, plan, made.run, request, Sky::searchLines(search),
                 Sky::candidateColumns(search.candidates, plan));
    found.table = table.toBytes(Results::Format::Text);
    found.candidates = search.candidates;
    found.remarks += search.remarks;
    return found;
}

KeptTable newestTable(const QString &directory, bool isFfa)
{
    const QDir kept(Days::keptFolder(directory).path);
    KeptTable newest;
    for (const QFileInfo &info :
         kept.entryInfoList({QString("*") + tableEnd}, QDir::Files, QDir::Time)) {
        QFile file(info.filePath());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        Sky::CandidatesTable table = Sky::readCandidates(file.readAll(), {});
        const bool isTold = table.problem.isEmpty();
        if (isTold && isOfFolds(table) != isFfa)
            continue;
        if (!isTold && !newest.path.isEmpty())
            continue;
        newest = {std::move(table), info.filePath(), info.lastModified()};
        if (isTold)
            break;
    }
    return newest;
}

// A table that was read has the lines that writing adds in its header.
QByteArray bytesOf(Results::ResultTable table, Results::Format format)
{
    auto &lines = table.request;
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const Results::HeaderLine &line) {
                                   return line.key == "rows" || line.key == "columns";
                               }),
                lines.end());
    return table.toBytes(format);
}

SkyPlace placeOf(const Sky::SkyCandidate &candidate)
{
    return {candidate.ray, candidate.dispersionIndex, candidate.start};
}

void findDetails(const DetailsRequest &request, const Jobs::Control &control,
                 const std::function<void(CandidateDetails details)> &deliver)
{
    const Sky::SkyCandidate &candidate = request.candidate;
    const Sky::SkyStack &stack = request.made->run.stack;
    CandidateDetails details;
    details.overDispersion = Sky::sigmaOverDispersions(stack, *request.plan, candidate);
    Sky::MapChoice choice;
    choice.ray = candidate.ray;
    choice.dispersion = candidate.dispersionIndex;
    const SkyMaps maps = mapsOf(stack, *request.plan, {choice}, control);
    if (maps.empty())
        return;
    details.map = maps.front();
    deliver(details);
    const CellDays days = readCellDays(*request.set, *request.plan, placeOf(candidate),
                                       request.plan->interference, control);
    if (control.isStopped())
        return;
    details.hasDays = true;
    details.growth = growthOf(days, candidate.telescope, candidate.harmonics);
    details.profiles = bestProfiles(*request.set, days, candidate.telescope, candidate.harmonics,
                                    mostProfiles, control);
    deliver(details);
}
