#pragma once

#include <QColor>
#include <QFont>

class QString;
class QTextBlock;
class QTextDocument;

// How the help documents look.

inline constexpr int dotsPerInch = 600;
inline constexpr double screenDotsPerInch = 96; // AA_Use96Dpi, whatever screen there is
inline const QColor ruleColour(0xc8, 0xcc, 0xd2);

/// QTextDocument takes lengths in pixels of the screen and scales them to the device itself.
double screenPixels(double points);

QFont bodyFont();

/// Whether a paragraph is a picture alone.
bool holdsPicture(const QTextBlock &block);

/// Gives headings, paragraphs, code and tables their look.
///
/// @param width  of the page, in dots
void styleDocument(QTextDocument &document, double width);

/// Gives every picture its size on the page. It is looked for beside the document first, then by
/// its name in `folder`.
///
/// @return the name of the first picture that cannot be read; empty when all can
QString sizePictures(QTextDocument &document, const QString &folder, double pageWidth);
