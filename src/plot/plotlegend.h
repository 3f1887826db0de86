#pragma once

#include "picture/blockextremes.h"
#include "picture/plotgeometry.h"

#include <QFrame>
#include <QMap>
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
    explicit PlotLegend(QWidget *plot);

    /// Lists the named curves of a plot. Those that the user has hidden or shown before under
    /// the same name become so again in the data.
    void setCurvesOf(PlotData &shown);
    /// Keeps, until forget(), whether the user shows the curves of that name.
    void remember(const QString &name, bool visible) { toggled[name] = visible; }
    void forget() { toggled.clear(); }

    /// Takes the size of its content and moves to the corner where it hides least of the curves,
    /// or to where the user has dragged it. Where it would hide some
    /// of them, it folds; the list of a single curve, which says little, is not shown where even
    /// its heading would. A list that the user has folded, opened or dragged stays as it is.
    ///
    /// @param spared  columns of the plot that it must not hide where another place is free
    void placeBeside(const PlotData &shown, const Plot::CurveBlocks &blocks, const Plot::View &view,
                     const std::vector<int> &spared);

    /// Whether the user has dragged it to a place of its own.
    bool wasDragged() const { return draggedTo.has_value(); }

    /// Whether it is folded and where the user has put it, as a text; see stateChanged().
    QString state() const;
    void setState(const QString &state);

    QSize sizeHint() const override;

signals:
    void stateChanged(const QString &state);
    void curveToggled(int curve, bool visible);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void addLine(int curve, const QString &name, const QColor &colour, bool visible);
    void setFolded(bool folded);
    void showFolded(bool folded);
    void fitInto(const QRect &area);
    void placeIn(const QRect &area, const QPoint &corner);

    QToolButton *heading;
    QScrollArea *scrollArea;
    QWidget *lines = nullptr;
    QMap<QString, bool> toggled;      // by the user, of the names that are shown
    bool isChosen = false;            // by the user, whether it is folded
    bool gaveWay = false;             // hidden, for its only curve left no room
    QRect allowed;                    // by the plot
    std::optional<QPoint> dragFrom;   // of the pointer within the legend
    std::optional<QPointF> draggedTo; // as parts of the free way, so that it holds in any size
};
