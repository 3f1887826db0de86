#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>
#include <QVariant>
#include <QVector>

class QPushButton;
class QWidget;

/// Remembers between runs what the user typed and chose last in the fields of a form, and
/// brings it all back when the form's button "lastValues" is pressed. The fields are line
/// edits, spin boxes, combo boxes, check boxes and radio buttons with an object name; each is
/// kept by itself, under the object names of form and field. With it are kept the fields of the
/// same group that follow it. A field that is only read is left out.
class LastValues : public QObject {
    Q_OBJECT

public:
    /// Begins with the fields that the form has now.
    explicit LastValues(QWidget *form);
    /// Keeps what changed in the last moment, and so has to go before the form's fields.
    ~LastValues() override;

public slots:
    /// Fills the fields. Nothing is computed: no button counts as clicked.
    void bringBack();

private:
    void watch(QWidget *field);
    void rememberChanges();
    void remember(const QWidget *group);

    QWidget *const form;
    QPushButton *button = nullptr;
    QVector<std::pair<QWidget *, QVariant>> fields; // with their values as last seen
    QSet<const QWidget *> changedGroups;
    QTimer delay; // until numbers that are being typed are stored
};
