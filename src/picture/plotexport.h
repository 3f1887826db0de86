#pragma once

#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"
#include "picture/plotmarks.h"

#include <QString>
#include <functional>

class QImage;
class QPainter;

/// Pictures and tables of a plot as files, without a widget: what it takes is a QGuiApplication
/// for the fonts.
namespace Plot {

/// Pixels of a PNG for one of the screen, for print.
constexpr int printScale = 3;

/// What a picture shows.
struct PictureContent {
    const PlotData &data;
    const CurveBlocks &blocks; ///< of the data, or empty
    QSize size;                ///< of the plot on a screen, pixels
    Zoom zoom = {};
    Marks marks = {};
    QString comment = {}; ///< as in Drawing
    /// Pixels of a PNG for one of the screen. With 1 they are those that a screen shows; with more
    /// the plot is drawn with lines, as in the other kinds of files.
    int pngScale = printScale;
    /// Whether the visible curves are listed, at marks.legend or else in the emptiest corner.
    bool hasLegend = false;
};

/// Draws the plot with lines instead of pixels: the same curves, texts and marks, at home on any
/// paint device. One unit of the painter is a pixel of the screen.
void drawPlot(QPainter &painter, const PictureContent &content);

/// Something that is drawn, and what it says of itself in a file. One unit of the painter is a
/// pixel of the screen.
struct Drawing {
    QSize size; ///< on a screen, pixels
    QString title;
    std::function<void(QPainter &painter)> draw;
    QString comment = {}; ///< stands in the file where programs, not people, look for it
    int pngScale = printScale;
    /// Where it is given, a PNG of scale 1 is made by it, not by draw().
    std::function<void(QImage &image)> paintPixels = {};
};

/// The bytes of a file, or why there are none.
struct PictureBytes {
    QByteArray bytes;
    QString problem; ///< for the user; empty on success
};

/// What saveDrawing() would write. From any thread.
///
/// @param kind  "png", "svg" or "pdf"
PictureBytes drawingBytes(const QString &kind, const Drawing &drawing);

/// Writes a drawing to a file, whole or not at all. The end of the name decides what it becomes:
/// ".svg", ".pdf" with one page of its size, or ".png" with printScale times the pixels.
///
/// @return why it failed, for the user; empty on success
QString saveDrawing(const QString &path, const Drawing &drawing);

/// Writes the plot as drawPlot() draws it, as above.
QString savePicture(const QString &path, const PictureContent &content);

/// What savePicture() would write. The same content gives the same bytes. From any thread.
///
/// @param kind  "png", "svg" or "pdf"
PictureBytes pictureBytes(const QString &kind, const PictureContent &content);

/// Asked now and then with the percentage done; false stops.
using GoOn = std::function<bool(int percent)>;

/// Takes the next bytes of a file; false when it cannot.
using TakeBytes = std::function<bool(const QByteArray &bytes)>;

/// Writes the samples of all visible curves as a table of comma separated values, UTF-8, with "."
/// in numbers whatever the user's language. Lines that begin with "#" say where they come from;
/// then follow the columns' names and a line per point: its number in the recording, or its index
/// where it is no point of one, its X value where the axis has a name, and the curves' values with
/// all their digits ("nan" where there is none, nothing beyond a curve's end).
///
/// @param points  within 0 and the number of X positions
/// @return false when stopped or when `take` does not take it
bool writeSamples(const TakeBytes &take, const PlotData &data, const IndexRange &points,
                  const GoOn &goOn);

/// writeSamples() to a file, whole or not at all.
///
/// @return why it failed, for the user; empty on success and when it was stopped
QString saveSamples(const QString &path, const PlotData &data, const IndexRange &points,
                    const GoOn &goOn);

/// The whole points of a range of indices.
IndexRange wholePoints(const PlotData &data, const Range &x);

} // namespace Plot
