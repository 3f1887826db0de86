#pragma once

#include "calc/dispersionpeak.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

namespace Pulsar {

/// The dispersion at which a harmonic is in step in all bands, told from the harmonic of every band
/// by itself over the stretch from the first point on. The bands are read at the delays of the
/// dispersion that comes out, so that a harmonic between two lines is in step too.
///
/// @param strongest  pc/cm^3, where the search begins
/// @param largest    pc/cm^3, where it ends; it begins at 0
Tools::DispersionPeak findDispersion(const ObservationData &data, const PulsarParameters &given,
                                     int averageCount, double strongest, double largest);

} // namespace Pulsar
