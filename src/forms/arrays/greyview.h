#pragma once

#include "data/numberfile.h"

#include <QImage>
#include <QWidget>

/// Rows of numbers as a picture: black is the smallest value, white the largest, red no number.
/// Where a pixel holds several numbers it shows their mean. The first row is the uppermost.
class GreyView : public QWidget {
    Q_OBJECT

public:
    explicit GreyView(QWidget *parent = nullptr);

    /// @param numbers  is only read and outlives the widget; null: an empty picture
    void setTable(const NumberTable *numbers);

    QSize sizeHint() const override { return {800, 500}; }
    QSize minimumSizeHint() const override { return {300, 200}; }

signals:
    /// The pointer stands on a number; both indices from 0.
    void pointed(qint64 row, qint64 column, double value);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QRect area() const;
    void renewPicture(const QSize &size);

    const NumberTable *table = nullptr;
    QImage picture; // as it was last painted
};
