#include "forms/multi/nativemultiform.h"

#include "analyses/compare/comparetables.h"
#include "analyses/days/stacktables.h"
#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "app/shell/statusline.h"
#include "data/truenumbers.h"
#include "forms/days/daysinputs.h"
#include "forms/days/daystable.h"
#include "forms/days/placefields.h"
#include "forms/days/savetables.h"
#include "forms/fieldvalues.h"
#include "forms/multi/comparejobs.h"
#include "forms/multi/comparepanel.h"
#include "forms/multi/comparepresets.h"
#include "forms/multi/comparetexts.h"
#include "forms/multi/compareview.h"
#include "forms/showrecording.h"
#include "ui_nativemultiform.h"

#include <QKeyEvent>
#include <algorithm>
#include <cmath>

NativeMultiForm::NativeMultiForm(const QString &path, QWidget *parent)
    : DirectoryForm(path, parent), ui(new Ui::NativeMultiForm),
      days(new DaysModel(compareTexts(), this))
{
    ui->setupUi(this);
    ui->filePath->showDirectory(directory);
    FieldValues::offerChoices(this, Compare::compareAnalysis());
    showDaysByDate(ui->days, days);
    view = new CompareView;
    view->showMessage("Reading the headers of the recordings...");
    fillCentralWidget(this, view, nullptr);

    inputs = new DaysInputs(this);
    connectInputs();
    lastValues = std::make_unique<LastValues>(this);
    ui->placeFields->setFocus();
    readRecordings();
}

NativeMultiForm::~NativeMultiForm() = default;

void NativeMultiForm::connectInputs()
{
    inputs->watch({ui->showsDifferences});
    connect(inputs, &DaysInputs::changed, this, &NativeMultiForm::plan);
    connect(ui->pushButton, &QPushButton::clicked, this, &NativeMultiForm::compute);
    connect(ui->commandButton, &QPushButton::clicked, this, &NativeMultiForm::copyCommand);
    connect(ui->showsDifferences, &QCheckBox::toggled, view, &CompareView::showDifferences);

    connect(days, &DaysModel::switched, this, &NativeMultiForm::switchDay);
    connect(ui->allOn, &QPushButton::clicked, this, [this] { switchAll(true); });
    connect(ui->allOff, &QPushButton::clicked, this, [this] { switchAll(false); });
    connect(ui->days->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &row) { view->markDay(ui->days->tableRow(row)); });
    connect(view, &CompareView::dayClicked, this,
            [this](int day) { ui->days->setCurrentIndex(ui->days->shownIndex(day)); });
    connect(view, &CompareView::cursorMoved, this,
            [this] { days->setPowers(view->differencesUnderCursor(), 0); });
    connect(view, &CompareView::opened, this, &NativeMultiForm::open);
    connect(view->panel(), &ComparePanel::tablesWanted, this, &NativeMultiForm::saveTables);
    for (Jobs::Worker *const one : {&worker, &planner, &comparer}) {
        connect(one, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
            if (recordings && ending.kind == Jobs::Ending::Failed)
                showError(window(), ending.problem);
        });
    }
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Stopped && !products)
            view->showMessage("Stopped. Days that were read are kept: Compute goes on.");
    });
}

void NativeMultiForm::recordingsRead()
{
    fillPresets();
    ui->pushButton->setEnabled(true);
    view->showMessage(compareTexts().emptyPicture);
    plan();
}

// What the first recording that can be used has; the days lie under each other by sidereal time.
void NativeMultiForm::fillPresets()
{
    const auto first = std::find_if(recordings->entries.begin(), recordings->entries.end(),
                                    [](const RecordingEntry &entry) { return entry.isUsable(); });
    fillPlace(this, *ui->placeFields, *recordings);
    const ObservationData &header = first->header;
    QStringList others;
    for (int ray = 1; ray < header.rays; ++ray)
        others << QString::number(rayNumber(header, ray));
    ui->otherRays->setText(others.join(','));
}

// Finds the days for what stands in the fields, beside the window.
void NativeMultiForm::plan()
{
    if (!recordings)
        return;
    std::vector<FieldProblem> problems;
    const Compare::CompareParameters parameters =
        inputs->read(Compare::compareAnalysis(), problems);
    if (!problems.empty()) {
        planner.stop();
        inputs->showProblems(problems);
        return;
    }
    using Plan = std::shared_ptr<const Compare::ComparePlan>;
    planner.start<Plan>(
        [set = recordings, parameters](const Jobs::Control &, const Jobs::Deliver<Plan> &deliver) {
            deliver(std::make_shared<const Compare::ComparePlan>(
                Compare::planCompare(*set, parameters)));
        },
        [this](const Plan &made) { takePlan(*made); });
}

void NativeMultiForm::takePlan(const Compare::ComparePlan &made)
{
    if (!inputs->showPlan(made.days, *recordings))
        return;
    const std::vector<Days::Day> &list = made.days.list.days;
    const auto usable = std::count_if(list.begin(), list.end(),
                                      [](const Days::Day &day) { return day.reason.isEmpty(); });
    QStringList lines = {QString("Recordings: %1, days: %2, days that do not fit: %3")
                             .arg(recordings->entries.size())
                             .arg(usable)
                             .arg(qint64(list.size()) - usable)};
    ui->daysText->setText((lines + made.days.remarks).join('\n'));
    if (!products)
        days->setRows(rowsOfDays(made.days.list, *recordings, directory));
}

