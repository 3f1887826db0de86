#include "forms/ffa/ffaform.h"

#include "app/shell/errorbox.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/runanalysis.h"
#include "data/truenumbers.h"
#include "fields/fieldstyles.h"
#include "forms/ffa/ffaresults.h"
#include "forms/savefolder.h"
#include "plot/pulsargrafik.h"
#include "results/reporttext.h"
#include "ui_ffaform.h"

#include <QSignalBlocker>
#include <QSplitter>
#include <algorithm>
#include <cmath>

namespace {

// Seconds that searches take on this machine for one estimated second; of the last one that
// was long enough to measure.
double slowness = 1;
constexpr double measurable = 0.02; // s

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

QString secondsText(double seconds)
{
    if (seconds < 1)
        return "Less than 1 s";
    return seconds < 120 ? QString("About %1 s").arg(seconds, 0, 'f', 0)
                         : QString("About %1 min").arg(seconds / 60, 0, 'f', 0);
}

const PulsarAnalysis &analysis()
{
    return *findAnalysis("createFFA");
}

} // namespace

FfaForm::FfaForm(const QString &filePath, QWidget *parent)
    : RecordingForm(filePath, parent), ui(new Ui::FfaForm)
{
    ui->setupUi(this);
    if (!open())
        return;
    auto *const splitter = new QSplitter(this);
    splitter->setObjectName("splitter");
    splitter->setChildrenCollapsible(false);
    results = new FfaResults(splitter);
    grafik = new PulsarGrafik;
    shareSaveFolder(grafik);
    grafik->setObjectName("grafik");
    grafik->showMessage("Press Search");
    splitter->insertWidget(0, grafik); // inserted last, so that the keyboard reaches it last
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setSizes({540, 470});
    fillPresets();
    install(splitter, nullptr);
    connectInputs();
    showEstimate();
    ui->pushButton->setFocus();
}

FfaForm::~FfaForm() = default;

void FfaForm::connectInputs()
{
    for (const QLineEdit *field : findChildren<QLineEdit *>()) // those of spin boxes as well
        connect(field, &QLineEdit::textChanged, this, &FfaForm::showEstimate);
    for (const QSpinBox *field : findChildren<QSpinBox *>())
        connect(field, QOverload<int>::of(&QSpinBox::valueChanged), this, &FfaForm::showEstimate);
    connect(ui->deredden, &QGroupBox::toggled, this, &FfaForm::showEstimate);
    connect(ui->withoutWholeFactors, &QPushButton::clicked, this, &FfaForm::takeOffer);
    connect(grafik, &PulsarGrafik::clicked, this, &FfaForm::choosePeak);
    connect(results, &FfaResults::candidateChosen, this, &FfaForm::chooseCandidate);
    connect(results, &FfaResults::widthChosen, this, &FfaForm::showSpectrum);
    connect(results, &FfaResults::refineRequested, this, &FfaForm::refine);
    connect(results, &FfaResults::rowsChosen, this, &FfaForm::foldBands);
    connect(&worker, &Jobs::Worker::started, this, [this] { results->setBusy(true); });
    connect(&worker, &Jobs::Worker::ended, this, [this] { results->setBusy(false); });
    connect(&bandWorker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            showError(window(), "The bands cannot be folded.", ending.problem);
    });
}

void FfaForm::fillPresets()
{
    ui->module->setMaximum(std::max(1, data.modules));
    ui->ray->setMaximum(std::max(1, data.rays));
    PulsarParameters parameters;
    parameters.dispersion = std::max(0, data.dispersion);
    showField(pulsarField("--dm"), parameters.dispersion);
    presetPeriods(parameters, PulsarCalculate(data, parameters).ffaPoints());
}

// The periods follow what the series is until the user types others.
bool FfaForm::presetPeriods(const PulsarParameters &parameters, int points)
{
    FfaParameters ffa;
    ffa.bins_min = parameters.ffa.bins_min;
    ffa.bins_max = parameters.ffa.bins_max;
    ffa.fpmin = parameters.ffa.fpmin;
    ffa = Tools::presetFfa(points, data.tresolution, ffa);
    const QString before = presetMin + presetMax;
    const auto follow = [](QLineEdit *field, QString &preset, double period) {
        if (field->text() != preset)
            return;
        preset = number(period);
        const QSignalBlocker isJudgedAlready(field);
        field->setText(preset);
    };
    follow(ui->period_min, presetMin, ffa.period_min);
    follow(ui->period_max, presetMax, ffa.period_max);
    return presetMin + presetMax != before;
}

