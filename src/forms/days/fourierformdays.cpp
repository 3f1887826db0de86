// The days of the form: their spectra, which of them count, their stack, and what is saved of it.

#include "analyses/days/ffastack.h"
#include "analyses/days/stacktables.h"
#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "coords/skyposition.h"
#include "forms/days/daysmodel.h"
#include "forms/days/fourierform.h"
#include "forms/days/fouriergrafikinfo.h"
#include "forms/days/interferencedialog.h"
#include "forms/days/linesmodel.h"
#include "forms/days/savetables.h"
#include "forms/days/spectrumview.h"
#include "forms/days/stacktexts.h"
#include "forms/sky/skypage.h"
#include "picture/ticks.h"
#include "plot/savedialog.h"
#include "ui_fourierform.h"

#include <QDir>
#include <QFileInfo>
#include <cmath>

void FourierForm::takeNews(SpectraNews news)
{
    if (!news.begun) {
        arrived.push_back(std::move(news));
        if (!stackTimer.isActive())
            stackTimer.start();
        return;
    }
    if (!news.begun->plan.problems.empty()) {
        showProblems(news.begun->plan.problems);
        return;
    }
    stacker.stop(); // its days are no longer shown
    spectra = std::make_shared<DaySpectra>(*news.begun);
    decided.assign(spectra->plan.list.days.size(), {});
    outcome = nullptr;
    listDays(spectra->plan);
    view->showMessage("Computing...");
}

// Products are put in their places while nobody reads them.
void FourierForm::addArrived()
{
    for (SpectraNews &news : arrived) {
        for (std::size_t ray = 0; ray < news.rays.size(); ++ray)
            spectra->rays[ray][std::size_t(news.day)] = std::move(news.rays[ray]);
    }
    arrived.clear();
}

void FourierForm::restack()
{
    if (!spectra)
        return;
    isStale = stacker.isBusy();
    if (isStale)
        return;
    addArrived();
    std::vector<FieldProblem> problems;
    StackRequest request;
    request.spectra = spectra;
    request.parameters = spectra->parameters;
    const Days::FourierDaysParameters typed = readParameters(problems);
    if (planProblems.empty() && problems.empty()) {
        request.parameters.harmonics = typed.harmonics;
        request.parameters.earthMotion = typed.earthMotion;
        request.parameters.threshold = typed.threshold;
        request.parameters.equalGains = typed.equalGains;
    }
    request.decided = decided;
    request.frequency = view->markedFrequency();
    request.leftOut = leftOut;
    using Outcome = std::shared_ptr<const StackOutcome>;
    stacker.start<Outcome>(
        [request](const Jobs::Control &control, const Jobs::Deliver<Outcome> &deliver) {
            deliver(stackSpectra(request, control));
        },
        [this](const Outcome &made) { takeStack(made); });
}

void FourierForm::takeStack(const std::shared_ptr<const StackOutcome> &made)
{
    outcome = made;
    const SpectrumView::DayList shown(spectra, &spectra->days());
    view->showStack(shown, outcome->choice.days, outcome->stack, usedText().split('\n'));
    view->panel()->setUsed(usedText());
    showDays();
    showPowers();
}

// The days that can be used and those that cannot, then the recordings that give none.
void FourierForm::listDays(const Days::DayPlan &made)
{
    std::vector<DayRow> rows;
    for (const Days::Day &day : made.list.days) {
        DayRow row;
        row.begin = day.begin;
        row.canCount = day.reason.isEmpty();
        row.reason = day.reason;
        rows.push_back(row);
    }
    for (const Days::LeftOut &left : made.list.leftOut) {
        DayRow row;
        row.name =
            QDir(directory).relativeFilePath(recordings->entries[std::size_t(left.recording)].path);
        row.canCount = false;
        row.reason = left.reason;
        rows.push_back(row);
    }
    days->setRows(std::move(rows));
    constexpr int checkBoxWidth = 40;
    ui->days->setColumnWidth(
        DaysModel::Date, fontMetrics().horizontalAdvance("2015-04-01 12:00:00") + checkBoxWidth);
    ui->days->setColumnWidth(DaysModel::Sigma, 6 * fontMetrics().averageCharWidth() + 12);
    ui->days->setColumnWidth(DaysModel::Power, 6 * fontMetrics().averageCharWidth() + 6);
}

