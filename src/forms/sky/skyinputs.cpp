#include "forms/sky/skyinputs.h"

#include "app/shell/lastvalues.h"
#include "app/shell/settings.h"
#include "data/truenumbers.h"
#include "fields/numberbox.h"
#include "forms/days/daysinputs.h"
#include "forms/days/daystable.h"
#include "forms/days/foldfields.h"
#include "forms/days/sourcefield.h"
#include "forms/days/stacktexts.h"
#include "forms/fieldvalues.h"
#include "forms/keeplines.h"
#include "forms/sky/skyjobs.h"
#include "results/reporttext.h"
#include "ui_skyinputs.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <algorithm>

namespace {

constexpr double bytesPerMegabyte = 1e6;
constexpr double secondsPerMinute = 60;

QString bytesText(qint64 bytes)
{
    return QString::number(double(bytes) / bytesPerMegabyte, 'f', bytes < 10000000 ? 1 : 0) + " MB";
}

QString timeText(double seconds)
{
    if (seconds < 1)
        return "less than a second";
    if (seconds < 2 * secondsPerMinute)
        return QString("about %1 s").arg(seconds, 0, 'f', 0);
    return QString("about %1 min").arg(seconds / secondsPerMinute, 0, 'f', 0);
}

// A number of pixels; 0 where none stands there.
int pixelsIn(const QLineEdit *field)
{
    constexpr int least = 100;
    constexpr int most = 20000;
    bool isNumber = false;
    const int pixels = field->text().trimmed().toInt(&isNumber);
    return isNumber && pixels >= least && pixels <= most ? pixels : 0;
}

// The value that a header tells.
struct FromText {
    const QString &text;

    void operator()(int *value) const { *value = text.toInt(); }
    void operator()(double *value) const { *value = text.toDouble(); }
    void operator()(bool *value) const { *value = text == "yes"; }
    void operator()(QString *value) const { *value = text; }
    void operator()(std::array<double, 4> * /*value*/) const {}
};

} // namespace

SkyInputs::SkyInputs(const Sky::SkyAnalysis &skyAnalysis, const QString &directoryPath,
                     QWidget *parent)
    : QWidget(parent), analysis(skyAnalysis), directory(directoryPath), ui(new Ui::SkyInputs),
      days(new DaysModel(stackTexts(analysis.flags.ffa), this))
{
    ui->setupUi(this);
    ui->filePath->showDirectory(directory);
    ui->groupBox_map->setVisible(analysis.flags.map);
    ui->groupBox_search->setVisible(analysis.flags.search);
    ui->groupBox_spectrum->setTitle(stackTexts(analysis.flags.ffa).group);
    ui->foldFields->setVisible(analysis.flags.ffa);
    FieldValues::hideFieldsOfOthers(this, analysis, Sky::skyAnalyses());
    FieldValues::offerChoices(this, analysis);
    ui->days->showTable(days);
    for (const int column : {DaysModel::Sigma, DaysModel::Power})
        ui->days->setColumnHidden(column, true);
    ui->days->verticalHeader()->hide();
    ui->days->horizontalHeader()->setStretchLastSection(true);
    ui->days->setColumnWidth(DaysModel::Date,
                             fontMetrics().horizontalAdvance("2015-04-01 12:00:00") + 12);
    ui->graphWidth->setText(Settings::instance()->graphWidth);
    ui->graphHeight->setText(Settings::instance()->graphHeight);
    for (const Sky::SkyField &field : Sky::skyFields()) {
        if (field.name == "firstPoint")
            ui->placeFields->setPointToolTip(field.help);
    }
    keepLines(ui->told, 3);
    keepLines(ui->daysText, 2);
    fields = new DaysInputs(this);
    connectInputs();
    lastValues = std::make_unique<LastValues>(this);
    setFocusProxy(ui->dispersions);
}

SkyInputs::~SkyInputs() = default;

void SkyInputs::connectInputs()
{
    fields->watch({ui->graphWidth, ui->graphHeight, ui->over, ui->shownRay, ui->shownOther});
    connect(ui->over, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        fillOther();
        emit shownChanged();
    });
    for (const QComboBox *field : {ui->shownRay, ui->shownOther}) {
        connect(field, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
            if (!isFilling)
                emit shownChanged();
        });
    }
    for (const QLineEdit *field : {ui->graphWidth, ui->graphHeight}) {
        connect(field, &QLineEdit::textChanged, this, [this] {
            Settings::instance()->graphWidth = ui->graphWidth->text().trimmed();
            Settings::instance()->graphHeight = ui->graphHeight->text().trimmed();
            emit pictureSizeChanged();
        });
    }
    connect(fields, &DaysInputs::changed, this, &SkyInputs::plan);
    connect(&planner, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            ui->told->setText(ending.problem);
    });
    connect(ui->pushButton, &QPushButton::clicked, this, &SkyInputs::computeWanted);
    connect(ui->commandButton, &QPushButton::clicked, this, &SkyInputs::commandWanted);
}

