#include "forms/profiles/profileform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "base/numbertext.h"
#include "coords/barycentre.h"
#include "data/truenumbers.h"
#include "forms/days/daysinputs.h"
#include "forms/days/daystable.h"
#include "forms/days/savetables.h"
#include "forms/profiles/profilepanel.h"
#include "forms/profiles/profiletexts.h"
#include "forms/profiles/profileview.h"
#include "forms/savefolder.h"
#include "ui_profileform.h"

#include <QFileDialog>
#include <QKeyEvent>
#include <algorithm>
#include <cmath>

namespace {

constexpr char periodsMode[] = "periods";
constexpr const char *fluxFields[] = {"sefd", "temperature", "gain"};

QString fluxKey(const QString &field)
{
    return "flux/" + field;
}

} // namespace

ProfileForm::ProfileForm(const QString &path, const QString &mode, QWidget *parent)
    : DirectoryForm(path, parent), ui(new Ui::ProfileForm),
      days(new DaysModel(profileTexts(), this)), adding(adder, this, false)
{
    ui->setupUi(this);
    ui->filePath->showDirectory(directory);
    FieldValues::offerChoices(this, Profiles::profileAnalysis());
    ui->align->removeItem(ui->align->findText("None")); // the check box beside it says so
    showDaysByDate(ui->days, days);
    ui->inputsAndDays->setSizes({440, 210});
    const bool isPeriods = mode == periodsMode;
    if (isPeriods)
        takeOptions();
    for (const char *const field : fluxFields)
        findChild<QLineEdit *>(field)->setText(Settings::store().value(fluxKey(field)).toString());
    view = new ProfileView(isPeriods ? Plot::Scanned::Periods : Plot::Scanned::Dispersions);
    view->showMessage("Reading the headers of the recordings...");
    fillCentralWidget(this, view, nullptr);

    inputs = new DaysInputs(this);
    connectInputs();
    connectJobs();
    lastValues = std::make_unique<LastValues>(this);
    ui->placeFields->setFocus();
    readRecordings();
}

ProfileForm::~ProfileForm()
{
    Settings *const settings = Settings::instance();
    if (settings->currentProfileForm() != this)
        return;
    settings->profileAligns = ui->aligns->isChecked();
    settings->profileNormalises = ui->normalise->isChecked();
    settings->profileWeights = ui->weight->isChecked();
    settings->setCurrentProfileForm(nullptr);
}

// Those of the form of periods before this one, which has gone by now.
void ProfileForm::takeOptions()
{
    const Settings *const settings = Settings::instance();
    ui->aligns->setChecked(settings->profileAligns);
    ui->normalise->setChecked(settings->profileNormalises);
    ui->weight->setChecked(settings->profileWeights);
}

void ProfileForm::connectInputs()
{
    inputs->watch();
    connect(inputs, &DaysInputs::changed, this, &ProfileForm::plan);
    const auto enableHow = [this] { ui->align->setEnabled(ui->aligns->isChecked()); };
    connect(ui->aligns, &QCheckBox::toggled, this, enableHow);
    enableHow();
    connect(ui->pushButton, &QPushButton::clicked, this, &ProfileForm::compute);
    connect(ui->commandButton, &QPushButton::clicked, this, &ProfileForm::copyCommand);
    connect(ui->parButton, &QPushButton::clicked, this, &ProfileForm::chooseParFile);

    connect(days, &DaysModel::switched, this, &ProfileForm::switchDay);
    connect(ui->allOn, &QPushButton::clicked, this, [this] { switchAll(true); });
    connect(ui->allOff, &QPushButton::clicked, this, [this] { switchAll(false); });
    connect(ui->days->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &row) { view->setDay(ui->days->tableRow(row)); });
    connect(view, &ProfileView::dayClicked, this,
            [this](int day) { ui->days->setCurrentIndex(ui->days->shownIndex(day)); });
    connect(view, &ProfileView::valuesTaken, this, &ProfileForm::takeValues);
    connect(view->panel(), &ProfilePanel::backWanted, this, &ProfileForm::takeBack);
    connect(view->panel(), &ProfilePanel::tablesWanted, this, &ProfileForm::saveTables);
    connect(view->panel(), &ProfilePanel::timWanted, this, &ProfileForm::saveTim);
}

void ProfileForm::connectJobs()
{
    for (Jobs::Worker *const one : {&worker, &planner, &adder}) {
        connect(one, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
            if (recordings && ending.kind == Jobs::Ending::Failed)
                showError(window(), ending.problem);
        });
    }
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Stopped && !products)
            view->showMessage("Stopped. Days that were folded are kept: Compute goes on.");
    });
    connect(&adder, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Stopped)
            view->stopTrials();
    });
}

void ProfileForm::recordingsRead()
{
    fillPresets();
    ui->pushButton->setEnabled(true);
    view->showMessage(profileTexts().emptyPicture);
    plan();
}

