#pragma once

#include "calc/pulsar/bandfold.h"

#include <QImage>
#include <QWidget>
#include <memory>

class PulsarGrafik;

/// The folded bands as colours, phase against frequency with the highest frequency on top, above
/// the plot of the fold of their sum, whose X axis, margins and zoom it shares. A tool tip tells
/// what is under the pointer.
class BandView : public QWidget {
    Q_OBJECT

public:
    /// @param plotBelow  of the same width; outlives this view
    BandView(PulsarGrafik *plotBelow, QWidget *parent);

    /// Shows a fold; null hides the view.
    void showFold(std::shared_ptr<const BandFold> newFold);

    QSize sizeHint() const override { return {800, 220}; }
    QSize minimumSizeHint() const override { return {300, 80}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QRect area() const;
    double binAt(double x) const;
    QImage image() const;

    PulsarGrafik *const plot;
    std::shared_ptr<const BandFold> fold;
    std::vector<int> order; // of the bands, the highest frequency first
    float low = 0;          // value of the darkest colour
    float high = 1;
};
