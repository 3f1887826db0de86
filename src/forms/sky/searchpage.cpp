#include "forms/sky/searchpage.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "base/timetext.h"
#include "fields/tableview.h"
#include "forms/days/stacktexts.h"
#include "forms/savefolder.h"
#include "forms/sky/candidateview.h"
#include "forms/verdictbar.h"
#include "picture/periodmarks.h"
#include "plot/pulsargrafik.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

SearchPage::SearchPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
                       QWidget *form)
    : SkyPage(skyAnalysis, path, jobs, form), splitter(new QSplitter(Qt::Horizontal)),
      model(new SkyCandidatesModel(skyAnalysis.flags.ffa, this))
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
    details = new CandidateView;
    splitter->addWidget(details);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setSizes({660, 260});
    connect(model, &SkyCandidatesModel::decided, this, &SearchPage::saveTable);
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &SearchPage::showCandidate);
    connect(&searcher, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            showError(splitter->window(), "The stacks were not searched.", ending.problem);
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

QWidget *SearchPage::makeButtons()
{
    buttons = new VerdictBar(splitter);
    connect(buttons, &VerdictBar::stepped, this, &SearchPage::step);
    connect(buttons, &VerdictBar::decided, this, &SearchPage::decide);
    connect(buttons, &VerdictBar::noteWanted, this, &SearchPage::writeNote);
    connect(buttons, &VerdictBar::saveWanted, this, &SearchPage::saveTableAs);
    return buttons;
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

// With the fields that it was made with.
void SearchPage::restoreTable()
{
    KeptTable before = newestTable(directory, analysis.flags.ffa);
    if (before.path.isEmpty())
        return;
    if (!before.table.problem.isEmpty()) {
        told->setText(before.path + ": " + before.table.problem);
        return;
    }
    inputs()->showParameters(before.table.table.request);
    showTable(std::move(before.table), before.path);
    told->setText(QString("Table of %1 from an earlier search. Compute brings its stacks back.")
                      .arg(textOfTime(before.written, "yyyy-MM-dd hh:mm")));
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
    lines << stackTexts(analysis.flags.ffa).sees;
    told->setText(lines.join('\n'));
    table->setFocus(); // not for a kept table, which comes while the user types
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
    const QString path = askSavePath(splitter, "Save table",
                                     analysis.flags.ffa ? "candidates-ffa.txt" : "candidates.txt",
                                     "Text (*.txt);;Comma separated (*.csv);;JSON (*.json)");
    if (path.isEmpty())
        return;
    const Results::Format format = Results::formatOf(QFileInfo(path).suffix());
    endSave(splitter, path, "The table was not saved.",
            writeWhole(path, bytesOf(model->table().table, format)).text());
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
    buttons->setHasCandidate(row >= 0);
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
    ShownCell cell = cellOf(outcome->run.stack, *plan, placeOf(candidate), usedLines());
    const double axis = axisOf(*plan, candidate);
    if (plan->trials)
        Plot::markPeriods(cell.plot, axis);
    const PlotAxis columns = cell.plot.x;
    const Plot::Range shown = rangeAround(columns, axis);
    grafik->setData(std::move(cell.plot));
    grafik->setVisibleX(shown.min, std::min(shown.extent(), double(grafik->data().numPoints)));
    if (!plan->trials)
        grafik->setFundamental(axis);
    details->showCandidate({outcome, plan, recordings, candidate}, columns);
}

void SearchPage::clearDetails(const QString &message)
{
    grafik->showMessage(message);
    details->showMessage(message);
}
