#pragma once

#include "picture/plotdata.h"
#include "results/arrayfile.h"

#include <QString>
#include <memory>
#include <vector>

/// Curves of text files as a plot, and their statistics, without widgets.
namespace ArrayPlot {

/// One curve with its place among all that could be shown, which gives it its colour.
struct Series {
    QString name;
    int index = 0;
    std::vector<double> values;
};

/// Points of every curve, from an index on.
struct IndexRange {
    int first = 0;
    int count = 0;
};

/// The whole points from one index with fraction to another, within 0 .. length; at least the
/// nearest one where there is any.
IndexRange pointsBetween(double first, double last, int length);

/// Length of the longest curve.
int longest(const std::vector<Series> &series);

/// A number with the digits that a reader needs.
QString numberText(double value);

/// The values at the indices.
std::vector<double> part(const std::vector<double> &values, const IndexRange &indices);

/// The curves; the vertical range fits their finite values.
PlotData plot(const std::vector<Series> &series,
              const std::shared_ptr<const Results::ArrayAxis> &x);

/// How often values occur, a curve for each of the series, over parts of equal width of the
/// range of all.
PlotData histogramPlot(const std::vector<Series> &series, const IndexRange &indices, int bins);

} // namespace ArrayPlot
