#include "forms/pulsar/pulsarform.h"

#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "base/numbertext.h"
#include "base/timetext.h"
#include "base/typednumber.h"
#include "calc/fourier.h"
#include "calc/pulsar/computedon.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/runanalysis.h"
#include "calc/pulsar/startpoint.h"
#include "data/recordingtime.h"
#include "fields/fieldstyles.h"
#include "forms/pulsar/bandview.h"
#include "forms/savefolder.h"
#include "picture/axistexts.h"
#include "picture/resultplot.h"
#include "plot/pulsargrafik.h"
#include "plot/pulsargrafikinfo.h"
#include "results/reporttext.h"
#include "ui_pulsarform.h"

#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace {

// All that the actions read, but for the start and the dispersions, which have fields of two kinds.
std::vector<const PulsarField *> plainFields()
{
    std::vector<const PulsarField *> plain;
    for (const PulsarField &field : pulsarFields()) {
        const QStringList others = {"--dm", "--compare", "--utc", "--first-point", "--delta"};
        if (!others.contains(field.option))
            plain.push_back(&field);
    }
    return plain;
}

} // namespace

PulsarForm::PulsarForm(const QString &filePath, QWidget *parent)
    : RecordingForm(filePath, parent), ui(new Ui::PulsarForm)
{
    ui->setupUi(this);
    if (!open(shortestRecording))
        return;
    grafik = new PulsarGrafik(this);
    info = new PulsarGrafikInfo(grafik, this);
    grafik->setObjectName("grafik");
    info->setObjectName("info");
    grafik->showMessage("Choose an action");
    shareSaveFolder(grafik);
    auto *const middle = new QWidget(this);
    auto *const layout = new QVBoxLayout(middle);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    bands = new BandView(grafik, middle);
    bands->setObjectName("bands");
    layout->addWidget(bands, 2);
    layout->addWidget(grafik, 3);
    PulsarParameters presets;
    readDispersions(presets);
    const QStringList otherPresets = fitPresets();
    connectInputs();
    install(middle, info);
    if (!otherPresets.isEmpty())
        info->showNote("Presets that were changed to fit this recording:\n" +
                       otherPresets.join('\n'));
    ui->dispersion->setFocus(); // no choice that is not made yet
    ui->dispersion->selectAll();
}

PulsarForm::~PulsarForm() = default;

// Presets that the recording lacks give way to what it has; the lines say which and why.
QStringList PulsarForm::fitPresets()
{
    QStringList lines;
    const auto fit = [&](QSpinBox *box, const char *name, int count) {
        if (box->value() <= count || count < 1)
            return;
        lines
            << QString("%1 %2: the recording has no %1 %3").arg(name).arg(count).arg(box->value());
        box->setValue(count);
    };
    fit(ui->module, "module", data.modules);
    fit(ui->ray, "ray", data.rays);
    const int last = completePoints(data) - PulsarCalculate::fixedPoints - 1;
    if (ui->firstPoint->text().toInt() > last) {
        lines << QString("first point 0: sums need %1 points, more than there are after point %2")
                     .arg(PulsarCalculate::fixedPoints)
                     .arg(ui->firstPoint->text());
        ui->firstPoint->setText("0");
    }
    const QDateTime begin = exactBegin(data);
    if (begin.isValid() && !pointAtUtc(data, ui->zrtUtc->text()).problem.text.isEmpty()) {
        const QString time = textOfTime(begin, "hh:mm:ss");
        lines
            << QString("ZRT UTC %1: the recording does not hold %2").arg(time, ui->zrtUtc->text());
        ui->zrtUtc->setText(time);
    }
    return lines;
}

