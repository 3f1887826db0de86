#pragma once

#include "analyses/days/fourierstack.h"

#include <QAbstractTableModel>
#include <vector>

/// The lines of a stack, strongest first.
class LinesModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Sigma, Frequency, Period, Harmonics, Marks, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void setLines(std::vector<Days::FourierLine> newLines);
    const std::vector<Days::FourierLine> &lines() const { return all; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    std::vector<Days::FourierLine> all;
};

namespace DayTexts {

/// Frequency of a line at the barycentre, or at the telescope where that is all that is known, Hz.
double shownFrequency(const Days::FourierLine &line);

/// All that is told of a line, in lines.
QString lineText(const Days::FourierLine &line, const Days::FourierStack &stack);

} // namespace DayTexts
