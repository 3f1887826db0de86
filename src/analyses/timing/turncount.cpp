#include "analyses/timing/turncount.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Timing {

using Tools::CountedTime;
using Tools::TurnFit;

namespace {

constexpr double sure = 0.001; // probability below which a test decides

struct Fitted {
    TurnFit fit;
    bool hasDerivative = false;
    double chance = 1;
};

// The straight fit, or that with a change where it is sure.
Fitted bestFit(const std::vector<CountedTime> &times)
{
    Fitted best = {Tools::fitTurns(times, false)};
    const TurnFit rich = Tools::fitTurns(times, true);
    best.chance = Tools::probabilityOfFall(best.fit, rich);
    if (best.chance < sure) {
        best.fit = rich;
        best.hasDerivative = true;
    }
    return best;
}

struct Middle {
    double time = 0;
    double turn = 0;
};

Middle middleOf(const std::vector<CountedTime> &times, int cluster)
{
    Middle middle;
    int count = 0;
    for (const CountedTime &time : times) {
        if (time.cluster != cluster)
            continue;
        middle.time += time.time;
        middle.turn += double(time.turn);
        ++count;
    }
    return {middle.time / count, middle.turn / count};
}

// The later cluster takes the turns of the earlier one, and those behind it move up.
std::vector<CountedTime> joined(std::vector<CountedTime> times, int earlier, double period)
{
    const Middle from = middleOf(times, earlier);
    const Middle to = middleOf(times, earlier + 1);
    const qint64 shift = std::llround((to.time - from.time) / period - (to.turn - from.turn));
    for (CountedTime &time : times) {
        if (time.cluster == earlier + 1)
            time.turn += shift;
        if (time.cluster > earlier)
            --time.cluster;
    }
    return times;
}

class Connector {
public:
    Connector(std::vector<CountedTime> counted, const QStringList &groupNames)
        : times(std::move(counted)), names(groupNames), refused(names.size())
    {
        best = bestFit(times);
    }

    TurnCount connect()
    {
        while (clusters() > 1 && connectNearest()) {
        }
        TurnCount count = {times, best.fit, best.hasDerivative, best.chance, clusters(), {}};
        for (int i = 0; i + 1 < clusters(); ++i)
            count.remarks << refused[i];
        return count;
    }

private:
    int clusters() const { return names.size(); }

    double gapAfter(int cluster) const
    {
        return middleOf(times, cluster + 1).time - middleOf(times, cluster).time;
    }

    // False where no two neighbours can be connected.
    bool connectNearest()
    {
        std::vector<int> order;
        for (int i = 0; i + 1 < clusters(); ++i)
            order.push_back(i);
        std::sort(order.begin(), order.end(),
                  [this](int a, int b) { return gapAfter(a) < gapAfter(b); });
        for (const int cluster : order) {
            refused[cluster] = refusalOf(cluster);
            if (refused[cluster].isEmpty() && tryToJoin(cluster))
                return true;
        }
        return false;
    }

    QString refusalOf(int cluster) const
    {
        const QString who = names[cluster] + " and " + names[cluster + 1] + " are not connected: ";
        if (best.fit.freedom < 1)
            return who + "the times do not tell the error of the period.";
        const double turns = gapAfter(cluster) / best.fit.period;
        const double drift = best.fit.error * turns / best.fit.period;
        // With few degrees of freedom the rare errors are many times the usual ones.
        constexpr double nearlyAll = 0.999;
        constexpr double usual = 0.682689;
        const double rare = drift * Tools::studentFactor(nearlyAll, best.fit.freedom) /
                            Tools::studentFactor(usual, best.fit.freedom);
        if (drift < mostDrift && rare < 0.5)
            return {};
        return who + QString("over the %1 turns between them the error of the period grows to %2 "
                             "turns%3.")
                         .arg(turns, 0, 'f', 0)
                         .arg(drift, 0, 'g', 2)
                         .arg(drift < mostDrift ? ", and so few times tell it badly" : "");
    }

    bool tryToJoin(int cluster)
    {
        const std::vector<CountedTime> all = joined(times, cluster, best.fit.period);
        const Fitted fitted = bestFit(all);
        const double chance = Tools::probabilityOfFall(
            fitted.fit,
            fitted.hasDerivative ? Tools::fitTurns(times, true) : Tools::fitTurns(times, false));
        if (chance < sure) {
            refused[cluster] = names[cluster] + " and " + names[cluster + 1] +
                               " are not connected: their phases do not fit one period.";
            return false;
        }
        times = all;
        best = fitted;
        names[cluster] =
            names[cluster].section(" to ", 0, 0) + " to " + names[cluster + 1].section(" to ", -1);
        names.removeAt(cluster + 1);
        refused.erase(refused.begin() + cluster);
        return true;
    }

    std::vector<CountedTime> times;
    QStringList names;
    std::vector<QString> refused; // why a cluster stays apart from the next one
    Fitted best;
};

} // namespace

TurnCount connectedTurns(const Tools::TimeGroups &groups, const std::vector<qint64> &turns,
                         const std::vector<double> &errors, const QStringList &names)
{
    std::vector<CountedTime> times;
    for (std::size_t group = 0; group < groups.size(); ++group) {
        for (const double time : groups[group]) {
            const std::size_t at = times.size();
            times.push_back({time, turns[at], int(group), errors[at]});
        }
    }
    return Connector(std::move(times), names).connect();
}

} // namespace Timing
