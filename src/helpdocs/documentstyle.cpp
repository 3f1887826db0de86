#include "helpdocs/documentstyle.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QImage>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>
#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr double pictureDotsPerInch = 110; // a screenshot at its natural size on paper
constexpr double bodyPoints = 10;
const QColor headingColour(0x1f, 0x3a, 0x5f);
const QColor shade(0xf3, 0xf5, 0xf8);

QStringList codeFamilies()
{
    return {"Liberation Mono", "DejaVu Sans Mono"};
}

template <typename Function>
void forEachBlock(QTextDocument &document, Function function)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        function(block, QTextCursor(block));
}

template <typename Function>
void forEachFragment(QTextDocument &document, Function function)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        std::vector<QTextFragment> fragments;
        for (auto it = block.begin(); !it.atEnd(); ++it)
            fragments.push_back(it.fragment());
        for (const QTextFragment &fragment : fragments) {
            QTextCursor cursor(&document);
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            function(fragment, cursor);
        }
    }
}

bool isCode(const QTextBlock &block)
{
    return block.blockFormat().hasProperty(QTextFormat::BlockCodeFence) ||
           block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

void styleHeading(QTextCursor cursor, int level)
{
    constexpr std::array<double, 3> points = {20, 14, 11.5};
    constexpr std::array<double, 3> above = {0, 16, 11};
    constexpr std::array<double, 3> below = {10, 5, 3};
    const std::size_t index = std::size_t(std::clamp(level, 1, 3) - 1);

    QTextBlockFormat block;
    block.setTopMargin(screenPixels(above[index]));
    block.setBottomMargin(screenPixels(below[index]));
    cursor.mergeBlockFormat(block);
    QTextCharFormat text;
    text.setFont(bodyFont());
    text.setFontPointSize(points[index]);
    text.setFontWeight(QFont::Bold);
    text.setForeground(headingColour);
    cursor.setPosition(cursor.block().position() + cursor.block().length() - 1,
                       QTextCursor::KeepAnchor);
    cursor.setCharFormat(text);
}

void styleBlock(const QTextBlock &block, QTextCursor cursor)
{
    if (const int level = block.blockFormat().headingLevel(); level > 0) {
        styleHeading(cursor, level);
        return;
    }
    QTextBlockFormat format;
    if (!isCode(block) && !holdsPicture(block))
        format.setLineHeight(118, QTextBlockFormat::ProportionalHeight);
    if (cursor.currentTable()) {
        format.setTopMargin(0);
        format.setBottomMargin(0);
    } else if (isCode(block)) {
        format.setBackground(shade);
        format.setTopMargin(isCode(block.previous()) ? 0 : screenPixels(4));
        format.setBottomMargin(isCode(block.next()) ? 0 : screenPixels(8));
    } else if (block.textList()) {
        format.setTopMargin(0);
        format.setBottomMargin(screenPixels(block.next().textList() ? 2.5 : 6));
    } else {
        format.setTopMargin(0);
        format.setBottomMargin(screenPixels(6));
    }
    cursor.mergeBlockFormat(format);
}

void styleFragment(const QTextFragment &fragment, QTextCursor cursor)
{
    // The importer sets code in the system's fixed font, which need not be one at all where
    // there is no desktop.
    if (fragment.charFormat().fontFamily() !=
        QFontDatabase::systemFont(QFontDatabase::FixedFont).family())
        return;
    QTextCharFormat format;
    format.setFontFamily(codeFamilies().constFirst());
    format.setFontFamilies(codeFamilies());
    format.setFontPointSize(bodyPoints * 0.92);
    cursor.mergeCharFormat(format);
}

// Columns as wide as their longest text, the last one as wide as the page lets it.
QVector<QTextLength> columnWidths(const QTextTable &table, double width)
{
    constexpr double mostOfPage = 0.3;
    const QFontMetricsF font(bodyFont());
    const double padding = screenPixels(12);
    const double page = width * screenDotsPerInch / dotsPerInch;
    QVector<QTextLength> widths;
    for (int column = 0; column < table.columns(); ++column) {
        double widest = 0;
        for (int row = 0; row < table.rows(); ++row) {
            const QTextTableCell cell = table.cellAt(row, column);
            QTextCursor cursor = cell.firstCursorPosition();
            cursor.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
            const double bold = 1.08;
            widest = std::max(widest, font.horizontalAdvance(cursor.selectedText()) * bold);
        }
        const double wanted = std::min(widest + padding, page * mostOfPage);
        const bool isLast = column + 1 == table.columns();
        widths << (isLast ? QTextLength() : QTextLength(QTextLength::FixedLength, wanted));
    }
    return widths;
}

void styleTable(QTextTable &table, double width)
{
    QTextTableFormat format = table.format();
    format.setBorder(1);
    format.setBorderBrush(ruleColour);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setCellPadding(screenPixels(3.5));
    format.setHeaderRowCount(0); // the pages are made here, with a head for each part
    format.setTopMargin(screenPixels(3));
    format.setBottomMargin(screenPixels(9));
    format.setAlignment(Qt::AlignLeft);
    format.setColumnWidthConstraints(columnWidths(table, width));
    table.setFormat(format);
    for (int column = 0; column < table.columns(); ++column) {
        QTextTableCell cell = table.cellAt(0, column);
        QTextCharFormat header = cell.format();
        header.setBackground(shade);
        cell.setFormat(header);
        QTextCursor cursor = cell.firstCursorPosition();
        // After a fenced block the importer begins the first cell with an empty line.
        if (cursor.block().text().isEmpty() && cell.lastCursorPosition() != cursor)
            cursor.deleteChar();
        cursor.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
        QTextCharFormat bold;
        bold.setFontWeight(QFont::Bold);
        cursor.mergeCharFormat(bold);
    }
}

// The importer ends every fenced block with an empty line of its own.
void removeEmptyCodeLines(QTextDocument &document)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (!isCode(block) || !block.text().isEmpty() || isCode(block.next()))
            continue;
        const QTextBlock before = block.previous();
        QTextCursor cursor(block);
        cursor.deletePreviousChar();
        block = before;
    }
}

} // namespace

