#pragma once

#include <QAbstractTableModel>

/// The base of the tables that forms show. A table tells its size, its columns and its texts; what
/// a view asks for is answered from these.
class TableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    struct Column {
        QString title;
        QString toolTip = {};
        bool isNumber = false; ///< stands at the right edge
    };
    /// Numbers as numbers and moments as moments, for a QSortFilterProxyModel.
    static constexpr int sortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex &parent = {}) const final;
    int columnCount(const QModelIndex &parent = {}) const final;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const final;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

protected:
    virtual int rows() const = 0;
    virtual int columns() const = 0;
    virtual Column column(int index) const = 0;
    virtual QString text(int row, int column) const = 0;
    /// What a column is sorted by. In a column of numbers a text that is none stands below them,
    /// unless the table knows better.
    virtual QVariant sortValue(int row, int column) const;
    /// Tool tip, colours and check box of a cell.
    virtual QVariant look(int row, int column, int role) const;
};
