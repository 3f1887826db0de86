#pragma once

#include "calc/ffafold.h"
#include "calc/pulsar/bandfold.h"

#include <QImage>
#include <QWidget>
#include <memory>

/// A folded series: the profile over two turns with its strongest pulse in the middle of each,
/// below it the profiles of stretches of the series, earliest at the bottom, high values dark, and
/// the S/N of boxcars over their width. In place of the stretches the view can show the bands, the
/// highest frequency on top. A tool tip follows the pointer and tells what is there.
class FoldView : public QWidget {
    Q_OBJECT

public:
    explicit FoldView(QWidget *parent = nullptr);

    /// @param length  s, of the series
    void showFold(const FfaFold &fold, double length);
    /// Shows the bands folded on the same period and bins until the next fold.
    void showBands(std::shared_ptr<const BandFold> fold);
    void clear();

    const FfaFold &fold() const { return asFolded; }
    std::shared_ptr<const BandFold> bands() const { return shownBands; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    struct Frames {
        QRect profile;
        QRect picture;
        QRect widths;
    };
    Frames frames() const;
    double phaseOf(double turn) const;
    QString textAt(const QPoint &pixel) const;
    QString widthTextAt(double share) const;
    QString rowTextAt(double share, std::size_t bin) const;
    void paintProfile(QPainter &painter, const QRect &frame) const;
    void paintPicture(QPainter &painter, const QRect &frame) const;
    void paintWidths(QPainter &painter, const QRect &frame) const;

    FfaFold asFolded;
    FfaFold shown; // from the left edge on
    std::shared_ptr<const BandFold> shownBands;
    std::vector<int> bandOrder; // the highest frequency first
    double seconds = 0;
    int shift = 0; // bins from the begin of the fold to the left edge
    QImage greys;  // one turn, a pixel per part and bin
};
