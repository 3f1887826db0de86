#pragma once

#include <QObject>
#include <QString>
#include <QVector>

namespace TestSupport {

/// While it lives, every message box closes as soon as it is shown; what it said stays here.
class MessageBoxCatcher : public QObject {
public:
    struct Box {
        QString title;
        QString text;
    };

    MessageBoxCatcher();

    /// All boxes so far, in the order they were shown.
    const QVector<Box> &boxes() const { return caught; }
    /// What the latest box said; empty: there was none.
    QString lastText() const { return caught.isEmpty() ? QString() : caught.last().text; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QVector<Box> caught;
};

} // namespace TestSupport
