#include "forms/sky/searchpage.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "base/timetext.h"
#include "fields/tableview.h"
#include "forms/days/growthview.h"
#include "forms/savefolder.h"
#include "forms/sky/mapview.h"
#include "forms/sky/smallplot.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"
#include "plot/savedialog.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace {

constexpr int detailsDelay = 200; // ms
constexpr int mostProfiles = 3;
constexpr double shownHarmonics = 4.8; // of a candidate, in the plots over frequency
constexpr double fewestColumns = 256;
constexpr char tableEnd[] = "_candidates.txt";

QString tablePathOf(const SkyOutcome &made)
{
    const QFileInfo stack(Sky::stackFileName(*made.plan, 1, 1));
    return QDir(made.kept.path).filePath(stack.completeBaseName() + tableEnd);
}

// The search with the verdicts of the table that stands in its place already.
SearchFound foundBy(const SkyOutcome &made, const Sky::SkyPlan &plan,
                    const std::vector<Results::HeaderLine> &request, const RecordingSet &set,
                    const Jobs::Control &control)
{
    SearchFound found;
    found.path = tablePathOf(made);
    Sky::SkySearch search = Sky::searchSky(made.run.stack, plan, 0, control);
    if (!search.problem.isEmpty())
        found.remarks << search.problem;
    QFile older(found.path);
    if (older.open(QIODevice::ReadOnly)) {
        const Sky::CandidatesTable before = Sky::readCandidates(older.readAll(), plan);
        if (before.problem.isEmpty())
            Sky::takeVerdicts(before, plan, search);
        else
            found.remarks << found.path + ": " + before.problem;
    }
    const Results::ResultTable table =
        skyTable(set, plan, made.run, request, Sky::searchLines(search),
                 Sky::candidateColumns(search.candidates, plan));
    found.table = table.toBytes(Results::Format::Text);
    found.candidates = search.candidates;
    found.remarks += search.remarks;
    return found;
}

// A table that was read has the lines that writing adds in its header.
QByteArray bytesOf(Results::ResultTable table, Results::Format format)
{
    auto &lines = table.request;
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const Results::HeaderLine &line) {
                                   return line.key == "rows" || line.key == "columns";
                               }),
                lines.end());
    return table.toBytes(format);
}

struct DetailsRequest {
    std::shared_ptr<const SkyOutcome> made;
    std::shared_ptr<const Sky::SkyPlan> plan;
    std::shared_ptr<const RecordingSet> set;
    int row = 0;
    Sky::SkyCandidate candidate;
};

SkyPlace placeOf(const Sky::SkyCandidate &candidate)
{
    return {candidate.ray, candidate.dispersionIndex, candidate.start};
}

// First what the stacks tell, then what has to be read once more.
void findDetails(const DetailsRequest &request, const Jobs::Control &control,
                 const Jobs::Deliver<CandidateDetails> &deliver)
{
    const Sky::SkyCandidate &candidate = request.candidate;
    const Sky::SkyStack &stack = request.made->run.stack;
    CandidateDetails details;
    details.row = request.row;
    details.overDispersion = Sky::sigmaOverDispersions(stack, *request.plan, candidate);
    Sky::MapChoice choice;
    choice.ray = candidate.ray;
    choice.dispersion = candidate.dispersionIndex;
    const SkyMaps maps = mapsOf(stack, *request.plan, {choice}, control);
    if (maps.empty())
        return;
    details.map = maps.front();
    deliver(details);
    const CellDays days = readCellDays(*request.set, *request.plan, placeOf(candidate),
                                       request.plan->interference, control);
    if (control.isStopped())
        return;
    details.hasDays = true;
    details.growth = growthOf(days, candidate.telescope, candidate.harmonics);
    details.profiles = bestProfiles(*request.set, days, candidate.telescope, candidate.harmonics,
                                    mostProfiles, control);
    deliver(details);
}

// Bins of phase, those of the days beside each other.
SmallPlot::Content profileContent(const std::vector<DayProfile> &profiles)
{
    SmallPlot::Content content;
    content.title = "Profiles of the best days, sigma";
    content.xName = "phase";
    content.isSteps = true;
    std::size_t bins = 0;
    for (const DayProfile &profile : profiles) {
        bins = std::max(bins, profile.bins.size());
        content.curves.push_back({QString("%1: S/N %2")
                                      .arg(textOfTime(profile.begin, "dd.MM.yy"))
                                      .arg(profile.snr, 0, 'f', 1),
                                  profile.bins});
    }
    for (std::size_t bin = 0; bin < bins; ++bin)
        content.x.push_back(double(bin) / double(bins));
    return content;
}

} // namespace

