#include "forms/fieldvalues.h"

#include "base/numbertext.h"
#include "base/typednumber.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <algorithm>

namespace FieldValues {

namespace {

constexpr qint64 farthest =
    2000000000; // beyond every recording, so that an analysis names its range

// The chosen one of the texts that a parameter can be; null where none is.
const FieldChoice *chosen(const QWidget *field, const FieldText &told)
{
    if (const auto *combo = qobject_cast<const QComboBox *>(field)) {
        const int index = combo->currentIndex();
        const bool isThere = index >= 0 && index < int(told.choices.size());
        return isThere ? &told.choices[std::size_t(index)] : nullptr;
    }
    for (const FieldChoice &choice : told.choices) {
        const auto *const button = field->findChild<const QRadioButton *>(choice.button);
        if (button && button->isChecked())
            return &choice;
    }
    return nullptr;
}

std::optional<Unread> readText(QWidget *field, const QString &text, FieldRef value)
{
    if (auto *const *number = std::get_if<double *>(&value)) {
        const std::optional<double> typed = Tools::typedNumber(text);
        **number = typed.value_or(0);
        return typed ? std::nullopt : std::optional(Unread{field, text, Tools::allowedNumber});
    }
    if (auto *const *whole = std::get_if<int *>(&value)) {
        const std::optional<qint64> typed = Tools::typedWhole(text);
        **whole = int(std::clamp(typed.value_or(0), -farthest, farthest));
        return typed ? std::nullopt : std::optional(Unread{field, text, Tools::allowedWhole});
    }
    if (auto *const *plain = std::get_if<QString *>(&value))
        **plain = text.trimmed();
    return std::nullopt;
}

void readNumber(double number, FieldRef value)
{
    if (auto *const *whole = std::get_if<int *>(&value))
        **whole = int(number);
    else if (auto *const *real = std::get_if<double *>(&value))
        **real = number;
}

QString textOf(const FieldValue &value)
{
    if (const QString *const text = std::get_if<QString>(&value))
        return *text;
    if (const int *const whole = std::get_if<int>(&value))
        return QString::number(*whole);
    const double *const number = std::get_if<double>(&value);
    return number ? exactText(*number) : QString();
}

void choose(QWidget *field, const FieldText &told, const QString &value)
{
    for (std::size_t i = 0; i < told.choices.size(); ++i) {
        if (told.choices[i].value != value)
            continue;
        if (auto *const combo = qobject_cast<QComboBox *>(field))
            combo->setCurrentIndex(int(i));
        else if (auto *const button = field->findChild<QRadioButton *>(told.choices[i].button))
            button->setChecked(true);
    }
}

} // namespace

QWidget *find(const QWidget *part, const QString &name)
{
    return name.isEmpty() ? nullptr : part->findChild<QWidget *>(name);
}

QWidget *find(const QWidget *part, const FieldText &told)
{
    QWidget *const named = find(part, told.name);
    return named ? named : find(part, told.key);
}

std::optional<Unread> read(QWidget *field, const FieldText &told, FieldRef value)
{
    if (!told.choices.empty()) {
        const FieldChoice *const choice = chosen(field, told);
        if (auto *const *text = std::get_if<QString *>(&value); text && choice)
            **text = choice->value;
    } else if (auto *const edit = qobject_cast<const QLineEdit *>(field)) {
        const bool isLeft = told.isOptional && edit->text().isEmpty();
        if (!edit->isReadOnly() && !isLeft)
            return readText(field, edit->text(), value);
    } else if (const auto *combo = qobject_cast<const QComboBox *>(field)) {
        return readText(field, combo->currentText(), value);
    } else if (const auto *whole = qobject_cast<const QSpinBox *>(field)) {
        readNumber(whole->value(), value);
    } else if (const auto *number = qobject_cast<const QDoubleSpinBox *>(field)) {
        readNumber(number->value(), value);
    } else if (auto *const *is = std::get_if<bool *>(&value)) {
        **is = field->property("checked").toBool(); // a button or a checkable group
    }
    return std::nullopt;
}

void show(QWidget *field, const FieldText &told, const FieldValue &value)
{
    if (!told.choices.empty())
        choose(field, told, textOf(value));
    else if (const bool *const is = std::get_if<bool>(&value))
        field->setProperty("checked", *is);
    else if (auto *const edit = qobject_cast<QLineEdit *>(field))
        edit->setText(textOf(value));
    else if (qobject_cast<QAbstractSpinBox *>(field))
        field->setProperty("value", textOf(value).toDouble());
}

void offerChoices(QWidget *field, const FieldText &told)
{
    auto *const combo = qobject_cast<QComboBox *>(field);
    if (!combo)
        return;
    for (const FieldChoice &choice : told.choices)
        combo->addItem(choice.label);
}

void hide(const QWidget *part, QWidget *field)
{
    field->hide();
    for (QLabel *const label : part->findChildren<QLabel *>()) {
        if (label->buddy() == field)
            label->hide();
    }
}

std::vector<FieldProblem> problems(const QWidget *part, const std::vector<Unread> &unread)
{
    std::vector<FieldProblem> all;
    for (const QAbstractSpinBox *box : part->findChildren<QAbstractSpinBox *>()) {
        if (const QString problem = Fields::problemOf(box); !problem.isEmpty())
            all.push_back({box->objectName(), problem});
    }
    for (const Unread &text : unread)
        all.push_back({text.field->objectName(),
                       QString("%1: \"%2\" is not a number. Allowed: %3.")
                           .arg(FieldStyles::nameOf(text.field), text.text, text.allowed)});
    return all;
}

void showProblems(const QWidget *part, QLabel *label, const std::vector<FieldProblem> &before,
                  const std::vector<FieldProblem> &problems)
{
    for (const FieldProblem &old : before) {
        if (QWidget *const field = find(part, old.field))
            FieldStyles::setStyle(field, "");
    }
    QStringList texts;
    for (const FieldProblem &problem : problems) {
        texts << problem.text;
        if (QWidget *const field = find(part, problem.field))
            FieldStyles::setStyle(field, FieldStyles::failing);
    }
    texts.removeDuplicates();
    label->setText(texts.join('\n'));
    FieldStyles::setStyle(label, FieldStyles::failing);
    label->setVisible(!texts.isEmpty());
}

} // namespace FieldValues
