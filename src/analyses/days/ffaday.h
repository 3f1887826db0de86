#pragma once

#include "analyses/days/fourierday.h"
#include "calc/ffasearch.h"

/// The periodogram of one day: what stacks of the FFA are made of.
namespace Days {

/// The spectrum of fourierOfDay(), which judges the day, and its periodogram: the series less its
/// base line and its running median, as in the FFA form, is searched, and the S/N of each width
/// standardised over the trials.
FourierDay ffaOfDay(const DayStretch &stretch, const FourierDaysParameters &parameters,
                    const Jobs::Control &control = {});

/// The trials of a search, made once for all stretches: finding them takes longer than the search
/// of one. From any thread.
std::shared_ptr<const FfaTrials> sharedTrials(const FfaParameters &ffa, int points, double tsamp);

/// The S/N of a series, of standardisedTrials(); none, and the problem, where it cannot be
/// searched.
///
/// @param series  less its base line
std::vector<float> searchedTrials(std::vector<double> series, const FfaTrials &trials,
                                  QString &problem, const Jobs::Control &control = {});

/// Bytes of the periodogram of one day.
qint64 periodogramBytes(const FfaParameters &ffa, int points, double tsamp);

} // namespace Days