void NativeMultiForm::compute()
{
    if (!recordings)
        return;
    inputs->stopWaiting();
    std::vector<FieldProblem> problems;
    CompareReading reading = {recordings, directory,
                              inputs->read(Compare::compareAnalysis(), problems)};
    if (!inputs->accept(problems))
        return;
    ui->placeFields->rememberClock();
    comparer.stop();
    products = nullptr;
    comparison = nullptr;
    view->showMessage("Computing...");
    worker.start<Products>(
        [reading](const Jobs::Control &control, const Jobs::Deliver<Products> &deliver) {
            if (const Products made = readDays(reading, control))
                deliver(made);
        },
        [this](const Products &made) { takeProducts(made); });
}

void NativeMultiForm::takeProducts(const Products &made)
{
    if (!made->plan.days.problems.empty()) {
        inputs->showProblems(made->plan.days.problems);
        view->showMessage(compareTexts().emptyPicture);
        return;
    }
    products = made;
    days->setRows(rowsOfDays(products->plan.days.list, *recordings, directory));
    counts.assign(products->days().size(), true);
    showDays();
    compare();
}

void NativeMultiForm::compare()
{
    if (!products)
        return;
    comparer.start<Compared>(
        [products = products, wanted = counts](const Jobs::Control &control,
                                               const Jobs::Deliver<Compared> &deliver) {
            if (const Compared made =
                    Compare::compareDays(*products, wanted, products->parameters.byChance, control))
                deliver(made);
        },
        [this, wanted = counts](const Compared &made) { takeComparison(made, wanted); });
}

void NativeMultiForm::takeComparison(const Compared &made, const std::vector<bool> &wanted)
{
    comparison = made;
    compared = wanted;
    view->showComparison(products, comparison, compared, usedText(*products, *comparison));
    days->setPowers(view->differencesUnderCursor(), 0);
}

void NativeMultiForm::showDays()
{
    std::vector<DayRow> rows = days->dayRows();
    for (std::size_t i = 0; i < products->days().size(); ++i) {
        const Compare::CompareDay &day = products->days()[i];
        rows[i].sigma = day.sigma;
        rows[i].canCount = day.isWhole();
        rows[i].isOn = day.isWhole() && counts[i];
        QStringList reasons = {day.problem, day.remark};
        reasons.removeAll({});
        rows[i].reason = reasons.join("; ");
    }
    days->updateRows(rows);
}

void NativeMultiForm::switchDay(int row, bool isOn)
{
    if (!products || row >= int(counts.size()))
        return;
    counts[std::size_t(row)] = isOn;
    compare();
}

void NativeMultiForm::switchAll(bool isOn)
{
    if (!products)
        return;
    counts.assign(counts.size(), isOn);
    showDays();
    compare();
}

void NativeMultiForm::open(int day, int point)
{
    const Compare::RecordingPoint place = Compare::recordingPointOf(products->plan, day, point);
    showRecording(recordings->entries[std::size_t(place.recording)].path, place.point);
}

QStringList NativeMultiForm::daysOff() const
{
    QStringList names;
    for (std::size_t i = 0; products && i < counts.size(); ++i) {
        if (!counts[i] && products->days()[i].isWhole())
            names << Days::dayName(products->plan.days.list.days[i].begin);
    }
    return names;
}

void NativeMultiForm::copyCommand()
{
    std::vector<FieldProblem> problems;
    const Compare::CompareParameters parameters =
        inputs->read(Compare::compareAnalysis(), problems);
    if (inputs->accept(problems))
        StatusLine::copyCommand(Compare::compareCommand(parameters, daysOff(), {directory}) + "\n");
}

// What the batch program writes too.
void NativeMultiForm::saveTables()
{
    if (!comparison)
        return;
    const Compare::CompareParameters &used = products->parameters;
    Results::ResultTable table;
    table.request = {{"program", "zrt-analytics-2"},
                     {"command", Compare::compareAnalysis().command},
                     {"folder", directory}};
    for (const Results::HeaderLine &line : Compare::parameterLines(used))
        table.request.push_back(line);
    table.result = Compare::comparisonLines(*products, *comparison);
    std::vector<std::pair<QString, Results::ResultTable>> tables = {
        {"mean", table}, {"differences", table}, {"days", table}};
    tables[0].second.columns = Compare::meanColumns(products->plan, *comparison);
    tables[1].second.columns = Compare::differencesColumns(*products, *comparison);
    tables[2].second.columns = Compare::daysColumns(*products, *comparison, compared);
    for (const Results::HeaderLine &line :
         Days::leftOutLines(*recordings, products->plan.days.list))
        tables[2].second.result.push_back(line);
    askAndSaveTables(this, compareTexts().saveTables,
                     QString("days_m%1_r%2.txt").arg(used.module).arg(used.ray), tables);
}

void NativeMultiForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        compute();
    else if (event->key() == Qt::Key_Escape)
        comparer.stop(); // while days are read, their progress takes the key
    else
        QWidget::keyPressEvent(event);
}
