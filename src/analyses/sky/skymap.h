#pragma once

#include "analyses/sky/skyrun.h"

/// Significance over days, of harmonic sums against frequency or of folds against period, and place
/// of the sky, or dispersion.
namespace Sky {

struct MapChoice {
    MapAxis axis = MapAxis::Starts;
    int ray = 0;         ///< index in the plan
    int dispersion = -1; ///< index; of a map over starts; -1: the best of all
    int start = -1;      ///< index; of a map over dispersions; -1: the best of all
};

/// What the parameters choose; a problem where the plan does not hold it.
struct MapChoiceOrProblem {
    MapChoice choice;
    std::vector<FieldProblem> problems;
};
MapChoiceOrProblem mapChoiceOf(const SkyPlan &plan);

struct MapRow {
    QString name;     ///< right ascension, or dispersion
    double value = 0; ///< the same: radians, or pc/cm^3; not a number where unknown
    int days = 0;     ///< fewest of its cells that have any
};

struct SkyMap {
    MapChoice choice;
    /// Row r begins at r x columns; NaN below the lowest line. After the trials of one column, and
    /// of all cells where the best of them is shown.
    std::vector<float> sigma;
    std::vector<std::int32_t> best; ///< index of dispersion or start with that significance
    int columns = 0;
    std::vector<MapRow> rows;
    double first = 0; ///< frequency, Hz, of column 0 and from one to the next
    double step = 1;
    QString axisName; ///< with its unit and, of frequencies, whose they are
    QString problem;  ///< why there is none; empty otherwise

    std::vector<double> axis; ///< of every column where they are not evenly apart; empty otherwise

    double axisAt(double column) const;
};

SkyMap mapOf(const SkyStack &stack, const SkyPlan &plan, const MapChoice &choice);

/// Name of the file of a map; empty where the base line has none: the user has to give one then.
QString mapFileName(const SkyPlan &plan, const SkyMap &map, const QString &name);

} // namespace Sky
