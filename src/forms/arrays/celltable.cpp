#include "forms/arrays/celltable.h"

#include "results/arrayfile.h"

#include <QAbstractTableModel>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <map>
#include <set>

namespace {

class CellModel : public QAbstractTableModel {
public:
    CellModel(const NumberFile &numbers, QObject *parent)
        : QAbstractTableModel(parent), file(numbers)
    {}

    int rowCount(const QModelIndex &) const override { return int(file.table.rows()); }
    int columnCount(const QModelIndex &) const override { return int(file.table.columns()); }

    QVariant data(const QModelIndex &index, int role) const override
    {
        const bool isThere = index.column() < file.table.rowLength(index.row());
        if (role == Qt::DisplayRole && isThere)
            return file.cell(index.row(), index.column());
        if (role == Qt::TextAlignmentRole)
            return int((file.isText(index.column()) ? Qt::AlignLeft : Qt::AlignRight) |
                       Qt::AlignVCenter);
        return {};
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (role != Qt::DisplayRole)
            return {};
        return orientation == Qt::Horizontal ? Results::columnName(file, section)
                                             : QString::number(section + 1);
    }

private:
    const NumberFile &file;
};

} // namespace

CellTable::CellTable(const NumberFile &numbers, QWidget *parent) : QTableView(parent), file(numbers)
{
    setModel(new CellModel(file, this));
    setAlternatingRowColors(true);
    setWordWrap(false);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    resizeColumnsToContents();
}

// The table itself would copy one cell.
void CellTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        QGuiApplication::clipboard()->setText(selectedText());
    else
        QTableView::keyPressEvent(event);
}

QString CellTable::selectedText() const
{
    std::set<int> columns;
    std::map<int, std::set<int>> rows; // the columns of each that are selected
    const QModelIndexList selected = selectedIndexes();
    for (const QModelIndex &index : selected) {
        columns.insert(index.column());
        rows[index.row()].insert(index.column());
    }
    QStringList names;
    for (const int column : columns)
        names << Results::columnName(file, column);
    QString text = names.join('\t') + "\n";
    for (const auto &[row, ofRow] : rows) {
        QStringList cells;
        for (const int column : columns)
            cells << (ofRow.count(column) ? file.cell(row, column) : QString());
        text += cells.join('\t') + "\n";
    }
    return text;
}
