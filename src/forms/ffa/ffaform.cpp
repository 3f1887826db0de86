#include "forms/ffa/ffaform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/jobprogress.h"
#include "app/shell/lastvalues.h"
#include "base/typednumber.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/pulsarfields.h"
#include "calc/pulsar/runanalysis.h"
#include "data/truenumbers.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "forms/ffa/ffaresults.h"
#include "forms/filelabel.h"
#include "forms/readrecording.h"
#include "forms/savefolder.h"
#include "forms/switchedchannels.h"
#include "plot/pulsargrafik.h"
#include "results/reporttext.h"
#include "ui_ffaform.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QSplitter>
#include <algorithm>
#include <cmath>

namespace {

const QString problemSuffix = "Problem";

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

} // namespace

FfaForm::FfaForm(const QString &path, QWidget *parent)
    : QWidget(parent), ui(new Ui::FfaForm), recordingPath(path)
{
    ui->setupUi(this);
    ui->filePath->setText(fileLabel(path));
    emptyCentralWidget();
    std::optional<ReadRecording> recording = readRecording(path, parent);
    if (!recording) {
        deleteLater();
        return;
    }
    data = std::move(recording->data);
    readProblem = recording->problem;

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
    fillCentralWidget(this, splitter, nullptr);

    fillPresets();
    showDataEnd(ui->dataEnd, data);
    offerSwitchedChannels(ui->leaveOutChannels, path, data.channels);
    connectInputs();
    showEstimate();
    lastValues = std::make_unique<LastValues>(this);
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
    connect(ui->pushButton, &QPushButton::clicked, this, &FfaForm::search);
    connect(ui->withoutWholeFactors, &QPushButton::clicked, this, &FfaForm::takeOffer);
    connect(ui->commandButton, &QPushButton::clicked, this, &FfaForm::copyCommand);
    connect(grafik, &PulsarGrafik::clicked, this, &FfaForm::choosePeak);
    connect(results, &FfaResults::candidateChosen, this, &FfaForm::chooseCandidate);
    connect(results, &FfaResults::widthChosen, this, &FfaForm::showSpectrum);
    connect(results, &FfaResults::refineRequested, this, &FfaForm::refine);
    progress = std::make_unique<JobProgress>(worker, this);
    connect(&worker, &Jobs::Worker::started, this, [this] { results->setBusy(true); });
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        results->setBusy(false);
        if (ending.kind == Jobs::Ending::Failed)
            showError(this, ending.problem);
    });
}

void FfaForm::fillPresets()
{
    ui->module->setMaximum(std::max(1, data.modules));
    ui->ray->setMaximum(std::max(1, data.rays));
    PulsarParameters parameters;
    parameters.dispersion = std::max(0, data.dispersion);
    ui->dispersion->setText(QString::number(parameters.dispersion));
    const int points = PulsarCalculate(data, parameters).ffaPoints();
    const FfaParameters ffa = Tools::presetFfa(points, data.tresolution);
    ui->period_min->setText(number(ffa.period_min));
    ui->period_max->setText(number(ffa.period_max));
}

void FfaForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        search();
    else
        QWidget::keyPressEvent(event);
}

// A text that is no number is a problem of its field.
double FfaForm::readNumber(QLineEdit *field, std::vector<FieldProblem> &problems)
{
    const std::optional<double> number = Tools::typedNumber(field->text());
    if (!number)
        problems.push_back(
            {field->objectName(),
             QString("\"%1\" is no number. Allowed: %2").arg(field->text(), Tools::allowedNumber)});
    return number.value_or(0);
}

int FfaForm::readCount(QLineEdit *field, std::vector<FieldProblem> &problems)
{
    const std::optional<qint64> number = Tools::typedWhole(field->text());
    if (!number)
        problems.push_back(
            {field->objectName(), QString("\"%1\" is no whole number").arg(field->text())});
    constexpr qint64 limit = 2000000000; // beyond every recording
    return int(std::clamp(number.value_or(0), -limit, limit));
}

PulsarParameters FfaForm::readParameters(std::vector<FieldProblem> &problems)
{
    PulsarParameters parameters;
    parameters.module = ui->module->value();
    parameters.ray = ui->ray->value();
    parameters.dispersion = readNumber(ui->dispersion, problems);
    parameters.firstPoint = readCount(ui->firstPoint, problems);
    if (!ui->points->text().isEmpty()) {
        parameters.points = readCount(ui->points, problems);
        if (parameters.points == 0)
            parameters.points = -1; // typed, so refused
    }
    parameters.noise = pulsarField("--noise").choices[std::size_t(ui->noise->currentIndex())].value;
    FfaParameters &ffa = parameters.ffa;
    ffa.period_min = readNumber(ui->period_min, problems);
    ffa.period_max = readNumber(ui->period_max, problems);
    ffa.fpmin = ui->fpmin->value();
    ffa.bins_min = ui->bins_min->value();
    ffa.bins_max = ui->bins_max->value();
    ffa.ducy_max = readNumber(ui->ducy_max, problems);
    ffa.wtsp = readNumber(ui->wtsp, problems);
    ffa.deredden = ui->deredden->isChecked();
    ffa.rmed_minpts = ui->rmed_minpts->value();
    ffa.rmed_width = Tools::presetMedianWidth(
        ffa.period_max, PulsarCalculate(data, parameters).ffaPoints(), data.tresolution);
    if (ffa.deredden && !ui->rmed_width->text().isEmpty())
        ffa.rmed_width = readNumber(ui->rmed_width, problems);
    return parameters;
}

