#pragma once

#include <QDoubleSpinBox>
#include <QSpinBox>

namespace Fields {
class UnreadText;
}

/// A field for a number with arrows, which reads and shows numbers as typednumber.h says, whatever
/// the language of the desktop. Every key is taken, so that what stands there is what was typed;
/// a text that is no number of the range is refused by Enter and Tab and when the mouse takes the
/// focus: it stays in place, marked, with a message, and the value stays the last good one. The
/// arrows and the wheel go on from that; Escape brings back the value from before the typing.
class NumberBox : public QDoubleSpinBox {
    Q_OBJECT

public:
    explicit NumberBox(QWidget *parent = nullptr);
    ~NumberBox() override;

    QValidator::State validate(QString &text, int &position) const override;
    double valueFromText(const QString &text) const override;
    QString textFromValue(double value) const override;
    void fixup(QString &text) const override;

private:
    Fields::UnreadText *const unread;
};

/// The same for a whole number.
class WholeBox : public QSpinBox {
    Q_OBJECT

public:
    explicit WholeBox(QWidget *parent = nullptr);
    ~WholeBox() override;

    QValidator::State validate(QString &text, int &position) const override;
    int valueFromText(const QString &text) const override;
    QString textFromValue(int value) const override;
    void fixup(QString &text) const override;

private:
    Fields::UnreadText *const unread;
};

namespace Fields {

/// What is wrong with the text that stands in a NumberBox or WholeBox, with the field's name and
/// what is allowed; empty where nothing is and for a field that is switched off.
QString problemOf(const QAbstractSpinBox *box);

/// Refuses the texts in the number fields of a part of a window that are no numbers of their
/// ranges; the first gets the focus.
///
/// @return whether there were any
bool refuseUnread(const QWidget *part);

} // namespace Fields
