#pragma once

#include "analyses/days/fourierdays.h"

#include <vector>

class QWidget;

/// Parameters of an analysis over days and the fields of a form that are called like them.
namespace DaysFields {

/// The field of that name; null where the form has none.
QWidget *fieldOf(const QWidget *form, const QString &name);

/// Fills lists of texts that a parameter can be with their labels.
void fillChoices(QWidget *form);

/// What stands in the fields. A parameter without a field stays as it is.
///
/// @param problems  gets those of texts that cannot be read
Days::FourierDaysParameters read(const QWidget *form, std::vector<FieldProblem> &problems);

} // namespace DaysFields
