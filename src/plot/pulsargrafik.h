#pragma once

#include "picture/plotdata.h"
#include "picture/plotgeometry.h"
#include "picture/plotmarks.h"
#include "picture/zoom.h"
#include "plot/plotselection.h"

#include <QImage>
#include <QMutex>
#include <QPointF>
#include <QRect>
#include <QWidget>
#include <functional>
#include <optional>

class PlotLegend;

/// The line plot of the forms: curves against their point index, rows of texts along the X axis,
/// a coordinate read-out that follows the pointer, and a rectangle that the left mouse button
/// draws. It shows what it is given and computes no data.
///
/// The wheel zooms X at the pointer, with Ctrl or over the Y axis Y, and with Shift moves along
/// X; the middle button, or Space and the left one, drags. Enter zooms to the rectangle,
/// Backspace goes back, Home shows all. The keys 1 and 2 set cursors at the pointer, on a
/// spectrum H shows the harmonics of the line there (a digit after it says which harmonic the line
/// is), L makes Y logarithmic and W shows powers over the noise around; Left and Right move the
/// read-out from sample to sample, Esc removes the marks. The right button offers pictures and
/// samples, and the actions that a form has added to the plot. Named curves are listed in a legend
/// that shows and hides them. A form that follows the part in sight connects viewChanged() and
/// reads visibleRange(); one that steers it calls setVisibleX().
class PulsarGrafik : public QWidget {
    Q_OBJECT

public:
    explicit PulsarGrafik(QWidget *parent = nullptr);
    ~PulsarGrafik() override;

    /// What was given, whether or not it is shown whitened.
    const PlotData &data() const { return given ? *given : plotData; }

    /// Replaces everything that is shown and repaints; move the data in, they may be large. The
    /// vertical range is taken as it comes; recomputeRange() fits it to the curves. The
    /// selection stays, and so does the zoom where the new data have as many X positions and
    /// the same axes as the old.
    void setData(PlotData data);

    /// Replaces the data by another part of the same series, of which some positions are shown.
    /// Earlier views and a rectangle within the new data stay with what they stand for, so do
    /// cursors where the points lie as close as before.
    void setPart(PlotData data, const Plot::IndexMap &moved, double first, double points);

    /// Sets yMin and yMax from the curves, see Plot::verticalRange, and repaints.
    void recomputeRange();

    /// Shows a text in place of the curves until the next setData().
    void showMessage(const QString &message);

    /// Shows an empty frame until the next setData().
    void clear();

    /// What the plot shows, between its margins.
    struct VisibleRange {
        double first = 0;  ///< point index at the left edge; 0 when all is shown
        double points = 1; ///< X positions from there to the right edge
        Plot::Range y;     ///< values at the lower and the upper edge

        bool operator==(const VisibleRange &other) const
        {
            return first == other.first && points == other.points && y == other.y;
        }
    };
    VisibleRange visibleRange() const;

    /// Shows these X positions, moved into the data where they reach beyond; as many as there
    /// are or more show all. Calls in a row are one step of the way back.
    void setVisibleX(double first, double points);
    /// Makes what is shown a step of the way back, before another part is. Calls in a row are one
    /// step, together with those of setVisibleX().
    void noteView();
    /// Shows these values, within the range that the curves have.
    void setVisibleY(double min, double max);
    /// Whether anything less than all is shown.
    bool isZoomed() const { return !zoom.isNone(); }

    /// What the selected rectangle holds; nothing when none is selected.
    std::optional<Plot::SelectedRange> selectedRange() const { return selected.range(); }
    void clearSelection();

    /// Whether the pointer is dragging what is shown.
    bool isPanned() const { return panFrom.has_value(); }

    /// The selected rectangle in pixels of the widget, see Plot::Selection::rectangle().
    QRect selection() const { return selected.rectangle(); }

    /// The frequency whose harmonics are marked, in the unit of the X axis; nothing when none are.
    std::optional<double> fundamental() const { return marks.fundamental; }
    void setFundamental(std::optional<double> frequency);

    /// Folder in which the file dialogs begin; see fileSaved().
    void setSaveFolder(const QString &folder) { saveFolder = folder; }

    /// Makes what lies under the pointer stand above the plot, in up to two lines.
    using HoverText = std::function<QStringList(const QPointF &coords)>;
    void setHoverText(HoverText text) { hoverText = std::move(text); }

    /// Folds the legend or puts it where it was left, see legendChanged().
    void setLegendState(const QString &state);

    /// How spectra are drawn: with a logarithmic Y axis; as powers over the noise around in place
    /// of amplitudes. Both hold for later spectra too.
    bool isLogarithmic() const { return wantsLogarithm; }
    bool isWhitened() const { return wantsWhitening; }

