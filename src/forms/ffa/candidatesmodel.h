#pragma once

#include "calc/ffacandidates.h"
#include "fields/tablemodel.h"

#include <QStringList>
#include <vector>

/// The candidates of a search, strongest first, as Results::shownFields() writes them.
class CandidatesModel : public TableModel {
    Q_OBJECT

public:
    using TableModel::TableModel;

    void setCandidates(const std::vector<FfaCandidate> &candidates);
    void setCandidate(int row, const FfaCandidate &candidate);

    /// All of it as lines with tabs, below the titles.
    QString allText() const;

protected:
    int rows() const override { return int(fields.size()); }
    int columns() const override;
    Column column(int index) const override;
    QString text(int row, int column) const override;

private:
    std::vector<QStringList> fields; // of each row
};
