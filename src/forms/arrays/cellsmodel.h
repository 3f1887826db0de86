#pragma once

#include "fields/tablemodel.h"

struct NumberFile;

/// All cells of a text file of numbers, words included.
class CellsModel : public TableModel {
    Q_OBJECT

public:
    /// @param numbers  is only read and outlives the table
    explicit CellsModel(const NumberFile &numbers, QObject *parent = nullptr);

protected:
    int rows() const override;
    int columns() const override;
    Column column(int index) const override;
    QString text(int row, int column) const override;

private:
    const NumberFile &file;
};
