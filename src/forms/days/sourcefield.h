#pragma once

#include "coords/skyposition.h"

#include <QDate>
#include <QWidget>
#include <optional>

class QLabel;
class QLineEdit;
class QStringListModel;

/// Asks for a place on the sky: a name from the catalogue of known pulsars, which is completed
/// while it is typed, or right ascension and declination of 2000. Below stands when the place
/// culminates and which beam comes nearest.
class SourceField : public QWidget {
    Q_OBJECT

public:
    explicit SourceField(QWidget *parent = nullptr);

    /// What the place is told for.
    struct Setting {
        QString site; ///< "N0" to "N4"; empty where unknown
        QDate date;   ///< UTC
        int spanPoints = 0;
        double tresolution = 0; ///< s
    };
    void setSetting(const Setting &next);

    /// The place that the texts name; nothing where they name none.
    std::optional<Tools::SkyPosition> position() const;

    /// When a place culminates, which beam sees it, and how long the stretch is.
    static QString description(const Tools::SkyPosition &position, const Setting &setting);

signals:
    /// The user names another place, or none.
    void edited();

private:
    void suggest(const QString &typed);
    void changeName();
    void changeCoordinate(const QString &typed);
    void showPosition();

    QLineEdit *const source;
    QLineEdit *const alfa;
    QLineEdit *const delta;
    QLabel *const text;
    QStringListModel *const names;
    Setting setting;
};