void PulsarForm::connectInputs()
{
    QList<QAbstractButton *> buttons = {ui->isFirstPoint, ui->isZrtUtc, ui->withNormalization,
                                        ui->showDeductNoise};
    for (const QGroupBox *group : {ui->groupBox_action, ui->groupBox_method})
        for (QRadioButton *button : group->findChildren<QRadioButton *>())
            buttons << button;
    for (const QAbstractButton *button : std::as_const(buttons))
        connect(button, &QAbstractButton::clicked, this, &PulsarForm::redraw);
    connect(ui->sumPeriodOfBands, &QCheckBox::clicked, this, [this] {
        if (ui->sumPeriod->isChecked())
            redraw();
    });
    connect(ui->harmonicOfPeriod, &QPushButton::clicked, this, &PulsarForm::takeHarmonicOfPeriod);

    connect(info, &PulsarGrafikInfo::linkClicked, this, &PulsarForm::followLink);
    connect(info, &PulsarGrafikInfo::changeMaxSigma, this, &PulsarForm::redraw);
    connect(info, &PulsarGrafikInfo::changeDispersions, this, &PulsarForm::changeDispersions);
    connect(info, &PulsarGrafikInfo::showMultiResult, this, &PulsarForm::showMultiResult);
    connect(info, &PulsarGrafikInfo::returnMultiGrafiks, this, &PulsarForm::showResult);
    connect(info, &PulsarGrafikInfo::pointsRequested, this, &PulsarForm::changePoints);
}

// Empty, after a box, where none is chosen.
QString PulsarForm::chosenAction()
{
    for (const QRadioButton *button : ui->groupBox_action->findChildren<QRadioButton *>()) {
        if (button->isChecked())
            return button == ui->sumPeriod && ui->sumPeriodOfBands->isChecked()
                       ? ui->sumPeriodOfBands->objectName()
                       : button->objectName();
    }
    showError(this, "Check Action!");
    return {};
}

void PulsarForm::redraw()
{
    if (ProgressTask::isRunning())
        return;
    const QString action = chosenAction();
    if (!action.isEmpty())
        compute(action, shown && action == shown->action ? wantedPoints : 0);
}

QString PulsarForm::command()
{
    const QString action = chosenAction();
    if (action.isEmpty())
        return {};
    std::vector<FieldProblem> problems;
    std::optional<PulsarParameters> parameters = readParameters(problems);
    if (!parameters)
        return {};
    for (const QString &text : unreadTexts())
        problems.push_back({{}, text});
    if (!problems.empty()) {
        refuse(problems, "No command was copied.");
        return {};
    }
    const bool isAsShown = shown && action == shown->action;
    parameters->points = takesPoints(action) && isAsShown ? wantedPoints : 0;
    return pulsarCommand(action, *parameters, path);
}

// Nothing is computed: the number takes effect as a typed one does.
void PulsarForm::takeHarmonicOfPeriod()
{
    beginReading();
    PulsarParameters parameters;
    readFields<PulsarParameters>({&pulsarField("--period"), &pulsarField("--with-null")},
                                 parameters);
    // Two values of the averaged series, and all of the series.
    const double shortest =
        2 * data.tresolution * Tools::averagedStepFactor(ui->averageCount->value(), false);
    const double longest = PulsarCalculate::fixedPoints * data.tresolution;
    if (parameters.period > shortest && parameters.period <= longest) {
        const double number = PulsarCalculate::harmonicOfPeriod(parameters, data.tresolution);
        ui->harmonicNum->setValue(int(std::round(number)));
        ui->harmonicNum->setFocus();
        return;
    }
    const QString text = QString("A period of %1 s has no line in the spectrum.\nAllowed: more "
                                 "than %2 s, up to %3 s.")
                             .arg(exactText(parameters.period), ReportText::general(shortest),
                                  ReportText::general(longest));
    refuse({{ui->period->objectName(), text}}, unreadTexts().join("\n"));
}

// A success replaces what is shown; a failure is reported and changes nothing.
void PulsarForm::compute(const QString &action, int points)
{
    std::vector<FieldProblem> problems;
    std::optional<PulsarParameters> parameters = readParameters(problems);
    if (!parameters)
        return;
    // The other actions show so many points of what they give.
    parameters->points = takesPoints(action) ? points : 0;
    const QStringList unreadFields = unreadTexts();
    AnalysisOutcome outcome;
    const auto work = [&](const Jobs::Control &control) {
        const QMutexLocker pressesIgnored(&grafik->busyMutex());
        for (const FieldProblem &problem : findProblems(action, data, *parameters))
            problems.push_back(problem);
        if (problems.empty())
            outcome = runAnalysis(action, data, *parameters, control);
    };
    if (!runHere(work) || outcome.isStopped)
        return;
    problems.insert(problems.end(), outcome.problems.begin(), outcome.problems.end());
    if (!problems.empty()) {
        for (FieldProblem &problem : problems)
            if (problem.field == pulsarField("--first-point").name)
                problem.field = startField()->objectName();
        refuse(problems, unreadFields.join("\n"));
        return;
    }
    shown = {std::move(outcome.result), *parameters, action, unreadFields};
    wantedPoints = points;
    showResult();
}

