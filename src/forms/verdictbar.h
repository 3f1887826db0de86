#pragma once

#include "analyses/sky/skysearch.h"

#include <QWidget>
#include <functional>

class QHBoxLayout;
class QKeySequence;

/// The buttons below a table of candidates and their keys: Previous P, Next N, Accept A, Reject R,
/// Unsure U, Note... F2, Save table... The table keeps the keyboard.
class VerdictBar : public QWidget {
    Q_OBJECT

public:
    /// @param keysOf  the part of the form in which the keys work
    explicit VerdictBar(QWidget *keysOf);

    /// One more button at the end.
    ///
    /// @param key  may be empty
    void addButton(const QString &text, const QString &toolTip, const QKeySequence &key,
                   const std::function<void()> &action);
    /// Switches the buttons off while no candidate is chosen.
    void setHasCandidate(bool hasCandidate);

signals:
    void stepped(int way); ///< rows down
    void decided(Sky::Verdict verdict);
    void noteWanted();
    void saveWanted();

private:
    QWidget *const keys;
    QHBoxLayout *const row;
    std::vector<QWidget *> buttons;
};
