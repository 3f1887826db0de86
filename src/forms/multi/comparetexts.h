#pragma once

#include "analyses/compare/comparedays.h"
#include "forms/days/stacktexts.h"

/// What the form of compared days says, without widgets.

/// Of the list of days and of the picture.
const StackTexts &compareTexts();

/// How many differences there are above which limit, or why there are none.
QString differencesText(const Compare::Comparison &comparison);

/// What a comparison was made of, in lines.
QString usedText(const Compare::CompareProducts &products, const Compare::Comparison &comparison);

/// Sidereal time, hours, from which on all recordings that begin near the first one have samples,
/// rounded up to a second; and points of the first one before it.
struct SharedStart {
    double siderealTime = 0;
    int pointsBefore = 0;
    bool isKnown = false; ///< false where no recording tells its begin
};
SharedStart sharedStart(const RecordingSet &set, double clockOffset);
