#include "forms/transient/periodview.h"

#include "app/shell/statusline.h"
#include "fields/tableview.h"
#include "forms/fieldvalues.h"
#include "forms/savefolder.h"
#include "forms/transient/periodsmodel.h"
#include "picture/periodplot.h"
#include "plot/pulsargrafik.h"
#include "ui_periodview.h"

namespace {

PulsarGrafik *plotNamed(const char *name)
{
    auto *const plot = new PulsarGrafik;
    plot->setObjectName(name);
    shareSaveFolder(plot);
    return plot;
}

} // namespace

PeriodView::PeriodView(QWidget *parent)
    : QWidget(parent), ui(new Ui::PeriodView), model(new PeriodsModel(this)),
      ranks(plotNamed("periodRanks")), residuals(plotNamed("periodResiduals"))
{
    ui->setupUi(this);
    ui->plots->addWidget(ranks);
    ui->plots->addWidget(residuals);
    ui->periods->showTable(model);
    const Timing::PeriodParameters presets = Timing::periodAnalysis().presets;
    for (const Timing::PeriodField *field : Timing::periodAnalysis().fields) {
        if (QWidget *const widget = FieldValues::find(this, *field))
            FieldValues::show(widget, *field, field->valueIn(presets));
    }
    ranks->showMessage("Press Find period");
    residuals->showMessage("Residuals of the best period");
    connect(ui->findPeriod, &QPushButton::clicked, this, &PeriodView::find);
    connect(ui->periodCommand, &QPushButton::clicked, this, &PeriodView::copyCommand);
    for (QLineEdit *const field : findChildren<QLineEdit *>())
        connect(field, &QLineEdit::returnPressed, this, &PeriodView::find);
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            ui->periodText->setText(ending.problem);
        emit finished();
    });
}

PeriodView::~PeriodView() = default;

void PeriodView::setSource(std::function<Timing::ArrivalTimes()> timesOf)
{
    source = std::move(timesOf);
}

bool PeriodView::readParameters(Timing::PeriodParameters &parameters)
{
    std::vector<FieldProblem> problems;
    parameters = FieldValues::readAll(
        this, Timing::periodAnalysis(), [](const QWidget *) { return true; }, problems);
    if (problems.empty())
        problems = Timing::problemsOf(parameters);
    FieldValues::showProblems(this, ui->periodProblem, told, problems);
    told = problems;
    return problems.empty();
}

// At the barycentre, where the direction is known.
Timing::ArrivalTimes PeriodView::takenTimes(const Timing::PeriodParameters &parameters) const
{
    return Timing::turnedTimes(source ? source() : Timing::ArrivalTimes(), parameters);
}

void PeriodView::find()
{
    Timing::PeriodParameters parameters;
    if (!readParameters(parameters))
        return;
    const Timing::ArrivalTimes times = takenTimes(parameters);
    ui->periodText->setText(QString("Searching %1 times...").arg(times.times.size()));
    using Found = std::shared_ptr<const Timing::PeriodSearch>;
    worker.start<Found>(
        [times, parameters](const Jobs::Control &control, const Jobs::Deliver<Found> &deliver) {
            deliver(std::make_shared<const Timing::PeriodSearch>(
                Timing::searchPeriod(times, parameters, control)));
        },
        [this, chance = parameters.chance](const Found &search) { take(search, chance); });
}

void PeriodView::take(const std::shared_ptr<const Timing::PeriodSearch> &search, double chance)
{
    if (!search->problem.isEmpty()) {
        found.reset();
        model->setSearch(nullptr);
        ui->periodText->setText(search->problem);
        ranks->showMessage("No period");
        residuals->showMessage("No period");
        return;
    }
    found = search;
    model->setSearch(search);
    ui->periods->resizeColumnsToContents();
    const QStringList lines =
        QStringList(search->verdict) + search->remarks + search->count.remarks;
    ui->periodText->setText(lines.join('\n'));
    ranks->setData(Plot::periodRanks(*search, chance));
    residuals->setData(Plot::periodResiduals(*search));
}

// The times as the batch program takes them.
void PeriodView::copyCommand()
{
    Timing::PeriodParameters parameters;
    if (!readParameters(parameters))
        return;
    const Timing::ArrivalTimes times = takenTimes(parameters);
    QStringList texts;
    for (const Timing::ArrivalTime &time : times.times)
        texts << time.text();
    if (texts.isEmpty()) {
        ui->periodText->setText("There are no times: accept pulses first.");
        return;
    }
    parameters.times = texts.join(',');
    parameters.earthMotion = false; // they are turned already, or their direction is not known
    parameters.unit =
        times.scale == Timing::TimeScale::Seconds ? Timing::secondsUnit : Timing::daysUnit;
    StatusLine::copyCommand(Timing::periodCommand(parameters, {}));
}
