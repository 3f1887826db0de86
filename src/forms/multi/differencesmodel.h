#pragma once

#include "analyses/compare/comparedays.h"
#include "fields/tablemodel.h"

#include <memory>

/// The listed differences of days from the others, strongest first.
class DifferencesModel : public TableModel {
    Q_OBJECT

public:
    enum Place { Date, Sidereal, Snr, Width, Rays, ByChance, PlaceCount };

    using TableModel::TableModel;

    /// @param products, comparison  null: none
    void setComparison(std::shared_ptr<const Compare::CompareProducts> products,
                       std::shared_ptr<const Compare::Comparison> comparison);
    const Compare::ListedDifference &difference(int row) const;

protected:
    int rows() const override;
    int columns() const override { return PlaceCount; }
    Column column(int index) const override;
    QString text(int row, int column) const override;
    QVariant sortValue(int row, int column) const override;

private:
    std::shared_ptr<const Compare::CompareProducts> products;
    std::shared_ptr<const Compare::Comparison> comparison;
};
