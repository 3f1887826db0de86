#pragma once

#include "calc/problems.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

/// What actions accept: each check looks at the header of a recording and at the parameters, never
/// at a sample, and returns what is wrong; an empty list where nothing is. What cannot be judged
/// before another parameter is right is left out. The checks of single actions are in actions.h.
namespace Pulsar {

/// Module, channel, ray and first point of an action that works on one channel.
Problems checkChannel(const ObservationData &header, const PulsarParameters &given);

/// Module, ray, bands, sampling interval and first point of a sum of so many points.
///
/// @param dispersion  the largest one, for the text that names the allowed first points
Problems checkSelection(const ObservationData &header, const PulsarParameters &given, int points,
                        double dispersion);

/// One dispersion, pc/cm^3.
///
/// @param field  that holds it
Problems checkDispersion(const ObservationData &header, double dispersion,
                         const QString &field = "dispersion");

/// A sum of so many points at the typed dispersion.
Problems checkSumOf(int points, const ObservationData &header, const PulsarParameters &given);
/// The same of Pulsar::fixedPoints.
Problems checkFixedSum(const ObservationData &header, const PulsarParameters &given);

/// Whether the averaged sum is long enough for a spectrum.
Problems checkSpectrum(const PulsarParameters &given);

/// Points of the spectrum that the parameters ask for.
int spectrumLength(const PulsarParameters &given);

} // namespace Pulsar
