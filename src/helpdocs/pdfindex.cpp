#include "helpdocs/pdfindex.h"

#include <QMap>
#include <QRegularExpression>

namespace {

struct Page {
    int object = 0;
    int annotations = 0; // object of the list
    double height = 0;   // points
};

// The objects of a document that an index refers to or changes.
struct Structure {
    int size = 0; // one above the highest object
    int info = 0;
    int catalog = 0;
    int pages = 0; // root of the page tree
    qint64 crossReferences = 0;
    std::vector<Page> page;
};

int numberBehind(const QString &text, const QString &pattern)
{
    return QRegularExpression(pattern + "\\s+(\\d+)").match(text).captured(1).toInt();
}

QString bodyOf(const QString &text, int object)
{
    const QRegularExpression pattern(QString("(?:^|\n)%1 0 obj\n(.*?)\nendobj").arg(object),
                                     QRegularExpression::DotMatchesEverythingOption);
    return pattern.match(text).captured(1);
}

QString textOf(const QByteArray &pdf)
{
    return QString::fromLatin1(pdf.constData(), pdf.size()); // zero bytes too
}

// All zero where something is not found.
Structure structureOf(const QByteArray &pdf)
{
    const QString text = textOf(pdf);
    const QString trailer = text.mid(text.lastIndexOf("trailer"));
    Structure found;
    found.size = numberBehind(trailer, "/Size");
    found.info = numberBehind(trailer, "/Info");
    found.catalog = numberBehind(trailer, "/Root");
    found.crossReferences = numberBehind(trailer, "startxref");
    found.pages = numberBehind(bodyOf(text, found.catalog), "/Pages");
    const QString kids = bodyOf(text, found.pages).section('[', 1, 1).section(']', 0, 0);
    const QRegularExpression reference("(\\d+) 0 R");
    for (auto it = reference.globalMatch(kids); it.hasNext();) {
        Page page;
        page.object = it.next().captured(1).toInt();
        const QString body = bodyOf(text, page.object);
        page.annotations = numberBehind(body, "/Annots");
        const QRegularExpression box("/MediaBox \\[0 0 [0-9.]+ ([0-9.]+)\\]");
        page.height = box.match(body).captured(1).toDouble();
        if (page.annotations == 0 || page.height <= 0)
            return {};
        found.page.push_back(page);
    }
    return found;
}

// A text of a PDF in UTF-16.
QByteArray pdfText(const QString &text)
{
    QByteArray hex = "<FEFF";
    for (const QChar letter : text)
        hex += QByteArray::number(letter.unicode(), 16).rightJustified(4, '0');
    return hex + ">";
}

QByteArray number(double value)
{
    return QByteArray::number(value, 'f', 2);
}

// The update: bodies of objects by number.
class Update {
public:
    explicit Update(const Structure &structure) : document(structure), next(structure.size) {}

    void addBookmarks(const std::vector<PdfBookmark> &bookmarks);
    void addLinks(const std::vector<PdfLink> &links, const QByteArray &pdf);
    QByteArray bytes(qint64 offset) const;

private:
    QByteArray destination(const PdfPlace &place) const
    {
        const Page &page = document.page.at(std::size_t(place.page));
        return "[" + QByteArray::number(page.object) + " 0 R /XYZ 0 " +
               number(page.height - place.top) + " 0]";
    }
    static QByteArray reference(int object) { return QByteArray::number(object) + " 0 R"; }

