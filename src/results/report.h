#pragma once

#include <QString>
#include <QStringList>
#include <variant>
#include <vector>

namespace Results {

/// A list within a report: rows of texts.
struct ReportTable {
    struct Column {
        QString head;
        QString unit = {};
    };
    std::vector<Column> columns;
    /// A row as a line of plain text: "%1: %2 Hz", %1 for its first cell.
    QString line;
    /// Where the first cell of a row leads to in a window: "harmonic:%1"; empty: nowhere.
    QString link = {};
    std::vector<QStringList> rows = {}; ///< one text per column
};

/// What an analysis tells of its result, made once and shown as plain text or as HTML.
class Report {
public:
    Report() = default;
    /// A report of one line.
    explicit Report(const QString &line) { addLine(line); }

    void addHeading(const QString &text);
    void addLine(const QString &text);
    /// "name = value".
    ///
    /// @param link  where the value leads to in a window: "dispersion:26.2"; empty: nowhere
    void addValue(const QString &name, const QString &value, const QString &link = {});
    void addTable(const ReportTable &table);
    /// An empty line, and a new paragraph.
    void addGap();
    void add(const Report &other);

    bool isEmpty() const { return blocks.empty(); }

    /// One text per line, empty ones included; headings and columns without their heads.
    QStringList lines() const;
    /// The lines as one text.
    QString plainText() const { return lines().join('\n'); }
    /// Paragraphs and tables, to stand within a page. Headings have the class 'blue'.
    QString html() const;

private:
    struct Heading {
        QString text;
    };
    struct Line {
        QString before;
        QString linked = {};
        QString link = {};
    };
    struct Gap {};
    using Block = std::variant<Heading, Line, ReportTable, Gap>;

    std::vector<Block> blocks;
};

/// Reports below each other with a gap between them; empty ones are left out.
Report joinReports(const std::vector<Report> &reports);

} // namespace Results
