#include "forms/transient/transientform.h"

#include "analyses/days/dayplace.h"
#include "analyses/timing/pulsetimes.h"
#include "app/shell/directoryof.h"
#include "base/shellword.h"
#include "coords/alfa2000.h"
#include "coords/raytables.h"
#include "fields/fieldstyles.h"
#include "fields/tableview.h"
#include "forms/savefolder.h"
#include "forms/transient/periodview.h"
#include "forms/transient/pulsesmodel.h"
#include "forms/transient/pulseview.h"
#include "forms/verdictbar.h"
#include "results/reporttext.h"
#include "ui_transientform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

TransientForm::TransientForm(const QString &filePath, QWidget *parent)
    : RecordingForm(filePath, parent), ui(new Ui::TransientForm), model(new PulsesModel(this))
{
    ui->setupUi(this);
    if (!open())
        return;
    const Pulses::PulseParameters presets = Pulses::pulseAnalysis().presets;
    for (const Pulses::PulseField *one : Pulses::pulseAnalysis().fields)
        showField(*one, one->valueIn(presets));
    ui->widths->setCursorPosition(0);
    verdictsFile = Pulses::verdictsPath(path);
    install(makeMiddle(), nullptr);
    connectInputs();
    restoreVerdicts();
    showEstimate();
    showPulse();
    ui->pushButton->setFocus();
}

TransientForm::~TransientForm() = default;

QWidget *TransientForm::makeMiddle()
{
    auto *const splitter = new QSplitter(Qt::Vertical, this);
    splitter->setObjectName("splitter");
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(makeTable());
    tabs = new QTabWidget;
    tabs->setObjectName("tabs");
    auto *const ofPulse = new QWidget;
    auto *const layout = new QVBoxLayout(ofPulse);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    chosen = new QLabel;
    chosen->setObjectName("pulseText");
    chosen->setTextFormat(Qt::PlainText);
    chosen->setWordWrap(true);
    chosen->setTextInteractionFlags(Qt::TextSelectableByMouse);
    pictures = new PulseView;
    layout->addWidget(chosen);
    layout->addWidget(pictures, 1);
    period = new PeriodView;
    period->setSource([this] { return arrivalTimes(); });
    tabs->addTab(ofPulse, "Pulse");
    tabs->addTab(period, "Period");
    splitter->addWidget(tabs);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 3);
    splitter->setSizes({240, 400});
    return splitter;
}

QWidget *TransientForm::makeTable()
{
    auto *const part = new QWidget;
    auto *const layout = new QVBoxLayout(part);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    table = new TableView;
    table->setObjectName("pulses");
    table->showSorted(model);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::DoubleClicked);
    table->setWordWrap(false);
    table->setTabKeyNavigation(false);
    buttons = new VerdictBar(part);
    buttons->addButton("Period", "The period of the accepted pulses", QKeySequence("T"), [this] {
        tabs->setCurrentWidget(period);
        period->find();
    });
    told = new QLabel;
    told->setObjectName("told");
    told->setTextFormat(Qt::PlainText);
    told->setWordWrap(true);
    told->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(table, 1);
    layout->addWidget(buttons);
    layout->addWidget(told);
    return part;
}

void TransientForm::connectInputs()
{
    for (const QLineEdit *field : findChildren<QLineEdit *>()) {
        if (!field->isReadOnly() && !period->isAncestorOf(field))
            connect(field, &QLineEdit::textChanged, this, &TransientForm::showEstimate);
    }
    for (const QCheckBox *field : {ui->mask, ui->zeroDm, ui->leaveOutChannels})
        connect(field, &QCheckBox::toggled, this, &TransientForm::showEstimate);
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &TransientForm::showPulse);
    connect(model, &PulsesModel::decided, this, &TransientForm::keepVerdicts);
    connect(buttons, &VerdictBar::stepped, this, &TransientForm::step);
    connect(buttons, &VerdictBar::decided, this, &TransientForm::decide);
    connect(buttons, &VerdictBar::noteWanted, this, &TransientForm::writeNote);
    connect(buttons, &VerdictBar::saveWanted, this, &TransientForm::saveTable);
}

std::vector<FieldProblem> TransientForm::readParameters(Pulses::PulseParameters &parameters)
{
    beginReading();
    parameters = Pulses::pulseAnalysis().presets;
    readFields(Pulses::pulseAnalysis().fields, parameters);
    parameters.channelsOff = channelsOff();
    std::vector<FieldProblem> problems = FieldValues::problems(this, unread);
    if (problems.empty())
        problems = Pulses::problemsOf(parameters);
    return problems;
}

bool TransientForm::showProblems(const std::vector<FieldProblem> &problems)
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

