#include "forms/pulsar/pulsarform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "base/numbertext.h"
#include "base/typednumber.h"
#include "calc/fourier.h"
#include "calc/pulsar/computedon.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcommand.h"
#include "calc/pulsar/startpoint.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "forms/filelabel.h"
#include "forms/readrecording.h"
#include "forms/savefolder.h"
#include "forms/switchedchannels.h"
#include "jobs/control.h"
#include "picture/axistexts.h"
#include "picture/resultplot.h"
#include "plot/pulsargrafik.h"
#include "plot/pulsargrafikinfo.h"
#include "results/reporttext.h"
#include "ui_pulsarform.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <algorithm>
#include <cmath>

namespace {

QString checkedButton(const QWidget *group)
{
    const QList<QRadioButton *> buttons = group->findChildren<QRadioButton *>();
    for (const QRadioButton *button : buttons) {
        if (button->isChecked())
            return button->objectName();
    }
    return {};
}

// The noise method of a button.
QString noiseMethod(const QString &button)
{
    for (const FieldChoice &choice : pulsarField("--noise").choices) {
        if (choice.button == button)
            return choice.value;
    }
    return {};
}

} // namespace

PulsarForm::PulsarForm(const QString &path, QWidget *parent)
    : QWidget(parent), ui(new Ui::PulsarForm), recordingPath(path)
{
    ui->setupUi(this);
    ui->filePath->setText(fileLabel(path));
    emptyCentralWidget();
    if (!readRecording(path)) {
        deleteLater();
        return;
    }
    grafik = new PulsarGrafik(this);
    info = new PulsarGrafikInfo(grafik, this);
    grafik->setObjectName("grafik");
    info->setObjectName("info");
    grafik->showMessage("Choose an action");
    shareSaveFolder(grafik);
    PulsarParameters presets;
    readDispersions(presets);
    fillCentralWidget(this, grafik, info);
    showDataEnd(ui->dataEnd, data);
    offerSwitchedChannels(ui->leaveOutChannels, path, data.channels);
    connectInputs();
    lastValues = std::make_unique<LastValues>(this);
    ui->sumChannelsAndFourier->setFocus();
}

PulsarForm::~PulsarForm() = default;

// False, after a box unless the user stopped it, when the form cannot work on the file.
bool PulsarForm::readRecording(const QString &path)
{
    std::optional<ReadRecording> recording = ::readRecording(path, parentWidget());
    if (!recording)
        return false;
    data = std::move(recording->data);
    readProblem = recording->problem;
    if (data.npoints < shortestRecording) {
        showError(parentWidget(), "Bad file!\nFile with short data, must be long data",
                  path + QString(" has %1 points; this form needs at least %2.")
                             .arg(data.npoints)
                             .arg(shortestRecording));
        return false;
    }
    return true;
}

void PulsarForm::connectInputs()
{
    QList<QAbstractButton *> buttons = {ui->isFirstPoint, ui->isZrtUtc, ui->withNormalization,
                                        ui->showDeductNoise, ui->pushButton};
    for (const QGroupBox *group : {ui->groupBox_action, ui->groupBox_method})
        for (QRadioButton *button : group->findChildren<QRadioButton *>())
            buttons << button;
    for (const QAbstractButton *button : std::as_const(buttons))
        connect(button, &QAbstractButton::clicked, this, &PulsarForm::redraw);

    connect(ui->commandButton, &QPushButton::clicked, this, &PulsarForm::copyCommand);
    connect(ui->harmonicOfPeriod, &QPushButton::clicked, this, &PulsarForm::takeHarmonicOfPeriod);

    connect(info, &PulsarGrafikInfo::linkClicked, this, &PulsarForm::followLink);
    connect(info, &PulsarGrafikInfo::changeMaxSigma, this, &PulsarForm::redraw);
    connect(info, &PulsarGrafikInfo::changeDispersions, this, &PulsarForm::changeDispersions);
    connect(info, &PulsarGrafikInfo::showMultiResult, this, &PulsarForm::showMultiResult);
    connect(info, &PulsarGrafikInfo::returnMultiGrafiks, this, &PulsarForm::showResult);
    connect(info, &PulsarGrafikInfo::pointsRequested, this, &PulsarForm::changePoints);
}

void PulsarForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        redraw();
    else
        QWidget::keyPressEvent(event);
}

void PulsarForm::redraw()
{
    if (ProgressTask::isRunning())
        return;
    const QString action = checkedButton(ui->groupBox_action);
    if (action.isEmpty()) {
        showError(this, "Check Action!");
        return;
    }
    compute(action, action == shownAction ? wantedPoints : 0);
}

// Puts the call of the batch program that does what "Run" does onto the clipboard.
void PulsarForm::copyCommand()
{
    if (ProgressTask::isRunning())
        return;
    const QString action = checkedButton(ui->groupBox_action);
    if (action.isEmpty()) {
        showError(this, "Check Action!");
        return;
    }
    if (!worksOnChannel(action) && ui->leaveOutChannels->isEnabled() &&
        ui->leaveOutChannels->isChecked()) {
        showError(this, "The batch program computes with all channels; uncheck \"" +
                            ui->leaveOutChannels->text() + "\" first.");
        return;
    }
    clearMarks();
    std::optional<PulsarParameters> parameters = readParameters();
    if (!parameters)
        return;
    if (!unreadableFields.isEmpty()) {
        showError(this, "No command was copied.", unreadableFields.join("\n"));
        return;
    }
    parameters->points = worksOnChannel(action) && action == shownAction ? wantedPoints : 0;
    QGuiApplication::clipboard()->setText(pulsarCommand(action, *parameters, recordingPath));
}

// Nothing is computed: the number takes effect as a typed one does.
void PulsarForm::takeHarmonicOfPeriod()
{
    clearMarks();
    PulsarParameters parameters;
    parameters.period = readNumber(ui->period, ui->periodLabel->text(), Tools::allowedNumber);
    parameters.withNull = ui->averageWithNull->isChecked();
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
    markFailing(ui->period);
    showError(this,
              QString("A period of %1 s has no line in the spectrum.\nAllowed: more than %2 "
                      "s, up to %3 s.")
                  .arg(exactText(parameters.period), ReportText::general(shortest),
                       ReportText::general(longest)),
              unreadableFields.join("\n"));
    ui->period->setFocus();
}

// A success replaces what is shown; a failure is reported and changes nothing.
void PulsarForm::compute(const QString &action, int points)
{
    clearMarks();
    std::optional<PulsarParameters> parameters = readParameters();
    if (!parameters)
        return;
    // The other actions show so many points of what they give.
    parameters->points = worksOnChannel(action) ? points : 0;

    // What a single channel shows is there whether the channel is on or off.
    const SwitchedRecording recording =
        worksOnChannel(action) ? SwitchedRecording{data, {}}
                               : switchedRecording(data, ui->leaveOutChannels, recordingPath);
    if (!recording.data.samples) {
        showError(this, "There is no memory to leave out channels.");
        return;
    }
    auto next = std::make_unique<PulsarCalculate>(recording.data, *parameters);
    bool isDone = false;
    const Jobs::Ending ending =
        Jobs::runGuarded([&] { isDone = runShowingProgress(*next, action); });
    if (ending.kind == Jobs::Ending::Failed) {
        showError(this, ending.problem);
        return;
    }
    if (!isDone) {
        if (!next->wasCancelled())
            reportFailure(*next);
        return;
    }
    calculate = std::move(next);
    shownParameters = *parameters;
    shownAction = action;
    shownUnreadable = unreadableFields;
    shownLeftOut = recording.note;
    wantedPoints = points;
    showResult();
}

