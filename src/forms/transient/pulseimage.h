#pragma once

#include "analyses/pulses/pulsepicture.h"

#include <QImage>
#include <QWidget>
#include <optional>

/// Rows of values against time, high values dark, the lowest row at the bottom. A line follows the
/// pointer, here and in the pictures beside it; a tool tip tells what is there.
class PulseImage : public QWidget {
    Q_OBJECT

public:
    struct Content {
        QString title;
        Pulses::PulseRows rows;
        QString rowName;                 ///< "MHz"
        std::vector<double> curve;       ///< s, of each row: where the pulse is; may be empty
        std::optional<double> markedRow; ///< a line beside the picture marks it
    };

    explicit PulseImage(const QString &emptyTitle, QWidget *parent = nullptr);

    void setContent(Content next);
    const Content &shown() const { return content; }
    void showMessage(const QString &message);
    /// A vertical line at a time, s; nothing: none.
    void setPointer(std::optional<double> time);

    QSize sizeHint() const override { return {300, 160}; }
    QSize minimumSizeHint() const override { return {150, 80}; }

signals:
    /// The pointer is over this time of the picture; nothing: it has left it.
    void pointed(std::optional<double> time);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    QRect frame() const;
    void paintFrame(QPainter &painter, const QRect &frame) const;
    void paintCurve(QPainter &painter, const QRect &frame) const;

    Content content;
    QString message;
    QImage greys; // a pixel per value
    std::optional<double> pointer;
};
