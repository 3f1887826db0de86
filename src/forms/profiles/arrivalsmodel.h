#pragma once

#include "analyses/profiles/profiletables.h"
#include "fields/tablemodel.h"

/// Arrival times of pulses, a row per day that has one: the columns of the table of the batch
/// program.
class ArrivalsModel : public TableModel {
    Q_OBJECT

public:
    using TableModel::TableModel;

    void setOutcome(const Profiles::ProfileOutcome &outcome, const QString &site);
    void clear();
    /// Index of the product of a row, and the row of a product; -1: none.
    int dayOf(int row) const;
    int rowOf(int day) const;

protected:
    int rows() const override { return int(days.size()); }
    int columns() const override { return int(table.size()); }
    Column column(int index) const override;
    QString text(int row, int column) const override;

private:
    std::vector<Results::Column> table;
    std::vector<int> days;
};
