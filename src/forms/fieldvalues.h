#pragma once

#include "calc/analysis.h"
#include "calc/fieldproblem.h"

#include <optional>
#include <vector>

class QWidget;

/// Between the fields of a form and the parameters of an analysis: numbers in line edits, boxes of
/// choice and fields with arrows, switches in check boxes and checkable groups, choices in groups
/// of radio buttons and boxes of choice.
namespace FieldValues {

/// A text that stands in a field and is no value of it.
struct Unread {
    QWidget *field = nullptr;
    QString text;
    QString allowed; ///< what the field takes
};

/// The field of that object name in a part of a window; null where there is none.
QWidget *find(const QWidget *part, const QString &name);
/// The same of a parameter, by its name or else its key.
QWidget *find(const QWidget *part, const FieldText &told);

/// Reads one field. An optional one that is empty leaves the value as it is, so does one that is
/// only read, or of a kind that holds no such value.
///
/// @return what cannot be read; the value is 0 then
std::optional<Unread> read(QWidget *field, const FieldText &told, FieldRef value);

/// Fills a field. What it cannot hold it does not take.
void show(QWidget *field, const FieldText &told, const FieldValue &value);

/// Fills a box of choice with the texts that a parameter can be.
void offerChoices(QWidget *field, const FieldText &told);

/// Everything in a part of a window that is no number: texts that were read, and those in fields
/// with arrows that are out of their ranges.
std::vector<FieldProblem> problems(const QWidget *part, const std::vector<Unread> &unread);

} // namespace FieldValues
