#include "fields/tableview.h"

#include "fields/tablemodel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSortFilterProxyModel>
#include <algorithm>
#include <map>
#include <set>

TableView::TableView(QWidget *parent) : QTableView(parent)
{
    fitRows();
}

void TableView::showTable(TableModel *table)
{
    setModel(table);
}

void TableView::showSorted(TableModel *table)
{
    sorted = new QSortFilterProxyModel(this);
    sorted->setSortRole(TableModel::sortRole);
    sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
    sorted->setSourceModel(table);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    setModel(sorted);
    setSortingEnabled(true);
    // The arrow takes room in every title: there is none before the first click.
    QHeaderView *const header = horizontalHeader();
    header->setSortIndicatorShown(false);
    connect(header, &QHeaderView::sortIndicatorChanged, this, [this, header](int column) {
        header->setSortIndicatorShown(column >= 0);
        if (column >= 0)
            setColumnWidth(column, std::max(columnWidth(column), header->sectionSizeHint(column)));
    });
}

int TableView::tableRow(const QModelIndex &shown) const
{
    return sorted ? sorted->mapToSource(shown).row() : shown.row();
}

QModelIndex TableView::shownIndex(int tableRow) const
{
    return sorted ? sorted->mapFromSource(sorted->sourceModel()->index(tableRow, 0))
                  : model()->index(tableRow, 0);
}

void TableView::copy() const
{
    QGuiApplication::clipboard()->setText(selectedText());
}

// The view itself would copy one cell.
void TableView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        copy();
    else
        QTableView::keyPressEvent(event);
}

void TableView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitRows();
}

void TableView::fitRows()
{
    constexpr int margin = 4; // pixels above and below a text
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + margin);
}

// A title of several lines is one line with a comma.
QString TableView::titleOf(int section, Qt::Orientation orientation) const
{
    return model()->headerData(section, orientation).toString().replace("\n", ", ");
}

QString TableView::selectedText() const
{
    std::map<int, std::set<int>> cells; // columns of each row
    std::set<int> columns;
    const auto add = [&](int row, int column) {
        cells[row].insert(column);
        columns.insert(column);
    };
    const QModelIndexList selected = selectedIndexes();
    for (const QModelIndex &index : selected)
        add(index.row(), index.column());
    if (selected.isEmpty()) {
        for (int row = 0; row < model()->rowCount(); ++row)
            for (int column = 0; column < model()->columnCount(); ++column)
                add(row, column);
    }
    QString text;
    const auto addLine = [&](const QString &rowTitle, const auto &cellOf) {
        QStringList line;
        if (copiesRowTitles)
            line << rowTitle;
        for (const int column : columns)
            line << cellOf(column);
        text += line.join('\t') + "\n";
    };
    if (!horizontalHeader()->isHidden())
        addLine({}, [&](int column) { return titleOf(column, Qt::Horizontal); });
    for (const auto &[row, ofRow] : cells)
        addLine(titleOf(row, Qt::Vertical), [&, row = row, &own = ofRow](int column) {
            return own.count(column) ? model()->index(row, column).data().toString() : QString();
        });
    return text;
}