SearchPage::SearchPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
                       QWidget *form)
    : SkyPage(skyAnalysis, path, jobs, form), splitter(new QSplitter(Qt::Horizontal)),
      model(new SkyCandidatesModel(this))
{
    splitter->setObjectName("splitter");
    splitter->setChildrenCollapsible(false);
    auto *const middle = new QSplitter(Qt::Vertical, splitter);
    middle->setChildrenCollapsible(false);
    middle->addWidget(makeTable());
    grafik = new PulsarGrafik(middle);
    grafik->setObjectName("grafik");
    shareSaveFolder(grafik);
    middle->setSizes({300, 280});
    splitter->addWidget(makeDetails());
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setSizes({660, 260});
    detailsTimer.setSingleShot(true);
    detailsTimer.setInterval(detailsDelay);
    connect(&detailsTimer, &QTimer::timeout, this, &SearchPage::readDetails);
    connect(model, &SkyCandidatesModel::decided, this, &SearchPage::saveTable);
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &SearchPage::showCandidate);
    connect(&searcher, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            showError(splitter->window(), "The stacks were not searched.", ending.problem);
    });
    connect(&reader, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            profile->showMessage(ending.problem);
    });
    showCandidate();
}

SearchPage::~SearchPage() = default;

QWidget *SearchPage::view() const
{
    return splitter;
}

QWidget *SearchPage::makeTable()
{
    auto *const part = new QWidget;
    auto *const layout = new QVBoxLayout(part);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    table = new TableView;
    table->setObjectName("candidates");
    table->showSorted(model); // as the search has them
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::DoubleClicked);
    table->setWordWrap(false);
    table->setShowGrid(false);
    table->setTabKeyNavigation(false);
    layout->addWidget(table, 1);
    layout->addWidget(makeButtons());
    told = new QLabel;
    told->setObjectName("searchText");
    told->setTextFormat(Qt::PlainText);
    told->setWordWrap(true);
    told->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(told);
    return part;
}

void SearchPage::addButton(QLayout *layout, const QString &text, const QString &toolTip,
                           const QKeySequence &key, const std::function<void()> &action)
{
    auto *const button = new QPushButton(text);
    button->setObjectName(text.toLower().section(' ', 0, 0).remove('.'));
    button->setToolTip(key.isEmpty() ? toolTip
                                     : QString("%1: key %2").arg(toolTip, key.toString()));
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(text) + 14);
    button->setFocusPolicy(Qt::TabFocus); // the table keeps the keys
    connect(button, &QPushButton::clicked, this, action);
    layout->addWidget(button);
    needRow.push_back(button);
    if (!key.isEmpty()) {
        auto *const shortcut = new QShortcut(key, splitter);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    }
}

QWidget *SearchPage::makeButtons()
{
    auto *const part = new QWidget;
    auto *const layout = new QHBoxLayout(part);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    addButton(layout, "Previous", "The candidate above", QKeySequence("P"), [this] { step(-1); });
    addButton(layout, "Next", "The candidate below", QKeySequence("N"), [this] { step(1); });
    addButton(layout, "Accept", "Accepts the candidate and goes to the next", QKeySequence("A"),
              [this] { decide(Sky::Verdict::Accept); });
    addButton(layout, "Reject", "Rejects the candidate and goes to the next", QKeySequence("R"),
              [this] { decide(Sky::Verdict::Reject); });
    addButton(layout, "Unsure", "Leaves the candidate open and goes to the next", QKeySequence("U"),
              [this] { decide(Sky::Verdict::Unsure); });
    addButton(layout, "Note...", "Writes a note on the candidate", QKeySequence("F2"),
              [this] { writeNote(); });
    addButton(layout, "Save table...", "Writes the table with verdicts and notes to another place",
              {}, [this] { saveTableAs(); });
    layout->addStretch(1);
    return part;
}