// What a search would do, or what is wrong with the fields.
void TransientForm::showEstimate()
{
    Pulses::PulseParameters parameters;
    if (!showProblems(readParameters(parameters)))
        return;
    const Pulses::PulsePlan wanted = Pulses::planPulses(data, parameters);
    if (showProblems(wanted.problems))
        ui->estimate->setText((QStringList(Pulses::planText(wanted)) + wanted.remarks).join('\n'));
}

QString TransientForm::command()
{
    Pulses::PulseParameters parameters;
    if (!showProblems(readParameters(parameters)))
        return {};
    QStringList words = {"zrt-batch", Pulses::pulseAnalysis().command};
    words += Tools::optionWords(Pulses::pulseAnalysis(), parameters);
    words << shellWord(path);
    return words.join(' ');
}

void TransientForm::search()
{
    Pulses::PulseParameters parameters;
    std::vector<FieldProblem> problems = readParameters(parameters);
    Pulses::PulsePlan wanted;
    if (problems.empty()) {
        wanted = Pulses::planPulses(data, parameters);
        problems = wanted.problems;
    }
    if (!showProblems(problems)) {
        focusOn(problems[0]);
        return;
    }
    plan = wanted;
    searched = parameters;
    pictures->forgetData();
    model->setPulses({});
    showPulse();
    told->setText("Searching...");
    worker.start<Found>(
        [record = data, parameters](const Jobs::Control &control,
                                    const Jobs::Deliver<Found> &deliver) {
            const auto result = std::make_shared<const Pulses::PulseResult>(Pulses::search(
                record, parameters, control, [&deliver](const std::vector<Pulses::Pulse> &pulses) {
                    deliver({pulses, {}});
                }));
            deliver({result->pulses, result});
        },
        [this](const Found &found) { take(found); });
}

void TransientForm::take(const Found &found)
{
    showPulses(found.pulses);
    showFound(found);
}

// The pulse that is chosen stays so while others come.
void TransientForm::showPulses(std::vector<Pulses::Pulse> pulses)
{
    const int row = chosenRow();
    const bool wasFirst = row <= 0;
    std::vector<Pulses::Pulse> kept;
    if (!wasFirst)
        kept.push_back(model->pulses()[std::size_t(row)]);
    model->setPulses(std::move(pulses));
    table->resizeColumnsToContents();
    constexpr int noteLetters = 24;
    table->setColumnWidth(PulsesModel::Note, noteLetters * table->fontMetrics().averageCharWidth());
    const int now = kept.empty() ? 0 : std::max(0, model->rowOf(kept.front()));
    if (model->rowCount() > 0)
        table->setCurrentIndex(table->shownIndex(now));
    showPulse();
}

void TransientForm::showFound(const Found &found)
{
    const auto candidates =
        std::count_if(found.pulses.begin(), found.pulses.end(),
                      [](const Pulses::Pulse &pulse) { return pulse.verdict.isCandidate(); });
    const QString counted =
        QString("%1 candidates above S/N %2, of which noise is expected to give %3; %4 others "
                "have something against them.")
            .arg(candidates)
            .arg(plan.threshold, 0, 'f', 2)
            .arg(ReportText::count(plan.expected))
            .arg(qint64(found.pulses.size()) - candidates);
    if (!found.whole) {
        told->setText("Searching... " + counted);
        return;
    }
    QStringList lines = {counted};
    for (const Pulses::RayPulses &ray : found.whole->rays)
        lines << ray.remarks;
    lines.removeDuplicates();
    constexpr int mostLines = 2; // the table needs the room; the tool tip tells all
    told->setText(lines.mid(0, mostLines).join('\n'));
    told->setToolTip(lines.join('\n'));
    table->setFocus();
}

void TransientForm::endWork(const Jobs::Ending &ending)
{
    if (ending.kind == Jobs::Ending::Stopped)
        told->setText(QString("Stopped; %1 pulses had been found.").arg(model->rowCount()));
    RecordingForm::endWork(ending);
}

void TransientForm::restoreVerdicts()
{
    QFile file(verdictsFile);
    if (!file.open(QIODevice::ReadOnly))
        return;
    model->setVerdicts(Pulses::KeptVerdicts::fromBytes(file.readAll(), verdictsProblem));
    const auto count = model->verdicts().all().size();
    if (!verdictsProblem.isEmpty()) {
        verdictsProblem = verdictsFile + " cannot be used: " + verdictsProblem +
                          ". Verdicts are not kept; move the file away.";
        told->setText(verdictsProblem);
    } else if (count > 0) {
        told->setText(ReportText::counted(qint64(count), "verdict") +
                      " from earlier. Search brings the pulses back.");
    }
}

