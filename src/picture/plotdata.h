#pragma once

#include "picture/zoom.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include <vector>

/// What the point index of a plot stands for: a time, a frequency, a period.
struct PlotAxis {
    QString name;               ///< "time", "frequency"; empty: the index itself
    QString unit;               ///< "s", "Hz"
    double first = 0;           ///< value of the point at index 0
    double step = 1;            ///< from one point to the next
    std::vector<double> values; ///< one per point where they are not equally spaced
};

/// How a marker looks besides its colour.
struct MarkerStyle {
    QString name;            ///< stands above its line
    std::vector<int> dashes; ///< pixels drawn and left out in turn, from above; none: a whole line
};

/// Everything a plot shows: equally spaced curves against their point index, up to three rows
/// of texts along the X axis, markers, the vertical range, or a message instead of all that.
struct PlotData {
    std::vector<std::vector<float>> graphs;      ///< sample i of a curve stands at X index i
    std::vector<std::vector<float>> multiGraphs; ///< drawn under graphs; when there are any, the
                                                 ///< vertical range comes from them alone
    QVector<QString> colours;  ///< names, one per curve of either set; missing: plotColours()
    std::vector<bool> visible; ///< one per curve of either set; missing: drawn

    QVector<QString> labelsX1; ///< lowest row, one text per point; empty: the point's number
    QVector<QString> labelsX2; ///< middle row, one text per point; empty: no row
    QVector<QString> labelsX3; ///< upper row, one text per point; empty: no row
    /// Makes the text of a point when it is painted, for a row whose labels above are empty.
    std::function<QString(int index)> textX1, textX2, textX3;
    int labelEvery1 = 1; ///< spacing of the texts, in 150 pixels; below 1 counts as 1
    int labelEvery2 = 1;
    int labelEvery3 = 1;
    QStringList rowNames;     ///< of the rows, lowest first: "point", "UTC", "sidereal"
    std::vector<int> markers; ///< point indices with a vertical line; any marker hides the grid
    std::vector<MarkerStyle> markerStyles; ///< one per marker; missing: a whole line, no name

    std::vector<Plot::Range> leftOut; ///< indices that do not count, shaded

    int numPoints = 100; ///< X positions across the plot; 0: the length of the longest curve
    double yMax = 100.0;
    double yMin = 0.0;
    bool isLogarithmic = false; ///< Y is shown by its logarithm, from yLeast on
    double yLeast = 0;          ///< smallest value that a logarithmic Y shows; 0: yMax / 1e5
    int yPrecision = 3;         ///< decimals of the Y labels
    int xOffset = 0;            ///< number, in the recording, of the point at index 0
    /// The index as points of the recording, for tables: that of index 0, and from one index to
    /// the next. A step of 0: the index is no point.
    double firstPoint = 0;
    double pointStep = 0;
    /// X positions that exist, where the curves are a part of more; empty: they are all.
    Plot::Range wholeX;

    QDateTime beginTime;   ///< time of the point at index 0
    double msPerPoint = 0; ///< milliseconds

    QVector<QString> names; ///< one per curve of either set, for the legend and saved data
    PlotAxis x;
    bool hasAmplitudes = true; ///< of a spectrum: the curves are amplitudes, not something else
    QString yName;             ///< what the curves show, "S/N"
    QString yUnit;
    QStringList source; ///< file, module, ray, dispersion: lines that explain saved data

    bool messageMode = false; ///< true: the message is shown in place of the curves
    QString message;
};

/// A colour and what a legend calls it.
struct PlotColour {
    QString code;
    QString name;
};

/// Colours of the curves that bring none of their own, in order and then again from the first. All
/// stand out from white, and but for green and red any two can be told apart by those too who are
/// blind to red, to green or to blue.
inline const QVector<PlotColour> &plotColours()
{
    static const QVector<PlotColour> colours = {
        {"#0000FF", "blue"},     {"#009900", "green"}, {"#FF0000", "red"},  {"#00A8FF", "sky blue"},
        {"#480018", "maroon"},   {"#E070C0", "pink"},  {"#787878", "grey"}, {"#901878", "purple"},
        {"#A80000", "dark red"}, {"#300060", "indigo"}};
    return colours;
}

/// The colour of the curve at that index.
inline const PlotColour &plotColour(int index)
{
    return plotColours()[index % plotColours().size()];
}
