#pragma once

#include <QLabel>

/// A label that works as a link: it emits `clicked()` when pressed and shows the pointing
/// hand. A label of style sheet "color: black" (an ordinary link) turns blue under the
/// pointer, one of "color: red" (a marked link) dark magenta; each returns to its own colour
/// when the pointer leaves. Style sheets are compared as exact texts; others stay.
class ClickLable : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

signals:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
};
