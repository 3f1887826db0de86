#pragma once

#include "analyses/compare/differences.h"
#include "analyses/compare/medianday.h"
#include "analyses/days/fourierdays.h"

#include <memory>
#include <vector>

/// Days under each other on one axis of sidereal time, their mean day, and where single days
/// differ from it: "Multi", "Sum channels".
namespace Compare {

inline constexpr int mostDays = 64;
inline constexpr int mostListed = 500; ///< differences

struct CompareParameters : Days::DayPlace {
    double dispersion = 0;      ///< pc/cm^3
    QString noise = "polinom5"; ///< names of PulsarParameters::noise
    QString otherRays;          ///< numbers with commas: rays of the same module in which a
                                ///< difference is looked up
    QString firstDate;          ///< "yyyy-MM-dd" of the first of the days; empty: from the first on
    double byChance = 0.05;     ///< listed differences that noise is expected to have in all days
};

/// What Days::planDays() needs for the same sums.
Days::FourierDaysParameters daysParameters(const CompareParameters &parameters);

using CompareField = Field<CompareParameters>;

struct CompareAnalysis : Analysis<CompareParameters> {
    QString manual;   ///< of the command, in lines of the help
    QString examples; ///< the same
};

/// The one analysis of this kind, with its fields in the order of the help and of headers.
const CompareAnalysis &compareAnalysis();

/// The days of a request and their places on the common axis.
struct ComparePlan {
    Days::DayPlan days;       ///< at most mostDays that can be used; days that share too little of
                              ///< the axis have a reason
    std::vector<int> offsets; ///< of each day: its first point lies at this point of the axis
    double siderealTime = 0;  ///< at the first point of the axis, hours

    int points() const { return days.choice.points; }
    /// Sidereal hours from a point to the next.
    double hoursPerPoint() const;
    /// Sidereal time at a point of the axis, hours, 0 to 24.
    double siderealTimeAt(double point) const;
    /// UTC of a point of the axis on a day, by the recordings' clock.
    QDateTime utcAt(int day, double point) const;
};

/// Finds the days of a set. The axis is the stretch of the first day; a day that shares less than
/// half of it cannot be used.
ComparePlan planCompare(const RecordingSet &set, const CompareParameters &parameters);

/// The point of a recording that stands at a point of the axis.
struct RecordingPoint {
    int recording = 0; ///< index in the set
    int point = 0;
};
RecordingPoint recordingPointOf(const ComparePlan &plan, int day, int point);

/// The parameters as they are used: with the module and ray of the plan.
CompareParameters usedParameters(CompareParameters parameters, const ComparePlan &plan);

/// The numbers of parameters.otherRays without that of the plan's ray.
std::vector<int> otherRaysOf(const CompareParameters &parameters, const ComparePlan &plan);

/// One ray of one day.
struct CompareDay {
    std::vector<float> values; ///< one per point of the axis: the sum of the bands less its base
                               ///< line over its noise; NaN where the stretch does not reach; empty
                               ///< where the day has a problem
    double sigma = 0;          ///< of the sums less their base line
    QString remark;            ///< which samples were no finite numbers
    QString problem;
    bool wasStopped = false;

    bool isWhole() const { return !values.empty(); }
};

/// The rays of one day: that of the plan first, then the other ones in their order.
///
/// @param folder  that keeps series; empty: nothing is kept
std::vector<CompareDay> readDay(const RecordingSet &set, const ComparePlan &plan, int day,
                                const CompareParameters &parameters, const QString &folder,
                                const Jobs::Control &control = {});

/// All that was read of a folder.
struct CompareProducts {
    CompareParameters parameters; ///< as they were used
    ComparePlan plan;
    Days::KeptFolder kept;
    std::vector<std::vector<CompareDay>> rays; ///< the own one first, a product per day

    const std::vector<CompareDay> &days() const { return rays.front(); }
};

/// Bytes that the products of a plan take with their comparison.
qint64 bytesOf(const ComparePlan &plan);

/// A ray that has a difference as well.
struct SharingRay {
    int ray = 0; ///< number
    double snr = 0;
};

struct ListedDifference : Difference {
    std::vector<SharingRay> rays; ///< other rays of 4 sigma and more, of the same sign, there
};

struct Comparison {
    int days = 0;                       ///< that count
    MedianDay own;                      ///< of the ray that was asked for
    double limit = 0;                   ///< S/N of what is listed
    std::vector<ListedDifference> list; ///< strongest first, mostListed at most
    int found = 0;                      ///< listed or not
    QString problem;                    ///< why there are no differences; empty otherwise
};

/// @param counts    of each day: whether it counts
/// @param byChance  see CompareParameters
/// @return nothing at all when stopped
std::shared_ptr<const Comparison> compareDays(const CompareProducts &products,
                                              const std::vector<bool> &counts, double byChance,
                                              const Jobs::Control &control = {});

/// The call of the batch program that computes what the form does, ready for a shell.
///
/// @param daysOff  names of days that do not count
QString compareCommand(const CompareParameters &parameters, const QStringList &daysOff,
                       const QStringList &folders);

} // namespace Compare
