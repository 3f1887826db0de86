#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

/// Stands on the stack of a loop that lets the event loop run: while it lives the menus are
/// disabled, because a command would delete the form whose loop is on the stack, and clicks
/// and keys reach nothing but message boxes. Esc, or closing the window, asks the loop to
/// stop; the window then closes as soon as the guard goes.
class BusyGuard : public QObject {
    Q_OBJECT

public:
    BusyGuard();
    ~BusyGuard() override;

signals:
    void cancelRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPointer<QWidget> window;
    QPointer<QWidget> menubar;
    bool closeWanted = false;
};
