#pragma once

#include "picture/plotgeometry.h"

#include <QRect>
#include <QStringList>
#include <array>
#include <optional>

class QPainter;

/// What the user lays over a plot: the selected rectangle, two cursors, the harmonics of a
/// frequency and the point that the arrow keys read out. Positions are those of the data, so
/// that they hold in every view; only the rectangle is in pixels.
namespace Plot {

/// A sample of a curve of the upper set, or of the lower one where there is no upper.
struct Cursor {
    int curve = 0;
    int index = 0;
};

struct Marks {
    QRect selection; ///< see paintSelection()
    std::array<std::optional<Cursor>, 2> cursors;
    std::optional<double> fundamental; ///< in the unit of the X axis
    double fundamentalError = 0;       ///< one sigma; 0: not fitted
    int fittedLines = 0;
    bool asksForNumber = false;   ///< the next digit tells which harmonic the pointer meant
    QStringList hover;            ///< what lies under the pointer, up to two lines
    std::optional<int> readOut;   ///< point index
    std::optional<QPoint> legend; ///< left upper corner of a painted legend of the visible curves
};

/// The curves that cursors and the read-out belong to.
const std::vector<std::vector<float>> &markedCurves(const PlotData &data);

/// Moves the cursors to where their points stand in other data, whose indices are `all`. A cursor
/// goes where its point is not among them, or where the points lie closer or farther apart.
void moveCursors(Marks &marks, const IndexMap &map, const Range &all);

/// The sample at a cursor; NaN where the data have none.
double valueAt(const PlotData &data, const Cursor &cursor);

/// The sample that a pointer means: that of the visible curve whose line it touches, or else of the
/// first one that has a sample there; nothing where none has.
std::optional<Cursor> nearestSample(const PlotData &data, const View &view, const QPointF &coords);

/// Whether X is a frequency, so that it has harmonics.
bool isSpectrum(const PlotData &data);

/// Whether Y is an amplitude besides, so that the noise around is known by its law.
bool isAmplitudeSpectrum(const PlotData &data);

/// The frequency of the highest sample of the first visible curve within `reach` points of an
/// index: a pixel may hold many lines of a spectrum, and the pointer means the one that is seen.
double peakFrequency(const PlotData &data, double index, double reach);

/// Sets the fundamental of the harmonics: that of which the first visible curve has the strongest
/// lines, see Tools::fitComb(), or where none stands out or Y is no amplitude the frequency itself.
///
/// @param frequency  of the line that is harmonic `number`
void fitHarmonics(Marks &marks, const PlotData &data, double frequency, int number);

/// An X value with its unit and the digits that tell neighbouring points apart; the point's
/// number where the axis has no name.
QString axisText(const PlotData &data, double index);

/// Both cursors, their difference and what one over it is, in up to two lines; empty without
/// cursors.
QStringList cursorTexts(const PlotData &data, const Marks &marks);

/// The frequency whose harmonics are shown and its period, with their errors where they were
/// fitted; empty when none are.
QString harmonicsText(const Marks &marks);

/// A harmonic in sight: its number, from 1, and its place in pixels.
struct Harmonic {
    int number = 1;
    double x = 0;
};

/// The harmonics in a view, at most one every three pixels: where they stand closer, only the
/// fundamental.
std::vector<Harmonic> harmonicsInSight(const PlotData &data, const View &view, double fundamental);

/// Draws all marks over a painted plot.
void paintMarks(QPainter &painter, const PlotData &data, const View &view, const Marks &marks);

/// The translucent rectangle from its left upper corner to the point its size away from there;
/// one without width and height is not drawn.
void paintSelection(QPainter &painter, const QRect &selection);

} // namespace Plot
