#include "forms/days/fourierform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "data/truenumbers.h"
#include "forms/days/daysmodel.h"
#include "forms/days/foldfields.h"
#include "forms/days/fouriergrafikinfo.h"
#include "forms/days/placefields.h"
#include "forms/days/sourcefield.h"
#include "forms/days/spectrumview.h"
#include "forms/days/stacktexts.h"
#include "forms/fieldvalues.h"
#include "forms/sky/skypage.h"
#include "results/reporttext.h"
#include "ui_fourierform.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

// The inputs: what they hold, what is wrong with them, and which days they give.

namespace {

constexpr int inputDelay = 250; // ms
constexpr int stackDelay = 150; // ms

} // namespace

FourierForm::FourierForm(const QString &path, int ffa, int map, int search, QWidget *parent)
    : DirectoryForm(path, parent), analysis(*Days::findDayAnalysis({ffa != 0, false, false})),
      words(stackTexts(analysis.flags.ffa)), ui(new Ui::FourierForm),
      days(new DaysModel(words, this))
{
    const SurveyFlags flags = {ffa != 0, map != 0, search != 0};
    const bool isSky = flags.map || flags.search;
    if (isSky || flags.ffa)
        setProperty("helpKey", isSky ? "FourierForm sky" : "FourierForm folds");
    if (isSky) {
        showSky(flags);
        return;
    }
    ui->setupUi(this);
    ui->filePath->showDirectory(directory);
    ui->groupBox_spectrum->setTitle(words.group);
    ui->pushButton->setToolTip(words.computeTip);
    ui->foldFields->setVisible(analysis.flags.ffa);
    FieldValues::hideFieldsOfOthers(this, analysis, Days::fourierDaysAnalyses());
    FieldValues::offerChoices(this, analysis);
    ui->days->showSorted(days);
    ui->days->sortByColumn(DaysModel::Date, Qt::AscendingOrder);
    ui->days->verticalHeader()->hide();
    ui->days->horizontalHeader()->setStretchLastSection(true);
    view = new SpectrumView(words);
    view->showMessage("Reading the headers of the recordings...");
    fillCentralWidget(this, view, nullptr);

    inputTimer.setSingleShot(true);
    inputTimer.setInterval(inputDelay);
    stackTimer.setSingleShot(true);
    stackTimer.setInterval(stackDelay);
    readInterference();
    connectInputs();
    chooseStart();
    lastValues = std::make_unique<LastValues>(this);
    ui->placeFields->setFocus();
    readRecordings();
}

FourierForm::~FourierForm() = default;

void FourierForm::showSky(const SurveyFlags &flags)
{
    const Sky::SkyAnalysis *const shown = Sky::findSkyAnalysis(flags);
    Q_ASSERT(shown);
    sky = SkyPage::make(*shown, directory, worker, this);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(sky->inputs());
    fillCentralWidget(this, sky->view(), nullptr);
    sky->inputs()->setFocus();
    readRecordings();
}

