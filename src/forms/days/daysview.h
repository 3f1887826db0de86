#pragma once

#include "analyses/days/fourierstack.h"
#include "forms/days/stacktexts.h"
#include "picture/colourmap.h"
#include "picture/plotgeometry.h"
#include "picture/rowmaxima.h"

#include <QImage>
#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

class PulsarGrafik;

/// The values of days over frequency or period as colours, a row per day with the first on top,
/// above the plot of their stack, whose X axis it shares. It has the plot's left and right
/// margins, shows its harmonics and what is left out, and hands wheel and drags on to it. Days that
/// do not count are pale.
class DaysView : public QWidget {
    Q_OBJECT

public:
    /// @param texts  outlive the widget
    explicit DaysView(const StackTexts &texts, QWidget *parent = nullptr);

    /// @param plotBelow  of the same width; outlives the widget
    void setPlot(PulsarGrafik *plotBelow);

    struct Row {
        int day = 0; ///< index of the day, for pointed()
        QDateTime begin;
        Plot::PictureRow powers;
        bool isOn = true;
    };
    /// @param keeper  owns the powers
    void setRows(std::vector<Row> newRows, std::shared_ptr<const void> keeper);
    /// Frames the row of a day; -1: none.
    void markDay(int day);

    QSize sizeHint() const override { return {800, 240}; }
    QSize minimumSizeHint() const override { return {300, 80}; }

signals:
    /// The pointer stands on a day, at an index of the plot.
    void pointed(int day, double index);
    /// A click on the row of a day.
    void dayClicked(int day);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QRect area() const;
    void renew();
    void renewImage();
    void findScale(const std::vector<float> &values, int columns);
    const Plot::ColourMap &colours() const;
    std::optional<int> rowAt(const QPoint &pixel) const;
    void paintRows(QPainter &painter) const;
    Plot::View view() const;
    void paintLeftOut(QPainter &painter) const;
    void paintHarmonics(QPainter &painter) const;
    void paintMarkers(QPainter &painter) const;
    void paintScale(QPainter &painter) const;

    const StackTexts &words;
    PulsarGrafik *plot = nullptr;
    std::vector<Row> rows;
    std::shared_ptr<const void> owner;
    QImage image; // of what is in sight, a pixel each
    bool imageIsStale = true;
    float lowest = 0;  // value of the first colour
    float highest = 8; // of the last one
    int markedDay = -1;
    QPoint pressPoint;
};
