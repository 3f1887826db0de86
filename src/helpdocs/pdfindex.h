#pragma once

#include <QByteArray>
#include <QRectF>
#include <QString>
#include <vector>

/// A place in a PDF document.
struct PdfPlace {
    int page = 0;   ///< from 0
    double top = 0; ///< points below the upper edge of the page
};

/// A heading for the bookmarks, in the order of the document.
struct PdfBookmark {
    QString title;
    int level = 1; ///< one below a level stands inside it
    PdfPlace place;
};

/// An area of a page that leads to another place.
struct PdfLink {
    int page = 0;
    QRectF area; ///< points, from the upper left corner of the page
    PdfPlace target;
};

/// Adds bookmarks and links to a document of QPdfWriter, which can write neither: new objects and
/// new versions of the old ones are appended, as an incremental update (PDF 1.4, 3.4.5).
///
/// @return empty when the document is not built as QPdfWriter builds one
QByteArray withIndex(const QByteArray &pdf, const std::vector<PdfBookmark> &bookmarks,
                     const std::vector<PdfLink> &links);
