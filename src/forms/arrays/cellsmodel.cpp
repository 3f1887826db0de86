#include "forms/arrays/cellsmodel.h"

#include "results/arrayfile.h"

CellsModel::CellsModel(const NumberFile &numbers, QObject *parent)
    : TableModel(parent), file(numbers)
{}

int CellsModel::rows() const
{
    return int(file.table.rows());
}

int CellsModel::columns() const
{
    return int(file.table.columns());
}

TableModel::Column CellsModel::column(int index) const
{
    return {Results::columnName(file, index), {}, !file.isText(index)};
}

QString CellsModel::text(int row, int column) const
{
    return column < file.table.rowLength(row) ? file.cell(row, column) : QString();
}
