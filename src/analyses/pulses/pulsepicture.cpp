#include "analyses/pulses/pulsepicture.h"

#include "calc/banddelays.h"
#include "calc/waterfall.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Pulses {

namespace {

constexpr int mostColumns = 400;
constexpr int widthsBeside = 15; // of the pulse, shown to either side
constexpr int fewestBeside = 40; // points
constexpr int dispersionRows = 61;

// A stretch of points that lies within the record.
struct Stretch {
    int first = 0;
    int count = 0;

    static Stretch around(double from, double to, int npoints)
    {
        const int first = int(std::clamp(std::floor(from), 0.0, npoints - 1.0));
        const int end = int(std::clamp(std::ceil(to), first + 1.0, double(npoints)));
        return {first, end - first};
    }
};

class Pictures {
public:
    Pictures(const PreparedRay &ray, const PulsePlan &plan, const Pulse &pulse)
        : data(ray.data), bands(data.channels - 1), centre(pulse.point.value - data.point),
          dispersion(std::isfinite(pulse.dispersion.value) ? pulse.dispersion.value
                                                           : plan.dispersions.front()),
          beside(std::max(fewestBeside, widthsBeside * pulse.width)), order(std::size_t(bands))
    {
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [this](int a, int b) {
            return data.fbands[std::size_t(a)] < data.fbands[std::size_t(b)];
        });
    }

    PulsePicture make(const PulsePlan &plan, const Pulse &pulse) const
    {
        PulsePicture made;
        const Tools::BandDelays delays(data, bands, dispersion, Tools::ShiftRounding::Nearest);
        made.dispersed =
            ofBands(Stretch::around(centre - delays.longestEarlier() - beside,
                                    centre + delays.longestLater() + beside, data.npoints),
                    0);
        for (const int band : order)
            made.arrival.push_back(delays.delay(band) * data.tresolution);
        const Stretch near = nearPulse();
        made.dedispersed = ofBands(near, dispersion);
        for (const float value : sumOf(near, dispersion))
            made.profile.push_back(value);
        made.channels = channelsOf(pulse);
        if (plan.isDispersionKnown)
            made.overTime = ofDispersions(near);
        return made;
    }

private:
    Stretch nearPulse() const
    {
        return Stretch::around(centre - beside, centre + beside, data.npoints);
    }

    int columnsOf(const Stretch &stretch) const { return std::min(stretch.count, mostColumns); }

    // Means of the bands in the order of the file, in units of their noise.
    std::vector<float> meansOf(const Stretch &stretch, int columns, double shiftedBy) const
    {
        std::vector<float> means =
            Tools::waterfall(data, {0, 0, stretch.first, stretch.count, columns, shiftedBy});
        const auto root = float(std::sqrt(double(stretch.count) / columns));
        for (float &value : means)
            value *= root;
        return means;
    }

    PulseRows rowsOver(const Stretch &stretch) const
    {
        PulseRows made;
        made.columns = columnsOf(stretch);
        made.firstTime = (stretch.first - 0.5 - centre) * data.tresolution;
        made.timeStep = data.tresolution * stretch.count / made.columns;
        return made;
    }

    PulseRows ofBands(const Stretch &stretch, double shiftedBy) const
    {
        PulseRows made = rowsOver(stretch);
        const std::vector<float> means = meansOf(stretch, made.columns, shiftedBy);
        if (means.empty())
            return {};
        for (const int band : order) {
            const auto row = means.begin() + std::ptrdiff_t(band) * made.columns;
            made.values.insert(made.values.end(), row, row + made.columns);
            made.rows.push_back(data.fbands[std::size_t(band)]);
        }
        return made;
    }

    // The sum of the bands, in units of its noise.
    std::vector<float> sumOf(const Stretch &stretch, double shiftedBy) const
    {
        const int columns = columnsOf(stretch);
        const std::vector<float> means = meansOf(stretch, columns, shiftedBy);
        std::vector<float> sums(means.empty() ? 0 : std::size_t(columns));
        const auto root = float(std::sqrt(double(bands)));
        for (std::size_t i = 0; i < means.size(); ++i) {
            if (std::isfinite(means[i]))
                sums[i % std::size_t(columns)] += means[i] / root;
        }
        return sums;
    }

    // As far to either side as a pulse of another dispersion drifts through the stretch.
    PulseRows ofDispersions(const Stretch &stretch) const
    {
        PulseRows made = rowsOver(stretch);
        const Tools::BandDelays unit(data, bands, 1, Tools::ShiftRounding::Nearest);
        double perUnit = 0; // points over the band
        for (int band = 0; band < bands; ++band)
            perUnit = std::max(perUnit, std::abs(unit.delay(band)));
        if (!(perUnit > 0))
            return {};
        const double first = std::max(0.0, dispersion - beside / perUnit);
        const double last = dispersion + beside / perUnit;
        for (int row = 0; row < dispersionRows; ++row) {
            const double trial = first + (last - first) * row / (dispersionRows - 1);
            const std::vector<float> sums = sumOf(stretch, trial);
            if (sums.empty())
                return {};
            made.values.insert(made.values.end(), sums.begin(), sums.end());
            made.rows.push_back(trial);
        }
        return made;
    }

    std::vector<double> channelsOf(const Pulse &pulse) const
    {
        const Stretch boxcar =
            Stretch::around(pulse.firstPoint - data.point,
                            pulse.firstPoint - data.point + pulse.width, data.npoints);
        const std::vector<float> means = meansOf(boxcar, 1, dispersion);
        std::vector<double> channels;
        for (const int band : order)
            channels.push_back(means.empty() ? 0 : double(means[std::size_t(band)]));
        return channels;
    }

    const ObservationData &data;
    int bands;
    double centre; // index within the record
    double dispersion;
    double beside;          // points
    std::vector<int> order; // bands, the lowest frequency first
};

} // namespace

PulsePicture pictureOf(const PreparedRay &ray, const PulsePlan &plan, const Pulse &pulse)
{
    PulsePicture made = Pictures(ray, plan, pulse).make(plan, pulse);
    if (plan.isDispersionKnown)
        made.curve = dispersionCurve(ray, plan, pulse);
    return made;
}

} // namespace Pulses