// Whole or not at all, after every verdict.
void TransientForm::keepVerdicts()
{
    if (!verdictsProblem.isEmpty()) {
        told->setText(verdictsProblem);
        return;
    }
    QDir().mkpath(directoryOf(verdictsFile));
    if (const WriteFailure failure = writeWhole(verdictsFile, model->verdicts().toBytes()))
        told->setText(failure.text() + " Verdicts and notes are not kept.");
}

int TransientForm::chosenRow() const
{
    return table->tableRow(table->currentIndex());
}

void TransientForm::step(int way)
{
    const int row = table->currentIndex().row() + way;
    if (row >= 0 && row < model->rowCount())
        table->setCurrentIndex(table->model()->index(row, 0));
}

void TransientForm::decide(Sky::Verdict verdict)
{
    model->setVerdict(chosenRow(), verdict);
    step(1);
}

void TransientForm::writeNote()
{
    if (chosenRow() < 0)
        return;
    const QModelIndex note = table->shownIndex(chosenRow()).siblingAtColumn(PulsesModel::Note);
    table->scrollTo(note);
    table->edit(note);
}

void TransientForm::saveTable()
{
    const QString file = askSavePath(this, "Save table", "pulses.csv",
                                     "Comma separated (*.csv);;Text (*.txt);;JSON (*.json)");
    if (file.isEmpty())
        return;
    Results::ResultTable saved;
    saved.request = {{"program", "ZRT-Analytics-2"},
                     {"command", Pulses::pulseAnalysis().command},
                     {"file", path}};
    for (const Pulses::PulseField *one : Pulses::pulseAnalysis().fields) {
        const QString value = Tools::headerText(one->valueIn(searched));
        if (!value.isEmpty())
            saved.request.push_back({one->key, value});
    }
    saved.columns = model->tableColumns();
    endSave(this, file, "The table was not saved.",
            writeWhole(file, saved.toBytes(Results::formatOf(QFileInfo(file).suffix()))).text());
}

void TransientForm::showPulse()
{
    const int row = chosenRow();
    buttons->setHasCandidate(row >= 0);
    if (row < 0) {
        chosen->setText(worker.isBusy() ? "" : "Press Search, then choose a pulse");
        pictures->showMessage("Choose a pulse");
        return;
    }
    const Pulses::Pulse &pulse = model->pulses()[std::size_t(row)];
    chosen->setText(textOf(pulse));
    pictures->showPulse({data, searched, plan, pulse});
}

// What stands against a pulse, and what has no column.
QString TransientForm::textOf(const Pulses::Pulse &pulse) const
{
    QStringList parts;
    if (!pulse.verdict.reason.isEmpty())
        parts << Pulses::nameOf(pulse.verdict.kind) + ": " + pulse.verdict.reason;
    if (pulse.infiniteUtc.isValid())
        parts << QString("at infinite frequency %1 UTC +- %2 s")
                     .arg(pulse.infiniteUtc.toString("hh:mm:ss.zzz"))
                     .arg(pulse.infiniteError, 0, 'g', 2);
    if (std::isfinite(pulse.fwhm.value))
        parts << QString("width %1 ms")
                     .arg(ReportText::withError(1000 * data.tresolution * pulse.fwhm.value,
                                                1000 * data.tresolution * pulse.fwhm.error));
    parts << QString("S/N %1 at DM 0").arg(pulse.snrAtZero, 0, 'f', 1);
    const double delta = Tools::deltaFromRay(pulse.module, pulse.ray, Days::siteOf(path));
    if (data.beginTime.isValid() && delta > -90) {
        const QString text = Tools::declinationText(delta * M_PI / 180).remove('+');
        parts << "alfa Kest " + Tools::getAlfa2000(data.beginTime, std::max(0, int(pulse.point.value)),
                                            data.tresolution, text);
    }
    return parts.join("; ");
}

// Of the accepted pulses; of all candidates where none is accepted.
Timing::ArrivalTimes TransientForm::arrivalTimes() const
{
    std::vector<Pulses::Pulse> accepted;
    std::vector<Pulses::Pulse> candidates;
    for (int row = 0; row < model->rowCount(); ++row) {
        const Pulses::Pulse &pulse = model->pulses()[std::size_t(row)];
        if (model->verdict(row) == Sky::Verdict::Accept)
            accepted.push_back(pulse);
        if (pulse.verdict.isCandidate() && model->verdict(row) != Sky::Verdict::Reject)
            candidates.push_back(pulse);
    }
    return Timing::timesOfPulses(accepted.empty() ? candidates : accepted, data);
}
