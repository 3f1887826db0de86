#pragma once

#include <QString>

class QWidget;

/// How fields say how they stand: by style sheets, and by a word beside what was refused.
namespace FieldStyles {

inline constexpr char failing[] = "background-color: #f4cccc;";
inline constexpr char filled[] = "background-color: #98FB98;";
inline constexpr char readOnly[] = "background-color: #dfffd3;";
inline constexpr char plain[] = "background-color: #ffffff;";

/// Gives a field one of these styles, or with "" that of the window again. All of them are light:
/// the property "isLight" then lets the application's style sheet make the text black, whatever
/// the colours of the desktop are.
void setStyle(QWidget *field, const QString &style);

/// Writes the text of a label in the colour of problems, or in its own again.
void setProblem(QWidget *label, bool isProblem);

/// What the window calls a field: the text of the label it is the buddy of, its accessible name, or
/// else its object name.
QString nameOf(const QWidget *field);

/// Marks a field as failing and shows the message below it.
void markRefused(QWidget *field, const QString &message);

/// The same, and gives it the focus.
void refuse(QWidget *field, const QString &message);

} // namespace FieldStyles
