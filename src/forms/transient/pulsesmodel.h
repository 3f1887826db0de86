#pragma once

#include "analyses/pulses/keptverdicts.h"
#include "fields/tablemodel.h"
#include "results/resulttable.h"

/// The pulses that a search found, with what a person decided on them.
class PulsesModel : public TableModel {
    Q_OBJECT

public:
    enum Place {
        VerdictPlace,
        Utc,
        Point,
        Ray,
        Dispersion,
        Width,
        Snr,
        Alfa,
        Delta,
        Source,
        Found,
        Note,
        PlaceCount
    };

    using TableModel::TableModel;

    /// Pulses of a search that runs may grow in number and change their order.
    void setPulses(std::vector<Pulses::Pulse> found);
    const std::vector<Pulses::Pulse> &pulses() const { return shown; }
    /// The row of a pulse among those that came later; -1 where it is gone.
    int rowOf(const Pulses::Pulse &pulse) const;

    void setVerdicts(Pulses::KeptVerdicts kept);
    const Pulses::KeptVerdicts &verdicts() const { return decidedOn; }
    Sky::Verdict verdict(int row) const;
    QString note(int row) const;
    void setVerdict(int row, Sky::Verdict verdict);
    void setNote(int row, const QString &note);

    /// The rows as a table that is saved.
    std::vector<Results::Column> tableColumns() const;

    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    /// A verdict or a note of this row.
    void decided(int row);

protected:
    int rows() const override { return int(shown.size()); }
    int columns() const override { return PlaceCount; }
    Column column(int index) const override;
    QString text(int row, int column) const override;
    QVariant sortValue(int row, int column) const override;
    QVariant look(int row, int column, int role) const override;

private:
    void decide(int row, Sky::Verdict verdict, const QString &note);

    std::vector<Pulses::Pulse> shown;
    Pulses::KeptVerdicts decidedOn;
};