    /// Cursors, harmonics and the read-out, without the rectangle.
    const Plot::Marks &marksSet() const { return marks; }

    /// Writes what is shown to a file, see Plot::savePicture.
    QString savePicture(const QString &path) const;

    /// Change of index and value from one pixel to the next.
    QPointF dataPerPixel() const;

    /// Presses are ignored while this is locked. Whoever replaces the data in a computation
    /// that lets events through holds it meanwhile.
    QMutex &busyMutex() { return busy; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    void showAll();
    /// Shows what the rectangle holds and removes it.
    void zoomToSelection();
    /// Goes back to what was shown before the last zoom or drag.
    void showPrevious();
    /// X and the nearest curve's value at the read-out, to the clipboard.
    void copyValue();
    void copyPicture();
    void setLogarithmic(bool logarithmic);
    void setWhitened(bool whitened);

signals:
    /// The pointer moved.
    /// @param coords  point index, with fraction, and value
    /// @param labels  see Plot::labelsAt
    void coordsChanged(QPointF coords, QVector<QString> labels);
    /// A press inside the selection; its left upper and right lower corner as index and value.
    void blueRectangleClicked(QPointF corner1, QPointF corner2);
    /// The selection has been drawn; corners as above, xOffset added to both indices.
    void blueRectangleReleased(QPointF corner1, QPointF corner2);
    /// A press and a release of the left button at one place, as index and value.
    void clicked(QPointF coords);
    /// Another part of the data is shown, by hand, by a call or because the data changed.
    void viewChanged(const PulsarGrafik::VisibleRange &range);
    /// Home or Backspace asks for X positions of PlotData::wholeX that the curves do not reach.
    void partWanted(double first, double points);
    /// The rectangle was drawn, has been removed or stands for other data: see selectedRange().
    void selectionChanged();
    /// Harmonics of another frequency are marked, or none any more: see fundamental().
    void fundamentalChanged();
    /// The user has written a picture or a table.
    void fileSaved(const QString &path);
    /// The user shows or hides a curve of that name. The plot has done so already, and does so
    /// again with later data that have the same names.
    void curveToggled(const QString &name, bool visible);
    /// The user has folded or moved the legend; for setLegendState() of another plot.
    void legendChanged(const QString &state);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    enum Gesture { NoGesture, WheelX, WheelY, WheelPan, Drag, Keys, Call };

    Plot::View view() const;
    void replaceData(PlotData data);
    bool hasMoreX() const;
    void changeZoom(const Plot::Zoom &wanted, Gesture gesture);
    void applyZoom(const Plot::Zoom &next);
    void zoomX(double anchor, double factor, Gesture gesture);
    void zoomY(double anchor, double factor, Gesture gesture);
    void pan(double points, double values, Gesture gesture);
    void beginPan(const QPoint &pixel);
    void endPan();
    void setSpaceHeld(bool held);
    bool handleKey(const QKeyEvent &event);
    bool zoomByKey(int key);
    bool markByKey(int key);
    void stepReadOut(int way);
    void toggleHarmonics();
    void fitHarmonics(int number);
    bool takeHarmonicNumber(int key);
    void showHover(const QStringList &texts);
    void prepareSpectrum();
    void renewSpectrum();
    bool removeMarks();
    void announceView();
    void select(const QPoint &corner1, const QPoint &corner2);
    Plot::Marks shownMarks() const;
    void askAndSavePicture();
    void askAndSaveSamples();
    void report(const QString &path, const QString &failure);
    void placeLegend();
    void keepLegendClear();
    void toggleCurve(int curve, bool visible);
    void repaintPlot();
    void renewPicture();

    PlotData plotData;             // as shown
    std::optional<PlotData> given; // where that is whitened
    bool wantsLogarithm = false;
    bool wantsWhitening = false;
    HoverText hoverText;
    double harmonicFrequency = 0; // of the line that H was pressed at
    Plot::CurveBlocks blocks;
    Plot::Zoom zoom;
    Plot::ZoomHistory history;
    VisibleRange announced;
    Plot::Selection selected;
    Plot::Marks marks;    // without the rectangle; see shownMarks()
    QPointF pointed;      // index and value that were read out last
    int readOutCurve = 0; // that the arrow keys follow
    bool showsFocus = false;
    QPoint pointer; // its last place on the widget
    QPoint pressPoint;
    bool dragging = false;
    bool spaceHeld = false;
    std::optional<QPoint> panFrom; // where the pointer was, while it drags the plot
    PlotLegend *const legend;
    QString saveFolder;
    QImage picture;             // all below the selection, as it was last painted
    bool pictureIsStale = true; // the data changed since
    QMutex busy;
};
