#pragma once

#include "calc/pulsar/cutlines.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"
#include "jobs/control.h"

#include <vector>

/// The bands of a sum folded on a period, each read with the delay that the sum gives it: a pulse
/// stands at one phase in all bands where the dispersion is right, and drifts with the frequency
/// where it is not.
struct BandFold {
    double period = 0; ///< s
    int bins = 0;
    std::vector<double> frequencies; ///< MHz, one per band, in the order of the recording
    /// [band][bin]: mean of the samples, less that of the whole band, in sigmas of a sample of the
    /// band; NaN where nothing was folded and in bands without noise, as those left out.
    std::vector<float> values;

    int bands() const { return int(frequencies.size()); }
    /// One band, `bins` values.
    std::vector<float> profile(int band) const
    {
        const auto first = values.begin() + std::ptrdiff_t(band) * bins;
        return {first, first + bins};
    }
};

namespace Pulsar {

/// Folds the bands of the selected module and ray over the points from the first one on, less the
/// base line of each band and what is cut out. Points whose samples lie outside the recording are
/// left out.
///
/// @param data    finite samples; what is left out is constant
/// @param count   points of the sum
/// @param period  s, at least 2 samples
/// @param cut     of the sum: frequencies to take out of every band
/// @return without values when `control` stopped it
BandFold foldBands(const ObservationData &data, const PulsarParameters &selected, int count,
                   double period, int bins, const std::vector<CutBand> &cut,
                   const Jobs::Control &control);

} // namespace Pulsar
