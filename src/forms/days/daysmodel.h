#pragma once

#include "fields/tablemodel.h"
#include "forms/days/stacktexts.h"

#include <QDateTime>
#include <QString>
#include <limits>
#include <vector>

/// A passage of the sky, or a recording that gives none, as the list of days shows it.
struct DayRow {
    QDateTime begin;      ///< UTC of the first point; invalid for a recording that gives no day
    QString name;         ///< of the recording that gives no day
    bool canCount = true; ///< false: it has no check box
    bool isFixed = false; ///< counts by a rule: it has no check box either
    bool isOn = true;
    double sigma = 0; ///< of the series less its base line; 0: not known yet
    /// At the frequency or period under the cursor; where it is not known, below all others.
    double power = -std::numeric_limits<double>::infinity();
    QString reason; ///< why it is off or cannot count; or a remark
};

/// The days of a directory: a check box each with the date, the sigma of the series, the power at
/// the frequency under the cursor, and why the day is proposed off or cannot be used.
class DaysModel : public TableModel {
    Q_OBJECT

public:
    enum Place { Date, Sigma, Power, Reason, PlaceCount };

    /// @param texts  outlive the model
    explicit DaysModel(const StackTexts &texts, QObject *parent = nullptr)
        : TableModel(parent), words(texts)
    {}

    void setRows(std::vector<DayRow> newRows);
    const std::vector<DayRow> &dayRows() const { return days; }
    /// Changes values of rows that stay the same days.
    void updateRows(const std::vector<DayRow> &newRows);
    /// Powers of the first rows, and the frequency that they are of.
    void setPowers(const std::vector<double> &powers, double frequency);

    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    /// The user switches a day.
    void switched(int row, bool isOn);

protected:
    int rows() const override { return int(days.size()); }
    int columns() const override { return PlaceCount; }
    Column column(int index) const override;
    QString text(int row, int column) const override;
    QVariant sortValue(int row, int column) const override;
    QVariant look(int row, int column, int role) const override;

private:
    const StackTexts &words;
    std::vector<DayRow> days;
    double frequency = 0; // Hz, of the powers
};
