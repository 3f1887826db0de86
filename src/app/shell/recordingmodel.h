#pragma once

#include "data/recordingset.h"

#include <QAbstractTableModel>
#include <vector>

/// The recordings of a folder or a list as a table: a row for each, in the order of the set. A
/// recording that cannot be used says so in its last column; its tool tip says why and what helps.
class RecordingModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        File,
        Begin, ///< UTC, to the millisecond
        Mjd,   ///< the same as modified Julian day, 8 decimals
        Length,
        Points,
        Step,
        Modules, ///< by their numbers in the passport
        Rays,    ///< likewise
        Bands,
        Frequencies, ///< of the first and the last band
        Size,
        State,
        ColumnCount
    };
    /// Numbers as numbers and moments as moments, for a QSortFilterProxyModel.
    static constexpr int sortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    void setEntries(std::vector<RecordingEntry> newEntries);
    /// @param row  below rowCount()
    const RecordingEntry &entry(int row) const { return entries[std::size_t(row)]; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    std::vector<RecordingEntry> entries;
};
