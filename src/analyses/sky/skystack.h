#pragma once

#include "base/wholefile.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <vector>

/// The stacks of all cells. They are all that is kept of the days.
///
/// Sums are whole numbers: a value is rounded to 1 / 256 and added as an integer, whose sums do not
/// depend on the order. So any number of threads and jobs, killed and resumed as often as it
/// happens, give the same bytes. The rounding adds a hundred-thousandth to the variance of noise.
///
/// Every cell has five sums. Four of them divide the days by the hour of the Sun, a quarter of a
/// day each: a signal of the sky is in all of them. The fifth adds values cut off at a height that
/// one day in twenty exceeds: what a few days bring is not in it, whatever their strength.
namespace Sky {

inline constexpr int sunQuarters = 4;
inline constexpr int layers = sunQuarters + 1;
inline constexpr double valueUnit = 1.0 / 256;
inline constexpr double mostValue = 2048; ///< of one day; stronger ones count as that
/// Days of a cell whose sum fits, whatever their values are.
inline constexpr int mostDays =
    std::numeric_limits<std::int32_t>::max() / std::int32_t(mostValue / valueUnit);

struct StackShape {
    int rays = 0;
    int dispersions = 0;
    int starts = 0;
    int positions = 0; ///< values of a cell

    qint64 cells() const { return qint64(rays) * dispersions * starts; }
    qint64 bytes() const; ///< of all sums; -1 beyond 63 bits
    bool operator==(const StackShape &other) const = default;
};

/// One cell, summed.
struct CellStack {
    std::vector<double> sums;    ///< of all days
    std::vector<double> clipped; ///< the same of values that were cut off
    int days = 0;
    double ratio = 1; ///< mean of frequency at the telescope over the one at the barycentre
};

/// What was added of one passage. A passage whose work was stopped half way is taken up there.
struct Added {
    QByteArray state;        ///< of Passage
    std::vector<bool> units; ///< ray x dispersions + dispersion; empty: all of them
    bool isWhole() const { return units.empty(); }
};

class SkyStack {
public:
    SkyStack() = default;
    /// @param request  stands for all that the sums depend on but the days
    /// @param shape    of bytes() above 0
    SkyStack(const QByteArray &request, const StackShape &shape);

    const StackShape &shape() const { return form; }
    const QByteArray &request() const { return asked; }

    /// Adds a day to a cell. Several threads may do so at once for different cells.
    ///
    /// @param values  as many as the cell has positions
    /// @return values above mostValue, which count as that
    int add(int ray, int dispersion, int start, int quarter, const std::vector<float> &values,
            double clip);
    /// Counts a day, one of mostDays, for all dispersions of a ray and start.
    void count(int ray, int start, int quarter, double ratio);
    CellStack cell(int ray, int dispersion, int start) const;
    /// The sum of the days of a quarter of the Sun's day.
    CellStack quarterOf(int ray, int dispersion, int start, int quarter) const;
    int days(int ray, int start) const;
    /// Mean of frequency at the telescope over the one at the barycentre; NaN where unknown.
    double ratio(int ray, int start) const;

    /// By name of the passage.
    std::map<QString, Added> added;
    /// Mains hum that was seen: ends of its base frequency in thousandths of a Hz.
    std::set<std::pair<int, int>> hum;
    qint64 cutOff = 0; ///< values above mostValue

    /// Adds the sums of another part of the days.
    ///
    /// @return false, and nothing is changed, for another request or a passage that both hold
    bool merge(const SkyStack &other);

    WriteFailure write(const QString &path) const;

private:
    friend struct StackReading;
    std::size_t index(int layer, int ray, int dispersion, int start) const;
    std::size_t rayStart(int ray, int start) const;
    std::size_t countIndex(int quarter, int ray, int start) const;

    QByteArray asked;
    StackShape form;
    std::vector<std::int32_t> sums;   // layer, ray, dispersion, start, position
    std::vector<std::int32_t> counts; // quarter, ray, start
    std::vector<std::int64_t> ratios; // ray, start: sum over the days
};

/// A stack that was written.
struct StackReading {
    SkyStack stack;
    QString problem; ///< which file and what is wrong with it; empty: it can be used

    /// @param request, shape  it must have
    /// @param withSums        without them only what was added is read
    static StackReading of(const QString &path, const QByteArray &request, const StackShape &shape,
                           bool withSums = true);
};

} // namespace Sky
