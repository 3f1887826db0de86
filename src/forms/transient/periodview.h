#pragma once

#include "analyses/timing/periodsearch.h"
#include "fields/tablemodel.h"
#include "jobs/worker.h"

#include <QWidget>
#include <functional>
#include <memory>

class PeriodsModel;
class PulsarGrafik;
class TableView;
namespace Ui {
class PeriodView;
}

/// The period of the arrival times that a form has: what is asked for, the families of periods,
/// rank over period and the residuals of the best one. Both plots come from the shared search of
/// the batch program.
class PeriodView : public QWidget {
    Q_OBJECT

public:
    explicit PeriodView(QWidget *parent = nullptr);
    ~PeriodView() override;

    /// Where the times come from, asked at each search.
    void setSource(std::function<Timing::ArrivalTimes()> timesOf);

    const std::shared_ptr<const Timing::PeriodSearch> &result() const { return found; }

public slots:
    void find();

signals:
    void finished();

private:
    void take(const std::shared_ptr<const Timing::PeriodSearch> &search, double chance);
    void copyCommand();
    bool readParameters(Timing::PeriodParameters &parameters);
    Timing::ArrivalTimes takenTimes(const Timing::PeriodParameters &parameters) const;

    const std::unique_ptr<Ui::PeriodView> ui;
    PeriodsModel *const model;
    PulsarGrafik *const ranks;
    PulsarGrafik *const residuals;
    std::function<Timing::ArrivalTimes()> source;
    std::vector<FieldProblem> told;
    std::shared_ptr<const Timing::PeriodSearch> found;
    Jobs::Worker worker;
};