// What the first recording that can be used has.
void ProfileForm::fillPresets()
{
    const auto first = std::find_if(recordings->entries.begin(), recordings->entries.end(),
                                    [](const RecordingEntry &entry) { return entry.isUsable(); });
    ui->module->setValue(moduleNumber(first->header, 0));
    ui->ray->setValue(rayNumber(first->header, 0));
    int points = Days::DayPlace().points;
    while (points > Days::fewestPoints && points > first->completePoints)
        points /= 2;
    ui->points->setCurrentText(QString::number(points));
    ui->nearestBeam->setChecked(!Days::siteOf(first->path).isEmpty());
    ui->placeFields->chooseFirstPoint(0); // which every recording has
}

Profiles::ProfileParameters ProfileForm::readParameters(std::vector<FieldProblem> &problems) const
{
    Profiles::ProfileParameters parameters = inputs->read(Profiles::profileAnalysis(), problems);
    if (!ui->aligns->isChecked())
        parameters.align = "none";
    return parameters;
}

// Finds the days for what stands in the fields, beside the window.
void ProfileForm::plan()
{
    if (!recordings)
        return;
    std::vector<FieldProblem> problems;
    const Profiles::ProfileParameters parameters = readParameters(problems);
    if (!problems.empty()) {
        planner.stop();
        inputs->showProblems(problems);
        return;
    }
    using Plan = std::shared_ptr<const Profiles::ProfilePlan>;
    planner.start<Plan>(
        [set = recordings, parameters](const Jobs::Control &, const Jobs::Deliver<Plan> &deliver) {
            deliver(std::make_shared<const Profiles::ProfilePlan>(
                Profiles::planProfiles(*set, parameters)));
        },
        [this](const Plan &made) { takePlan(*made); });
}

void ProfileForm::takePlan(const Profiles::ProfilePlan &made)
{
    inputs->showPlan(made.days, *recordings);
    inputs->showProblems(made.problems);
    if (!products) {
        ui->daysText->setText(planText(made, qint64(recordings->entries.size())));
        days->setRows(rowsOfDays(made.days.list, *recordings, directory));
        return;
    }
    if (!made.problems.empty())
        return;
    const Profiles::ProfileParameters wanted =
        Profiles::withAverageOf(used.parameters, made.parameters);
    if (Profiles::profileCommand(wanted, {}, {}) ==
        Profiles::profileCommand(used.parameters, {}, {}))
        return;
    used.parameters = wanted;
    average();
}

void ProfileForm::compute()
{
    if (!recordings)
        return;
    inputs->stopWaiting();
    std::vector<FieldProblem> problems;
    const ProfileReading reading = {recordings, directory, readParameters(problems)};
    if (!inputs->accept(problems))
        return;
    ui->placeFields->rememberClock();
    for (const char *const field : fluxFields)
        Settings::store().setValue(fluxKey(field), findChild<QLineEdit *>(field)->text());
    adder.stop();
    products = nullptr;
    outcome = nullptr;
    taken.reset();
    view->showMessage("Computing...");
    worker.start<Products>(
        [reading](const Jobs::Control &control, const Jobs::Deliver<Products> &deliver) {
            if (const Products made = foldDays(reading, control))
                deliver(made);
        },
        [this](const Products &made) { takeProducts(made); });
}

void ProfileForm::takeProducts(const Products &made)
{
    inputs->showPlan(made->plan.days, *recordings);
    if (!inputs->accept(made->plan.problems)) {
        view->showMessage(profileTexts().emptyPicture);
        return;
    }
    products = made;
    used = made->plan;
    ui->daysText->setText(planText(used, qint64(recordings->entries.size())));
    days->setRows(rowsOfDays(used.days.list, *recordings, directory));
    counts.assign(products->days->size(), true);
    showDays();
    average();
    plan(); // what was changed under "Average" while the days were folded
}

Profiles::StackChoice ProfileForm::choice() const
{
    Profiles::StackChoice made = Profiles::choiceOf(used.parameters);
    made.days = counts;
    return taken ? Profiles::movedTo(taken->period, taken->dispersion, *products->days, used, made)
                 : made;
}

// The average first, then the trials, which take longer.
void ProfileForm::average()
{
    if (!products)
        return;
    adder.start<Outcome>(
        [days = products->days, plan = used,
         choice = choice()](const Jobs::Control &control, const Jobs::Deliver<Outcome> &deliver) {
            Profiles::ProfileOutcome made = Profiles::averageDays(days, choice, control);
            if (control.isStopped())
                return;
            deliver(std::make_shared<const Profiles::ProfileOutcome>(made));
            made.scan = Profiles::scanOf(made, plan, control);
            if (!control.isStopped())
                deliver(std::make_shared<const Profiles::ProfileOutcome>(std::move(made)));
        },
        [this](const Outcome &made) { takeOutcome(made); });
}

