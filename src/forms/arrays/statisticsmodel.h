#pragma once

#include "calc/seriesstatistics.h"
#include "fields/tablemodel.h"

#include <vector>

/// Count, mean, median, sigma, least and greatest value of curves, a column for each.
class StatisticsModel : public TableModel {
    Q_OBJECT

public:
    struct Curve {
        QString name;
        int index = 0; ///< of its colour, which stands beside its name
        SeriesStatistics found;
    };

    using TableModel::TableModel;

    void setCurves(std::vector<Curve> newCurves);

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

protected:
    int rows() const override;
    int columns() const override { return int(curves.size()); }
    Column column(int index) const override { return {curves[std::size_t(index)].name, {}, true}; }
    QString text(int row, int column) const override;
    QVariant look(int row, int column, int role) const override;

private:
    std::vector<Curve> curves;
};
