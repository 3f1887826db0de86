#pragma once

#include <QRect>
#include <QString>

class QWidget;

/// Shows a warning box titled "Error" and waits for its closing.
///
/// @param text    what failed, in the program's own words
/// @param reason  why and what can be done, below it in smaller type; may be empty
void showError(QWidget *parent, const QString &text, const QString &reason = {});

/// The same, placed so that it hides nothing of a part of the screen.
///
/// @param kept  in pixels of the screen; empty: the box stands where boxes stand
void showErrorBeside(QWidget *parent, const QRect &kept, const QString &text,
                     const QString &reason = {});

/// Where a box goes: over the middle of the window, or else beside, below or above what is to be
/// seen, within the screen; in a corner where there is no such place.
QRect placeBeside(const QRect &kept, QSize box, const QRect &window, const QRect &screen);
