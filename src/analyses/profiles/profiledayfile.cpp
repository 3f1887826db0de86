#include "analyses/days/dayseriesfile.h"
#include "analyses/days/daysums.h"
#include "analyses/profiles/profileday.h"
#include "base/numbertext.h"
#include "calc/pulsar/bandsum.h"

#include <algorithm>
#include <cmath>

// The product of a day as a kept file: the values, behind them what else was found.

namespace Profiles {

namespace {

constexpr int numbersBehind = 6; // beside one for each band

Days::ProductKind kindOf(const ProfileDay &day, const Folding &folding, int points)
{
    Days::ProductKind kind;
    kind.title = "profile: folded sub-integrations of bands 1 to " +
                 QByteArray::number(Pulsar::sumBands) + ", form 2";
    kind.extension = "profile";
    kind.values = day.parts() * Pulsar::sumBands * day.bins + Pulsar::sumBands + numbersBehind;
    kind.lines = "stretch: " + QByteArray::number(points) + "\nnoise: " + folding.noise.toUtf8() +
                 "\nlevel_jumps: " + (folding.removesJumps ? "removed" : "kept") +
                 "\nbins: " + QByteArray::number(day.bins) + "\nturns:";
    for (const double turn : day.phase.turns)
        kind.lines += " " + exactText(turn).toUtf8();
    kind.lines += "\n";
    return kind;
}

std::vector<float> packed(const ProfileDay &day)
{
    std::vector<float> numbers = day.values;
    for (const bool isUsed : day.used)
        numbers.push_back(isUsed ? 1 : 0);
    for (const double number : {day.noise.sigma, day.noise.shared, day.unit, day.chiSquared.reduced,
                                double(day.chiSquared.degrees), day.chiSquared.sigma})
        numbers.push_back(float(number));
    return numbers;
}

void unpack(const std::vector<float> &numbers, ProfileDay &day)
{
    const std::size_t values = numbers.size() - Pulsar::sumBands - numbersBehind;
    day.values.assign(numbers.begin(), numbers.begin() + std::ptrdiff_t(values));
    for (std::size_t band = 0; band < Pulsar::sumBands; ++band)
        day.used.push_back(numbers[values + band] > 0);
    const float *const behind = &numbers[values + Pulsar::sumBands];
    day.noise = {double(behind[0]), double(behind[1])};
    day.unit = double(behind[2]);
    day.chiSquared = {double(behind[3]), int(behind[4]), double(behind[5])};
}

// Where a day stands, before its samples are looked at.
ProfileDay placed(const Days::DayPlan &plan, const Days::Day &day, const Folding &folding,
                  const Ephemeris &ephemeris)
{
    ProfileDay made;
    made.begin = day.begin;
    made.utc = day.begin.addMSecs(qint64(std::llround(-1000 * plan.choice.start.clockOffset)));
    made.dispersion = folding.dispersion;
    made.bins = folding.bins;
    made.seconds = plan.choice.points * plan.list.tresolution;
    made.direction = Days::directionOf(plan, day.begin);
    made.problem = day.reason;
    made.phase = phaseOfDay(ephemeris, made.utc, made.seconds, made.direction,
                            partsOf(made.seconds * ephemeris.frequency));
    const std::vector<double> &bands = plan.list.fbands;
    made.frequencies.assign(
        bands.begin(),
        bands.begin() + std::min<std::ptrdiff_t>(Pulsar::sumBands, std::ptrdiff_t(bands.size())));
    return made;
}

// The samples of a day folded.
ProfileDay foldedOf(const RecordingSet &set, const Days::DayPlan &plan, const Days::Day &day,
                    const Days::SeriesRequest &request, const Folding &folding,
                    const DayPhase &phase, const Jobs::Control &control)
{
    const Days::FiniteDay finite = Days::finiteSamplesOfDay(set, day, request, control);
    if (!finite.isWhole) {
        ProfileDay none;
        none.problem = finite.problem;
        none.wasStopped = finite.wasStopped;
        return none;
    }
    ProfileDay made = foldDay(finite.data, day.before, plan.choice.points, folding, phase, control);
    if (!made.problem.isEmpty())
        made.problem = finite.data.filePath + ": " + made.problem;
    made.remark = finite.remark;
    return made;
}

} // namespace

ProfileDay profileOfDay(const RecordingSet &set, const Days::DayPlan &plan, const Days::Day &day,
                        const Folding &folding, const Ephemeris &ephemeris, const QString &folder,
                        const Jobs::Control &control)
{
    ProfileDay made = placed(plan, day, folding, ephemeris);
    if (!made.problem.isEmpty())
        return made;
    const Days::SeriesRequest request = {plan.choice.module, plan.choice.ray, folding.dispersion};
    Days::KeptSeries file;
    if (!folder.isEmpty()) {
        file = Days::keptProductOf(set, day, request, kindOf(made, folding, plan.choice.points),
                                   folder);
        Days::DaySeries kept;
        if (Days::readKept(file, kept)) {
            unpack(kept.sums, made);
            made.remark = kept.remark;
            return made;
        }
    }
    const ProfileDay folded = foldedOf(set, plan, day, request, folding, made.phase, control);
    made.values = folded.values;
    made.used = folded.used;
    made.noise = folded.noise;
    made.unit = folded.unit;
    made.chiSquared = folded.chiSquared;
    made.remark = folded.remark;
    made.problem = folded.problem;
    made.wasStopped = folded.wasStopped;
    if (made.isWhole()) {
        // As the file gives it back, so that a kept day and a new one give the same.
        Days::DaySeries numbers;
        numbers.sums = packed(made);
        numbers.remark = made.remark;
        made.used.clear();
        unpack(numbers.sums, made);
        if (!folder.isEmpty())
            Days::keep(file, numbers);
    }
    return made;
}

} // namespace Profiles