// Lets events through at every progress, so that the window lives and Esc stops the action.
bool PulsarForm::runShowingProgress(PulsarCalculate &calculation, const QString &action)
{
    const QMutexLocker pressesIgnored(&grafik->busyMutex());
    ProgressTask task;
    connect(&task, &ProgressTask::cancelRequested, &calculation, &PulsarCalculate::cancel);
    connect(&calculation, &PulsarCalculate::progress, &task, &ProgressTask::advance);
    return calculation.run(action);
}

// Nothing, after a message, when a field with arrows cannot be read or there is no start point of
// that time.
std::optional<PulsarParameters> PulsarForm::readParameters()
{
    if (Fields::refuseUnread(this) || Fields::refuseUnread(info))
        return std::nullopt;
    PulsarParameters parameters;
    parameters.module = ui->module->value();
    parameters.ray = ui->ray->value();
    parameters.channel = ui->channel->value();
    parameters.period = readNumber(ui->period, ui->periodLabel->text(), Tools::allowedNumber);
    readDispersions(parameters);
    if (!readStart(parameters))
        return std::nullopt;
    parameters.deleteStep = ui->checkDeleteStep->isChecked();
    parameters.averageCount = ui->averageCount->value();
    parameters.withNull = ui->averageWithNull->isChecked();
    parameters.harmonicNum = ui->harmonicNum->value();
    parameters.sigmaMultiple = info->maxSigma();
    parameters.noise = noiseMethod(checkedButton(ui->groupBox_method));
    parameters.normalise = ui->withNormalization->isChecked();
    parameters.deductNoise = ui->showDeductNoise->isChecked();
    return parameters;
}

// A text that is no number counts as 0; its field is marked and named above the report.
double PulsarForm::readNumber(QLineEdit *field, const QString &name, const QString &allowed)
{
    const std::optional<double> number = Tools::typedNumber(field->text());
    if (!number)
        markUnreadable(field, name, allowed);
    return number.value_or(0);
}

void PulsarForm::markUnreadable(QLineEdit *field, const QString &name, const QString &allowed)
{
    markFailing(field);
    unreadableFields
        << QString("%1: \"%2\" counts as 0. Allowed: %3.").arg(name, field->text(), allowed);
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

    const double dm = isFour ? numbers[0]
                             : readNumber(ui->dispersion, ui->dispersionLabel->text(),
                                          Tools::allowedNumber + QString(", or four of them"));
    parameters.dispersion = dm;
    parameters.dispersions = chosenDispersions.value_or(std::array{0.0, dm / 2, dm, 2 * dm});
    info->setDispersions(parameters.dispersions);
}

// The start by point or by time with its delta; false after a box.
bool PulsarForm::readStart(PulsarParameters &parameters)
{
    const bool byPoint = ui->isFirstPoint->isChecked();
    QLineEdit *const delta = byPoint ? ui->firstPointDelta : ui->zrtUtcDelta;
    const double typed = delta->text().isEmpty()
                             ? 0
                             : readNumber(delta, ui->deltaLabel->text(), Tools::allowedNumber);
    parameters.startDelta = byPoint ? typed : typed / data.tresolution;
    if (byPoint) {
        // Far beyond every recording, so that the action names the allowed range.
        constexpr qint64 limit = 2000000000;
        const std::optional<qint64> point = Tools::typedWhole(ui->firstPoint->text());
        if (!point)
            markUnreadable(ui->firstPoint, ui->isFirstPoint->text(), Tools::allowedWhole);
        parameters.firstPoint = int(std::clamp(point.value_or(0), -limit, limit));
        return true;
    }
    const StartPoint start = pointAtUtc(data, ui->zrtUtc->text());
    if (start.error.isEmpty()) {
        parameters.firstPoint = start.point;
        parameters.startTime = ui->zrtUtc->text();
        return true;
    }
    markFailing(ui->zrtUtc);
    showError(this, start.isWithoutTimes ? start.error + "\nChoose \"First point\" instead."
                                         : start.error);
    ui->zrtUtc->setFocus();
    return false;
}