void SkyInputs::setRecordings(const std::shared_ptr<const RecordingSet> &set)
{
    recordings = set;
    const auto first = std::find_if(set->entries.begin(), set->entries.end(),
                                    [](const RecordingEntry &entry) { return entry.isUsable(); });
    const ObservationData &header = first->header;
    ui->modules->setText(QString::number(moduleNumber(header, 0)));
    ui->dispersions->setText(QString::number(std::max(0, header.dispersion)));
    int points = Sky::SkyParameters().points;
    while (points > Days::fewestPoints && points > first->completePoints / 2)
        points /= 2;
    ui->points->setCurrentText(QString::number(points));
    ui->placeFields->chooseFirstPoint(Sky::SkyParameters().firstPoint);
    ui->placeFields->sourceField()->setSetting(
        {Days::siteOf(first->path), first->begin.date(), points, header.tresolution});
    ui->pushButton->setEnabled(true);
    plan();
}

Sky::SkyParameters SkyInputs::read(std::vector<FieldProblem> &problems) const
{
    auto parameters = fields->read(analysis, problems);
    readShown(parameters);
    return parameters;
}

void SkyInputs::readShown(Sky::SkyParameters &parameters) const
{
    const Sky::SkyParameters presets;
    parameters.over = ui->over->currentIndex() == 1 ? "dms" : "starts";
    parameters.mapModule = presets.mapModule;
    parameters.mapRay = presets.mapRay;
    parameters.mapDispersion = presets.mapDispersion;
    parameters.mapStart = presets.mapStart;
    if (latest && ui->shownRay->currentIndex() > 0) {
        const Sky::SkyRay &ray = latest->plan.rays[std::size_t(ui->shownRay->currentIndex() - 1)];
        parameters.mapModule = ray.module;
        parameters.mapRay = ray.ray;
    }
    const int other = ui->shownOther->currentIndex() - 1;
    if (other < 0 || !latest)
        return;
    if (parameters.over == "starts")
        parameters.mapDispersion = latest->plan.dispersions[std::size_t(other)];
    else
        parameters.mapStart = other + 1;
}

std::optional<Sky::SkyParameters> SkyInputs::parameters()
{
    fields->stopWaiting();
    std::vector<FieldProblem> problems;
    const Sky::SkyParameters typed = read(problems);
    for (const FieldProblem &problem : Sky::problemsOf(typed))
        problems.push_back(problem);
    if (!fields->accept(problems))
        return {};
    return typed;
}

void SkyInputs::plan()
{
    if (!recordings)
        return;
    std::vector<FieldProblem> problems;
    const Sky::SkyParameters typed = read(problems);
    if (!problems.empty()) {
        planner.stop();
        fields->showProblems(problems);
        return;
    }
    using Made = std::shared_ptr<const PlannedSky>;
    planner.start<Made>(
        [set = recordings, typed, product = analysis.product](const Jobs::Control &,
                                                              const Jobs::Deliver<Made> &deliver) {
            deliver(std::make_shared<const PlannedSky>(plannedSky(*set, typed, product)));
        },
        [this](const Made &made) { takePlan(made); });
}

void SkyInputs::takePlan(const std::shared_ptr<const PlannedSky> &made)
{
    fields->showProblems(made->plan.problems);
    if (made->plan.problems.empty()) {
        latest = made;
        fillShown(made->plan);
        if (made->plan.trials) {
            ui->foldFields->showUsed(made->plan.trials->ffa);
            ui->foldFields->tellSize(trialsText(*made->plan.trials));
        }
        ui->told->setText(costText(*made));
    } else {
        ui->told->clear();
    }
    emit planned(made);
}

void SkyInputs::fillShown(const Sky::SkyPlan &made)
{
    const QScopedValueRollback<bool> filling(isFilling, true);
    const QString ray = ui->shownRay->currentText();
    ui->shownRay->clear();
    ui->shownRay->addItem("All");
    for (const Sky::SkyRay &one : made.rays)
        ui->shownRay->addItem(QString("%1 / %2").arg(one.module).arg(one.ray));
    const int index = ui->shownRay->findText(ray);
    ui->shownRay->setCurrentIndex(index >= 0 ? index : std::min(1, ui->shownRay->count() - 1));
    fillOther();
}

