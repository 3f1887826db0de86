#include "forms/sky/skypage.h"

#include "analyses/sky/skytables.h"
#include "app/shell/errorbox.h"
#include "app/shell/statusline.h"
#include "forms/days/stacktexts.h"
#include "results/reporttext.h"

#include <utility>

namespace {

QString countedDays(const Sky::SkyPlan &plan)
{
    return ReportText::counted(int(plan.passages.size()), "day");
}

} // namespace

SkyPage::SkyPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
                 QWidget *form)
    : QObject(form), analysis(skyAnalysis), directory(path),
      fields(new SkyInputs(skyAnalysis, path, form)), worker(jobs)
{
    connect(fields, &SkyInputs::computeWanted, this, &SkyPage::compute);
    connect(fields, &SkyInputs::commandWanted, this, &SkyPage::copyCommand);
    connect(fields, &SkyInputs::planned, this,
            [this](const std::shared_ptr<const PlannedSky> &made) { takePlanned(*made); });
    connect(&worker, &Jobs::Worker::ended, this, &SkyPage::runEnded);
}

SkyPage::~SkyPage() = default;

void SkyPage::setRecordings(const std::shared_ptr<const RecordingSet> &set)
{
    recordings = set;
    showMessage("Choose rays and dispersions and press Compute");
    fields->setRecordings(set);
}

std::vector<Sky::MapChoice> SkyPage::mapsMeanwhile(const Sky::SkyPlan & /*plan*/) const
{
    return {};
}

void SkyPage::showMeanwhile(const SkyMaps & /*maps*/)
{}

void SkyPage::compute()
{
    if (!recordings)
        return;
    wantsRun = fields->parameters().has_value();
    if (wantsRun)
        fields->plan(); // which takes seconds where there are thousands of files
}

void SkyPage::addDays(const Sky::SkyPlan &planned)
{
    if (planned.passages.empty()) {
        showMessage("No day holds these stretches; the list of days says why");
        return;
    }
    const auto wanted = std::make_shared<Sky::SkyPlan>(planned);
    wanted->interference = Days::readInterference(Days::interferencePath()).entries;
    fields->rememberClock();
    start(wanted, false);
}

void SkyPage::start(const std::shared_ptr<const Sky::SkyPlan> &wanted, bool isKeptOnly)
{
    const SkyRequest request = {recordings, directory, wanted, mapsMeanwhile(*wanted), isKeptOnly};
    running = isKeptOnly ? nullptr : wanted;
    if (!isKeptOnly) {
        reloader.stop();
        outcome = nullptr;
        plan = wanted;
        showMessage("Adding up the days...");
    }
    (isKeptOnly ? reloader : worker)
        .start<SkyNews>(
            [request](const Jobs::Control &control, const Jobs::Deliver<SkyNews> &deliver) {
                runSkyJob(request, control, deliver);
            },
            [this](const SkyNews &news) { takeNews(news); });
}

void SkyPage::takeNews(const SkyNews &news)
{
    if (!news.outcome) {
        showMeanwhile(news.maps);
        return;
    }
    outcome = news.outcome;
    running = nullptr;
    reportOutcome();
    showStacks();
}

// The list of days says which were added; a stack that could not be kept is said as well.
void SkyPage::reportOutcome()
{
    const Sky::SkyRun &run = outcome->run;
    fields->showDays(*outcome->plan, &run);
    QStringList lines = {QString("%1 of %2 added, %3 of them kept from before")
                             .arg(run.stack.added.size())
                             .arg(countedDays(*outcome->plan))
                             .arg(run.keptPassages)};
    lines << SkyInputs::sizeText(*outcome->plan);
    if (run.wasStopped)
        lines << "Stopped; Compute goes on from here";
    fields->tell(lines.join('\n'));
}

// A stopped run has kept what it had added; that is shown.
void SkyPage::runEnded(const Jobs::Ending &ending)
{
    if (!running)
        return;
    const std::shared_ptr<const Sky::SkyPlan> stopped = running;
    running = nullptr;
    if (ending.kind == Jobs::Ending::Failed) {
        showMessage(ending.problem);
        showError(fields->window(), "The days were not added up.", ending.problem);
    } else if (ending.kind == Jobs::Ending::Stopped) {
        start(stopped, true);
    }
}

// What needs no reading counts at once.
void SkyPage::takePlanned(const PlannedSky &planned)
{
    const bool isWanted = std::exchange(wantsRun, false);
    if (!planned.plan.problems.empty())
        return;
    if (isWanted) {
        fields->showDays(planned.plan, nullptr);
        addDays(planned.plan);
        return;
    }
    const bool isSame = outcome && Sky::requestOf(planned.plan) == outcome->run.stack.request();
    if (!isSame) {
        if (!running)
            fields->showDays(planned.plan, nullptr);
        planChanged();
        return;
    }
    const auto next = std::make_shared<Sky::SkyPlan>(*plan);
    next->parameters = planned.plan.parameters;
    plan = next;
    reportOutcome();
    showStacks();
}

void SkyPage::copyCommand()
{
    const std::optional<Sky::SkyParameters> typed = fields->parameters();
    if (!typed)
        return;
    StatusLine::copyCommand(Sky::skyCommand(analysis, *typed, {directory}) + "\n");
}

QStringList SkyPage::usedLines() const
{
    const Sky::SkyRun &run = outcome->run;
    QStringList lines = {
        directory, QString("%1 of %2").arg(run.stack.added.size()).arg(countedDays(*plan)),
        QString("%1 of %2 points, step %3 s")
            .arg(ReportText::counted(plan->starts, "stretch", "es"))
            .arg(plan->parameters.points)
            .arg(plan->header.tresolution),
        QString("%1, %2").arg(ReportText::counted(plan->rayCount(), "ray"),
                              ReportText::counted(int(plan->dispersions.size()), "dispersion")),
        QString("Stacks are kept in %1%2")
            .arg(outcome->kept.path, outcome->kept.isBesideData
                                         ? QString()
                                         : QString(", for the directory cannot be written"))};
    if (plan->trials)
        lines << trialsText(*plan->trials);
    if (!plan->interference.empty())
        lines << QString("%1 entries of the list of interference are left out")
                     .arg(plan->interference.size());
    return lines + plan->remarks + run.remarks;
}

std::vector<Results::HeaderLine> SkyPage::requestLines() const
{
    std::vector<Results::HeaderLine> lines = {
        {"program", "zrt-analytics-2"}, {"command", analysis.command}, {"folder", directory}};
    for (const std::vector<Results::HeaderLine> &more :
         {Sky::stateLines(*recordings, *plan), Sky::parameterLines(analysis, plan->parameters)})
        lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}
