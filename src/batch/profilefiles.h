#pragma once

#include "analyses/profiles/profiletables.h"
#include "batch/profilework.h"

namespace Batch {

/// The files of the profiles of one folder: tables, arrival times, and where wanted pictures.
class ProfileFiles {
public:
    /// All that is given has to outlive this object.
    ProfileFiles(const ProfileRequest &request, const RecordingSet &set,
                 const Profiles::ProfilePlan &plan);

    /// Stands for all that is averaged; its name is that of the results.
    QString input() const;
    QStringList paths() const;

    /// Whether they stand, made by the same request of the same recordings.
    bool areDone() const;

    /// Writes them, all or none.
    Failure write(const Profiles::ProfileOutcome &outcome) const;

private:
    QString pathOf(const QString &what, const QString &extension) const;
    QString tablePath(const QString &what) const;
    std::vector<Results::HeaderLine> requestLines() const;
    Failure addPictures(const Profiles::ProfileOutcome &outcome,
                        std::vector<FileContent> &files) const;

    const ProfileRequest &request;
    const RecordingSet &set;
    const Profiles::ProfilePlan &plan;
};

} // namespace Batch
