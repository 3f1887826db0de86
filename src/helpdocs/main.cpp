// zrt-helppdf IN.md OUT.pdf: lays a Markdown document out on A4 pages. Pictures are found
// relative to the document; one that is missing fails the run, so that no help without its
// pictures is ever built.

#include "base/version.h"
#include "base/wholefile.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextStream>
#include <QTextTable>
#include <QUrl>
#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int dotsPerInch = 600;
constexpr double screenDotsPerInch = 96;   // AA_Use96Dpi, whatever screen there is
constexpr double pictureDotsPerInch = 110; // a screenshot at its natural size on paper
constexpr double bodyPoints = 10;
const QColor headingColour(0x1f, 0x3a, 0x5f);
const QColor ruleColour(0xc8, 0xcc, 0xd2);
const QColor shade(0xf3, 0xf5, 0xf8);

double dots(double millimetres)
{
    return millimetres * dotsPerInch / 25.4;
}

// QTextDocument takes lengths in pixels of the screen and scales them to the device itself.
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

bool holdsPicture(const QTextBlock &block)
{
    return block.text() == QString(QChar::ObjectReplacementCharacter);
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

void styleTable(QTextTable &table)
{
    QTextTableFormat format = table.format();
    format.setBorder(1);
    format.setBorderBrush(ruleColour);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setCellPadding(screenPixels(3.5));
    // The head is repeated on a new page. Of a table that ends with the page the layout would
    // repeat it above what follows, so short ones go without.
    constexpr int shortTable = 10; // rows
    format.setHeaderRowCount(table.rows() < shortTable ? 0 : 1);
    format.setTopMargin(screenPixels(3));
    format.setBottomMargin(screenPixels(9));
    format.setAlignment(Qt::AlignLeft);
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

// Gives every picture its size on the page. Returns the name of the first that cannot be
// read.
QString sizePictures(QTextDocument &document, double pageWidth)
{
    QString missing;
    forEachFragment(document, [&](const QTextFragment &fragment, QTextCursor cursor) {
        if (!fragment.charFormat().isImageFormat())
            return;
        QTextImageFormat format = fragment.charFormat().toImageFormat();
        const QUrl url = document.baseUrl().resolved(QUrl(format.name()));
        const QImage image(url.toLocalFile());
        if (image.isNull()) {
            if (missing.isEmpty())
                missing = format.name();
            return;
        }
        const double natural = image.width() * dotsPerInch / pictureDotsPerInch;
        const double width = std::min(natural, pageWidth);
        const double toScreen = screenDotsPerInch / dotsPerInch;
        format.setWidth(width * toScreen);
        format.setHeight(width * image.height() / image.width() * toScreen);
        cursor.setCharFormat(format);
    });
    return missing;
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

// A heading, and a picture with its caption, stay on the page of what follows.
void keepWithNext(QTextDocument &document, double pageHeight)
{
    const auto pageOf = [&](const QTextBlock &block) {
        return int(document.documentLayout()->blockBoundingRect(block).top() / pageHeight);
    };
    for (QTextBlock block = document.begin(); block.next().isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 && !holdsPicture(block))
            continue;
        if (pageOf(block) == pageOf(block.next()))
            continue;
        QTextBlockFormat format;
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        QTextCursor(block).mergeBlockFormat(format);
    }
}

QString titleOf(const QTextDocument &document)
{
    return document.firstBlock().text();
}

void paintFooter(QPainter &painter, const QRectF &area, const QString &title, int page, int pages)
{
    QFont font = bodyFont();
    font.setPointSizeF(8);
    painter.setFont(font);
    painter.setPen(QPen(ruleColour, dots(0.2)));
    painter.drawLine(area.topLeft(), area.topRight());
    painter.setPen(QColor(0x60, 0x66, 0x70));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignBottom, title);
    painter.drawText(area, Qt::AlignRight | Qt::AlignBottom,
                     QString("%1 / %2").arg(page).arg(pages));
}

// Returns what went wrong; empty when the PDF stands.
QString convert(const QString &from, const QString &to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly))
        return QString("cannot read %1: %2").arg(from, source.errorString());
    if (QFontDatabase().families().isEmpty())
        return "no fonts are installed; the packages fonts-liberation and fonts-dejavu-core have "
               "those the help uses";

    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    QPdfWriter writer(&pdf);
    writer.setResolution(dotsPerInch);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(22, 18, 22, 16), QPageLayout::Millimeter);
    const QRectF page(0, 0, writer.width(), writer.height());
    const QRectF body = page.adjusted(0, 0, 0, -dots(12));
    const QRectF footer(0, page.height() - dots(6), page.width(), dots(6));

    QTextDocument document;
    document.documentLayout()->setPaintDevice(&writer);
    document.setDefaultFont(bodyFont());
    document.setDocumentMargin(0);
    document.setIndentWidth(screenPixels(16));
    document.setBaseUrl(QUrl::fromLocalFile(QFileInfo(from).absoluteFilePath()));
    document.setMarkdown(QString::fromUtf8(source.readAll()).replace("@VERSION@", Version::number));
    document.setPageSize(body.size());

    if (const QString missing = sizePictures(document, body.width()); !missing.isEmpty())
        return QString("%1: the picture \"%2\" cannot be read").arg(from, missing);
    removeEmptyCodeLines(document);
    for (QTextFrame *frame : document.rootFrame()->childFrames()) {
        if (QTextTable *table = qobject_cast<QTextTable *>(frame))
            styleTable(*table);
    }
    forEachFragment(document, styleFragment);
    forEachBlock(document, styleBlock);
    keepWithNext(document, body.height());

    writer.setTitle(titleOf(document));
    writer.setCreator("ZRT-Analytics-2");
    QPainter painter(&writer);
    const int pages = document.pageCount();
    for (int i = 0; i < pages; ++i) {
        if (i > 0)
            writer.newPage();
        painter.save();
        painter.translate(0, -i * body.height());
        document.drawContents(&painter, body.translated(0, i * body.height()));
        painter.restore();
        paintFooter(painter, footer, titleOf(document), i + 1, pages);
    }
    painter.end();

    return writeWhole(to, pdf.data()).text();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    QTextStream err(stderr);
    if (arguments.size() != 3) {
        err << "usage: zrt-helppdf IN.md OUT.pdf\n";
        return 1;
    }
    if (const QString error = convert(arguments[1], arguments[2]); !error.isEmpty()) {
        err << "zrt-helppdf: " << error << '\n';
        return 1;
    }
    return 0;
}
