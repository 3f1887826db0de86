#include "helpdocs/chapters.h"

#include "helpdocs/documentstyle.h"

#include <QAbstractTextDocumentLayout>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextFrame>
#include <QTextLayout>
#include <QTextTable>
#include <algorithm>

namespace {

constexpr int contentsProperty = QTextFormat::UserProperty + 1; // of its lines
constexpr int leastChapters = 4;                                // that are worth a list
const QColor linkColour(0x1f, 0x4e, 0x79);

int levelOf(const QTextBlock &block)
{
    return block.blockFormat().headingLevel();
}

bool isContentsLine(const QTextBlock &block)
{
    return block.blockFormat().hasProperty(contentsProperty);
}

double topOf(const QTextDocument &document, const QTextBlock &block)
{
    return document.documentLayout()->blockBoundingRect(block).top();
}

// Lower edge of its first line. A block whose first line is the first of a page may begin, by its
// margin, on the page before.
double firstLineOf(const QTextDocument &document, const QTextBlock &block)
{
    const double top = topOf(document, block);
    const QTextLayout *const layout = block.layout();
    return layout->lineCount() == 0 ? top
                                    : top + layout->lineAt(0).y() + layout->lineAt(0).height();
}

// Pages are numbered from 0.
int pageOf(double y, double bodyHeight)
{
    return int(y / bodyHeight);
}

void breakBefore(const QTextBlock &block)
{
    QTextBlockFormat format;
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    QTextCursor(block).mergeBlockFormat(format);
}

// Headings, a picture with its caption: they stay on the page of what follows the last of them.
//
// @param block  the first of them; becomes the last
// @return whether they moved
bool keepWithText(const QTextDocument &document, QTextBlock &block, double bodyHeight)
{
    const QTextBlock first = block;
    while (block.next().isValid() && levelOf(block) > 0 && levelOf(block.next()) > 0)
        block = block.next();
    if (!block.next().isValid() ||
        pageOf(topOf(document, first), bodyHeight) ==
            pageOf(firstLineOf(document, block.next()), bodyHeight) ||
        first.blockFormat().pageBreakPolicy() == QTextFormat::PageBreak_AlwaysBefore)
        return false;
    breakBefore(first);
    return true;
}

double bottomOfRow(const QTextDocument &document, const QTextTable &table, int row)
{
    double bottom = 0;
    for (int column = 0; column < table.columns(); ++column) {
        const QTextBlock last = table.cellAt(row, column).lastCursorPosition().block();
        bottom = std::max(bottom, document.documentLayout()->blockBoundingRect(last).bottom());
    }
    return bottom;
}

double topOfRow(const QTextDocument &document, const QTextTable &table, int row)
{
    return topOf(document, table.cellAt(row, 0).firstCursorPosition().block());
}

// The first row, from the second on, that does not end on the page of the first; the number of
// rows if all do.
int firstRowBeyond(const QTextDocument &document, const QTextTable &table, double bodyHeight)
{
    // Room for the margins of cells and table and a line below: a table that touched the end of
    // the page with these would take a whole page more.
    constexpr double margins = 24 * dotsPerInch / 72.0;
    const int page = pageOf(topOfRow(document, table, 0), bodyHeight);
    for (int row = 0; row < table.rows(); ++row) {
        if (pageOf(bottomOfRow(document, table, row) + margins, bodyHeight) != page)
            return row;
    }
    return table.rows();
}

// With the headings right above it.
void breakBefore(QTextTable &table)
{
    QTextBlock first = table.cellAt(0, 0).firstCursorPosition().block();
    while (levelOf(first.previous()) > 0)
        first = first.previous();
    if (levelOf(first) > 0) {
        breakBefore(first);
        return;
    }
    QTextTableFormat format = table.format();
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    table.setFormat(format);
}

bool beginsPage(const QTextDocument &document, const QTextTable &table, double bodyHeight)
{
    constexpr double top = 0.15; // of the page, that headings may take
    const double y = topOfRow(document, table, 0);
    return y - pageOf(y, bodyHeight) * bodyHeight < top * bodyHeight;
}

// Rows from `row` on become a table of their own on the next page, below the head once more.
void splitTable(QTextTable &table, int row)
{
    QTextCursor all(table.cellAt(0, 0).firstCursorPosition());
    all.setPosition(
        table.cellAt(table.rows() - 1, table.columns() - 1).lastCursorPosition().position(),
        QTextCursor::KeepAnchor);
    const QTextDocumentFragment copy(all);
    QTextCursor behind = table.lastCursorPosition();
    behind.movePosition(QTextCursor::NextCharacter);
    QTextBlockFormat thin;
    thin.setLineHeight(1, QTextBlockFormat::FixedHeight);
    thin.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    behind.insertBlock();
    behind.movePosition(QTextCursor::PreviousBlock);
    behind.setBlockFormat(thin);
    // The layout passes over the page break of an empty line beside a table.
    QTextCharFormat small;
    small.setFontPointSize(1);
    behind.insertText(QString(QChar::Nbsp), small);
    behind.movePosition(QTextCursor::NextBlock);
    behind.insertFragment(copy);
    table.removeRows(row, table.rows() - row);
    QTextFrame *const root = table.document()->rootFrame();
    const QList<QTextFrame *> frames = root->childFrames();
    const int place = frames.indexOf(&table);
    if (auto *const rest = qobject_cast<QTextTable *>(frames.value(place + 1))) {
        rest->removeRows(1, row - 1);
        QTextTableFormat format = table.format();
        format.setPageBreakPolicy(QTextFormat::PageBreak_Auto);
        rest->setFormat(format);
    }
}

// Returns whether something moved.
bool keepRowsWhole(const QTextDocument &document, QTextTable &table, double bodyHeight)
{
    const int row = firstRowBeyond(document, table, bodyHeight);
    if (row == table.rows())
        return false;
    const double height =
        bottomOfRow(document, table, table.rows() - 1) - topOfRow(document, table, 0);
    constexpr int fewRows = 3;
    constexpr double smallPart = 0.3; // of a page, that a short table may leave free
    if (!beginsPage(document, table, bodyHeight) &&
        (row < fewRows || height < smallPart * bodyHeight))
        breakBefore(table);
    else if (row >= 2)
        splitTable(table, row);
    else
        return false; // a row longer than a page
    return true;
}

// Makes the first change that is needed, in the order of the document, so that nothing above it
// moves any more. Returns whether there was one.
bool breakOnce(QTextDocument &document, double bodyHeight)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (QTextTable *const table = QTextCursor(block).currentTable()) {
            if (keepRowsWhole(document, *table, bodyHeight))
                return true;
            block = table->lastCursorPosition().block();
        } else if ((levelOf(block) > 0 || holdsPicture(block)) &&
                   keepWithText(document, block, bodyHeight)) {
            return true;
        }
    }
    return false;
}

