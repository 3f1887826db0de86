#pragma once

#include "analyses/days/dayplace.h"
#include "calc/fieldproblem.h"

#include <QWidget>
#include <memory>
#include <vector>

class SourceField;
namespace Ui {
class PlaceFields;
}

/// Asks which part of every day is taken: a source, a point, a UTC or a sidereal time, of which one
/// is chosen, and the offset of the recordings' clock, which is remembered. The fields are called
/// like the parameters of an analysis.
class PlaceFields : public QWidget {
    Q_OBJECT

public:
    explicit PlaceFields(QWidget *parent = nullptr);
    ~PlaceFields() override;

    SourceField *sourceField() const;
    bool isSource() const;
    /// Chooses the first point, and fills it in.
    void chooseFirstPoint(int point);
    /// Chooses the start that a place has.
    void choose(const Days::DayPlace &place);
    /// What the field of the first point takes.
    void setPointToolTip(const QString &text);

    /// Whether what stands in a field of the form is a parameter.
    bool counts(const QWidget *field) const;
    /// Adds the problem of a chosen start without a text.
    ///
    /// @param place  as it was read from the fields
    void addProblems(const Days::DayPlace &place, std::vector<FieldProblem> &problems) const;
    /// Keeps the offset of the clock for later.
    void rememberClock() const;

signals:
    /// Another start is chosen.
    void chosen();

private:
    const std::unique_ptr<Ui::PlaceFields> ui;
};
