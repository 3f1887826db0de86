#pragma once

#include "app/shell/jobprogress.h"
#include "forms/sky/celldays.h"
#include "jobs/worker.h"

#include <QWidget>

class QLabel;
class SpectrumView;

/// A window with the days of one cell of the stacks: day over frequency, their stack and its lines.
/// It shows itself and reads the days; closing ends both.
class CellWindow : public QWidget {
    Q_OBJECT

public:
    struct Request {
        std::shared_ptr<const RecordingSet> recordings;
        std::shared_ptr<const Sky::SkyPlan> plan;
        SkyPlace place;
    };
    CellWindow(const Request &wanted, QWidget *parent);
    ~CellWindow() override;

private:
    void take(const CellDays &days);

    const Request request;
    QLabel *const told;
    SpectrumView *const view;
    Jobs::Worker worker;
    JobProgress progress;
};
