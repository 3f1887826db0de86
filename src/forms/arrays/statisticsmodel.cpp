#include "forms/arrays/statisticsmodel.h"

#include "forms/arrays/arrayreading.h"
#include "picture/arrayplot.h"

#include <QStringList>

namespace {

const QStringList rowNames = {"Count", "Mean", "Median", "Sigma", "Min", "Max"};

} // namespace

void StatisticsModel::setCurves(std::vector<Curve> newCurves)
{
    beginResetModel();
    curves = std::move(newCurves);
    endResetModel();
}

int StatisticsModel::rows() const
{
    return rowNames.size();
}

QVariant StatisticsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical && role == Qt::DisplayRole)
        return rowNames.value(section);
    if (orientation == Qt::Horizontal && role == Qt::DecorationRole && section < columns())
        return ArrayReading::colourSquare(curves[std::size_t(section)].index);
    return TableModel::headerData(section, orientation, role);
}

QString StatisticsModel::text(int row, int column) const
{
    const SeriesStatistics &found = curves[std::size_t(column)].found;
    if (row == 0)
        return QString::number(found.count);
    const double values[] = {found.mean, found.median, found.sigma, found.min, found.max};
    return ArrayPlot::numberText(values[row - 1]);
}

QVariant StatisticsModel::look(int row, int column, int role) const
{
    const auto missing = curves[std::size_t(column)].found.missing;
    if (role != Qt::ToolTipRole || row != 0 || missing == 0)
        return {};
    return QString("%1 values are not finite numbers").arg(missing);
}
