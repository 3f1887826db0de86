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

/// Bytes of the periodogram of one day.
qint64 periodogramBytes(const FfaParameters &ffa, int points, double tsamp);

} // namespace Days
