#include "forms/days/fourierform.h"

#include "analyses/days/ffastack.h"
#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "app/shell/statusline.h"
#include "data/truenumbers.h"
#include "forms/days/daysinputs.h"
#include "forms/days/daystable.h"
#include "forms/days/foldfields.h"
#include "forms/days/fouriergrafikinfo.h"
#include "forms/days/placefields.h"
#include "forms/days/savestack.h"
#include "forms/days/spectrumview.h"
#include "forms/days/stacktexts.h"
#include "forms/fieldvalues.h"
#include "forms/keeplines.h"
#include "forms/sky/skypage.h"
#include "results/reporttext.h"
#include "ui_fourierform.h"

#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>

FourierForm::FourierForm(const QString &path, int ffa, int map, int search, QWidget *parent)
    : DirectoryForm(path, parent), analysis(*Days::findDayAnalysis({ffa != 0, false, false})),
      words(stackTexts(analysis.flags.ffa)), ui(new Ui::FourierForm),
      days(new DaysModel(words, this)), interference(this),
      stacking([this](StackRequest &request) { completeRequest(request); })
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
    keepLines(ui->daysText, 2);
    showDaysByDate(ui->days, days);
    view = new SpectrumView(words);
    view->showMessage("Reading the headers of the recordings...");
    fillCentralWidget(this, view, nullptr);

    interference.read();
    inputs = new DaysInputs(this);
    connectInputs();
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
    inputs->watch();
    connect(inputs, &DaysInputs::changed, this, &FourierForm::plan);
    connect(ui->pushButton, &QPushButton::clicked, this, &FourierForm::compute);
    connect(ui->commandButton, &QPushButton::clicked, this, &FourierForm::copyCommand);

    connect(days, &DaysModel::switched, &stacking, &DayStacking::decide);
    connect(ui->allOn, &QPushButton::clicked, this, [this] { stacking.decideAll(true); });
    connect(ui->allOff, &QPushButton::clicked, this, [this] { stacking.decideAll(false); });
    connect(ui->asProposed, &QPushButton::clicked, this, [this] { stacking.decideAll({}); });
    connect(ui->days->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &row) { view->markDay(ui->days->tableRow(row)); });
    connect(view, &SpectrumView::dayClicked, this,
            [this](int day) { ui->days->setCurrentIndex(ui->days->shownIndex(day)); });
    connect(view, &SpectrumView::cursorMoved, this, &FourierForm::showPowers);
    connect(view, &SpectrumView::markedFrequencyChanged, &stacking, &DayStacking::restackSoon);
    connect(view->panel(), &FourierGrafikInfo::leaveOutWanted, this, &FourierForm::leaveOut);
    connect(view, &SpectrumView::lineLeftOut, this, &FourierForm::leaveOut);
    connect(view, &SpectrumView::frequencyLeftOut, this, &FourierForm::leaveOutFrequency);
    connect(view, &SpectrumView::countAgainWanted, this, &FourierForm::countAgain);
    connect(view->panel(), &FourierGrafikInfo::interferenceWanted, this,
            &FourierForm::editInterference);
    connect(view->panel(), &FourierGrafikInfo::spectraWanted, this, &FourierForm::saveSpectra);
    connect(view->panel(), &FourierGrafikInfo::tablesWanted, this, &FourierForm::saveTables);
    const auto tell = [this](const QString &problem) { showError(window(), problem); };
    for (Jobs::Worker *const one : {&worker, &planner}) {
        connect(one, &Jobs::Worker::ended, this, [this, tell](const Jobs::Ending &ending) {
            if (recordings && ending.kind == Jobs::Ending::Failed)
                tell(ending.problem);
        });
    }
    connect(&stacking, &DayStacking::stacked, this, &FourierForm::showStack);
    connect(&stacking, &DayStacking::failed, this, tell);
    connect(&worker, &Jobs::Worker::ended, &stacking, &DayStacking::restackSoon);
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

// Finds the days for what stands in the fields, beside the window.
void FourierForm::plan()
{
    if (!recordings)
        return;
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters parameters = inputs->read(analysis, problems);
    if (!problems.empty()) {
        planner.stop();
        inputs->showProblems(problems);
        return;
    }
    using Plan = std::shared_ptr<const Days::DayPlan>;
    planner.start<Plan>(
        [set = recordings, parameters](const Jobs::Control &, const Jobs::Deliver<Plan> &deliver) {
            deliver(std::make_shared<const Days::DayPlan>(Days::planDays(*set, parameters)));
        },
        [this](const Plan &made) { takePlan(*made); });
    // What needs no reading counts at once.
    stacking.restackSoon();
}

void FourierForm::takePlan(const Days::DayPlan &made)
{
    if (!inputs->showPlan(made, *recordings))
        return;
    ui->daysText->setText(planText(made, qint64(recordings->entries.size())));
    showSearch(made);
    if (!stacking.spectra())
        days->setRows(rowsOfDays(made.list, *recordings, directory));
}

