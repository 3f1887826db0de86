#include "simulator/arrivals.h"

#include "coords/barycentre.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr double knotDistance = 256; // s

// The barycentric delay between two times, by cubic pieces through exact delays and velocities.
// The Earth's turning bends it most; the pieces keep to 1e-8 s.
class DelayCurve {
public:
    DelayCurve(const Tools::SkyPosition &position, const QDateTime &begin, double from, double to)
        : first(std::floor(from))
    {
        const int pieces = std::max(1, int(std::ceil((to - first) / knotDistance)));
        for (int i = 0; i <= pieces; ++i) {
            const double time = first + i * knotDistance;
            knots.push_back(Tools::barycentricView(
                Tools::ownSite(), begin.addMSecs(std::llround(time * 1000)), position));
        }
    }

    double at(double time) const
    {
        const double place = (time - first) / knotDistance;
        const int piece = std::clamp(int(place), 0, int(knots.size()) - 2);
        const Tools::BarycentricView &a = knots[std::size_t(piece)];
        const Tools::BarycentricView &b = knots[std::size_t(piece) + 1];
        const double u = place - piece;
        const double v = 1 - u;
        return v * v * (1 + 2 * u) * a.delay + u * u * (1 + 2 * v) * b.delay +
               u * v * knotDistance * (v * a.velocity - u * b.velocity);
    }

private:
    const double first;
    std::vector<Tools::BarycentricView> knots;
};

} // namespace

std::vector<double> arrivals(const Tools::SkyPosition &position, double period, double phase,
                             const QDate &date, const QDateTime &begin, double from, double to)
{
    constexpr double grid = 1 << 20; // per s
    // The delay moves a time by 1e-4 of what it is wrong by.
    constexpr int passes = 5;

    const DelayCurve delay(position, begin, from, to);
    const double untilBegin =
        double(QDateTime(date, QTime(0, 0), Qt::UTC).msecsTo(begin)) / 1000; // s
    const auto barycentric = [&](double time) { return untilBegin + time + delay.at(time); };

    std::vector<double> times;
    double time = from;
    const double last = std::floor(barycentric(to) / period - phase);
    for (double pulse = std::ceil(barycentric(from) / period - phase); pulse <= last; ++pulse) {
        const double wanted = (pulse + phase) * period;
        for (int pass = 0; pass < passes; ++pass)
            time += wanted - barycentric(time);
        times.push_back(std::floor(time * grid + 0.5) / grid);
    }
    return times;
}

} // namespace Simulator