void FourierForm::connectInputs()
{
    for (const QLineEdit *field : findChildren<QLineEdit *>()) // those of spin boxes as well
        connect(field, &QLineEdit::textChanged, this, &FourierForm::changeInput);
    for (const QComboBox *field : findChildren<QComboBox *>())
        connect(field, qOverload<int>(&QComboBox::currentIndexChanged), this,
                &FourierForm::changeInput);
    for (const QCheckBox *field : findChildren<QCheckBox *>())
        connect(field, &QCheckBox::toggled, this, &FourierForm::changeInput);
    connect(ui->placeFields, &PlaceFields::chosen, this, &FourierForm::chooseStart);
    connect(ui->nearestBeam, &QCheckBox::toggled, this, &FourierForm::chooseStart);
    connect(&inputTimer, &QTimer::timeout, this, &FourierForm::plan);
    connect(ui->pushButton, &QPushButton::clicked, this, &FourierForm::compute);
    connect(ui->commandButton, &QPushButton::clicked, this, &FourierForm::copyCommand);

    connect(&stackTimer, &QTimer::timeout, this, &FourierForm::restack);
    connect(days, &DaysModel::switched, this, &FourierForm::switchDay);
    connect(ui->allOn, &QPushButton::clicked, this, [this] { switchAll(true); });
    connect(ui->allOff, &QPushButton::clicked, this, [this] { switchAll(false); });
    connect(ui->asProposed, &QPushButton::clicked, this, [this] { switchAll({}); });
    connect(ui->days->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &row) { view->markDay(ui->days->tableRow(row)); });
    connect(view, &SpectrumView::dayClicked, this,
            [this](int day) { ui->days->setCurrentIndex(ui->days->shownIndex(day)); });
    connect(view, &SpectrumView::cursorMoved, this, &FourierForm::showPowers);
    connect(view, &SpectrumView::markedFrequencyChanged, &stackTimer, qOverload<>(&QTimer::start));
    connect(view->panel(), &FourierGrafikInfo::leaveOutWanted, this, &FourierForm::leaveOut);
    connect(view, &SpectrumView::lineLeftOut, this, &FourierForm::leaveOut);
    connect(view, &SpectrumView::frequencyLeftOut, this, &FourierForm::leaveOutFrequency);
    connect(view, &SpectrumView::countAgainWanted, this, &FourierForm::countAgain);
    connect(view->panel(), &FourierGrafikInfo::interferenceWanted, this,
            &FourierForm::editInterference);
    connect(view->panel(), &FourierGrafikInfo::spectraWanted, this, &FourierForm::saveSpectra);
    connect(view->panel(), &FourierGrafikInfo::tablesWanted, this, &FourierForm::saveTables);
    for (Jobs::Worker *const one : {&worker, &planner, &stacker}) {
        connect(one, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
            if (recordings && ending.kind == Jobs::Ending::Failed)
                showError(window(), ending.problem);
        });
    }
    connect(&stacker, &Jobs::Worker::ended, this, [this] {
        if (isStale)
            stackTimer.start();
    });
    connect(&worker, &Jobs::Worker::ended, &stackTimer, qOverload<>(&QTimer::start));
}

void FourierForm::recordingsRead()
{
    if (sky) {
        sky->setRecordings(recordings);
        return;
    }
    fillPresets();
    ui->pushButton->setEnabled(true);
    view->showMessage(words.emptyPicture);
    plan();
}

// What the first recording that can be used has.
void FourierForm::fillPresets()
{
    const auto first = std::find_if(recordings->entries.begin(), recordings->entries.end(),
                                    [](const RecordingEntry &entry) { return entry.isUsable(); });
    const ObservationData &header = first->header;
    ui->module->setValue(moduleNumber(header, 0));
    ui->ray->setValue(rayNumber(header, 0));
    ui->dispersion->setText(QString::number(std::max(0, header.dispersion)));
    int points = Days::DayPlace().points;
    while (points > Days::fewestPoints && points > first->completePoints)
        points /= 2;
    ui->points->setCurrentText(QString::number(points));
    const QString site = Days::siteOf(first->path);
    ui->nearestBeam->setChecked(!site.isEmpty());
    ui->placeFields->chooseFirstPoint(0); // which every recording has
}

void FourierForm::chooseStart()
{
    const bool isSource = ui->placeFields->isSource();
    const bool isNearest = isSource && ui->nearestBeam->isChecked();
    ui->nearestBeam->setEnabled(isSource);
    ui->module->setEnabled(!isNearest);
    ui->ray->setEnabled(!isNearest);
    changeInput();
}

void FourierForm::changeInput()
{
    if (recordings)
        inputTimer.start();
}

Days::FourierDaysParameters FourierForm::readParameters(std::vector<FieldProblem> &problems) const
{
    const auto counts = [this](const QWidget *field) { return ui->placeFields->counts(field); };
    const auto parameters = FieldValues::readAll(this, analysis, counts, problems);
    ui->placeFields->addProblems(parameters, problems);
    return parameters;
}

void FourierForm::showProblems(const std::vector<FieldProblem> &problems)
{
    FieldValues::showProblems(this, ui->problems, planProblems, problems);
    planProblems = problems;
}