QTextBlock firstChapter(QTextDocument &document)
{
    QTextBlock block = document.begin();
    while (block.isValid() && levelOf(block) != 2)
        block = block.next();
    return block;
}

} // namespace

QString chapterName(const QString &heading)
{
    QString name = heading.toLower();
    name.replace(QRegularExpression("[^a-z0-9]+"), "-");
    return name.remove(QRegularExpression("^-|-$"));
}

void insertContents(QTextDocument &document, double width)
{
    std::vector<std::pair<QString, int>> headings;
    int chapters = 0;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (levelOf(block) == 2 || levelOf(block) == 3)
            headings.emplace_back(block.text(), levelOf(block));
        chapters += levelOf(block) == 2;
    }
    if (chapters < leastChapters)
        return;
    QTextCursor cursor(firstChapter(document));
    for (const auto &[heading, level] : headings) {
        cursor.insertBlock();
        cursor.movePosition(QTextCursor::PreviousBlock);
        QTextBlockFormat line;
        line.setProperty(contentsProperty, level);
        line.setIndent(level == 3 ? 1 : 0);
        const double indent = line.indent() * document.indentWidth();
        line.setTabPositions({QTextOption::Tab(width * screenDotsPerInch / dotsPerInch - indent - 1,
                                               QTextOption::RightTab)});
        cursor.setBlockFormat(line);
        QTextCharFormat text;
        text.setAnchor(true);
        text.setAnchorHref("#" + chapterName(heading));
        text.setFontWeight(level == 2 ? QFont::Bold : QFont::Normal);
        text.setForeground(linkColour);
        cursor.insertText(heading + "\t0", text);
        cursor.movePosition(QTextCursor::NextBlock);
    }
    constexpr std::size_t longList = 16; // which has a page of its own
    if (headings.size() >= longList)
        breakBefore(cursor.block());
}

