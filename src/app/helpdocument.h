#pragma once

#include <QString>
#include <QStringList>

/// A help document and the chapter of it that tells about something.
struct HelpChapter {
    QString document; ///< file name
    QString chapter;  ///< as the list beside the document names it; empty: from its first page
};

/// What tells about a form.
///
/// @param key  its property "helpKey", or name of its class where it has none; an empty or unknown
///             one gives the whole manual
HelpChapter helpOn(const QString &key);

/// The page, from 1, of a chapter in the list "NAME.chapters" beside the document "NAME.pdf";
/// 1 where there is no list or no such chapter.
int pageOfChapter(const QString &documentPath, const QString &chapter);

/// The command that opens a document at a page in the viewer of that desktop entry; empty for
/// viewers that are not known.
QStringList viewerCommand(const QString &desktopEntry, const QString &path, int page);

/// Opens a document at a page in the desktop's own viewer, at its first page in one that is not
/// known to take a page.
///
/// @return whether a viewer was started
bool openDocument(const QString &path, int page);
