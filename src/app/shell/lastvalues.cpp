#include "app/shell/lastvalues.h"

#include "app/shell/settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <utility>

namespace {

constexpr char groupKey[] = "lastValues";
constexpr int writingDelay = 300; // ms

QString keyOf(const QWidget *form, const QString &field)
{
    return QString("%1/%2/%3").arg(groupKey, form->objectName(), field);
}

// Names the property that holds what the user entered; null when the widget is no field.
const char *valueProperty(const QWidget *field)
{
    if (const auto *edit = qobject_cast<const QLineEdit *>(field))
        return edit->isReadOnly() ? nullptr : "text";
    if (qobject_cast<const QSpinBox *>(field) || qobject_cast<const QDoubleSpinBox *>(field))
        return "value";
    if (qobject_cast<const QComboBox *>(field))
        return "currentText";
    if (qobject_cast<const QCheckBox *>(field) || qobject_cast<const QRadioButton *>(field))
        return "checked";
    return nullptr;
}

// Spin boxes and combo boxes have line edits of their own within.
bool isField(const QWidget *field)
{
    return valueProperty(field) && !field->objectName().isEmpty() &&
           !field->objectName().startsWith("qt_");
}

} // namespace

LastValues::LastValues(QWidget *watchedForm)
    : form(watchedForm), button(watchedForm->findChild<QPushButton *>("lastValues"))
{
    delay.setSingleShot(true);
    delay.setInterval(writingDelay);
    connect(&delay, &QTimer::timeout, this, &LastValues::rememberChanges);
    const QList<QWidget *> children = form->findChildren<QWidget *>();
    for (QWidget *child : children) {
        if (!isField(child))
            continue;
        fields.push_back({child, child->property(valueProperty(child))});
        watch(child);
    }
    if (!button)
        return;
    connect(button, &QPushButton::clicked, this, &LastValues::bringBack);
    QSettings store = Settings::store();
    store.beginGroup(keyOf(form, ""));
    button->setEnabled(!store.childKeys().isEmpty());
}

LastValues::~LastValues()
{
    rememberChanges();
}

// Listens to signals that only the user causes, where a widget has such a signal. The zero timer
// runs after fields that follow this one have changed too. Numbers are stored with a delay, because
// they change many times while they are typed or turned and each writing waits for the disk.
void LastValues::watch(QWidget *field)
{
    const auto chosen = [this, field] {
        QTimer::singleShot(0, this, [this, field] { remember(field->parentWidget()); });
    };
    const auto changed = [this, field] {
        changedGroups.insert(field->parentWidget());
        if (!delay.isActive())
            delay.start();
    };
    if (auto *edit = qobject_cast<QLineEdit *>(field))
        connect(edit, &QLineEdit::textEdited, this, changed);
    else if (auto *spin = qobject_cast<QSpinBox *>(field))
        connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, changed);
    else if (auto *doubleSpin = qobject_cast<QDoubleSpinBox *>(field))
        connect(doubleSpin, qOverload<double>(&QDoubleSpinBox::valueChanged), this, changed);
    else if (auto *combo = qobject_cast<QComboBox *>(field))
        connect(combo, &QComboBox::currentTextChanged, this, chosen);
    else if (auto *choice = qobject_cast<QAbstractButton *>(field))
        connect(choice, &QAbstractButton::clicked, this, chosen);
}

void LastValues::rememberChanges()
{
    delay.stop();
    for (const QWidget *group : std::exchange(changedGroups, {}))
        remember(group);
}

void LastValues::remember(const QWidget *group)
{
    QSettings store = Settings::store();
    for (auto &[field, known] : fields) {
        const QVariant value = field->property(valueProperty(field));
        if (field->parentWidget() != group || value == known)
            continue;
        store.setValue(keyOf(form, field->objectName()), value);
        known = value;
        if (button)
            button->setEnabled(true);
    }
}

void LastValues::bringBack()
{
    rememberChanges();
    const QSettings store = Settings::store();
    for (auto &[field, known] : fields) {
        const QVariant value = store.value(keyOf(form, field->objectName()));
        if (!value.isValid())
            continue;
        // To uncheck the chosen one of several is the work of checking another.
        if (qobject_cast<QRadioButton *>(field) && !value.toBool())
            continue;
        field->setProperty(valueProperty(field), value);
        known = field->property(valueProperty(field));
    }
}
