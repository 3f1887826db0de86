#pragma once

#include "picture/colourmap.h"

#include <QImage>
#include <QWidget>
#include <vector>

class PulsarGrafik;

/// Shows the powers of the bands over time as colours, above a plot whose X axis it shares: it
/// has the plot's left and right margins, and hands wheel and drags on to the plot below.
class WaterfallView : public QWidget {
    Q_OBJECT

public:
    /// Values of the picture, row r beginning at r x columns; NaN has no colour.
    struct Picture {
        std::vector<float> values;
        int rows = 0; ///< bands, in the order of the file
        int columns = 0;
        double first = 0;  ///< point at the left edge of the picture
        double points = 0; ///< that it covers
    };

    explicit WaterfallView(QWidget *parent = nullptr);

    /// @param plotBelow  of the same width; outlives the view
    void setPlot(PulsarGrafik *plotBelow) { plot = plotBelow; }
    /// Band centres, MHz, in the order of the file; empty: rows are numbered. The highest
    /// frequency stands on top.
    void setFrequencies(const std::vector<double> &fbands, int bands);
    void setPicture(Picture next);
    /// Sets which points lie between the margins.
    void setPart(double first, double points);
    /// Sets the values of the darkest and of the lightest colour.
    void setScale(float low, float high);
    /// Takes them from the picture instead: what one value in a hundred does not reach, and what
    /// five in a thousand exceed.
    void setPercentiles(bool byPercentiles);
    /// Greys in place of colours.
    void setGrey(bool grey);

    /// Draws what is shown with the plot's time axis below it, for a picture of its own.
    void drawWithAxis(QPainter &painter) const;
    QSize sizeWithAxis() const;

    /// Pixels between the margins.
    int pictureWidth() const;

    QSize sizeHint() const override { return {800, 300}; }
    QSize minimumSizeHint() const override { return {300, 100}; }

signals:
    /// The pointer stands on a value.
    void pointed(double point, int band, float value);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QRect area() const;
    void renewImage();
    void findScale();
    void paintPicture(QPainter &painter) const;
    void paintLabels(QPainter &painter) const;
    void paintScale(QPainter &painter) const;
    const Plot::ColourMap &colours() const { return isGrey ? Plot::greyMap() : Plot::colourMap(); }

    PulsarGrafik *plot = nullptr;
    std::vector<int> bandOfRow; // of the rows of the screen, from the top
    std::vector<double> frequencies;
    Picture picture;
    QImage image;
    double visibleFirst = 0;
    double visiblePoints = 1;
    float lowest = -2; // as shown
    float highest = 6;
    float wantedLowest = -2;
    float wantedHighest = 6;
    bool usesPercentiles = false;
    bool isGrey = false;
};
