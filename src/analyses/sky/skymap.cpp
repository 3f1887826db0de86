#include "analyses/sky/skymap.h"

#include "base/numbertext.h"
#include "calc/approximation.h"
#include "calc/significance.h"
#include "coords/filenames.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Sky {

namespace {

QString startName(const SkyPlan &plan, const SkyRay &ray, int start)
{
    if (!ray.beam.isKnown() || plan.passages.empty())
        return QString("start %1").arg(start + 1);
    const Passage &passage = plan.passages[plan.passages.size() / 2];
    return Tools::rightAscensionText(plan.directionOf(ray, plan.middleOf(passage, start)).alfa);
}

double startValue(const SkyPlan &plan, const SkyRay &ray, int start)
{
    if (!ray.beam.isKnown() || plan.passages.empty())
        return std::numeric_limits<double>::quiet_NaN();
    const Passage &passage = plan.passages[plan.passages.size() / 2];
    return plan.directionOf(ray, plan.middleOf(passage, start)).alfa;
}

class Mapper {
public:
    Mapper(const SkyStack &skyStack, const SkyPlan &skyPlan, const MapChoice &choice)
        : stack(skyStack), plan(skyPlan), method(methodOf(skyPlan.product))
    {
        map.choice = choice;
        map.axisName = method.axisName(plan);
    }

    SkyMap make()
    {
        const bool overStarts = map.choice.axis == MapAxis::Starts;
        const int rows = overStarts ? plan.starts : int(plan.dispersions.size());
        const int chosen = overStarts ? map.choice.dispersion : map.choice.start;
        const int others = overStarts ? int(plan.dispersions.size()) : plan.starts;
        for (int row = 0; row < rows; ++row) {
            addRow(row);
            for (int other = 0; other < others; ++other) {
                if (chosen < 0 || other == chosen)
                    addCell(row, other);
            }
        }
        if (chosen < 0)
            countTrials(others);
        findAxis();
        const bool hasDay = std::any_of(map.rows.begin(), map.rows.end(),
                                        [](const MapRow &row) { return row.days > 0; });
        if (!hasDay)
            map.problem = "No day was added to any stack of this map.";
        return std::move(map);
    }

private:
    void findAxis()
    {
        for (int column = 0; plan.trials && column < map.columns; ++column)
            map.axis.push_back(method.axisAt(plan, column));
        if (plan.trials)
            return;
        const double positions = stack.shape().positions;
        map.first = method.axisAt(plan, 0);
        map.step = method.axisAt(plan, positions / std::max(1, map.columns)) - map.first;
    }

    void addRow(int row)
    {
        const SkyRay &ray = plan.rays[std::size_t(map.choice.ray)];
        if (map.choice.axis == MapAxis::Starts)
            map.rows.push_back({startName(plan, ray, row), startValue(plan, ray, row), 0});
        else
            map.rows.push_back({exactText(plan.dispersions[std::size_t(row)]),
                                plan.dispersions[std::size_t(row)], 0});
    }

    void addCell(int row, int other)
    {
        const bool overStarts = map.choice.axis == MapAxis::Starts;
        const int dispersion = overStarts ? other : row;
        const int start = overStarts ? row : other;
        const std::vector<float> sigmas =
            method.significance(stack.cell(map.choice.ray, dispersion, start), plan);
        if (map.columns == 0) {
            map.columns = int(sigmas.size());
            const std::size_t all = map.rows.size();
            map.sigma.assign(all * sigmas.size(), std::numeric_limits<float>::quiet_NaN());
            map.best.assign(map.sigma.size(), other);
        }
        const std::size_t first = std::size_t(row) * sigmas.size();
        map.sigma.resize(std::max(map.sigma.size(), first + sigmas.size()),
                         std::numeric_limits<float>::quiet_NaN());
        map.best.resize(map.sigma.size(), other);
        for (std::size_t i = 0; i < sigmas.size(); ++i) {
            float &most = map.sigma[first + i];
            if (std::isnan(sigmas[i]) || sigmas[i] <= most)
                continue;
            most = sigmas[i];
            map.best[first + i] = other;
        }
        MapRow &told = map.rows.back();
        const int days = stack.days(map.choice.ray, start);
        if (days > 0)
            told.days = told.days == 0 ? days : std::min(told.days, days);
    }

    // The best of many cells is high in noise too.
    void countTrials(int cells)
    {
        for (float &sigma : map.sigma) {
            if (!std::isnan(sigma))
                sigma = float(
                    Tools::sigmaOfTail(Tools::logTailOfTrials(Tools::logNormalTail(sigma), cells)));
        }
    }

    const SkyStack &stack;
    const SkyPlan &plan;
    const SkyMethod &method;
    SkyMap map;
};

} // namespace

double SkyMap::axisAt(double column) const
{
    if (axis.empty())
        return first + column * step;
    const double last = double(axis.size()) - 1;
    return axis[std::size_t(std::clamp(std::round(column), 0.0, last))];
}

MapChoiceOrProblem mapChoiceOf(const SkyPlan &plan)
{
    MapChoiceOrProblem made;
    const SkyParameters &parameters = plan.parameters;
    MapChoice &choice = made.choice;
    choice.axis = parameters.over == "dms" ? MapAxis::Dispersions : MapAxis::Starts;
    const auto isWanted = [&parameters](const SkyRay &ray) {
        return (parameters.mapModule == 0 || ray.module == parameters.mapModule) &&
               (parameters.mapRay == 0 || ray.ray == parameters.mapRay);
    };
    const auto ray = std::find_if(plan.rays.begin(), plan.rays.end(), isWanted);
    if (ray == plan.rays.end())
        made.problems.push_back({"mapRay", QString("Module %1, ray %2 is not among those that are "
                                                   "added up.")
                                               .arg(parameters.mapModule)
                                               .arg(parameters.mapRay)});
    choice.ray = int(ray - plan.rays.begin());
    if (parameters.mapDispersion >= 0) {
        const auto nearest = std::min_element(plan.dispersions.begin(), plan.dispersions.end(),
                                              [&](double a, double b) {
                                                  return std::abs(a - parameters.mapDispersion) <
                                                         std::abs(b - parameters.mapDispersion);
                                              });
        choice.dispersion = int(nearest - plan.dispersions.begin());
    }
    if (parameters.mapStart > plan.starts)
        made.problems.push_back(
            {"mapStart", QString("There are %1 stretches only.").arg(plan.starts)});
    choice.start = parameters.mapStart - 1;
    return made;
}

SkyMap mapOf(const SkyStack &stack, const SkyPlan &plan, const MapChoice &choice)
{
    return Mapper(stack, plan, choice).make();
}

QString mapFileName(const SkyPlan &plan, const SkyMap &map, const QString &name)
{
    const QString &noise = plan.parameters.noise;
    return Tools::harmonicMapFileName(
        name, plan.parameters.points, map.columns, int(map.rows.size()),
        noise == "polinom5" ? QString("polinom") : noise, baselineMedianBlock);
}

} // namespace Sky
