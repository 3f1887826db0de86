#include "calc/fold.h"
#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

// Makes the numbers of src/calc/profilemaxima.h: what the highest bin and the best boxcar of noise
// are, told as the logarithm of the number of independent places that have such a highest one.
//
//     bench_profilemaxima 200000

namespace {

struct Maxima {
    std::vector<double> peaks;
    std::vector<double> boxcars;
};

// Neighbours have the covariance shared / 2, sums of all bins the variance of as many own ones.
Maxima simulate(int bins, double shared, int count)
{
    std::mt19937 random(unsigned(bins * 10 + (shared > 0)));
    std::normal_distribution<double> normal;
    const double difference = std::sqrt(1 - 2 * shared);
    const double own = (1 + difference) / 2;
    const double next = (1 - difference) / 2;
    Tools::FoldedProfile profile;
    const auto size = std::size_t(bins);
    profile.bins.resize(size);
    profile.variances.assign(size, 1 - shared);
    profile.covariances.assign(size, shared / 2);
    std::vector<double> noise(size);
    Maxima maxima;
    for (int n = 0; n < count; ++n) {
        for (double &value : noise)
            value = normal(random);
        for (std::size_t i = 0; i < size; ++i)
            profile.bins[i] = own * noise[i] + next * noise[(i + 1) % size];
        const std::vector<Tools::BoxcarPeak> found = Tools::boxcarPeaks(profile, 1);
        maxima.peaks.push_back(found.front().snr);
        double best = 0;
        for (const Tools::BoxcarPeak &peak : found)
            best = std::max(best, peak.snr);
        maxima.boxcars.push_back(best);
    }
    return maxima;
}

// Line through ln n at shares of the maxima from 70 to 0.02 %, (1 - Q(x))^n = 1 - share.
void print(std::vector<double> maxima)
{
    std::sort(maxima.begin(), maxima.end());
    double weights = 0, x1 = 0, y1 = 0, xx = 0, xy = 0;
    for (double share = 0.7; share > 2e-4; share *= 0.7) {
        const double x = maxima[std::size_t(double(maxima.size()) * (1 - share))];
        const double places = std::log1p(-share) / std::log1p(-std::exp(Tools::logNormalTail(x)));
        const double weight = share;
        weights += weight;
        x1 += weight * (x - 4);
        y1 += weight * std::log(places);
        xx += weight * (x - 4) * (x - 4);
        xy += weight * (x - 4) * std::log(places);
    }
    const double slope = (xy - x1 * y1 / weights) / (xx - x1 * x1 / weights);
    std::printf("{%.3f, %.3f}", (y1 - slope * x1) / weights, slope);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const int count = argumentCount > 1 ? std::atoi(arguments[1]) : 20000;
    const char *const names[2][2] = {{"peaksApart", "boxcarsApart"},
                                     {"peaksSharing", "boxcarsSharing"}};
    for (int sharing = 0; sharing < 2; ++sharing) {
        std::vector<Maxima> all;
        for (int bins = 16; bins <= 1024; bins *= 2)
            all.push_back(simulate(bins, sharing / 3.0, count));
        for (int kind = 0; kind < 2; ++kind) {
            std::printf("constexpr PlacesOfBins %s = {{", names[sharing][kind]);
            for (std::size_t i = 0; i < all.size(); ++i) {
                std::printf(i ? ",\n    " : "\n    ");
                print(kind == 0 ? all[i].peaks : all[i].boxcars);
            }
            std::printf("}};\n");
        }
    }
    return 0;
}
