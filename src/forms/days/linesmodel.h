#pragma once

#include "analyses/days/fourierstack.h"
#include "fields/tablemodel.h"

#include <vector>

/// The lines of a stack, strongest first.
class LinesModel : public TableModel {
    Q_OBJECT

public:
    enum Place { Sigma, Frequency, Period, Harmonics, Marks, PlaceCount };

    using TableModel::TableModel;

    /// Lines of the FFA tell widths of pulses in place of numbers of harmonics.
    void setFfa(bool isFfa);
    void setLines(std::vector<Days::FourierLine> newLines);
    const std::vector<Days::FourierLine> &lines() const { return all; }

protected:
    int rows() const override { return int(all.size()); }
    int columns() const override { return PlaceCount; }
    Column column(int index) const override;
    QString text(int row, int column) const override;
    QVariant look(int row, int column, int role) const override;

private:
    std::vector<Days::FourierLine> all;
    bool areOfFfa = false;
};

namespace DayTexts {

/// Frequency of a line at the barycentre, or at the telescope where that is all that is known, Hz.
double shownFrequency(const Days::FourierLine &line);

/// All that is told of a line, in lines.
QString lineText(const Days::FourierLine &line, const Days::FourierStack &stack);

} // namespace DayTexts
