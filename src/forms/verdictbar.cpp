#include "forms/verdictbar.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QShortcut>

VerdictBar::VerdictBar(QWidget *keysOf) : keys(keysOf), row(new QHBoxLayout(this))
{
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    row->addStretch(1);
    const auto decide = [this](Sky::Verdict verdict) { return [this, verdict] { emit decided(verdict); }; };
    addButton("Previous", "The candidate above", QKeySequence("P"), [this] { emit stepped(-1); });
    addButton("Next", "The candidate below", QKeySequence("N"), [this] { emit stepped(1); });
    addButton("Accept", "Accepts the candidate and goes to the next", QKeySequence("A"),
              decide(Sky::Verdict::Accept));
    addButton("Reject", "Rejects the candidate and goes to the next", QKeySequence("R"),
              decide(Sky::Verdict::Reject));
    addButton("Unsure", "Leaves the candidate open and goes to the next", QKeySequence("U"),
              decide(Sky::Verdict::Unsure));
    addButton("Note...", "Writes a note on the candidate", QKeySequence("F2"),
              [this] { emit noteWanted(); });
    addButton("Save table...", "Writes the table with verdicts and notes to another place", {},
              [this] { emit saveWanted(); });
}

void VerdictBar::addButton(const QString &text, const QString &toolTip, const QKeySequence &key,
                           const std::function<void()> &action)
{
    auto *const button = new QPushButton(text);
    button->setObjectName(text.toLower().section(' ', 0, 0).remove('.'));
    button->setToolTip(key.isEmpty() ? toolTip
                                     : QString("%1: key %2").arg(toolTip, key.toString()));
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(text) + 14);
    button->setFocusPolicy(Qt::TabFocus); // the table keeps the keys
    connect(button, &QPushButton::clicked, this, action);
    row->insertWidget(row->count() - 1, button);
    buttons.push_back(button);
    if (!key.isEmpty()) {
        auto *const shortcut = new QShortcut(key, keys);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    }
}

void VerdictBar::setHasCandidate(bool hasCandidate)
{
    for (QWidget *const button : buttons)
        button->setEnabled(hasCandidate);
}
