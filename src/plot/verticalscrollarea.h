#pragma once

#include <QScrollArea>

/// A scroll area that scrolls down and never sideways: it asks for the width of what it
/// holds and of its scroll bar, and asks again whenever that changes with font or style.
class VerticalScrollArea : public QScrollArea {
    Q_OBJECT

public:
    explicit VerticalScrollArea(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
};
