// zrt-helppdf IN.md OUT.pdf [PICTURES]: lays a Markdown document out on A4 pages, with contents,
// bookmarks and links, and writes OUT.chapters beside it: the page and the name of each chapter.
// Pictures are found relative to the document or by name in the folder PICTURES; one that is
// missing, and a link that leads nowhere, fail the run, so that no such help is ever built.

#include "base/version.h"
#include "base/wholefile.h"
#include "helpdocs/chapters.h"
#include "helpdocs/documentstyle.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextStream>
#include <QUrl>

namespace {

constexpr double pointsPerInch = 72;

double dots(double millimetres)
{
    return millimetres * dotsPerInch / 25.4;
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

// The text of a page, and below it the number of the page.
struct PageAreas {
    QRectF body;
    QRectF footer;
};

PageAreas setUpPages(QPdfWriter &writer)
{
    writer.setResolution(dotsPerInch);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(22, 18, 22, 16), QPageLayout::Millimeter);
    const QRectF page(0, 0, writer.width(), writer.height());
    return {page.adjusted(0, 0, 0, -dots(12)), {0, page.height() - dots(6), page.width(), dots(6)}};
}

// Links to places of the document are added afterwards; the writer would take them for addresses
// of the web.
void dropInnerAddresses(QTextDocument &document)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd();) {
            const QTextFragment part = it.fragment();
            ++it;
            if (!part.charFormat().anchorHref().startsWith('#'))
                continue;
            QTextCharFormat format = part.charFormat();
            format.setAnchor(false);
            format.clearProperty(QTextFormat::AnchorHref);
            format.setFontUnderline(false);
            QTextCursor cursor(&document);
            cursor.setPosition(part.position());
            cursor.setPosition(part.position() + part.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(format);
            it = block.begin();
        }
    }
}

void paint(const QTextDocument &document, QPdfWriter &writer, const PageAreas &areas)
{
    QPainter painter(&writer);
    const int pages = document.pageCount();
    for (int i = 0; i < pages; ++i) {
        if (i > 0)
            writer.newPage();
        painter.save();
        painter.translate(0, -i * areas.body.height());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = areas.body.translated(0, i * areas.body.height());
        context.palette.setColor(QPalette::Text, Qt::black);
        painter.setClipRect(context.clip);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        paintFooter(painter, areas.footer, titleOf(document), i + 1, pages);
    }
}

// Lays the text out. Returns what went wrong.
QString layOut(QTextDocument &document, const QString &from, const QString &pictures,
               const QSizeF &page)
{
    document.setPageSize(page);
    if (const QString missing = sizePictures(document, pictures, page.width()); !missing.isEmpty())
        return QString("%1: the picture \"%2\" cannot be read").arg(from, missing);
    insertContents(document, page.width());
    styleDocument(document, page.width());
    makePages(document, page.height());
    numberContents(document, page.height());
    return {};
}

// Returns what went wrong; empty when the PDF stands.
QString convert(const QString &from, const QString &to, const QString &pictures)
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
    const PageAreas areas = setUpPages(writer);

    QTextDocument document;
    document.documentLayout()->setPaintDevice(&writer);
    document.setDefaultFont(bodyFont());
    document.setDocumentMargin(0);
    document.setIndentWidth(screenPixels(16));
    document.setBaseUrl(QUrl::fromLocalFile(QFileInfo(from).absoluteFilePath()));
    document.setMarkdown(QString::fromUtf8(source.readAll())
                             .replace("@VERSION@", Version::number)
                             .replace("@DATE@", Version::date));
    if (const QString problem = layOut(document, from, pictures, areas.body.size());
        !problem.isEmpty())
        return problem;

    PageMeasures measures;
    measures.bodyHeight = areas.body.height();
    measures.left = writer.pageLayout().marginsPixels(dotsPerInch).left();
    measures.top = writer.pageLayout().marginsPixels(dotsPerInch).top();
    measures.dotsPerPoint = dotsPerInch / pointsPerInch;
    const std::vector<PdfBookmark> bookmarks = bookmarksOf(document, measures);
    QString broken;
    const std::vector<PdfLink> links = linksOf(document, measures, broken);
    if (!broken.isEmpty())
        return QString("%1: no heading for the link \"%2\"").arg(from, broken);
    dropInnerAddresses(document);

    writer.setTitle(titleOf(document));
    writer.setCreator("ZRT-Analytics-2");
    paint(document, writer, areas);
    const QByteArray whole = withIndex(pdf.data(), bookmarks, links);
    if (whole.isEmpty())
        return "the PDF of this version of Qt takes no bookmarks";
    const QFileInfo out(to);
    const QString pages = out.path() + "/" + out.completeBaseName() + ".chapters";
    if (const WriteFailure failure = writeWhole(pages, chapterPages(bookmarks)))
        return failure.text();
    return writeWhole(to, whole).text();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    QTextStream err(stderr);
    if (arguments.size() != 3 && arguments.size() != 4) {
        err << "usage: zrt-helppdf IN.md OUT.pdf [PICTURES]\n";
        return 1;
    }
    if (const QString error = convert(arguments[1], arguments[2], arguments.value(3));
        !error.isEmpty()) {
        err << "zrt-helppdf: " << error << '\n';
        return 1;
    }
    return 0;
}
