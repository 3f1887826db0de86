#pragma once

#include "analyses/days/fourierdays.h"
#include "batch/tablework.h"

#include <algorithm>
#include <optional>

namespace Batch {

/// Work on the days of folders. Parameters and days are those of the form.
struct DaysRequest {
    Days::FourierDaysParameters parameters;
    QStringList folders;
    QString kept;      ///< folder that keeps series; empty: Days::keptFolder() of the first folder
    QString firstDate; ///< "yyyy-MM-dd"; empty: from the first on
    QString lastDate;  ///< included; empty: to the last
    int part = 1;      ///< of so many parts of the days
    int parts = 1;
    bool allDays = false; ///< also those that the rule proposes to leave out
    QStringList daysOff;  ///< dates, or names of days as Days::dayName() gives them
    QString interference; ///< file of the list; "none"; empty: the user's own
    bool savesSpectra = false;
    OutputOptions output;
};

/// What both commands begin with: the recordings, their days, and where series are kept.
struct FoundDays {
    RecordingSet set;
    Days::DayPlan plan; ///< its days are those of the asked dates
    Days::KeptFolder kept;
    Failure failure;
    QStringList remarks; ///< which recordings and days do not fit, and why
};

/// Finds them, and prints what went wrong.
///
/// @param isQuiet  the remarks are printed only where it fails
FoundDays findDays(const DaysRequest &request, bool isQuiet);

/// Number, sizes and times of change of all recordings, in few digits: the same files give the same
/// result.
QString stateOf(const RecordingSet &set);

/// Reads the headers of the recordings of folders.
Failure readFolders(const QStringList &folders, RecordingSet &set);

/// Which recordings and days do not fit, and why: a sentence for each reason.
QStringList remarksOn(const RecordingSet &set, const Days::DayList &list);

/// Leaves the days outside of the asked dates out of a list.
void keepDates(const DaysRequest &request, Days::DayList &list);

/// Which days count that daysOff does not name, one per day of the list.
Failure countDays(const QStringList &daysOff, const Days::DayList &list, std::vector<bool> &counts);

/// What the user says of each day by allDays and daysOff, one per day of the list.
Failure decideDays(const DaysRequest &request, const Days::DayList &list,
                   std::vector<std::optional<bool>> &decided);

/// The interference that is left out.
///
/// @param choice  file of the list; "none"; empty: the user's own list
Failure readInterference(const QString &choice, std::vector<Days::Interference> &entries);

/// What is wrong with a parameter, behind the option of the analysis that it was given by.
template <typename Analysis>
Failure refusalOf(const FieldProblem &problem, const Analysis &analysis)
{
    const auto &fields = analysis.fields;
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const auto *field) {
        return field->name == problem.field;
    });
    const QString option = found == fields.end() ? QString() : (*found)->option + ": ";
    return {ExitCode::Usage, option + problem.text};
}

/// Makes the series that are kept of each day: one item of work per day.
ExitCode surveyDays(const DaysRequest &request, const RunOptions &options);

/// Spectra of all days and their stack: one item of work.
ExitCode stackDays(const DaysRequest &request, const RunOptions &options);

} // namespace Batch
