#pragma once

#include "plot/plotdata.h"

#include <QImage>
#include <QMutex>
#include <QPointF>
#include <QRect>
#include <QWidget>

namespace Plot {
struct View;
}

/// The line plot of the pulsar form: curves against their point index, rows of texts along the
/// X axis, a coordinate read-out that follows the pointer, and a rectangle that the left mouse
/// button draws. It shows what it is given and computes no data.
class PulsarGrafik : public QWidget {
    Q_OBJECT

public:
    explicit PulsarGrafik(QWidget *parent = nullptr);
    ~PulsarGrafik() override;

    const PlotData &data() const { return plotData; }

    /// Replaces everything that is shown and repaints. The vertical range is taken as it
    /// comes; recomputeRange() fits it to the curves. The selection stays.
    void setData(PlotData data);

    /// Sets yMin and yMax from the curves, see Plot::verticalRange, and repaints.
    void recomputeRange();

    /// Shows a text in place of the curves until the next setData().
    void showMessage(const QString &message);

    /// Shows an empty frame until the next setData().
    void clear();

    /// The selected rectangle in pixels of the widget: its left upper corner, and as its size
    /// the way to the right lower one. Null when nothing is selected.
    QRect selection() const { return selected; }

    /// Change of index and value from one pixel to the next.
    QPointF dataPerPixel() const;

    /// Presses are ignored while this is locked. Whoever replaces the data in a computation
    /// that lets events through holds it meanwhile.
    QMutex &busyMutex() { return busy; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

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

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    Plot::View view() const;
    void repaintPlot();
    void renewPicture();

    PlotData plotData;
    QRect selected;
    QPoint pressPoint;
    bool dragging = false;
    QImage picture;             // all below the selection, as it was last painted
    bool pictureIsStale = true; // the data changed since
    QMutex busy;
};