// The dispersions of a map over right ascension, the stretches of one over dispersions.
void SkyInputs::fillOther()
{
    if (!latest)
        return;
    const QScopedValueRollback<bool> filling(isFilling, true);
    const Sky::SkyPlan &made = latest->plan;
    const bool overStarts = ui->over->currentIndex() != 1;
    QStringList texts = {"best of all"};
    if (overStarts) {
        for (const double dispersion : made.dispersions)
            texts << QString::number(dispersion) + " pc/cm^3";
    } else {
        for (int start = 1; start <= made.starts; ++start)
            texts << QString("stretch %1").arg(start);
    }
    const QString chosen = ui->shownOther->currentText();
    ui->shownOther->clear();
    ui->shownOther->addItems(texts);
    ui->shownOther->setCurrentIndex(std::max(0, texts.indexOf(chosen)));
    ui->shownOtherLabel->setText(overStarts ? "Dispersion" : "Stretch");
}

QString SkyInputs::costText(const PlannedSky &made) const
{
    return sizeText(made.plan) +
           QString("\nReads %1, takes %2 of memory\n"
                   "Arithmetic: %3 with all processors")
               .arg(bytesText(made.bytesRead), bytesText(made.memory), timeText(made.seconds));
}

QString SkyInputs::sizeText(const Sky::SkyPlan &plan)
{
    return QString("%1 x %2 x %3")
        .arg(ReportText::counted(plan.starts, "stretch", "es"),
             ReportText::counted(plan.rayCount(), "ray"),
             ReportText::counted(int(plan.dispersions.size()), "dispersion"));
}

std::vector<Sky::MapChoice> SkyInputs::shownMaps(const Sky::SkyPlan &plan) const
{
    Sky::MapChoice choice;
    const int other = ui->shownOther->currentIndex() - 1;
    if (ui->over->currentIndex() == 1) {
        choice.axis = Sky::MapAxis::Dispersions;
        choice.start = std::min(other, plan.starts - 1);
    } else {
        choice.dispersion = std::min(other, int(plan.dispersions.size()) - 1);
    }
    const int shown = ui->shownRay->currentIndex() - 1;
    std::vector<Sky::MapChoice> choices;
    for (int ray = 0; ray < plan.rayCount(); ++ray) {
        choice.ray = ray;
        if (shown < 0 || shown == ray)
            choices.push_back(choice);
    }
    return choices;
}

QSize SkyInputs::pictureSize() const
{
    return {pixelsIn(ui->graphWidth), pixelsIn(ui->graphHeight)};
}

void SkyInputs::showParameters(const std::vector<Results::HeaderLine> &header)
{
    Sky::SkyParameters parameters = analysis.presets;
    for (const Sky::SkyField *field : analysis.fields) {
        const QString text = Results::valueOf(header, field->key).section(' ', 0, 0);
        QWidget *const widget = FieldValues::find(this, *field);
        if (text.isEmpty() || !widget)
            continue;
        std::visit(FromText{text}, field->of(parameters));
        const FieldValue value = field->valueIn(parameters);
        if (field->isOptional && value == field->valueIn(analysis.presets))
            FieldValues::show(widget, *field, QString());
        else
            FieldValues::show(widget, *field, value);
    }
    ui->points->setCurrentText(QString::number(parameters.points));
    ui->harmonics->setCurrentText(QString::number(parameters.harmonics));
    ui->placeFields->choose(parameters);
}

// Days with what became of them, then the recordings that give none.
void SkyInputs::showDays(const Sky::SkyPlan &plan, const Sky::SkyRun *run)
{
    std::vector<DayRow> rows;
    for (const Sky::Passage &passage : plan.passages) {
        DayRow row;
        row.begin = passage.begin;
        row.isFixed = true;
        const auto held = std::count_if(passage.firstPoints.begin(), passage.firstPoints.end(),
                                        [](int point) { return point >= 0; });
        row.reason = held < plan.starts ? QString("%1 of %2 stretches").arg(held).arg(plan.starts)
                                        : QString();
        if (run) {
            const auto added = run->stack.added.find(passage.name);
            row.isOn = added != run->stack.added.end();
            if (!row.isOn)
                row.reason = "not added yet";
            for (const FieldProblem &bad : run->badPassages) {
                if (bad.field == passage.name)
                    row.reason = bad.text;
            }
        }
        rows.push_back(row);
    }
    appendLeftOut(rows, plan.leftOut, *recordings, directory);
    days->updateRows(rows);
    QString text = QString("Recordings: %1, days: %2")
                       .arg(recordings->entries.size())
                       .arg(plan.passages.size());
    if (run)
        text += QString(", added: %1").arg(run->stack.added.size());
    if (!plan.leftOut.empty())
        text += QString(", recordings left out: %1").arg(plan.leftOut.size());
    if (plan.passages.empty())
        text += ". The list says why";
    ui->daysText->setText(text);
}

void SkyInputs::tell(const QString &text)
{
    ui->told->setText(text);
}

void SkyInputs::rememberClock()
{
    ui->placeFields->rememberClock();
}
