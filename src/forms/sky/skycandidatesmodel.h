#pragma once

#include "analyses/sky/skytables.h"
#include "fields/tablemodel.h"

/// The candidates of a search with what a person decided on them. Verdicts and notes change the
/// table at once; the form writes it.
class SkyCandidatesModel : public TableModel {
    Q_OBJECT

public:
    enum Place {
        VerdictPlace,
        Sigma,
        Period,
        Barycentric,
        Telescope,
        Dispersion,
        Alfa,
        Delta,
        Harmonics,
        DaysPlace,
        Marks,
        Note,
        PlaceCount
    };

    /// @param isFfa  candidates are folds: they tell the width of pulses, not the number of
    /// harmonics
    explicit SkyCandidatesModel(bool isFfa, QObject *parent = nullptr);

    void setTable(Sky::CandidatesTable newTable);
    const Sky::CandidatesTable &table() const { return shown; }
    const std::vector<Sky::SkyCandidate> &candidates() const { return shown.candidates; }

    void setVerdict(int row, Sky::Verdict verdict);
    void setNote(int row, const QString &note);

    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    /// A verdict or a note of this row.
    void decided(int row);

protected:
    int rows() const override { return int(shown.candidates.size()); }
    int columns() const override { return PlaceCount; }
    Column column(int index) const override;
    QString text(int row, int column) const override;
    QVariant sortValue(int row, int column) const override;
    QVariant look(int row, int column, int role) const override;

private:
    void decide(int row, Sky::Verdict verdict, const QString &note);
    QString reasonOf(const Sky::SkyCandidate &candidate, int column) const;

    const bool areOfFfa;
    Sky::CandidatesTable shown;
};
