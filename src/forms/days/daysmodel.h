#pragma once

#include <QAbstractTableModel>
#include <QDateTime>
#include <QString>
#include <vector>

/// A passage of the sky, or a recording that gives none, as the list of days shows it.
struct DayRow {
    QDateTime begin;      ///< UTC of the first point; invalid for a recording that gives no day
    QString name;         ///< of the recording that gives no day
    bool canCount = true; ///< false: it has no check box
    bool isOn = true;
    double sigma = 0;  ///< of the series less its base line; 0: not known yet
    double power = -1; ///< at the frequency under the cursor; below 0: unknown
    QString reason;    ///< why it is off or cannot count; or a remark
};

/// The days of a directory: a check box each with the date, the sigma of the series, the power at
/// the frequency under the cursor, and why the day is proposed off or cannot be used.
class DaysModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Date, Sigma, Power, Reason, ColumnCount };
    /// Numbers as numbers and moments as moments, for a QSortFilterProxyModel.
    static constexpr int sortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    void setRows(std::vector<DayRow> newRows);
    const std::vector<DayRow> &rows() const { return days; }
    /// Changes values of rows that stay the same days.
    void updateRows(const std::vector<DayRow> &newRows);
    /// Powers of the first rows, and the frequency that they are of.
    void setPowers(const std::vector<double> &powers, double frequency);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    /// The user switches a day.
    void switched(int row, bool isOn);

private:
    std::vector<DayRow> days;
    double frequency = 0; // Hz, of the powers
};
