#pragma once

#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace Days {

/// The significance of one trial of a sum of powers, which is slow to compute, at many powers.
class SigmaTable {
public:
    /// @param gammaShape     number of summed exponentials
    /// @param weightsOfDays  none where all are equal
    explicit SigmaTable(double gammaShape, std::vector<double> weightsOfDays = {})
        : shape(gammaShape), weights(std::move(weightsOfDays))
    {
        constexpr int nodes = 512;
        constexpr double sigmas = 15;
        step = (shape + sigmas * std::sqrt(shape) + sigmas) / nodes;
        for (int i = 0; i <= nodes; ++i)
            table.push_back(sigmaOf(std::max(i, 1) * step));
    }

    double at(double power) const
    {
        const double position = power / step;
        if (position >= double(table.size() - 1))
            return sigmaOf(power);
        const auto node = std::size_t(std::max(0.0, position));
        return table[node] + (position - double(node)) * (table[node + 1] - table[node]);
    }

private:
    double sigmaOf(double power) const
    {
        return weights.empty() ? Tools::sigmaOfPower(shape, power)
                               : Tools::sigmaOfTail(Tools::logWeightedTail(weights, 1, power));
    }

    double shape;
    std::vector<double> weights;
    double step = 1;
    std::vector<double> table;
};

} // namespace Days
