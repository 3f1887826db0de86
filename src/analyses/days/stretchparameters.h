#pragma once

#include "analyses/days/dayplace.h"
#include "calc/ffasearch.h"

namespace Days {

/// How the stretches of a place become spectra or folds, for stacks as for maps and searches.
struct StretchParameters : DayPlace {
    QString noise = "polinom5"; ///< names of PulsarParameters::noise
    int averageCount = 0;
    int window = 257;        ///< bins, odd, whose median is the noise around a line
    int harmonics = 16;      ///< most that are summed: 1, 2, 4, 8 or 16
    bool earthMotion = true; ///< turn frequencies to the barycentre
    bool isFfa = false;      ///< fold in place of spectra
    /// Parameters of the folds; what is 0 suits the stretches: see ffaOfDays().
    FfaParameters ffa = {.period_min = 0, .period_max = 0, .rmed_width = 0};
};

/// Everything that is wrong with them, but for the place.
std::vector<FieldProblem> problemsOfSpectrum(const StretchParameters &parameters);

} // namespace Days