double screenPixels(double points)
{
    return points * screenDotsPerInch / 72;
}

QFont bodyFont()
{
    QFont font;
    font.setFamilies({"Liberation Sans", "DejaVu Sans"});
    font.setPointSizeF(bodyPoints);
    return font;
}

bool holdsPicture(const QTextBlock &block)
{
    return block.text() == QString(QChar::ObjectReplacementCharacter);
}

void styleDocument(QTextDocument &document, double width)
{
    removeEmptyCodeLines(document);
    for (QTextFrame *frame : document.rootFrame()->childFrames()) {
        if (QTextTable *table = qobject_cast<QTextTable *>(frame))
            styleTable(*table, width);
    }
    forEachFragment(document, styleFragment);
    forEachBlock(document, styleBlock);
}

QString sizePictures(QTextDocument &document, const QString &folder, double pageWidth)
{
    QString missing;
    forEachFragment(document, [&](const QTextFragment &fragment, QTextCursor cursor) {
        if (!fragment.charFormat().isImageFormat())
            return;
        QTextImageFormat format = fragment.charFormat().toImageFormat();
        QString path = document.baseUrl().resolved(QUrl(format.name())).toLocalFile();
        if (!QFileInfo::exists(path))
            path = QDir(folder).filePath(QFileInfo(path).fileName());
        const QImage image(path);
        if (image.isNull()) {
            if (missing.isEmpty())
                missing = format.name();
            return;
        }
        const double natural = image.width() * dotsPerInch / pictureDotsPerInch;
        const double width = std::min(natural, pageWidth);
        const double toScreen = screenDotsPerInch / dotsPerInch;
        format.setName(path);
        format.setWidth(width * toScreen);
        format.setHeight(width * image.height() / image.width() * toScreen);
        cursor.setCharFormat(format);
    });
    return missing;
}