// What is wrong with the fields; every field stands for one problem, the first of it.
std::vector<FieldProblem> FfaForm::readParameters(PulsarParameters &parameters)
{
    beginReading();
    parameters = analysis().presets;
    readFields(analysis().fields, parameters);
    parameters.channelsOff = channelsOff();
    const int points = PulsarCalculate(data, parameters).ffaPoints();
    if (parameters.points == 0 && !ui->points->text().isEmpty())
        parameters.points = -1; // typed, so refused
    FfaParameters &ffa = parameters.ffa;
    if (!ffa.deredden || ui->rmed_width->text().isEmpty())
        ffa.rmed_width = Tools::presetMedianWidth(ffa.period_max, points, data.tresolution);
    std::vector<FieldProblem> problems = FieldValues::problems(this, unread);
    for (const FieldProblem &problem : findProblems(analysis().name, data, parameters)) {
        const bool isKnown = std::any_of(problems.begin(), problems.end(), [&](const auto &known) {
            return known.field == problem.field;
        });
        if (!isKnown)
            problems.push_back(problem);
    }
    return problems;
}

void FfaForm::showEstimate()
{
    PulsarParameters parameters;
    std::vector<FieldProblem> problems = readParameters(parameters);
    const int points = PulsarCalculate(data, parameters).ffaPoints();
    if (points > 0 && presetPeriods(parameters, points))
        problems = readParameters(parameters);
    const bool isGood = showProblems(problems);
    ui->points->setPlaceholderText(QString::number(points));
    ui->rmed_width->setPlaceholderText(
        number(Tools::presetMedianWidth(parameters.ffa.period_max, points, data.tresolution)));
    showWholeFactors(isGood ? &parameters.ffa : nullptr, points);
    if (!isGood)
        return;
    constexpr double megabyte = 1e6;
    const FfaEstimate size = Tools::estimateFfa(parameters.ffa, points, data.tresolution);
    const double bytes = double(findBytes("createFFA", data, parameters));
    ui->estimate->setText(
        QString("%1 s of data, %2 MB of memory\n%3 periods x %4 widths\n%5; noise "
                "reaches S/N %6")
            .arg(number(points * data.tresolution))
            .arg(std::ceil(bytes / megabyte), 0, 'f', 0)
            .arg(size.trials)
            .arg(size.widths)
            .arg(secondsText(size.seconds * slowness))
            .arg(size.noiseMaximum, 0, 'f', 1));
}

// Warns of whole downsampling factors and offers the nearest range without. A search that cannot be
// made is none.
void FfaForm::showWholeFactors(const FfaParameters *ffa, int points)
{
    const QString warning =
        ffa ? Tools::wholeFactorText(Tools::wholeFactorSteps(*ffa, points, data.tresolution))
            : QString();
    if (!warning.isEmpty())
        offeredPeriod = Tools::periodMinWithoutWholeFactors(*ffa, points, data.tresolution);
    ui->wholeFactors->setText(warning);
    ui->wholeFactors->setVisible(!warning.isEmpty());
    ui->withoutWholeFactors->setText(QString("Begin at %1 s instead").arg(number(offeredPeriod)));
    ui->withoutWholeFactors->setVisible(!warning.isEmpty() && offeredPeriod != ffa->period_min);
}

void FfaForm::takeOffer()
{
    ui->period_min->setText(number(offeredPeriod));
    ui->period_min->setFocus();
}

// Marks the fields at fault and says below all fields, which stay where they are, what is wrong.
bool FfaForm::showProblems(const std::vector<FieldProblem> &problems)
{
    QStringList texts;
    for (const FieldProblem &problem : problems) {
        mark(field(problem.field));
        texts << problem.text;
    }
    if (!problems.empty())
        ui->estimate->setText(texts.join("\n"));
    FieldStyles::setProblem(ui->estimate, !problems.empty());
    return problems.empty();
}

