#include "forms/days/daysfields.h"

#include "base/typednumber.h"
#include "fields/numberbox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>

namespace DaysFields {

namespace {

// The choice of a base line is a group of buttons in other forms, here it is a list.
const QHash<QString, QString> fieldNames = {{"groupBox_method", "noise"}};

QString textIn(const QWidget *widget)
{
    if (const auto *const edit = qobject_cast<const QLineEdit *>(widget))
        return edit->text().trimmed();
    if (const auto *const combo = qobject_cast<const QComboBox *>(widget))
        return combo->currentText();
    return {};
}

QString readNumber(const QWidget *widget, double &value)
{
    const std::optional<double> number = Tools::typedNumber(textIn(widget));
    if (!number)
        return QString("\"%1\" is no number. Allowed: %2")
            .arg(textIn(widget), Tools::allowedNumber);
    value = *number;
    return {};
}

QString readCount(const QWidget *widget, int &value)
{
    if (const auto *const box = qobject_cast<const QSpinBox *>(widget)) {
        value = box->value();
        return Fields::problemOf(box);
    }
    const std::optional<qint64> number = Tools::typedWhole(textIn(widget));
    constexpr qint64 limit = 2000000000; // beyond every recording
    if (!number || std::abs(*number) > limit)
        return QString("\"%1\" is no whole number").arg(textIn(widget));
    value = int(*number);
    return {};
}

void readText(const QWidget *widget, const FieldText &field, QString &value)
{
    const auto *const combo = qobject_cast<const QComboBox *>(widget);
    const int chosen = combo ? combo->currentIndex() : -1;
    if (chosen >= 0 && chosen < int(field.choices.size()))
        value = field.choices[std::size_t(chosen)].value;
    else
        value = textIn(widget);
}

// What is wrong with the text of a field; empty where it was read.
struct Reading {
    const QWidget *widget;
    const FieldText &field;

    QString operator()(int *value) const { return readCount(widget, *value); }
    QString operator()(double *value) const { return readNumber(widget, *value); }
    QString operator()(bool *value) const
    {
        if (const auto *const button = qobject_cast<const QAbstractButton *>(widget))
            *value = button->isChecked();
        return {};
    }
    QString operator()(QString *value) const
    {
        readText(widget, field, *value);
        return {};
    }
    QString operator()(std::array<double, 4> * /*value*/) const { return {}; }
};

} // namespace

QWidget *fieldOf(const QWidget *form, const QString &name)
{
    return form->findChild<QWidget *>(fieldNames.value(name, name));
}

void fillChoices(QWidget *form)
{
    for (const Days::FourierDaysField &field : Days::fourierDaysFields()) {
        auto *const combo = qobject_cast<QComboBox *>(fieldOf(form, field.name));
        for (const FieldChoice &choice : field.choices) {
            if (combo)
                combo->addItem(choice.label);
        }
    }
}

Days::FourierDaysParameters read(const QWidget *form, std::vector<FieldProblem> &problems)
{
    Days::FourierDaysParameters parameters;
    for (const Days::FourierDaysField &field : Days::fourierDaysFields()) {
        const QWidget *const widget = fieldOf(form, field.name);
        if (!widget || !widget->isEnabled())
            continue;
        const QString problem = std::visit(Reading{widget, field}, field.of(parameters));
        if (!problem.isEmpty())
            problems.push_back({field.name, problem});
    }
    return parameters;
}

} // namespace DaysFields
