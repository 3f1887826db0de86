#pragma once

#include "picture/mappicture.h"

#include <QImage>
#include <QWidget>
#include <optional>
#include <vector>

class PulsarGrafik;

/// Shows maps as mappicture.h paints them, above a plot that has the same columns. It hands wheel
/// and drags on to the plot, so that both are zoomed by the plot's habits; Ctrl with the wheel
/// zooms the rows, a rectangle over the map holds rows as well, which Enter zooms to, and Backspace
/// and Home bring back. Up and Down go from row to row.
class MapView : public QWidget {
    Q_OBJECT

public:
    explicit MapView(QWidget *parent = nullptr);

    /// @param plotBelow  whose X axis is followed; outlives the view
    void setPlot(PulsarGrafik *plotBelow);

    /// What is in sight stays where the new maps have as many rows and columns.
    void setPicture(Plot::MapPicture next);
    const Plot::MapPicture &picture() const { return shown; }
    /// Shows these columns, where no plot is followed.
    void setColumns(const Plot::Range &columns);
    /// Marks a cell; none: no panel has that number.
    void setCell(const Plot::MapPlace &place);
    const Plot::MapPlace &cell() const { return chosen; }
    /// The size that the settings ask for; a number of 0 follows the window.
    void setWantedSize(const QSize &size);

    QSize sizeHint() const override { return {800, 300}; }
    QSize minimumSizeHint() const override { return {200, 110}; }

signals:
    /// The pointer stands on a place of a map.
    void pointed(const Plot::MapPlace &place);
    void clicked(const Plot::MapPlace &place);
    void doubleClicked(const Plot::MapPlace &place);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Rows {
        int first = 0;
        int count = 0;
        bool operator==(const Rows &other) const = default;
    };
    void renew();
    void followPlot();
    void showRows(const Rows &rows);
    bool takeKey(int key);
    void stepRow(int way);
    std::optional<Plot::MapPlace> placeAt(const QPointF &pixel) const;
    double plotPixel(const QPointF &pixel) const;
    void paintOverlays(QPainter &painter) const;
    void paintHarmonics(QPainter &painter) const;
    void paintMarkers(QPainter &painter) const;

    PulsarGrafik *plot = nullptr;
    Plot::MapPicture shown;
    QImage image; // of the picture, in the pixels of the screen
    bool isStale = true;
    Plot::MapPlace chosen{-1, 0, 0};
    std::vector<Rows> rowsBefore;
    std::optional<Plot::MapPlace> pressed;
    Plot::MapPlace released;
    bool hasRectangle = false;
    QPoint pressPoint;
};
