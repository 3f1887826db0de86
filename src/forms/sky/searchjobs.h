#pragma once

#include "analyses/sky/skytables.h"
#include "forms/sky/celldays.h"

#include <memory>
#include <vector>

/// The computations of a search over stacks, as jobs that share nothing with the form but values
/// that nobody changes meanwhile.

/// What a search gives.
struct SearchFound {
    QByteArray table; ///< as it is written
    std::vector<Sky::SkyCandidate> candidates;
    QString path; ///< where it is kept
    QStringList remarks;
};

/// The search with the verdicts of the table that stands in its place already.
///
/// @param request  header of the table
SearchFound foundBy(const SkyOutcome &made, const Sky::SkyPlan &plan,
                    const std::vector<Results::HeaderLine> &request, const RecordingSet &set,
                    const Jobs::Control &control);

/// The newest table of candidates of folds, or of spectra, that is kept for a directory.
struct KeptTable {
    Sky::CandidatesTable table;
    QString path; ///< empty: there is none
    QDateTime written;
};
KeptTable newestTable(const QString &directory, bool isFfa);

/// A table that was read, as bytes to be written.
QByteArray bytesOf(Results::ResultTable table, Results::Format format);

/// Which candidate's details are wanted.
struct DetailsRequest {
    std::shared_ptr<const SkyOutcome> made;
    std::shared_ptr<const Sky::SkyPlan> plan;
    std::shared_ptr<const RecordingSet> set;
    Sky::SkyCandidate candidate;
};

SkyPlace placeOf(const Sky::SkyCandidate &candidate);

/// What takes time of a candidate, in the order in which it comes.
struct CandidateDetails {
    std::shared_ptr<const Sky::SkyMap> map;
    std::vector<double> overDispersion; ///< sigma over the dispersions of the plan
    bool hasDays = false;               ///< what follows is there
    std::vector<Days::GrowthPoint> growth;
    std::vector<DayProfile> profiles;
};

/// First what the stacks tell, then what has to be read once more.
void findDetails(const DetailsRequest &request, const Jobs::Control &control,
                 const std::function<void(CandidateDetails details)> &deliver);
