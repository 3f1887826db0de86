#pragma once

#include <QString>
#include <QWidget>
#include <optional>
#include <vector>

/// A small plot of a few curves that share their X axis, for the details of a candidate.
class SmallPlot : public QWidget {
    Q_OBJECT

public:
    struct Curve {
        QString name; ///< in the legend; empty: it is not listed
        std::vector<double> values;
    };
    struct Content {
        QString title;
        std::vector<double> x; ///< ascending; of one value, a point is drawn
        std::vector<Curve> curves;
        QString xName; ///< with its unit
        double mark = 0;
        bool hasMark = false; ///< a vertical line stands at `mark`
        bool isSteps = false; ///< bins, each as wide as the distance to the next
    };

    explicit SmallPlot(const QString &emptyTitle, QWidget *parent = nullptr);

    void setContent(Content next);
    const Content &shown() const { return content; }
    /// A text in place of the curves.
    void showMessage(const QString &message);
    /// A vertical line at a value of X; nothing: none.
    void setPointer(std::optional<double> x);

    QSize sizeHint() const override { return {260, 130}; }
    QSize minimumSizeHint() const override { return {140, 70}; }

signals:
    /// The pointer is over this value of X; nothing: it has left the curves.
    void pointed(std::optional<double> x);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    int paintNames(QPainter &painter) const;
    void paintFrame(QPainter &painter, const QRect &frame) const;
    void paintCurves(QPainter &painter, const QRect &frame) const;

    Content content;
    QString message;
    QRect lastFrame; // as it was painted
    std::optional<double> pointer;
};