void ProfileForm::takeOutcome(const Outcome &made)
{
    outcome = made;
    view->showOutcome(products, outcome, used);
    showDays();
    const double least = outcome->choice.leastSnr;
    ui->selects->setVisible(least > 0);
    ui->selects->setText(QString("Days with an S/N below %1 are left out: this selects, and noise "
                                 "selected so has pulses too.")
                             .arg(least));
}

void ProfileForm::showDays()
{
    std::vector<DayRow> rows = days->dayRows();
    for (std::size_t i = 0; i < products->days->size(); ++i) {
        const Profiles::ProfileDay &day = (*products->days)[i];
        rows[i].canCount = day.isWhole();
        rows[i].isOn = day.isWhole() && counts[i];
        QStringList reasons = {day.problem, day.remark};
        if (day.isWhole()) {
            const double samplesOfBin = day.seconds / used.days.list.tresolution / day.bins;
            rows[i].sigma = day.noise.sigma * day.unit * std::sqrt(samplesOfBin);
        }
        if (outcome && day.isWhole()) {
            rows[i].power = outcome->stack.days[i].snr.boxcar.snr;
            reasons.prepend(outcome->stack.days[i].reason);
        }
        reasons.removeAll({});
        rows[i].reason = reasons.join("; ");
    }
    days->updateRows(rows);
}

void ProfileForm::switchDay(int row, bool isOn)
{
    if (!products || row >= int(counts.size()))
        return;
    counts[std::size_t(row)] = isOn;
    average();
}

void ProfileForm::switchAll(bool isOn)
{
    if (!products)
        return;
    counts.assign(counts.size(), isOn);
    showDays();
    average();
}

// Moves the days there at once, and makes the fields ask for it.
void ProfileForm::takeValues(const OptimiseView::Place &place)
{
    const Profiles::ProfileDay *const first = Profiles::firstWhole(*products->days);
    if (!first)
        return;
    const QString dispersion = QString::number(place.dispersion, 'f', 3);
    ui->dispersion->setText(dispersion);
    taken = {place.period, dispersion.toDouble()};
    if (choice().moreFrequency != 0)
        takePeriod(place.period, *first);
    average();
}

// The period is typed then, with the other numbers of the ephemeris that it takes the place of.
void ProfileForm::takePeriod(double period, const Profiles::ProfileDay &first)
{
    constexpr int periodDigits = 10;
    const QString text = QString::number(period, 'g', periodDigits);
    taken->period = text.toDouble();
    ui->period->setText(text);
    ui->frequency->clear();
    ui->parFile->clear();
    const Profiles::Ephemeris &ephemeris = products->plan.ephemeris;
    ui->derivative->setText(ephemeris.derivative != 0 ? exactText(ephemeris.derivative)
                                                      : QString());
    ui->epoch->setText(exactText(std::round(Tools::modifiedJulianDay(first.utc))));
}

void ProfileForm::takeBack()
{
    taken.reset();
    average();
}

QStringList ProfileForm::daysOff() const
{
    QStringList names;
    for (std::size_t i = 0; products && i < counts.size(); ++i) {
        if (!counts[i] && (*products->days)[i].isWhole())
            names << Days::dayName(used.days.list.days[i].begin);
    }
    return names;
}

void ProfileForm::copyCommand()
{
    std::vector<FieldProblem> problems;
    const Profiles::ProfileParameters parameters = readParameters(problems);
    if (inputs->accept(problems))
        StatusLine::copyCommand(Profiles::profileCommand(parameters, daysOff(), {directory}) +
                                "\n");
}

// What the batch program writes too.
void ProfileForm::saveTables()
{
    if (!outcome)
        return;
    std::vector<Results::HeaderLine> request = {{"program", "zrt-analytics-2"},
                                                {"command", Profiles::profileAnalysis().command},
                                                {"folder", directory}};
    for (const Results::HeaderLine &line : Profiles::parameterLines(used.parameters))
        request.push_back(line);
    askAndSaveTables(
        this, profileTexts().saveTables,
        QString("profile_m%1_r%2.txt").arg(used.parameters.module).arg(used.parameters.ray),
        Profiles::profileTables(request, *outcome, used, *recordings));
}

void ProfileForm::saveTim()
{
    if (!outcome)
        return;
    const QString path = askSavePath(
        this, "Save arrival times",
        QString("arrivals_m%1_r%2.tim").arg(used.parameters.module).arg(used.parameters.ray),
        "Arrival times (*.tim)");
    if (!path.isEmpty())
        endSave(this, path, "The arrival times were not saved.",
                writeWhole(path, Profiles::timBytes(*outcome, used.parameters.site)).text());
}

void ProfileForm::chooseParFile()
{
    const QString path = QFileDialog::getOpenFileName(this, "Ephemeris", directory,
                                                      "Ephemerides (*.par);;All files (*)");
    if (!path.isEmpty())
        ui->parFile->setText(path);
}

void ProfileForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        compute();
    else
        QWidget::keyPressEvent(event);
}
