#pragma once

#include "calc/analysis.h"
#include "calc/fieldproblem.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

class QLabel;
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

/// Fills the boxes of choice of an analysis.
template <typename Parameters>
void offerChoices(const QWidget *part, const Analysis<Parameters> &analysis)
{
    for (const Field<Parameters> *told : analysis.fields)
        offerChoices(find(part, *told), *told);
}

/// Hides a field and the label that stands for it.
void hide(const QWidget *part, QWidget *field);

/// Hides the fields that other analyses of the same form read and this one does not.
template <typename OneAnalysis>
void hideFieldsOfOthers(const QWidget *part, const OneAnalysis &own,
                        const std::vector<OneAnalysis> &all)
{
    const auto isOwn = [&](const QWidget *field) {
        return std::any_of(own.fields.begin(), own.fields.end(),
                           [&](const auto *told) { return find(part, *told) == field; });
    };
    for (const OneAnalysis &other : all) {
        for (const auto *told : other.fields) {
            if (QWidget *const field = find(part, *told); field && !isOwn(field))
                hide(part, field);
        }
    }
}

/// What stands in the fields of an analysis. A parameter without a field has its preset.
///
/// @param counts    whether a field is asked; one that is not leaves the preset
/// @param problems  becomes what cannot be read
template <typename Parameters>
Parameters readAll(const QWidget *part, const Analysis<Parameters> &analysis,
                   const std::function<bool(const QWidget *field)> &counts,
                   std::vector<FieldProblem> &problems)
{
    Parameters parameters = analysis.presets;
    std::vector<Unread> unread;
    for (const Field<Parameters> *told : analysis.fields) {
        QWidget *const field = find(part, *told);
        if (!field || !counts(field))
            continue;
        if (const std::optional<Unread> problem = read(field, *told, told->of(parameters)))
            unread.push_back(*problem);
    }
    problems = FieldValues::problems(part, unread);
    return parameters;
}

/// Tells all problems in one label, which moves no field and is hidden without any, and marks the
/// fields that they concern.
///
/// @param before  what was told before, whose marks go
void showProblems(const QWidget *part, QLabel *label, const std::vector<FieldProblem> &before,
                  const std::vector<FieldProblem> &problems);

} // namespace FieldValues
