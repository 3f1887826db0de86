#pragma once

#include "analyses/sky/skymap.h"
#include "data/recordingset.h"
#include "jobs/worker.h"
#include "results/resulttable.h"

#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

class DaysInputs;
class DaysModel;
class LastValues;
class QAbstractItemModel;
namespace Ui {
class SkyInputs;
}

/// What a request for stacks comes to, told before anything is read.
struct PlannedSky {
    Sky::SkyPlan plan;
    qint64 memory = 0;    ///< bytes
    qint64 bytesRead = 0; ///< of recordings
    double seconds = 0;   ///< that the arithmetic takes; 0: nothing is added up
};

/// The inputs of a map or a search over the days of a directory: the fields, what is wrong with
/// them, what the request comes to, and the list of the days. What stands in the fields is planned
/// beside the window.
class SkyInputs : public QWidget {
    Q_OBJECT

public:
    SkyInputs(const Sky::SkyAnalysis &skyAnalysis, const QString &directoryPath, QWidget *parent);
    ~SkyInputs() override;

    /// Fills in presets and begins to plan.
    void setRecordings(const std::shared_ptr<const RecordingSet> &set);

    /// What stands in the fields, without problems; nothing, and the first field at fault has the
    /// focus, where there are any.
    std::optional<Sky::SkyParameters> parameters();
    /// Takes over which map of the stacks is shown.
    void readShown(Sky::SkyParameters &parameters) const;
    /// The maps that are shown, one per ray.
    std::vector<Sky::MapChoice> shownMaps(const Sky::SkyPlan &plan) const;
    /// Pixels of a picture that follows the window where a number is 0.
    QSize pictureSize() const;

    /// Fills in the values that a header of a table holds.
    void showParameters(const std::vector<Results::HeaderLine> &header);
    void showDays(const Sky::SkyPlan &plan, const Sky::SkyRun *run);
    void tell(const QString &text);
    /// "4 stretches x 8 rays x 20 dispersions".
    static QString sizeText(const Sky::SkyPlan &plan);
    void rememberClock();

public slots:
    void plan();

signals:
    void computeWanted();
    void commandWanted();
    /// What the fields come to, after plan() or a change; it may have problems, which are shown.
    void planned(const std::shared_ptr<const PlannedSky> &made);
    /// Other maps of the same stacks are to be shown.
    void shownChanged();
    void pictureSizeChanged();

private:
    void connectInputs();
    Sky::SkyParameters read(std::vector<FieldProblem> &problems) const;
    void takePlan(const std::shared_ptr<const PlannedSky> &made);
    void fillShown(const Sky::SkyPlan &plan);
    void fillOther();
    QString costText(const PlannedSky &made) const;

    const Sky::SkyAnalysis &analysis;
    const QString directory;
    const std::unique_ptr<Ui::SkyInputs> ui;
    std::unique_ptr<LastValues> lastValues;
    DaysModel *const days;
    DaysInputs *fields = nullptr;
    std::shared_ptr<const RecordingSet> recordings;
    std::shared_ptr<const PlannedSky> latest;
    bool isFilling = false;
    Jobs::Worker planner;
};
