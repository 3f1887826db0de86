#pragma once

#include <QWidget>
#include <vector>

/// The whole recording in a strip below the plot, with a box around the part in sight. Dragging
/// the box moves that part, a press beside it brings it there, the wheel changes its length
/// around the pointer, a double click shows all. With the keyboard: Left and Right move by a
/// tenth, Page Up and Page Down by a whole part, Up and Down change its length, Home shows all.
class OverviewStrip : public QWidget {
    Q_OBJECT

public:
    explicit OverviewStrip(QWidget *parent = nullptr);

    void setRecording(int points) { npoints = points; }
    /// The least and the greatest value of equal parts of the recording.
    void setExtremes(std::vector<float> low, std::vector<float> high);
    /// The part in sight, in points.
    void setPart(double first, double points);

    QSize sizeHint() const override { return {800, 52}; }
    QSize minimumSizeHint() const override { return {300, 52}; }

signals:
    /// Points that the user wants to see, within the recording.
    void rangeWanted(double first, double points);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QRect area() const;
    double pointAt(double x) const;
    void want(double first, double points);

    int npoints = 1;
    std::vector<float> lows;
    std::vector<float> highs;
    double visibleFirst = 0;
    double visiblePoints = 1;
    double grabbedAt = 0; // point of the part in sight that the pointer holds, from its begin
};