// How large the search is, before it is made; what the empty fields stand for stands in them, grey.
void FourierForm::showSearch(const Days::DayPlan &made)
{
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters given = inputs->read(analysis, problems);
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
    inputs->stopWaiting();
    std::vector<FieldProblem> problems;
    SpectraRequest request = {recordings, directory, inputs->read(analysis, problems)};
    if (!inputs->accept(problems))
        return;
    ui->placeFields->rememberClock();
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
        stacking.stop(); // while days are read, their progress takes the key
    else
        QWidget::keyPressEvent(event);
}

void FourierForm::takeNews(SpectraNews news)
{
    if (!news.begun) {
        stacking.add(std::move(news));
        return;
    }
    const Days::DayPlan &made = news.begun->plan;
    if (!made.problems.empty()) {
        inputs->showProblems(made.problems);
        return;
    }
    stacking.begin(*news.begun);
    days->setRows(rowsOfDays(made.list, *recordings, directory));
    view->showMessage("Computing...");
}

// Inputs that cannot be used leave the stack as it was.
void FourierForm::completeRequest(StackRequest &request) const
{
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters typed = inputs->read(analysis, problems);
    if (!inputs->hasProblems() && problems.empty()) {
        request.parameters.harmonics = typed.harmonics;
        request.parameters.earthMotion = typed.earthMotion;
        request.parameters.threshold = typed.threshold;
        request.parameters.equalGains = typed.equalGains;
    }
    request.frequency = view->markedFrequency();
    request.leftOut = interference.entries();
}

void FourierForm::showStack()
{
    const std::shared_ptr<const DaySpectra> spectra = stacking.spectra();
    const StackOutcome &made = *stacking.outcome();
    const QString used = usedText(directory, *spectra, made);
    view->showStack({spectra, &spectra->days()}, made.choice.days, made.stack, used.split('\n'));
    view->panel()->setUsed(used);
    showDays();
    showPowers();
}

void FourierForm::showDays()
{
    const DaySpectra &spectra = *stacking.spectra();
    const StackOutcome &outcome = *stacking.outcome();
    std::vector<DayRow> rows = days->dayRows();
    for (std::size_t i = 0; i < spectra.days().size(); ++i) {
        const Days::FourierDay &day = spectra.days()[i];
        DayRow &row = rows[i];
        row.sigma = day.isWhole() ? day.sigma : 0;
        row.canCount = row.canCount && day.problem.isEmpty();
        row.isOn = day.isWhole() ? bool(outcome.choice.days[i])
                                 : stacking.decided(int(i)).value_or(true) && row.canCount;
        QStringList reasons = {day.isWhole() ? outcome.verdicts[i].reason : day.problem,
                               day.remark};
        if (!spectra.plan.list.days[i].reason.isEmpty())
            continue;
        reasons.removeAll({});
        row.reason = reasons.join("; ");
    }
    days->updateRows(rows);
}

void FourierForm::showPowers()
{
    days->setPowers(view->powersUnderCursor(), view->frequencyUnderCursor());
}

void FourierForm::editInterference()
{
    if (interference.edit())
        stacking.restack();
}

void FourierForm::leaveOut(int line)
{
    const StackOutcome *const made = stacking.outcome().get();
    if (!made || line < 0 || line >= int(made->stack.lines.size()))
        return;
    const Days::FourierLine &found = made->stack.lines[std::size_t(line)];
    if (interference.leaveOut(found.telescope, made->stack.binWidth, found.harmonics))
        stacking.restack();
}

void FourierForm::leaveOutFrequency(double frequency)
{
    const StackOutcome *const made = stacking.outcome().get();
    if (made && interference.leaveOut(frequency, made->stack.binWidth, 1))
        stacking.restack();
}

void FourierForm::countAgain(double frequency, double tolerance)
{
    if (interference.countAgain(frequency, tolerance, analysis.flags.ffa ? Days::mostTurns : 1))
        stacking.restack();
}

void FourierForm::copyCommand()
{
    if (sky) {
        sky->copyCommand();
        return;
    }
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters parameters = inputs->read(analysis, problems);
    if (!inputs->accept(problems))
        return;
    const QString survey = Days::fourierDaysCommand(true, parameters, {}, {directory});
    const QString stack =
        Days::fourierDaysCommand(false, parameters, stacking.daysOff(), {directory});
    StatusLine::copyCommand(survey + "\n" + stack + "\n");
}

void FourierForm::saveSpectra()
{
    if (const auto spectra = stacking.spectra())
        SaveStack::saveSpectra(this, words, *spectra);
}

void FourierForm::saveTables()
{
    if (const auto outcome = stacking.outcome())
        SaveStack::saveTables(this, words, {directory, stacking.spectra(), outcome, recordings});
}
