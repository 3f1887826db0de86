#pragma once

#include "analyses/timing/periodsearch.h"
#include "fields/tablemodel.h"

#include <memory>

/// The families of periods that arrival times allow.
class PeriodsModel : public TableModel {
    Q_OBJECT

public:
    using TableModel::TableModel;

    void setSearch(std::shared_ptr<const Timing::PeriodSearch> found);

protected:
    int rows() const override { return search ? int(search->families.size()) : 0; }
    int columns() const override { return 6; }
    Column column(int index) const override;
    QString text(int row, int column) const override;

private:
    std::shared_ptr<const Timing::PeriodSearch> search;
};
