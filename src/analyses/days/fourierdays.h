#pragma once

#include "analyses/days/dayanalysis.h"
#include "analyses/days/fourierday.h"
#include "analyses/days/fourierstack.h"
#include "analyses/days/stretchparameters.h"

/// Spectra or periodograms of all days of a folder and their stack: "Sum of signals", "Fourier" and
/// "FFA".
namespace Days {

struct FourierDaysParameters : StretchParameters {
    double dispersion = 0; ///< pc/cm^3
    bool normalise = false;
    double threshold = 5;    ///< sigma of listed lines
    bool equalGains = false; ///< weight days by the inverse square of their sigma
    QString otherRays;       ///< numbers with commas: rays of the same module whose lines are
                             ///< compared
};

using FourierDaysField = Field<FourierDaysParameters>;
using FourierDaysAnalysis =
    DayAnalysis<FourierDaysParameters, FourierDay, FourierDaysChoice, FourierStack>;

/// The parameters of spectra, in the order of the help and of the headers of tables.
const std::vector<FourierDaysField> &fourierDaysFields();

/// What spectra call the parameter of an option, which others over days take too.
const FieldText &fourierDaysField(const QString &option);

/// Those of periodograms.
const std::vector<FourierDaysField> &ffaDaysFields();

/// All analyses over days of this kind: the one place that lists them.
const std::vector<FourierDaysAnalysis> &fourierDaysAnalyses();

/// The analysis that the flags open; null where there is none yet.
const FourierDaysAnalysis *findDayAnalysis(const SurveyFlags &flags);

/// The analysis of such parameters.
const FourierDaysAnalysis &analysisOf(const FourierDaysParameters &parameters);
/// What is read of each day.
///
/// @param choice  the ray and the stretch without what delayed bands take in around it
/// @param header  with the step and the bands of the recordings
/// @return pointsAfter is below 0 where the bands cannot be delayed
DayNeeds needsOf(const FourierDaysParameters &parameters, const DayChoice &choice,
                 const ObservationData &header);

/// Finds the days of a set for a request, and what is to be read of them.
DayPlan planDays(const RecordingSet &set, const FourierDaysParameters &parameters);

/// The parameters as they are used: with the module and ray of the plan, and the search that suits
/// its series.
FourierDaysParameters usedParameters(FourierDaysParameters parameters, const DayPlan &plan);

/// Both halves of the work on one day: its series, kept or read, and its product.
///
/// @param folder  that keeps series; empty: nothing is kept
FourierDay readDay(const RecordingSet &set, const DayPlan &plan, const Day &day,
                   const FourierDaysParameters &parameters, const QString &folder,
                   const Jobs::Control &control = {});

/// The same for that ray and the other ones that are compared, whose samples are read at once.
///
/// @return the ray of the plan first, then those of parameters.otherRays in their order
std::vector<FourierDay> readRays(const RecordingSet &set, const DayPlan &plan, const Day &day,
                                 const FourierDaysParameters &parameters, const QString &folder,
                                 const Jobs::Control &control = {});

/// The numbers of parameters.otherRays without that of the plan's ray.
std::vector<int> otherRaysOf(const FourierDaysParameters &parameters, const DayPlan &plan);

/// What a stack of another ray shows above 4 sigma, for FourierDaysChoice::otherRays.
OtherRay otherRayOf(const FourierDaysAnalysis &analysis, int module, int ray,
                    const std::vector<FourierDay> &products, const FourierDaysChoice &choice,
                    const Jobs::Control &control = {});

/// What does not count against the days: the interference, and the harmonics of a known pulsar
/// that was asked for by name.
DayRule ruleOf(const FourierDaysParameters &parameters, const DayPlan &plan,
               const std::vector<Interference> &leftOut);

/// What the parameters say of the stack; the days, interference and other rays are to be filled in.
FourierDaysChoice choiceOf(const DayPlan &plan, const FourierDaysParameters &parameters);

/// The command that makes what is kept, for all analyses over days.
inline constexpr char surveyCommand[] = "survey";

/// A day as options and tables name it: UTC of its first point, "yyyy-MM-ddThh:mm:ss".
QString dayName(const QDateTime &begin);

/// The call of the batch program that computes what the form does, ready for a shell.
///
/// @param isSurvey  surveyCommand; otherwise that of the analysis
/// @param daysOff  names of days, or their dates, that do not count; all others do
QString fourierDaysCommand(bool isSurvey, const FourierDaysParameters &parameters,
                           const QStringList &daysOff, const QStringList &folders);

/// A call of the batch program for days of folders.
///
/// @param daysOff  names of days, or their dates, that do not count
QString commandText(const QString &command, const QStringList &options, const QStringList &daysOff,
                    const QStringList &folders);

/// The same with the parameters of an analysis.
template <typename Parameters>
QString commandOfDays(const Analysis<Parameters> &analysis, const Parameters &parameters,
                      const QStringList &daysOff, const QStringList &folders)
{
    return commandText(analysis.command, Tools::optionWords(analysis, parameters), daysOff,
                       folders);
}

} // namespace Days
