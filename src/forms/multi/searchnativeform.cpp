#include "forms/multi/searchnativeform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "base/timetext.h"
#include "forms/days/daysinputs.h"
#include "forms/days/placefields.h"
#include "forms/fieldvalues.h"
#include "forms/multi/comparepresets.h"
#include "forms/multi/dateview.h"
#include "ui_searchnativeform.h"

#include <algorithm>

namespace {

constexpr int readAhead = 2; // dates on either side

} // namespace

SearchNativeForm::SearchNativeForm(const QString &path, const QString & /*mode*/, QWidget *parent)
    : DirectoryForm(path, parent), ui(new Ui::SearchNativeForm), marks(path)
{
    ui->setupUi(this);
    ui->filePath->showDirectory(directory);
    FieldValues::offerChoices(this, Compare::compareAnalysis());
    view = new DateView;
    view->showMessage("Reading the headers of the recordings...");
    fillCentralWidget(this, view, nullptr);
    inputs = new DaysInputs(this);
    connectInputs();
    lastValues = std::make_unique<LastValues>(this);
    ui->dates->setFocus();
    readRecordings();
}

SearchNativeForm::~SearchNativeForm() = default;

void SearchNativeForm::connectInputs()
{
    inputs->watch();
    connect(inputs, &DaysInputs::changed, this, &SearchNativeForm::makePlan);
    connect(ui->dates, &DateList::wanted, this, &SearchNativeForm::showDate);
    connect(ui->dates, &DateList::markWanted, this, &SearchNativeForm::toggleMark);
    connect(ui->markButton, &QPushButton::clicked, this, &SearchNativeForm::toggleMark);
    for (Jobs::Worker *const one : {&planner, &reader}) {
        connect(one, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
            if (ending.kind == Jobs::Ending::Failed)
                showError(window(), ending.problem);
        });
    }
}

void SearchNativeForm::recordingsRead()
{
    fillPlace(this, *ui->placeFields, *recordings);
    makePlan();
}

// Finds the days for what stands in the fields, beside the window.
void SearchNativeForm::makePlan()
{
    if (!recordings)
        return;
    inputs->stopWaiting();
    std::vector<FieldProblem> problems;
    const auto typed = inputs->read(Compare::compareAnalysis(), problems);
    inputs->showProblems(problems);
    if (!problems.empty()) {
        planner.stop();
        return;
    }
    planner.start<Plan>(
        [set = recordings, typed](const Jobs::Control &, const Jobs::Deliver<Plan> &deliver) {
            deliver(std::make_shared<const Days::DayPlan>(
                Days::planDays(*set, Compare::daysParameters(typed))));
        },
        [this, typed](const Plan &made) { takePlan(made, typed); });
}

void SearchNativeForm::takePlan(const Plan &made, const Compare::CompareParameters &typed)
{
    if (!inputs->showPlan(*made, *recordings))
        return;
    ui->placeFields->rememberClock();
    reader.stop();
    read.clear();
    const QDate before = plan && ui->dates->current() >= 0 ? dateOf(ui->dates->current()) : QDate();
    plan = made;
    parameters = typed;
    keptIn = Days::keptFolder(directory).path;
    std::vector<DateList::Date> dates;
    int wanted = -1;
    for (const Days::Day &day : plan->list.days) {
        if (day.reason.isEmpty() && (wanted < 0 || day.begin.date() == before))
            wanted = int(dates.size());
        dates.push_back({textOfTime(day.begin, "yyyy-MM-dd  hh:mm:ss"), day.reason,
                         marks.contains(day.begin.date())});
    }
    ui->dates->setDates(std::move(dates));
    ui->daysText->setText(QString("Recordings: %1, dates: %2, recordings left out: %3")
                              .arg(recordings->entries.size())
                              .arg(plan->list.days.size())
                              .arg(plan->list.leftOut.size()));
    if (wanted >= 0)
        showDate(wanted);
    else
        view->showMessage(plan->list.days.empty() ? "No recording gives a date."
                                                  : plan->list.days.front().reason);
}

QDate SearchNativeForm::dateOf(int index) const
{
    return plan->list.days[std::size_t(index)].begin.date();
}

void SearchNativeForm::showDate(int index)
{
    if (!plan || index < 0 || index >= int(plan->list.days.size()))
        return;
    ui->dates->setCurrent(index);
    ui->markButton->setText(marks.contains(dateOf(index)) ? "Take the mark off" : "Mark this date");
    showCurrent();
    readDates();
}

// What is missing of the date that is shown and of those near it; the way forward comes first.
void SearchNativeForm::readDates()
{
    const int current = ui->dates->current();
    std::vector<int> near = {current};
    int after = current;
    int before = current;
    for (int i = 0; i < readAhead; ++i) {
        after = after < 0 ? -1 : ui->dates->neighbour(after, 1);
        before = before < 0 ? -1 : ui->dates->neighbour(before, -1);
        near.push_back(after);
        near.push_back(before);
    }
    std::map<int, std::shared_ptr<const DateStretch>> kept;
    DateReading reading = {recordings, plan, parameters, keptIn, {}};
    for (const int index : near) {
        if (const auto held = read.find(index); held != read.end())
            kept.insert(*held);
        else if (index >= 0)
            reading.dates.push_back(index);
    }
    read = std::move(kept);
    using Stretch = std::shared_ptr<const DateStretch>;
    reader.start<Stretch>(
        [reading](const Jobs::Control &control, const Jobs::Deliver<Stretch> &deliver) {
            ::readDates(reading, control, deliver);
        },
        [this](const Stretch &stretch) { take(stretch); });
}

void SearchNativeForm::take(const std::shared_ptr<const DateStretch> &stretch)
{
    read[stretch->day] = stretch;
    if (stretch->day == ui->dates->current())
        showCurrent();
}

// While a date is read the one before it stays.
void SearchNativeForm::showCurrent()
{
    const auto held = read.find(ui->dates->current());
    if (held != read.end())
        view->showStretch(held->second, plan, usedLines());
}

QStringList SearchNativeForm::usedLines() const
{
    const Days::Day &day = plan->list.days[std::size_t(ui->dates->current())];
    QStringList lines = {textOfTime(day.begin, "yyyy-MM-dd hh:mm:ss") + " UTC"};
    for (const Days::DayPart &part : day.parts)
        lines << entryOf(*recordings, part).path;
    lines << QString("Module %1, ray %2").arg(plan->choice.module).arg(plan->choice.ray)
          << QString("Dispersion %1 pc/cm^3, base line %2")
                 .arg(parameters.dispersion)
                 .arg(parameters.noise)
          << QString("Step %1 s").arg(plan->list.tresolution);
    return lines + plan->remarks;
}

void SearchNativeForm::toggleMark()
{
    const int current = ui->dates->current();
    if (!plan || current < 0)
        return;
    const QDate date = dateOf(current);
    const bool isMarked = !marks.contains(date);
    marks.set(date, isMarked);
    for (int i = 0; i < ui->dates->count(); ++i) {
        if (dateOf(i) == date)
            ui->dates->setMarked(i, isMarked);
    }
    ui->markButton->setText(isMarked ? "Take the mark off" : "Mark this date");
}
