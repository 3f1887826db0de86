#pragma once

#include "analyses/profiles/profilescan.h"

#include <QImage>
#include <QWidget>
#include <memory>
#include <optional>

/// S/N over period and dispersion as colours, as the batch program paints them. A click takes the
/// values at the pointer; a cross marks where the days stand.
class OptimiseView : public QWidget {
    Q_OBJECT

public:
    /// A period at the barycentre, s, and a dispersion, pc/cm^3.
    struct Place {
        double period = 0;
        double dispersion = 0;
    };

    explicit OptimiseView(QWidget *parent = nullptr);

    /// @param now  where the days stand
    void setScan(std::shared_ptr<const Profiles::ProfileScan> next, const Place &now);
    void showMessage(const QString &text);

    QSize sizeHint() const override { return {500, 200}; }
    QSize minimumSizeHint() const override { return {300, 110}; }

signals:
    /// The user clicks there.
    void taken(const OptimiseView::Place &place);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    std::optional<Place> placeAt(const QPointF &pixel) const;
    void draw(QPainter &painter) const;

    std::shared_ptr<const Profiles::ProfileScan> scan; // null: a message is shown
    Place current;
    QString message;
    QImage image; // in the pixels of the screen; null until it is painted
};
