#include "fields/tablemodel.h"

#include <limits>

int TableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows();
}

int TableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columns();
}

QVariant TableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row(), index.column());
    case Qt::TextAlignmentRole:
        return int((column(index.column()).isNumber ? Qt::AlignRight : Qt::AlignLeft) |
                   Qt::AlignVCenter);
    case sortRole:
        return sortValue(index.row(), index.column());
    default:
        return look(index.row(), index.column(), role);
    }
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool isColumn = orientation == Qt::Horizontal && section >= 0 && section < columns();
    if (isColumn && role == Qt::DisplayRole)
        return column(section).title;
    if (isColumn && role == Qt::ToolTipRole)
        return column(section).toolTip;
    return QAbstractTableModel::headerData(section, orientation, role);
}

QVariant TableModel::sortValue(int row, int col) const
{
    const QString shown = text(row, col);
    if (!column(col).isNumber)
        return shown;
    bool isNumber = false;
    const double number = shown.toDouble(&isNumber);
    return isNumber ? number : -std::numeric_limits<double>::infinity();
}

QVariant TableModel::look(int /*row*/, int /*column*/, int /*role*/) const
{
    return {};
}