    const Structure &document;
    int next;
    QMap<int, QByteArray> objects;
};

// Each item names the one above it, its neighbours, and its first and last inside.
void Update::addBookmarks(const std::vector<PdfBookmark> &bookmarks)
{
    const int root = next;
    const int count = int(bookmarks.size());
    next += count + 1;
    std::vector<int> parent(std::size_t(count) + 1, -1); // item 0 is the root
    std::vector<int> open = {0};
    const auto levelOf = [&](int item) {
        return item == 0 ? 0 : bookmarks[std::size_t(item) - 1].level;
    };
    for (int item = 1; item <= count; ++item) {
        while (levelOf(open.back()) >= levelOf(item))
            open.pop_back();
        parent[std::size_t(item)] = open.back();
        open.push_back(item);
    }
    for (int item = 0; item <= count; ++item) {
        std::vector<int> inside;
        std::vector<int> beside;
        for (int other = 1; other <= count; ++other) {
            if (parent[std::size_t(other)] == item)
                inside.push_back(other);
            if (item > 0 && parent[std::size_t(other)] == parent[std::size_t(item)])
                beside.push_back(other);
        }
        QByteArray body = "<<";
        if (item > 0) {
            const PdfBookmark &bookmark = bookmarks[std::size_t(item) - 1];
            body += " /Title " + pdfText(bookmark.title) + " /Dest " + destination(bookmark.place) +
                    " /Parent " + reference(root + parent[std::size_t(item)]);
            const auto here = std::find(beside.begin(), beside.end(), item);
            if (here != beside.begin())
                body += " /Prev " + reference(root + *(here - 1));
            if (here + 1 != beside.end())
                body += " /Next " + reference(root + *(here + 1));
        } else {
            body += " /Type /Outlines";
        }
        // A negative count: closed at first. The title of the document is open.
        if (!inside.empty()) {
            const int sign = item == 0 || parent[std::size_t(item)] == 0 ? 1 : -1;
            body += " /First " + reference(root + inside.front()) + " /Last " +
                    reference(root + inside.back()) + " /Count " +
                    QByteArray::number(sign * int(inside.size()));
        }
        objects[root + item] = body + " >>";
    }
    objects[document.catalog] = "<< /Type /Catalog /Pages " + reference(document.pages) +
                                " /Outlines " + reference(root) + " /PageMode /UseOutlines >>";
}

void Update::addLinks(const std::vector<PdfLink> &links, const QByteArray &pdf)
{
    const QString text = textOf(pdf);
    for (int i = 0; i < int(document.page.size()); ++i) {
        const Page &page = document.page[std::size_t(i)];
        QByteArray list =
            bodyOf(text, page.annotations).section('[', 1, 1).section(']', 0, 0).toLatin1();
        bool isChanged = false;
        for (const PdfLink &link : links) {
            if (link.page != i)
                continue;
            objects[next] =
                "<< /Type /Annot /Subtype /Link /Border [0 0 0] /Rect [" +
                number(link.area.left()) + " " + number(page.height - link.area.bottom()) + " " +
                number(link.area.right()) + " " + number(page.height - link.area.top()) +
                "] /Dest " + destination(link.target) + " >>";
            list += " " + reference(next++);
            isChanged = true;
        }
        if (isChanged)
            objects[page.annotations] = "[" + list + " ]";
    }
}

QByteArray Update::bytes(qint64 offset) const
{
    QByteArray body = "\n";
    QByteArray table = "xref\n";
    for (auto it = objects.cbegin(); it != objects.cend(); ++it) {
        const QByteArray place = QByteArray::number(offset + body.size());
        table +=
            QByteArray::number(it.key()) + " 1\n" + place.rightJustified(10, '0') + " 00000 n \n";
        body += QByteArray::number(it.key()) + " 0 obj\n" + it.value() + "\nendobj\n";
    }
    const QByteArray tableStart = QByteArray::number(offset + body.size());
    return body + table + "trailer\n<< /Size " + QByteArray::number(next) + " /Info " +
           reference(document.info) + " /Root " + reference(document.catalog) + " /Prev " +
           QByteArray::number(document.crossReferences) + " >>\nstartxref\n" + tableStart +
           "\n%%EOF\n";
}

} // namespace

QByteArray withIndex(const QByteArray &pdf, const std::vector<PdfBookmark> &bookmarks,
                     const std::vector<PdfLink> &links)
{
    const Structure structure = structureOf(pdf);
    if (structure.page.empty() || structure.size == 0)
        return {};
    Update update(structure);
    update.addBookmarks(bookmarks);
    update.addLinks(links, pdf);
    return pdf + update.bytes(pdf.size());
}