// Nothing, after a message, when a field with arrows cannot be read. The start point may be a
// problem.
std::optional<PulsarParameters> PulsarForm::readParameters(std::vector<FieldProblem> &problems)
{
    beginReading();
    if (refuseUnread())
        return std::nullopt;
    PulsarParameters parameters;
    readFields(plainFields(), parameters);
    parameters.channelsOff = channelsOff();
    readDispersions(parameters);
    readStart(parameters, problems);
    return parameters;
}

// What stands above the report: a text that is no number counts as 0.
QStringList PulsarForm::unreadTexts()
{
    QStringList texts;
    for (const FieldValues::Unread &text : unread) {
        mark(text.field);
        texts << QString("%1: \"%2\" counts as 0. Allowed: %3.")
                     .arg(FieldStyles::nameOf(text.field), text.text, text.allowed);
    }
    return texts;
}

void PulsarForm::readDispersions(PulsarParameters &parameters)
{
    const QString text = ui->dispersion->text();
    const std::vector<double> numbers = Tools::typedNumbers(text);
    const bool isFour = numbers.size() == 4;
    // What was entered last counts: four numbers here, or four in the panel.
    if (text != lastDispersionText && isFour) {
        chosenDispersions.emplace();
        std::copy(numbers.begin(), numbers.end(), chosenDispersions->begin());
        dispersionsAreTyped = true;
    } else if (text != lastDispersionText && dispersionsAreTyped) {
        chosenDispersions.reset();
        dispersionsAreTyped = false;
    }
    lastDispersionText = text;

    if (isFour)
        parameters.dispersion = numbers[0];
    else
        readField(pulsarField("--dm"), &parameters.dispersion);
    if (!unread.empty() && unread.back().field == ui->dispersion)
        unread.back().allowed += ", or four such numbers";
    parameters.dispersions = chosenDispersions.value_or(comparedDispersions(parameters.dispersion));
    info->setDispersions(parameters.dispersions);
}

QWidget *PulsarForm::startField() const
{
    return ui->isFirstPoint->isChecked() ? ui->firstPoint : ui->zrtUtc;
}

// The start by point or by time, with its delta.
void PulsarForm::readStart(PulsarParameters &parameters, std::vector<FieldProblem> &problems)
{
    FieldText delta = pulsarField("--delta");
    if (ui->isFirstPoint->isChecked()) {
        readField(delta, &parameters.startDelta);
        readField(pulsarField("--first-point"), &parameters.firstPoint);
        return;
    }
    delta.name = ui->zrtUtcDelta->objectName(); // s
    readField(delta, &parameters.startDelta);
    parameters.startDelta /= data.tresolution;
    parameters.startTime = ui->zrtUtc->text();
    const StartPoint start = pointAtUtc(data, parameters.startTime);
    parameters.firstPoint = start.point;
    if (start.problem.text.isEmpty())
        return;
    problems.push_back(start.problem);
    if (start.isWithoutTimes)
        problems.back().text += "\nChoose \"First point\" instead.";
}

void PulsarForm::changeDispersions(const QVector<double> &dispersions)
{
    chosenDispersions.emplace();
    std::copy_n(dispersions.begin(), 4, chosenDispersions->begin());
    dispersionsAreTyped = false;
    redraw();
}

