#pragma once

#include "calc/analysis.h"

#include <optional>

class QWidget;

/// Between the fields of a form and the parameters of an analysis: numbers in line edits and
/// fields with arrows, switches in check boxes and checkable groups, choices in groups of radio
/// buttons and boxes of choice.
namespace FieldValues {

/// A text that stands in a field and is no value of it.
struct Unread {
    QWidget *field = nullptr;
    QString text;
    QString allowed; ///< what the field takes
};

/// Reads one field. An optional one that is empty leaves the value as it is, so does one that is
/// only read, or of a kind that holds no such value.
///
/// @return what cannot be read; the value is 0 then
std::optional<Unread> read(QWidget *field, const FieldText &told, FieldRef value);

/// Fills a field. What it cannot hold it does not take.
void show(QWidget *field, const FieldText &told, const FieldValue &value);

} // namespace FieldValues