// What is wrong with the fields; every field stands for one problem, the first of it.
std::vector<FieldProblem> FfaForm::findProblems(PulsarParameters &parameters)
{
    std::vector<FieldProblem> problems;
    for (const QAbstractSpinBox *box : findChildren<QAbstractSpinBox *>()) {
        if (const QString problem = Fields::problemOf(box); !problem.isEmpty())
            problems.push_back({box->objectName(), problem});
    }
    parameters = readParameters(problems);
    for (const FieldProblem &problem : ::findProblems("createFFA", data, parameters)) {
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
    const std::vector<FieldProblem> problems = findProblems(parameters);
    showProblems(problems);
    const int points = PulsarCalculate(data, parameters).ffaPoints();
    ui->points->setPlaceholderText(QString::number(points));
    ui->rmed_width->setPlaceholderText(
        number(Tools::presetMedianWidth(parameters.ffa.period_max, points, data.tresolution)));
    showWholeFactors(problems.empty() ? &parameters.ffa : nullptr, points);
    if (!problems.empty())
        return;
    constexpr double megabyte = 1e6;
    const FfaEstimate size = Tools::estimateFfa(parameters.ffa, points, data.tresolution);
    ui->estimate->setText(
        QString("%1 s of data, %2 MB of memory\n%3 periods x %4 widths\n%5; noise "
                "reaches S/N %6")
            .arg(number(points * data.tresolution))
            .arg(std::ceil(size.bytes / megabyte), 0, 'f', 0)
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

// Each problem below its field; those of no field, or of one without such a place, in the frame
// of the estimate.
void FfaForm::showProblems(const std::vector<FieldProblem> &problems)
{
    QStringList others;
    for (QLabel *label : findChildren<QLabel *>()) {
        if (!label->objectName().endsWith(problemSuffix))
            continue;
        const QString parameter = label->objectName().chopped(problemSuffix.size());
        const auto problem =
            std::find_if(problems.begin(), problems.end(),
                         [&](const FieldProblem &p) { return p.field == parameter; });
        const bool fails = problem != problems.end();
        label->setText(fails ? problem->text : QString());
        label->setVisible(fails);
        FieldStyles::setStyle(findChild<QWidget *>(parameter), fails ? FieldStyles::failing : "");
    }
    for (const FieldProblem &problem : problems) {
        if (!findChild<QLabel *>(problem.field + problemSuffix))
            others << problem.text;
    }
    if (!problems.empty())
        ui->estimate->setText(others.isEmpty() ? "No search with these values" : others.join("\n"));
    ui->estimate->setStyleSheet(others.isEmpty() ? "" : "color: #b00020;");
}

// Puts the call of the batch program that does what "Search" does onto the clipboard.
void FfaForm::copyCommand()
{
    if (ui->leaveOutChannels->isEnabled() && ui->leaveOutChannels->isChecked()) {
        showError(this, "The batch program computes with all channels; uncheck \"" +
                            ui->leaveOutChannels->text() + "\" first.");
        return;
    }
    PulsarParameters parameters;
    const std::vector<FieldProblem> problems = findProblems(parameters);
    showProblems(problems);
    if (problems.empty())
        QGuiApplication::clipboard()->setText(ffaCommand(parameters, recordingPath));
}

void FfaForm::focusField(const QString &name)
{
    QWidget *const field = name.isEmpty() ? nullptr : findChild<QWidget *>(name);
    if (field)
        field->setFocus();
}

void FfaForm::search()
{
    PulsarParameters parameters;
    const std::vector<FieldProblem> problems = findProblems(parameters);
    if (!problems.empty()) {
        showProblems(problems);
        focusField(problems[0].field);
        return;
    }
    const SwitchedRecording recording =
        switchedRecording(data, ui->leaveOutChannels, recordingPath);
    if (!recording.data.samples) {
        showError(this, "There is no memory to leave out channels.");
        return;
    }
    const int points = PulsarCalculate(recording.data, parameters).ffaPoints();
    const Searched asked = {parameters, recording.note,
                            Tools::estimateFfa(parameters.ffa, points, data.tresolution)};
    const FfaSearchRequest request = {recording.data, parameters, {}, mostCandidates};
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
        focusField(outcome->problem.field);
        showError(this, outcome->problem.text.section('\n', 0, 0),
                  outcome->problem.text.section('\n', 1));
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
    if (!searched.leftOut.isEmpty())
        lines << searched.leftOut;
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