QWidget *SearchPage::makeDetails()
{
    auto *const part = new QSplitter(Qt::Vertical);
    part->setChildrenCollapsible(false);
    map = new MapView;
    map->setObjectName("map");
    overDispersion = new SmallPlot("Sigma over dispersion: choose a candidate");
    overDispersion->setObjectName("overDispersion");
    overDays = new GrowthView;
    overDays->setObjectName("overDays");
    profile = new SmallPlot("Profiles of the best days: choose a candidate");
    profile->setObjectName("profile");
    for (QWidget *const picture :
         std::initializer_list<QWidget *>{map, overDispersion, overDays, profile}) {
        part->addWidget(picture);
        shareSaveFolder(new PictureMenu(picture));
    }
    part->setSizes({170, 130, 130, 150});
    return part;
}

void SearchPage::showMessage(const QString &message)
{
    searcher.stop();
    hasStacks = false;
    told->setText(message);
    showCandidate();
}

void SearchPage::planChanged()
{
    if (!wasRestored)
        restoreTable();
    wasRestored = true;
}

// The newest table that is kept for this directory, with the fields that it was made with.
void SearchPage::restoreTable()
{
    const QDir kept(Days::keptFolder(directory).path);
    const QFileInfoList files =
        kept.entryInfoList({QString("*") + tableEnd}, QDir::Files, QDir::Time);
    if (files.isEmpty())
        return;
    QFile file(files.front().filePath());
    if (!file.open(QIODevice::ReadOnly))
        return;
    const Sky::SkyPlan none;
    Sky::CandidatesTable before = Sky::readCandidates(file.readAll(), plan ? *plan : none);
    if (!before.problem.isEmpty()) {
        told->setText(file.fileName() + ": " + before.problem);
        return;
    }
    inputs()->showParameters(before.table.request);
    showTable(std::move(before), file.fileName());
    told->setText(QString("Table of %1 from an earlier search. Compute brings its stacks back.")
                      .arg(textOfTime(files.front().lastModified(), "yyyy-MM-dd hh:mm")));
}

void SearchPage::showStacks()
{
    told->setText("Searching...");
    std::vector<Results::HeaderLine> request = requestLines();
    searcher.start<SearchFound>(
        [made = outcome, used = plan, set = recordings,
         request](const Jobs::Control &control, const Jobs::Deliver<SearchFound> &deliver) {
            deliver(foundBy(*made, *used, request, *set, control));
        },
        [this](const SearchFound &found) { takeFound(found); });
}

void SearchPage::takeFound(const SearchFound &found)
{
    Sky::CandidatesTable read = Sky::readCandidates(found.table, *plan);
    if (!read.problem.isEmpty()) {
        told->setText(read.problem);
        return;
    }
    read.candidates = found.candidates; // the table tells a part of them
    hasStacks = true;
    const auto count = read.candidates.size();
    showTable(std::move(read), found.path);
    QStringList lines = {
        QString("%1 candidates, of which noise alone is expected to give %2; %3 trials")
            .arg(count)
            .arg(plan->parameters.falseAlarms)
            .arg(Results::valueOf(model->table().table.request, "trials"))};
    lines += found.remarks;
    told->setText(lines.join('\n'));
    saveTable();
}

void SearchPage::showTable(Sky::CandidatesTable next, const QString &kept)
{
    keptPath = kept;
    model->setTable(std::move(next));
    table->resizeColumnsToContents();
    constexpr int noteLetters = 30;
    table->setColumnWidth(SkyCandidatesModel::Note,
                          noteLetters * table->fontMetrics().averageCharWidth());
    if (model->rowCount() > 0)
        table->setCurrentIndex(table->model()->index(0, 0));
    showCandidate();
    table->setFocus();
}

// Whole or not at all, after every verdict.
void SearchPage::saveTable()
{
    if (keptPath.isEmpty())
        return;
    QDir().mkpath(directoryOf(keptPath));
    const QByteArray bytes = bytesOf(model->table().table, Results::Format::Text);
    if (const WriteFailure failure = writeWhole(keptPath, bytes))
        told->setText(failure.text() + " Verdicts and notes are not kept.");
}

