#pragma once

#include "helpdocs/pdfindex.h"

class QTextDocument;

/// Where a document with headings stands on its pages.
struct PageMeasures {
    double bodyHeight = 0; ///< of the text of a page, in dots
    double left = 0;       ///< margins of the paper, in dots
    double top = 0;
    double dotsPerPoint = 1;
};

/// Name by which links reach a heading, "the-ffa-form": its letters in lower case, "-" between
/// its words.
QString chapterName(const QString &heading);

/// Puts a list of all chapters before the first of them, each line a link. Documents of few
/// chapters get none. The numbers of pages come with numberContents().
///
/// @param width  of a line, in dots
void insertContents(QTextDocument &document, double width);

/// Breaks pages so that no heading stands apart from what follows, no picture from its caption,
/// and no row of a table is torn. A table that goes on has its head again.
void makePages(QTextDocument &document, double bodyHeight);

void numberContents(QTextDocument &document, double bodyHeight);

std::vector<PdfBookmark> bookmarksOf(const QTextDocument &document, const PageMeasures &measures);

/// The links between places of the document.
///
/// @param broken  becomes the target of a link that leads nowhere, else stays
std::vector<PdfLink> linksOf(const QTextDocument &document, const PageMeasures &measures,
                             QString &broken);

/// Page, from 1, and name of each chapter, one a line.
QByteArray chapterPages(const std::vector<PdfBookmark> &bookmarks);