void PulsarForm::markFailing(QWidget *field)
{
    FieldStyles::setStyle(field, FieldStyles::failing);
}

void PulsarForm::clearMarks()
{
    unreadableFields.clear();
    for (QWidget *field : findChildren<QWidget *>()) {
        if (field->styleSheet() == FieldStyles::failing)
            FieldStyles::setStyle(field, {});
    }
}

void PulsarForm::reportFailure(const PulsarCalculate &failed)
{
    QString name = failed.failedParameter();
    if (ui->isZrtUtc->isChecked())
        name.replace("firstPoint", "zrtUtc");
    QWidget *field = name.isEmpty() ? nullptr : findChild<QWidget *>(name);
    if (!field && !name.isEmpty())
        field = info->findChild<QWidget *>(name);
    if (field)
        markFailing(field);
    showError(this, failed.failure(), unreadableFields.join("\n"));
    if (field)
        field->setFocus();
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
    if (!calculate || ProgressTask::isRunning())
        return;
    if (worksOnChannel(shownAction)) {
        // "Reset points" goes back to all of the recording.
        compute(shownAction, points > 0 ? points : data.npoints);
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
    const PulsarResult &result = calculate->result();
    QVector<QString> multiNames;
    for (const PulsarMultiResult &multi : result.multi)
        multiNames << multi.name;
    info->setMultiResults(multiNames);
    info->setFourierControls(reads(shownAction, "--sigma"));
    info->setDispersionControls(reads(shownAction, "--compare"));
    shownMulti.reset();
    showCurves(result.curves, result.names, 0);
    showTexts(result.report, result.names, 0);
}

void PulsarForm::showMultiResult(int index)
{
    shownMulti = index;
    const PulsarMultiResult &multi = calculate->result().multi[std::size_t(index)];
    showCurves(multi.curves, multi.names, index);
    showTexts(multi.report, multi.names, index);
}

// Shows curves over the X values of the result; their colours begin with that of the given
// curve of all.
void PulsarForm::showCurves(const std::vector<std::vector<float>> &curves, const QStringList &names,
                            int firstColour)
{
    const PulsarResult &result = calculate->result();
    const bool isCut = wantedPoints > 0 && !worksOnChannel(shownAction);
    const int count = isCut ? std::min(wantedPoints, result.points) : result.points;
    std::vector<std::vector<float>> shown;
    for (const std::vector<float> &curve : curves)
        shown.emplace_back(curve.begin(), curve.begin() + count);
    PlotData plot =
        Plot::curvePlot(result.axis, std::move(shown), names, result.markers, data, firstColour);
    if (!shownMulti)
        plot.visible = result.visible;
    plot.yName = result.axis.kind == PulsarAxis::Kind::Points  ? "signal"
                 : result.axis.kind == PulsarAxis::Kind::Phase ? "mean signal"
                                                               : "amplitude";
    plot.yUnit = isNormalised(shownAction, shownParameters) ? "sigma" : "";
    plot.source = QStringList("action: " + shownAction) + computedOnLines();
    grafik->setData(std::move(plot));
    grafik->recomputeRange();
    info->setPoints(worksOnChannel(shownAction) ? result.stretch : count);
}

// For the report, for tables and for pictures.
QStringList PulsarForm::computedOnLines() const
{
    QStringList lines =
        computedOn(recordingPath, shownAction, data, shownParameters, calculate->result());
    if (!shownLeftOut.isEmpty())
        lines << shownLeftOut;
    return lines;
}

void PulsarForm::showTexts(const Results::Report &report, const QStringList &names, int firstColour)
{
    const PulsarResult &result = calculate->result();
    std::vector<Results::Report> parts = {
        choicesReport(shownAction, data, shownParameters, result.points), report};
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
    info->setTexts(Results::joinReports(parts).html(), legend.html(), shownUnreadable);
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
