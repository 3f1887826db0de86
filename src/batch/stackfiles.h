#pragma once

#include "analyses/days/dayspectra.h"
#include "batch/dayswork.h"

namespace Batch {

/// The files of one stack: tables of its curve, its lines and its days, and where wanted
/// pictures and the spectra or periodograms of the days.
class StackFiles {
public:
    /// All that is given has to outlive this object.
    ///
    /// @param parameters  with the module and ray of the plan
    StackFiles(const DaysRequest &request, const FoundDays &found,
               const Days::FourierDaysParameters &parameters,
               const std::vector<Days::Interference> &interference);

    /// Stands for all that is stacked; its name is that of the results.
    QString input() const;
    QStringList paths() const;

    /// Whether they stand, made by the same request of the same recordings.
    bool areDone() const;

    /// Writes them, all or none.
    Failure write(const Days::DaySpectra &spectra, const Days::StackOutcome &outcome) const;

private:
    QString pathOf(const QString &what, const QString &extension) const;
    QString tablePath(const QString &what) const;
    QString curveName() const; // of the stack over its axis
    std::vector<Results::HeaderLine> requestLines() const;
    Failure addPictures(const Days::DaySpectra &spectra, const Days::StackOutcome &outcome,
                        std::vector<FileContent> &files) const;

    const DaysRequest &request;
    const FoundDays &found;
    const Days::FourierDaysParameters &parameters;
    const std::vector<Days::Interference> &interference;
};

} // namespace Batch