// Actions that take the number of points compute again; the others show more or fewer points
// of what they gave.
void PulsarForm::changePoints(int points)
{
    if (!shown || ProgressTask::isRunning())
        return;
    if (takesPoints(shown->action)) {
        // "Reset points" goes back to all of the recording.
        compute(shown->action, points > 0 ? points : data.npoints);
        return;
    }
    wantedPoints = points;
    if (shownMulti)
        showMultiResult(*shownMulti);
    else
        showResult();
}

void PulsarForm::showResult()
{
    const PulsarResult &result = shown->result;
    QVector<QString> multiNames;
    for (const PulsarMultiResult &multi : result.multi)
        multiNames << multi.name;
    info->setMultiResults(multiNames);
    info->setFourierControls(reads(shown->action, "--sigma"));
    info->setDispersionControls(reads(shown->action, "--compare"));
    shownMulti.reset();
    bands->showFold(result.bands);
    showCurves(result.curves, result.names, 0);
    showTexts(result.report, result.names, 0);
}

void PulsarForm::showMultiResult(int index)
{
    shownMulti = index;
    const PulsarMultiResult &multi = shown->result.multi[std::size_t(index)];
    showCurves(multi.curves, multi.names, index);
    showTexts(multi.report, multi.names, index);
}

// Shows curves over the X values of the result; their colours begin with that of the given
// curve of all.
void PulsarForm::showCurves(const std::vector<std::vector<float>> &curves, const QStringList &names,
                            int firstColour)
{
    const PulsarResult &result = shown->result;
    const bool isCut = wantedPoints > 0 && !takesPoints(shown->action);
    const int count = isCut ? std::min(wantedPoints, result.points) : result.points;
    std::vector<std::vector<float>> parts;
    for (const std::vector<float> &curve : curves)
        parts.emplace_back(curve.begin(), curve.begin() + count);
    PlotData plot =
        Plot::curvePlot(result.axis, std::move(parts), names, result.markers, data, firstColour);
    if (!shownMulti)
        plot.visible = result.visible;
    plot.yName = result.axis.kind == PulsarAxis::Kind::Points  ? "signal"
                 : result.axis.kind == PulsarAxis::Kind::Phase ? "mean signal"
                                                               : "amplitude";
    plot.yUnit = isNormalised(shown->action, shown->parameters) ? "sigma" : "";
    plot.source = QStringList("action: " + shown->action) + computedOnLines();
    grafik->setData(std::move(plot));
    grafik->recomputeRange();
    info->setPoints(takesPoints(shown->action) ? result.stretch : count);
}

// For the report, for tables and for pictures.
QStringList PulsarForm::computedOnLines() const
{
    return computedOn(path, shown->action, data, shown->parameters, shown->result);
}

void PulsarForm::showTexts(const Results::Report &report, const QStringList &names, int firstColour)
{
    const PulsarResult &result = shown->result;
    std::vector<Results::Report> parts = {
        choicesReport(shown->action, data, shown->parameters, result.points), report};
    for (const Results::Report &note : result.notes())
        parts.push_back(note);
    if (!readProblem.isEmpty())
        parts.emplace_back(readProblem);
    Results::Report computed;
    computed.addHeading("Computed on");
    for (const QString &line : computedOnLines())
        computed.addLine(line);
    parts.push_back(computed);

    const Plot::AxisTitles titles = Plot::axisTitles(result.axis);
    Results::Report legend;
    for (int i = 0; i < names.size(); ++i)
        legend.addLine(plotColour(firstColour + i).name + ": " + names[i]);
    if (!result.markers.empty())
        legend.addLine("green vertical lines: deleted steps");
    legend.addLine("X, lower row: " + titles.row1);
    if (!titles.row2.isEmpty())
        legend.addLine("X, upper row: " + titles.row2);
    info->setTexts(Results::joinReports(parts).html(), legend.html(), shown->unread);
}

// A click on a line of the spectrum or on a dispersion of the report fills its field.
void PulsarForm::followLink(const QUrl &link)
{
    if (link.scheme() == "harmonic") {
        ui->harmonicNum->setValue(link.path().toInt());
        ui->harmonicNum->setFocus();
    } else if (link.scheme() == "dispersion") {
        ui->dispersion->setText(link.path());
        ui->dispersion->setFocus();
    }
}
