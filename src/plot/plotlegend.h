#pragma once

#include <QFrame>
#include <QVector>
#include <optional>

class QCheckBox;
class QScrollArea;
class QToolButton;

/// Names of a plot's curves with their colours and a check box each, over the plot that is its
/// parent. It folds to its heading and can be dragged to another place, which it then keeps.
class PlotLegend : public QFrame {
    Q_OBJECT

public:
    struct Curve {
        QString name;
        QColor colour;
        bool isVisible = true;
    };

    explicit PlotLegend(QWidget *plot);

    /// Replaces the list; curves without a name get no line.
    void setCurves(const QVector<Curve> &curves);

    /// Takes the size of its content, at most that much of the area.
    void fitInto(const QRect &area);
    /// Moves to a place by hand or from its last one there into the area.
    ///
    /// @param corner  where to stand when nobody has dragged it
    void placeIn(const QRect &area, const QPoint &corner);
    bool wasDragged() const { return draggedTo.has_value(); }

    QSize sizeHint() const override;

signals:
    void curveToggled(int curve, bool visible);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void addLine(int curve, const Curve &entry);
    void setFolded(bool folded);

    QToolButton *heading;
    QScrollArea *scrollArea;
    QWidget *lines = nullptr;
    QRect allowed;                    // by the plot
    std::optional<QPoint> dragFrom;   // of the pointer within the legend
    std::optional<QPointF> draggedTo; // as parts of the free way, so that it holds in any size
};
