#pragma once

#include <QString>

class QWidget;

/// Shows a warning box titled "Error" and waits for its closing.
///
/// @param text    what failed, in the program's own words
/// @param reason  why and what can be done, below it in smaller type; may be empty
void showError(QWidget *parent, const QString &text, const QString &reason = {});