QString FfaForm::command()
{
    PulsarParameters parameters;
    const std::vector<FieldProblem> problems = readParameters(parameters);
    return showProblems(problems) ? ffaCommand(parameters, path) : QString();
}

void FfaForm::search()
{
    PulsarParameters parameters;
    const std::vector<FieldProblem> problems = readParameters(parameters);
    if (!showProblems(problems)) {
        focusOn(problems[0]);
        return;
    }
    const int points = PulsarCalculate(data, parameters).ffaPoints();
    const Searched asked = {parameters,
                            Tools::estimateFfa(parameters.ffa, points, data.tresolution)};
    const FfaSearchRequest request = {data, parameters, {}, mostCandidates};
    using Outcome = std::shared_ptr<const FfaSearchOutcome>;
    worker.start<Outcome>(
        [request](const Jobs::Control &control, const Jobs::Deliver<Outcome> &deliver) {
            deliver(std::make_shared<const FfaSearchOutcome>(searchFfa(request, control)));
        },
        [this, asked](const Outcome &outcome) { takeOutcome(outcome, asked); });
}

void FfaForm::takeOutcome(const std::shared_ptr<const FfaSearchOutcome> &outcome,
                          const Searched &request)
{
    if (!outcome->result.ffa) {
        refuse({outcome->problem});
        return;
    }
    if (outcome->seconds > measurable)
        slowness = outcome->seconds / request.estimate.seconds;
    found = outcome;
    searched = request;
    candidates = outcome->candidates;
    showResult();
    showEstimate();
}

// What explains a saved table or plot: the report of the search, and what it leaves out.
QStringList FfaForm::sourceLines() const
{
    const FfaParameters &ffa = searched.parameters.ffa;
    QStringList lines = {"file: " + data.filePath,
                         QString("module: %1, ray: %2, step: %3 s, base line: %4")
                             .arg(moduleNumber(data, searched.parameters.module - 1))
                             .arg(rayNumber(data, searched.parameters.ray - 1))
                             .arg(number(result().tsamp), searched.parameters.noise),
                         ffa.deredden ? QString("running median: %1 s, %2 points")
                                            .arg(number(ffa.rmed_width))
                                            .arg(ffa.rmed_minpts)
                                      : QString("no running median"),
                         QString("bins: %1 to %2, ducy_max: %3, wtsp: %4")
                             .arg(ffa.bins_min)
                             .arg(ffa.bins_max)
                             .arg(number(ffa.ducy_max), number(ffa.wtsp))};
    lines << found->result.report.lines();
    lines << QString("S/N that white noise is expected to reach: %1")
                 .arg(searched.estimate.noiseThreshold, 0, 'f', 2);
    for (const Results::Report &note : found->result.notes())
        lines << note.lines();
    if (!searched.leftOut().isEmpty())
        lines << searched.leftOut();
    return lines;
}

void FfaForm::refine()
{
    if (!found || worker.isBusy() || !(chosenPeriod > 0))
        return;
    FfaCandidate candidate; // of a peak that is none in the table
    if (chosenRow >= 0)
        candidate = candidates[std::size_t(chosenRow)];
    else
        candidate.bins = chosenBins;
    candidate.period = chosenPeriod;
    worker.start<FfaCandidate>(
        [search = found, candidate](const Jobs::Control &control,
                                    const Jobs::Deliver<FfaCandidate> &deliver) {
            FfaCandidate refined = candidate;
            const auto goOn = [&control](int percent) {
                control.progress(percent);
                return !control.isStopped();
            };
            if (Tools::refineCandidate(*search->result.ffa, refined, goOn))
                deliver(refined);
        },
        [this, row = chosenRow, period = chosenPeriod](const FfaCandidate &refined) {
            takeRefined(row, period, refined);
        });
}

// The user may have chosen another period meanwhile; that one stays in sight.
void FfaForm::takeRefined(int row, double period, const FfaCandidate &candidate)
{
    if (row >= 0) {
        candidates[std::size_t(row)] = candidate;
        results->showCandidate(row, candidate);
    }
    if (chosenRow == row && chosenPeriod == period)
        choosePeriod(candidate.period, candidate.bins,
                     ReportText::withError(candidate.period, candidate.periodError) + " s");
}