// Finds the days for what stands in the fields, beside the window.
void FourierForm::plan()
{
    if (!recordings)
        return;
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters parameters = readParameters(problems);
    if (!problems.empty()) {
        planner.stop();
        showProblems(problems);
        return;
    }
    using Plan = std::shared_ptr<const Days::DayPlan>;
    planner.start<Plan>(
        [set = recordings, parameters](const Jobs::Control &, const Jobs::Deliver<Plan> &deliver) {
            deliver(std::make_shared<const Days::DayPlan>(Days::planDays(*set, parameters)));
        },
        [this](const Plan &made) { takePlan(*made); });
    // What needs no reading counts at once.
    stackTimer.start();
}

void FourierForm::takePlan(const Days::DayPlan &made)
{
    showProblems(made.problems);
    showSource(made);
    if (!made.problems.empty())
        return;
    ui->daysText->setText(planText(made));
    showSearch(made);
    if (!spectra)
        listDays(made);
}

void FourierForm::showSource(const Days::DayPlan &made)
{
    const RecordingEntry &first = recordings->entries.front();
    ui->placeFields->sourceField()->setSetting({Days::siteOf(first.path), first.begin.date(),
                                                ui->points->currentText().toInt(),
                                                first.header.tresolution});
    if (!ui->module->isEnabled() && made.beam.module > 0) {
        ui->module->setValue(made.beam.module);
        ui->ray->setValue(made.beam.ray);
    }
}

// How large the search is, before it is made; what the empty fields stand for stands in them, grey.
void FourierForm::showSearch(const Days::DayPlan &made)
{
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters given = readParameters(problems);
    const bool isKnown = given.isFfa && problems.empty() && made.header.tresolution > 0;
    if (!isKnown) {
        ui->foldFields->tellSize({});
        return;
    }
    const FfaParameters used = Days::usedParameters(given, made).ffa;
    ui->foldFields->showUsed(used);
    const auto count = int(made.list.days.size());
    const FfaEstimate ofDay = Tools::estimateFfa(used, given.points, made.header.tresolution);
    constexpr double megabyte = 1e6;
    QStringList lines = {
        QString("%1 trial periods from %2 s on, %3 widths; %4 s and %5 MB for %6")
            .arg(ofDay.trials)
            .arg(used.period_min)
            .arg(ofDay.widths)
            .arg(ofDay.seconds * count * made.rays, 0, 'f', 1)
            .arg(double(analysis.bytes(given, made.header, count)) * made.rays / megabyte, 0, 'f',
                 0)
            .arg(ReportText::counted(count, "day"))};
    ui->foldFields->tellSize((lines + made.remarks).join('\n'));
}

QString FourierForm::planText(const Days::DayPlan &made) const
{
    const auto usable = std::count_if(made.list.days.begin(), made.list.days.end(),
                                      [](const Days::Day &day) { return day.reason.isEmpty(); });
    QString text = QString("Recordings: %1, days: %2").arg(recordings->entries.size()).arg(usable);
    const auto unusable = qint64(made.list.days.size()) - usable;
    if (unusable > 0)
        text += QString(", days that do not fit: %1").arg(unusable);
    if (!made.list.leftOut.empty())
        text += QString(", recordings left out: %1").arg(made.list.leftOut.size());
    if (usable == 0)
        text += ". The list says why";
    return text;
}

void FourierForm::fitToWindow()
{
    if (sky)
        sky->fitToWindow();
}

void FourierForm::compute()
{
    if (sky) {
        sky->compute();
        return;
    }
    if (!recordings)
        return;
    inputTimer.stop();
    std::vector<FieldProblem> problems;
    SpectraRequest request = {recordings, directory, readParameters(problems)};
    showProblems(problems);
    if (!problems.empty()) {
        if (QWidget *const field = FieldValues::find(this, problems.front().field))
            field->setFocus();
        return;
    }
    ui->placeFields->rememberClock();
    arrived.clear();
    worker.start<SpectraNews>(
        [request](const Jobs::Control &control, const Jobs::Deliver<SpectraNews> &deliver) {
            readSpectra(request, control, deliver);
        },
        [this](SpectraNews news) { takeNews(std::move(news)); });
}

void FourierForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        compute();
    else if (event->key() == Qt::Key_Escape)
        stacker.stop(); // while days are read, their progress takes the key
    else
        QWidget::keyPressEvent(event);
}
