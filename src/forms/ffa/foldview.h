#pragma once

#include "calc/ffafold.h"

#include <QImage>
#include <QWidget>

/// A folded series: the profile over two turns, below it the profiles of stretches of the
/// series, earliest at the bottom, high values dark, and the S/N of boxcars over their width.
class FoldView : public QWidget {
    Q_OBJECT

public:
    explicit FoldView(QWidget *parent = nullptr);

    /// @param length  s, of the series
    void showFold(const FfaFold &fold, double length);
    void clear();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintProfile(QPainter &painter, const QRect &frame) const;
    void paintPicture(QPainter &painter, const QRect &frame) const;
    void paintWidths(QPainter &painter, const QRect &frame) const;

    FfaFold shown;
    double seconds = 0;
    QImage greys; // one turn, a pixel per part and bin
};