void makePages(QTextDocument &document, double bodyHeight)
{
    constexpr int mostSteps = 1000; // against a layout that never settles
    for (int step = 0; step < mostSteps && breakOnce(document, bodyHeight); ++step) {
    }
}

void numberContents(QTextDocument &document, double bodyHeight)
{
    QTextBlock line = document.begin();
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (levelOf(block) != 2 && levelOf(block) != 3)
            continue;
        while (line.isValid() && !isContentsLine(line))
            line = line.next();
        if (!line.isValid())
            return;
        QTextCursor cursor(line);
        cursor.movePosition(QTextCursor::EndOfBlock);
        cursor.deletePreviousChar();
        cursor.insertText(QString::number(pageOf(topOf(document, block), bodyHeight) + 1));
        line = line.next();
    }
}

std::vector<PdfBookmark> bookmarksOf(const QTextDocument &document, const PageMeasures &measures)
{
    std::vector<PdfBookmark> bookmarks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (levelOf(block) == 0)
            continue;
        const double top = topOf(document, block);
        PdfBookmark bookmark = {block.text(), levelOf(block), {}};
        bookmark.place.page = pageOf(top, measures.bodyHeight);
        bookmark.place.top = (measures.top + top - bookmark.place.page * measures.bodyHeight) /
                             measures.dotsPerPoint;
        bookmarks.push_back(bookmark);
    }
    return bookmarks;
}

std::vector<PdfLink> linksOf(const QTextDocument &document, const PageMeasures &measures,
                             QString &broken)
{
    const std::vector<PdfBookmark> bookmarks = bookmarksOf(document, measures);
    std::vector<PdfLink> links;
    const auto addLine = [&](const QTextBlock &block, const QTextLine &line, int from, int to,
                             const PdfPlace &target) {
        const QPointF origin = document.documentLayout()->blockBoundingRect(block).topLeft();
        const double top = origin.y() + line.y();
        const int page = pageOf(top, measures.bodyHeight);
        const QRectF area(origin.x() + line.cursorToX(from) + measures.left,
                          top - page * measures.bodyHeight + measures.top,
                          line.cursorToX(to) - line.cursorToX(from), line.height());
        const double scale = 1 / measures.dotsPerPoint;
        links.push_back(
            {page,
             {area.x() * scale, area.y() * scale, area.width() * scale, area.height() * scale},
             target});
    };
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment part = it.fragment();
            const QString address = part.charFormat().anchorHref();
            if (!address.startsWith('#'))
                continue;
            const auto target =
                std::find_if(bookmarks.begin(), bookmarks.end(), [&](const PdfBookmark &one) {
                    return "#" + chapterName(one.title) == address;
                });
            if (target == bookmarks.end()) {
                broken = address;
                continue;
            }
            const int from = part.position() - block.position();
            const int to = from + part.length();
            for (int i = 0; i < block.layout()->lineCount(); ++i) {
                const QTextLine line = block.layout()->lineAt(i);
                const int lineEnd = line.textStart() + line.textLength();
                if (line.textStart() < to && from < lineEnd)
                    addLine(block, line, std::max(from, line.textStart()), std::min(to, lineEnd),
                            target->place);
            }
        }
    }
    return links;
}

QByteArray chapterPages(const std::vector<PdfBookmark> &bookmarks)
{
    QByteArray lines;
    for (const PdfBookmark &bookmark : bookmarks)
        lines += QByteArray::number(bookmark.place.page + 1) + " " +
                 chapterName(bookmark.title).toUtf8() + "\n";
    return lines;
}