void SearchPage::saveTableAs()
{
    const QString path =
        Plot::askForPath(splitter, "Save table", startFolder(Settings::instance()->lastSavePath()),
                         "candidates.txt", "Text (*.txt);;Comma separated (*.csv);;JSON (*.json)");
    if (path.isEmpty())
        return;
    const QString suffix = QFileInfo(path).suffix().toLower();
    const Results::Format format = suffix == "csv"    ? Results::Format::Csv
                                   : suffix == "json" ? Results::Format::Json
                                                      : Results::Format::Text;
    if (const WriteFailure failure = writeWhole(path, bytesOf(model->table().table, format)))
        showError(splitter->window(), "The table was not saved.", failure.text());
    else
        Settings::instance()->setLastSavePath(directoryOf(path));
}

int SearchPage::chosenRow() const
{
    return table->tableRow(table->currentIndex());
}

void SearchPage::step(int way)
{
    const int row = table->currentIndex().row() + way;
    if (row >= 0 && row < model->rowCount())
        table->setCurrentIndex(table->model()->index(row, 0));
}

void SearchPage::decide(Sky::Verdict verdict)
{
    model->setVerdict(chosenRow(), verdict);
    step(1);
}

void SearchPage::writeNote()
{
    const int row = chosenRow();
    if (row < 0)
        return;
    const QModelIndex note = table->shownIndex(row).siblingAtColumn(SkyCandidatesModel::Note);
    table->scrollTo(note);
    table->edit(note);
}

// What the stacks tell is shown at once, the rest when the user stays.
void SearchPage::showCandidate()
{
    const int row = chosenRow();
    for (QWidget *const button : needRow)
        button->setEnabled(row >= 0);
    reader.stop();
    if (row < 0) {
        clearDetails(model->rowCount() > 0 ? "Choose a candidate" : "No candidates");
        return;
    }
    const Sky::SkyCandidate &candidate = model->candidates()[std::size_t(row)];
    if (!hasStacks || !outcome || candidate.ray < 0 || candidate.dispersionIndex < 0 ||
        candidate.start < 0) {
        clearDetails("Compute brings the stacks of the candidates back");
        return;
    }
    clearDetails("Reading the days...");
    ShownCell cell = cellOf(outcome->run.stack, *plan, placeOf(candidate), usedLines());
    const int points = cell.plot.numPoints;
    const double axis = axisOf(*plan, candidate);
    grafik->setData(std::move(cell.plot));
    const double column = Plot::axisIndex(grafik->data().x, axis);
    grafik->setVisibleX(0,
                        std::min(double(points), std::max(fewestColumns, shownHarmonics * column)));
    grafik->setFundamental(axis);
    detailsTimer.start();
}

void SearchPage::clearDetails(const QString &message)
{
    detailsTimer.stop();
    grafik->showMessage(message);
    map->setPicture({});
    overDispersion->showMessage(message);
    overDays->setGrowth({});
    profile->showMessage(message);
}

void SearchPage::readDetails()
{
    const int row = chosenRow();
    if (row < 0 || !outcome)
        return;
    const DetailsRequest request = {outcome, plan, recordings, row,
                                    model->candidates()[std::size_t(row)]};
    reader.start<CandidateDetails>(
        [request](const Jobs::Control &control, const Jobs::Deliver<CandidateDetails> &deliver) {
            findDetails(request, control, deliver);
        },
        [this](const CandidateDetails &details) { takeDetails(details); });
}

void SearchPage::takeDetails(const CandidateDetails &details)
{
    if (details.row != chosenRow())
        return;
    const Sky::SkyCandidate &candidate = model->candidates()[std::size_t(details.row)];
    if (details.hasDays) {
        overDays->setGrowth(details.growth);
        if (details.profiles.empty())
            profile->showMessage("No profile: no day could be folded");
        else
            profile->setContent(profileContent(details.profiles));
        return;
    }
    const double axis = axisOf(*plan, candidate);
    const double column = columnOf(*details.map, axis);
    map->setPicture(Plot::mapPicture(*plan, {details.map}));
    map->setColumns({0, std::max(fewestColumns, shownHarmonics * column)});
    map->setCell({0, candidate.start, column});
    SmallPlot::Content content;
    content.title = "Sigma over dispersion, one trial";
    content.xName = "pc/cm^3";
    content.x = plan->dispersions;
    content.curves = {{{}, details.overDispersion}};
    content.mark = candidate.dispersion.value;
    content.hasMark = std::isfinite(candidate.dispersion.value);
    overDispersion->setContent(std::move(content));
}