void FourierForm::showDays()
{
    std::vector<DayRow> rows = days->dayRows();
    for (std::size_t i = 0; i < spectra->days().size(); ++i) {
        const Days::FourierDay &day = spectra->days()[i];
        DayRow &row = rows[i];
        row.sigma = day.isWhole() ? day.sigma : 0;
        row.canCount = row.canCount && day.problem.isEmpty();
        row.isOn = day.isWhole() ? bool(outcome->choice.days[i])
                                 : decided[i].value_or(true) && row.canCount;
        QStringList reasons = {day.isWhole() ? outcome->verdicts[i].reason : day.problem,
                               day.remark};
        if (!spectra->plan.list.days[i].reason.isEmpty())
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

void FourierForm::switchDay(int row, bool isOn)
{
    if (!spectra || row >= int(decided.size()))
        return;
    decided[std::size_t(row)] = isOn;
    restackAnew();
}

void FourierForm::switchAll(std::optional<bool> isOn)
{
    decided.assign(decided.size(), isOn);
    restackAnew();
}

// What the user has changed makes the stack under way useless; days that arrive let it end.
void FourierForm::restackAnew()
{
    stacker.stop();
    restack();
}

void FourierForm::readInterference()
{
    leftOut = listedInterference().value_or(std::vector<Days::Interference>());
}

void FourierForm::editInterference()
{
    InterferenceDialog dialog(Days::interferencePath(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    readInterference();
    restack();
}

void FourierForm::leaveOut(int line)
{
    if (!outcome || line < 0 || line >= int(outcome->stack.lines.size()))
        return;
    const Days::FourierLine &found = outcome->stack.lines[std::size_t(line)];
    leaveOutEntry(found.telescope, found.harmonics);
}

void FourierForm::leaveOutFrequency(double frequency)
{
    if (outcome)
        leaveOutEntry(frequency, 1);
}

// A bin at either side, in numbers that a reader of the list can grasp.
void FourierForm::leaveOutEntry(double frequency, int harmonics)
{
    const double step = Plot::roundStepAbove(outcome->stack.binWidth / 100);
    const auto rounded = [step](double value) {
        return step < 1 ? std::round(value / step) / std::round(1 / step) : value;
    };
    const Days::Interference entry = {
        rounded(frequency), false, rounded(outcome->stack.binWidth), harmonics, {}};
    if (std::optional<std::vector<Days::Interference>> entries = listedInterference()) {
        entries->push_back(entry);
        keepInterference(*entries, "Left out: " + entry.text());
    }
}

void FourierForm::countAgain(double frequency, double tolerance)
{
    std::optional<std::vector<Days::Interference>> entries = listedInterference();
    if (!entries)
        return;
    QStringList texts;
    const int turns = analysis.flags.ffa ? Days::mostTurns : 1;
    for (int turn = 1; turn <= turns; ++turn) {
        for (const Days::Interference &entry :
             Days::takeOutInterference(*entries, turn * frequency, tolerance))
            texts << entry.text();
    }
    keepInterference(*entries, "Counts again: " + texts.join("; "));
}

// A list that cannot be read stays as it is, and the user is told.
std::optional<std::vector<Days::Interference>> FourierForm::listedInterference()
{
    const Days::InterferenceList list = Days::readInterference(Days::interferencePath());
    if (list.problem.isEmpty())
        return list.entries;
    showError(window(), "The list of interference cannot be used.", list.problem);
    return {};
}

void FourierForm::keepInterference(const std::vector<Days::Interference> &entries,
                                   const QString &done)
{
    if (const WriteFailure failure = Days::writeInterference(Days::interferencePath(), entries)) {
        showError(window(), "The list of interference was not written.", failure.text());
        return;
    }
    StatusLine::show(done);
    leftOut = entries;
    restack();
}

QString FourierForm::usedText() const
{
    const Days::FourierDaysParameters &used = spectra->parameters;
    const Days::FourierStack &stack = outcome->stack;
    QStringList lines = {
        directory,
        QString("%1 of %2 days").arg(stack.days).arg(stack.allDays),
        QString("Module %1, ray %2").arg(used.module).arg(used.ray),
        QString("Points %1, step %2 s").arg(used.points).arg(spectra->plan.list.tresolution),
        QString("Dispersion %1 pc/cm^3").arg(used.dispersion),
        stack.ffa
            ? QString("%1 periods from %2 s on, %3 trials")
                  .arg(stack.ffa->count())
                  .arg(used.ffa.period_min)
                  .arg(stack.trials, 0, 'f', 0)
            : QString("Bin %1 Hz, %2 trials").arg(stack.binWidth).arg(stack.trials, 0, 'f', 0),
        QString("%1 at the %2")
            .arg(stack.ffa ? "Periods" : "Frequencies",
                 stack.isTurned ? "barycentre" : "telescope"),
        words.sees};
    const Days::FourierDaysChoice &choice = outcome->choice;
    if (choice.direction.isNumber())
        lines << QString("Direction %1 %2")
                     .arg(Tools::rightAscensionText(choice.direction.alfa),
                          Tools::declinationText(choice.direction.delta));
    lines << QString("Series are kept in %1%2")
                 .arg(spectra->kept.path, spectra->kept.isBesideData
                                              ? QString()
                                              : QString(", for the directory cannot be written"));
    if (!leftOut.empty())
        lines << QString("%1 entries of the list of interference are left out").arg(leftOut.size());
    lines += spectra->plan.remarks;
    lines += stack.remarks;
    return lines.join('\n');
}

QStringList FourierForm::daysOff() const
{
    QStringList names;
    if (!outcome)
        return names;
    for (std::size_t i = 0; i < outcome->choice.days.size(); ++i) {
        if (!outcome->choice.days[i] && spectra->days()[i].isWhole())
            names << Days::dayName(spectra->days()[i].begin);
    }
    return names;
}

void FourierForm::copyCommand()
{
    if (sky) {
        sky->copyCommand();
        return;
    }
    std::vector<FieldProblem> problems;
    const Days::FourierDaysParameters parameters = readParameters(problems);
    showProblems(problems);
    if (!problems.empty())
        return;
    const QString survey = Days::fourierDaysCommand(true, parameters, {}, {directory});
    const QString stack = Days::fourierDaysCommand(false, parameters, daysOff(), {directory});
    StatusLine::copyCommand(survey + "\n" + stack + "\n");
}

void FourierForm::saveSpectra()
{
    if (!spectra)
        return;
    const QString path = Plot::askForPath(
        this, QString(words.saveProducts).remove("..."),
        startFolder(Settings::instance()->lastSavePath()),
        Days::spectraFileName(spectra->days(), spectra->parameters), "Result file (*.txt)");
    if (path.isEmpty())
        return;
    const WriteFailure failure =
        writeWhole(path, Days::spectraBytes(spectra->days(), spectra->parameters));
    if (failure) {
        showError(window(), "The result file was not saved.", failure.text());
        return;
    }
    Settings::instance()->setLastSavePath(QFileInfo(path).path());
    StatusLine::showSaved(path);
}

void FourierForm::saveTables()
{
    if (!outcome)
        return;
    const Days::FourierDaysParameters &used = outcome->parameters;
    askAndSaveTables(
        this, words.saveTables,
        QString("stack%1_m%2_r%3.txt").arg(used.isFfa ? "-ffa" : "").arg(used.module).arg(used.ray),
        tables());
}

// What the batch program writes too.
std::vector<std::pair<QString, Results::ResultTable>> FourierForm::tables() const
{
    Results::ResultTable table;
    table.request = {{"program", "zrt-analytics-2"}, {"command", "stack"}, {"folder", directory}};
    for (const Results::HeaderLine &line : Days::parameterLines(outcome->parameters))
        table.request.push_back(line);
    for (const Days::Interference &entry : outcome->choice.leftOut)
        table.request.push_back({"interference", entry.text()});
    table.result = Days::stackLines(outcome->stack, spectra->plan, outcome->choice);
    std::vector<std::pair<QString, Results::ResultTable>> all = {
        {words.curve, table}, {"lines", table}, {"days", table}};
    all[0].second.columns = Days::spectrumColumns(outcome->stack);
    all[1].second.columns = Days::linesColumns(outcome->stack);
    all[2].second.columns =
        Days::daysColumns(spectra->days(), outcome->verdicts, outcome->choice.days);
    for (const Results::HeaderLine &line : Days::leftOutLines(*recordings, spectra->plan.list))
        all[2].second.result.push_back(line);
    return all;
}
