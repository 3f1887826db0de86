#include "results/report.h"

#include <utility>

namespace Results {

namespace {

QString anchor(const QString &link, const QString &text)
{
    const QString shown = text.toHtmlEscaped();
    return link.isEmpty() ? shown : QString("<a href='%1'>%2</a>").arg(link.toHtmlEscaped(), shown);
}

// The cells are put in one after the other; they hold numbers and words, no place markers.
QString filled(QString pattern, const QStringList &cells)
{
    for (const QString &cell : cells)
        pattern = pattern.arg(cell);
    return pattern;
}

QString tableHtml(const ReportTable &table)
{
    QString html = "<table cellspacing='0' cellpadding='2'><tr>";
    for (const ReportTable::Column &column : table.columns)
        html += QString("<th align='right'>%1</th>")
                    .arg((column.unit.isEmpty() ? column.head : column.head + ", " + column.unit)
                             .toHtmlEscaped());
    html += "</tr>";
    for (const QStringList &row : table.rows) {
        html += "<tr>";
        for (int i = 0; i < row.size(); ++i) {
            const bool isLinked = i == 0 && !table.link.isEmpty();
            html += QString("<td align='right'><nobr>%1</nobr></td>")
                        .arg(anchor(isLinked ? table.link.arg(row[0]) : QString(), row[i]));
        }
        html += "</tr>";
    }
    return html + "</table>";
}

} // namespace

void Report::addHeading(const QString &text)
{
    blocks.push_back(Heading{text});
}

void Report::addLine(const QString &text)
{
    blocks.push_back(Line{text});
}

void Report::addValue(const QString &name, const QString &value, const QString &link)
{
    blocks.push_back(Line{name + " = ", value, link});
}

void Report::addTable(const ReportTable &table)
{
    blocks.push_back(table);
}

void Report::addGap()
{
    blocks.push_back(Gap{});
}

void Report::add(const Report &other)
{
    blocks.insert(blocks.end(), other.blocks.begin(), other.blocks.end());
}

QStringList Report::lines() const
{
    QStringList lines;
    for (const Block &block : blocks) {
        if (const Heading *const heading = std::get_if<Heading>(&block))
            lines << heading->text;
        else if (const Line *const line = std::get_if<Line>(&block))
            lines << line->before + line->linked;
        else if (const ReportTable *const table = std::get_if<ReportTable>(&block))
            for (const QStringList &row : table->rows)
                lines << filled(table->line, row);
        else
            lines << QString();
    }
    return lines;
}

QString Report::html() const
{
    QString html;
    QStringList paragraph;
    const auto endParagraph = [&] {
        if (!paragraph.isEmpty())
            html += "<p>" + paragraph.join("<br>") + "</p>";
        paragraph.clear();
    };
    for (const Block &block : blocks) {
        if (const Heading *const heading = std::get_if<Heading>(&block)) {
            endParagraph();
            paragraph << "<span class='blue'>" + heading->text.toHtmlEscaped() + "</span>";
        } else if (const Line *const line = std::get_if<Line>(&block)) {
            paragraph << line->before.toHtmlEscaped() + anchor(line->link, line->linked);
        } else {
            endParagraph();
            const ReportTable *const table = std::get_if<ReportTable>(&block);
            if (table && !table->rows.empty())
                html += tableHtml(*table);
        }
    }
    endParagraph();
    return html;
}

Report joinReports(const std::vector<Report> &reports)
{
    Report all;
    for (const Report &report : reports) {
        if (report.isEmpty())
            continue;
        if (!all.isEmpty())
            all.addGap();
        all.add(report);
    }
    return all;
}

} // namespace Results
