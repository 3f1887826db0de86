#include "fields/numberbox.h"

#include "base/typednumber.h"
#include "fields/fieldstyles.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTimer>
#include <QToolTip>

namespace Fields {

namespace {

template <typename Number>
QValidator::State stateOf(const std::optional<Number> &value, double least, double most)
{
    const bool isGood = value && double(*value) >= least && double(*value) <= most;
    return isGood ? QValidator::Acceptable : QValidator::Intermediate;
}

} // namespace

/// Keeps the text of a box that cannot be read in place, where the box itself would put its value
/// there as soon as the focus goes.
class UnreadText : public QObject {
    Q_OBJECT

public:
    UnreadText(QAbstractSpinBox *spinBox, const QLineEdit *edit) : QObject(spinBox), box(spinBox)
    {
        box->installEventFilter(this);
        connect(edit, &QLineEdit::textChanged, this, [this] {
            if (isMarked && box->hasAcceptableInput())
                unmark();
        });
    }

    void refuse()
    {
        isMarked = true;
        FieldStyles::refuse(box, problemOf(box));
    }

    /// For the box's fixup(): whether its value may take the place of the text.
    bool mayBeReplaced()
    {
        if (isMarked && !isKept)
            unmark();
        return !isKept;
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        noteTyping(event);
        if (box->hasAcceptableInput()) {
            if (isMarked) // another value was set meanwhile
                QTimer::singleShot(0, this, &UnreadText::unmark);
            return false;
        }
        if (event->type() == QEvent::FocusOut)
            return loseFocus(static_cast<QFocusEvent *>(event));
        if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
            return false;
        const int key = static_cast<QKeyEvent *>(event)->key();
        const bool wantsOn = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab ||
                             key == Qt::Key_Backtab;
        if (!wantsOn && key != Qt::Key_Escape)
            return false;
        event->accept();
        if (event->type() == QEvent::ShortcutOverride)
            return true;
        if (wantsOn) {
            refuse();
        } else {
            box->setProperty("value", settled);
            isTyped = false;
            if (isMarked)
                unmark();
        }
        return true;
    }

private:
    // The value changes with every key, as long as the text can be read: Escape is to bring back
    // the one from before the first of them.
    void noteTyping(QEvent *event)
    {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::Wheel)
            isTyped = false;
        if (event->type() != QEvent::KeyPress)
            return;
        const auto *const key = static_cast<QKeyEvent *>(event);
        const bool isText = !key->text().isEmpty() && key->text()[0].isPrint();
        const bool edits = isText || key->key() == Qt::Key_Backspace ||
                           key->key() == Qt::Key_Delete || key->matches(QKeySequence::Paste) ||
                           key->matches(QKeySequence::Cut);
        if (edits && !isTyped)
            settled = box->property("value");
        const bool goesOn = key->key() == Qt::Key_Escape || !box->hasAcceptableInput();
        isTyped = edits || (isTyped && goesOn);
    }

    bool loseFocus(QFocusEvent *event)
    {
        const QScopedValueRollback<bool> keeping(isKept, true);
        box->findChild<QLineEdit *>()->event(event); // the cursor goes
        box->update();
        // The focus is left where the user wants it: what is typed next belongs there. To a menu or
        // another window one goes for a moment.
        if (event->reason() == Qt::MouseFocusReason) {
            isMarked = true;
            FieldStyles::markRefused(box, problemOf(box));
        }
        return true;
    }

    void unmark()
    {
        isMarked = false;
        FieldStyles::setStyle(box, {});
        QToolTip::hideText();
    }

    QAbstractSpinBox *const box;
    bool isMarked = false;
    bool isKept = false;
    bool isTyped = false; // since the value was settled
    QVariant settled;
};

QString problemOf(const QAbstractSpinBox *box)
{
    if (box->hasAcceptableInput() || !box->isEnabled())
        return {};
    QString allowed;
    if (const auto *number = qobject_cast<const NumberBox *>(box))
        allowed = QString("%1, from %2 to %3")
                      .arg(Tools::allowedNumber)
                      .arg(number->minimum())
                      .arg(number->maximum());
    else if (const auto *whole = qobject_cast<const WholeBox *>(box))
        allowed = QString("%1 from %2 to %3")
                      .arg(Tools::allowedWhole)
                      .arg(whole->minimum())
                      .arg(whole->maximum());
    return QString("%1: \"%2\" cannot be taken.\nAllowed: %3.")
        .arg(FieldStyles::nameOf(box), box->text(), allowed);
}

bool refuseUnread(const QWidget *part)
{
    bool isAny = false;
    const QList<QAbstractSpinBox *> boxes = part->findChildren<QAbstractSpinBox *>();
    for (auto box = boxes.rbegin(); box != boxes.rend(); ++box) { // the first one last
        if (problemOf(*box).isEmpty())
            continue;
        isAny = true;
        if (auto *const unread = (*box)->findChild<UnreadText *>())
            unread->refuse();
    }
    return isAny;
}

} // namespace Fields

NumberBox::NumberBox(QWidget *parent)
    : QDoubleSpinBox(parent), unread(new Fields::UnreadText(this, lineEdit()))
{}

// The focus leaves the field when there is no text in it any more.
NumberBox::~NumberBox()
{
    removeEventFilter(unread);
}

QValidator::State NumberBox::validate(QString &text, int &) const
{
    return Fields::stateOf(Tools::typedNumber(text), minimum(), maximum());
}

// The value is the one that is shown.
double NumberBox::valueFromText(const QString &text) const
{
    return textFromValue(Tools::typedNumber(text).value_or(value())).toDouble();
}

QString NumberBox::textFromValue(double value) const
{
    return QString::number(value, 'f', decimals());
}

void NumberBox::fixup(QString &text) const
{
    if (unread->mayBeReplaced())
        text = textFromValue(value());
}

WholeBox::WholeBox(QWidget *parent)
    : QSpinBox(parent), unread(new Fields::UnreadText(this, lineEdit()))
{}

WholeBox::~WholeBox()
{
    removeEventFilter(unread);
}

QValidator::State WholeBox::validate(QString &text, int &) const
{
    return Fields::stateOf(Tools::typedWhole(text), minimum(), maximum());
}

int WholeBox::valueFromText(const QString &text) const
{
    return int(Tools::typedWhole(text).value_or(value()));
}

QString WholeBox::textFromValue(int value) const
{
    return QString::number(value);
}

void WholeBox::fixup(QString &text) const
{
    if (unread->mayBeReplaced())
        text = textFromValue(value());
}

#include "numberbox.moc"
