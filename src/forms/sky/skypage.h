#pragma once

#include "forms/sky/skyjobs.h"
#include "jobs/worker.h"

#include <QObject>
#include <memory>

class QWidget;

/// What FourierForm shows for maps and searches: the inputs at the left, and at their right the
/// view of one kind of result. The stacks are made beside the window; what is kept of them is taken
/// up, also after a stop.
class SkyPage : public QObject {
    Q_OBJECT

public:
    ~SkyPage() override;

    SkyInputs *inputs() const { return fields; }
    virtual QWidget *view() const = 0;
    void setRecordings(const std::shared_ptr<const RecordingSet> &set);

public slots:
    void compute();
    void copyCommand();
    /// The window has another size.
    virtual void fitToWindow() {}

protected:
    SkyPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
            QWidget *form);

    /// Maps that fill in while the work goes on.
    virtual std::vector<Sky::MapChoice> mapsMeanwhile(const Sky::SkyPlan &plan) const;
    virtual void showMeanwhile(const SkyMaps &maps);
    virtual void showMessage(const QString &message) = 0;
    /// The stacks are there, or the choice of what they show has changed.
    virtual void showStacks() = 0;
    /// The fields come to another request than that of the stacks.
    virtual void planChanged() {}

    /// What was used, in lines.
    QStringList usedLines() const;
    /// What was asked for, as the header of a table begins.
    std::vector<Results::HeaderLine> requestLines() const;

    const Sky::SkyAnalysis &analysis;
    const QString directory;
    std::shared_ptr<const RecordingSet> recordings;
    /// The plan of the stacks, with what the fields say of them now.
    std::shared_ptr<const Sky::SkyPlan> plan;
    std::shared_ptr<const SkyOutcome> outcome; ///< null until there are stacks

private:
    void addDays(const Sky::SkyPlan &planned);
    void start(const std::shared_ptr<const Sky::SkyPlan> &wanted, bool isKeptOnly);
    void takeNews(const SkyNews &news);
    void takePlanned(const PlannedSky &planned);
    void runEnded(const Jobs::Ending &ending);
    void reportOutcome();

    SkyInputs *const fields;
    Jobs::Worker &worker;
    Jobs::Worker reloader;                       // of what is kept, after a stop
    std::shared_ptr<const Sky::SkyPlan> running; // plan of the run
    bool wantsRun = false;                       // as soon as the fields are planned
};
