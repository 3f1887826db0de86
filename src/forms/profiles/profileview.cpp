#include "forms/profiles/profileview.h"

#include "fields/tableview.h"
#include "forms/days/daysview.h"
#include "forms/profiles/arrivalsmodel.h"
#include "forms/profiles/profilepanel.h"
#include "forms/profiles/profiletexts.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"

#include <QHeaderView>
#include <QTabWidget>
#include <algorithm>
#include <cmath>

ProfileView::ProfileView(Plot::Scanned what, QWidget *parent)
    : QSplitter(Qt::Horizontal, parent), scanned(what), arrivalsModel(new ArrivalsModel(this))
{
    setObjectName("splitter");
    setChildrenCollapsible(false);
    auto *const middle = new QSplitter(Qt::Vertical, this);
    middle->setObjectName("pictures");
    middle->setChildrenCollapsible(false);
    picture = new DaysView(profileTexts(), middle);
    picture->setObjectName("dayPicture");
    grafik = new PulsarGrafik(middle);
    grafik->setObjectName("grafik");
    picture->setPlot(grafik);
    shareSaveFolder(grafik);
    auto *const menu = new PictureMenu(picture);
    const auto size = [this] {
        return QSize(picture->width(), picture->height() + grafik->height());
    };
    menu->setDrawing(size, [this, size](QPainter &painter) {
        if (!outcome)
            return;
        const Plot::RowPicture days = Plot::dayProfilesPicture(*outcome, size());
        Plot::drawingOf(days, size(), 1).draw(painter);
    });
    shareSaveFolder(menu);
    pages = new QTabWidget(middle);
    pages->setObjectName("pages");
    pages->setDocumentMode(true);
    buildPages();
    info = new ProfilePanel(this);
    middle->setSizes({200, 210, 230});
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);
    setSizes({640, 300});
    connectPlots();
}

PulsarGrafik *ProfileView::addPlot(const QString &name, const QString &title,
                                   const QString &toolTip)
{
    auto *const plot = new PulsarGrafik(pages);
    plot->setObjectName(name);
    shareSaveFolder(plot);
    pages->setTabToolTip(pages->addTab(plot, title), toolTip);
    return plot;
}

void ProfileView::buildPages()
{
    byDay = addPlot("dayGrafik", "S/N by day", "S/N of the best boxcar of each day alone");
    growth = addPlot("growthGrafik", "Growth",
                     "S/N of the first days in the boxcar of the average, over the root of their "
                     "number: a pulsar follows the straight line");
    const bool isPeriods = scanned == Plot::Scanned::Periods;
    trials = addPlot("scanGrafik", isPeriods ? "Periods" : "Dispersions",
                     "S/N of a pulse of the average's width over what was tried, and the cubic "
                     "through its top");
    if (isPeriods) {
        both = new OptimiseView(pages);
        both->setObjectName("optimise");
        pages->setTabToolTip(pages->addTab(both, "Optimise"),
                             "S/N over period and dispersion; a click takes the values");
    }
    arrivals = new TableView(pages);
    arrivals->setObjectName("arrivals");
    arrivals->setSelectionBehavior(QAbstractItemView::SelectRows);
    arrivals->setSelectionMode(QAbstractItemView::SingleSelection);
    arrivals->setEditTriggers(QAbstractItemView::NoEditTriggers);
    arrivals->setWordWrap(false);
    arrivals->setShowGrid(false);
    arrivals->setTabKeyNavigation(false);
    arrivals->verticalHeader()->hide();
    arrivals->showTable(arrivalsModel);
    pages->setTabToolTip(pages->addTab(arrivals, "Arrival times"),
                         "Of days with an S/N of 7 or more; the begin error is part of the error");
}

void ProfileView::connectPlots()
{
    connect(grafik, &PulsarGrafik::coordsChanged, this,
            [this](const QPointF &coords) { pointAtPhase(coords.x(), currentDay); });
    connect(picture, &DaysView::pointed, this,
            [this](int day, double index) { pointAtPhase(index, day); });
    connect(picture, &DaysView::dayClicked, this, &ProfileView::dayClicked);
    connect(byDay, &PulsarGrafik::coordsChanged, this, [this](const QPointF &coords) {
        if (!outcome || byDay->data().messageMode)
            return;
        const std::vector<int> days = Plot::daysWithProfile(*outcome);
        const int at = std::clamp(int(std::lround(coords.x())), 0, int(days.size()) - 1);
        setDay(days[std::size_t(at)]);
    });
    connect(byDay, &PulsarGrafik::clicked, this, [this] { emit dayClicked(currentDay); });
    connect(growth, &PulsarGrafik::coordsChanged, this, [this](const QPointF &coords) {
        if (outcome && !growth->data().messageMode)
            setDay(dayAtGrowth(coords.x()));
    });
    connect(growth, &PulsarGrafik::clicked, this, [this] { emit dayClicked(currentDay); });
    connect(arrivals->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &row) {
                if (row.isValid())
                    setDay(arrivalsModel->dayOf(arrivals->tableRow(row)));
            });
    if (both)
        connect(both, &OptimiseView::taken, this, &ProfileView::valuesTaken);
    connect(info, &ProfilePanel::bestWanted, this, &ProfileView::takeBest);
}

void ProfileView::showOutcome(const Products &newProducts, const Outcome &newOutcome,
                              const Profiles::ProfilePlan &plan)
{
    products = newProducts;
    outcome = newOutcome;
    const Profiles::ProfileDay *const first = Profiles::firstWhole(outcome->days());
    foldPeriod = first ? Profiles::barycentricPeriod(plan.ephemeris, *first) : 0;
    const QString result = resultText(*outcome, plan, products->kept.path);
    PlotData average = Plot::averagePlot(*outcome);
    average.source = result.split('\n');
    grafik->setData(std::move(average));
    showRows();
    byDay->setData(Plot::daysSnrPlot(*outcome));
    growth->setData(Plot::growthPlot(outcome->stack));
    arrivalsModel->setOutcome(*outcome, plan.parameters.site);
    arrivals->resizeColumnsToContents();
    showScan();
    info->setAverage(outcome->stack.profile.empty() ? nullptr : &outcome->stack.snr);
    info->setResult(result);
    if (currentDay >= int(outcome->days().size()))
        currentDay = -1;
    showDay();
}

// At the right edge stands the first bin again: a bin reaches from half before to half behind its
// place.
void ProfileView::showRows()
{
    const auto profiles = std::make_shared<std::vector<std::vector<float>>>();
    std::vector<DaysView::Row> rows;
    for (std::size_t i = 0; i < outcome->days().size(); ++i) {
        const Profiles::StackedDay &day = outcome->stack.days[i];
        if (day.profile.empty())
            continue;
        std::vector<float> &profile = profiles->emplace_back(day.profile);
        profile.push_back(profile.front());
        rows.push_back({int(i),
                        outcome->days()[i].begin,
                        {profile.data(), int(profile.size()), 1},
                        day.use != Profiles::DayUse::Out});
    }
    picture->setRows(std::move(rows), profiles);
}

void ProfileView::showScan()
{
    const Profiles::ProfileScan &scan = outcome->scan;
    const bool isThere = !scan.both.empty();
    const bool isMoved = outcome->choice.moreFrequency != 0 || outcome->choice.moreDispersion != 0;
    const Profiles::ScanCurve &curve =
        scanned == Plot::Scanned::Periods ? scan.periods : scan.dispersions;
    info->setTaking(isThere && curve.isInside, isMoved);
    if (!isThere) {
        showTrialsMessage(outcome->stack.incoherentDays > 0 ? "Trying..." : outcome->stack.problem);
        return;
    }
    trials->setData(Plot::scanPlot(scan, scanned));
    if (both)
        both->setScan(std::make_shared<const Profiles::ProfileScan>(scan), placeNow());
}

void ProfileView::showTrialsMessage(const QString &message)
{
    trials->showMessage(message);
    if (both)
        both->showMessage(message);
}

void ProfileView::stopTrials()
{
    if (outcome && outcome->scan.both.empty())
        showTrialsMessage("Stopped. Any change of the average tries again.");
}

void ProfileView::showMessage(const QString &message)
{
    products = nullptr;
    outcome = nullptr;
    currentDay = -1;
    picture->setRows({}, nullptr);
    for (PulsarGrafik *const plot : {grafik, byDay, growth})
        plot->showMessage(message);
    showTrialsMessage(message);
    arrivalsModel->clear();
    info->setAverage(nullptr);
    info->clearDay();
    info->setResult({});
    info->setCoords({});
    info->setTaking(false, false);
}

// Where the days stand now.
OptimiseView::Place ProfileView::placeNow() const
{
    const Profiles::ProfileDay *const first = Profiles::firstWhole(outcome->days());
    const double more = first ? outcome->choice.moreFrequency / first->phase.frequency : 0;
    return {foldPeriod / (1 + more),
            products->plan.folding.dispersion + outcome->choice.moreDispersion};
}

void ProfileView::takeBest()
{
    if (!outcome)
        return;
    OptimiseView::Place place = placeNow();
    if (scanned == Plot::Scanned::Periods)
        place.period = outcome->scan.periods.best;
    else
        place.dispersion = outcome->scan.dispersions.best;
    emit valuesTaken(place);
}

void ProfileView::setDay(int day)
{
    if (day == currentDay || !outcome || day >= int(outcome->days().size()))
        return;
    currentDay = day;
    showDay();
}

void ProfileView::showDay()
{
    picture->markDay(currentDay);
    const std::vector<int> days = Plot::daysWithProfile(*outcome);
    const auto at = std::find(days.begin(), days.end(), currentDay);
    mark(byDay, at == days.end() ? std::nullopt : std::optional(double(at - days.begin())));
    mark(growth, growthIndex());
    if (at == days.end()) {
        info->clearDay();
        info->setCoords({});
        return;
    }
    const auto own = std::size_t(currentDay);
    info->setDay(outcome->days()[own].begin.date().toString(Qt::ISODate),
                 outcome->stack.days[own].snr, outcome->days()[own].chiSquared);
    info->setCoords(dayText(*outcome, currentDay));
    const int row = arrivalsModel->rowOf(currentDay);
    if (row >= 0)
        arrivals->setCurrentIndex(arrivals->shownIndex(row));
    else
        arrivals->clearSelection();
}

// A line at a position of a plot; none where there is none.
void ProfileView::mark(PulsarGrafik *plot, std::optional<double> index) const
{
    if (plot->data().messageMode)
        return;
    PlotData marked = plot->data();
    marked.markers.clear();
    if (index)
        marked.markers.push_back(int(std::lround(*index)));
    if (marked.markers != plot->data().markers)
        plot->setData(std::move(marked));
}

// The last of the first days that a position of the growth stands for.
int ProfileView::dayAtGrowth(double index) const
{
    int left = Plot::daysAtGrowth(outcome->stack, index);
    for (std::size_t i = 0; i < outcome->stack.days.size(); ++i) {
        if (outcome->stack.days[i].use != Profiles::DayUse::Out && --left == 0)
            return int(i);
    }
    return -1;
}

std::optional<double> ProfileView::growthIndex() const
{
    const auto &days = outcome->stack.days;
    if (currentDay < 0 || days[std::size_t(currentDay)].use == Profiles::DayUse::Out)
        return {};
    const auto count = std::count_if(
        days.begin(), days.begin() + currentDay + 1,
        [](const Profiles::StackedDay &day) { return day.use != Profiles::DayUse::Out; });
    return Plot::growthIndexOf(outcome->stack, int(count));
}

void ProfileView::pointAtPhase(double index, int day)
{
    if (!outcome)
        return;
    setDay(day);
    const auto number = [](double value) { return QString::number(value, 'f', 2); };
    QStringList lines;
    if (currentDay >= 0)
        lines << dayText(*outcome, currentDay);
    // Behind the last bin comes the first again.
    const auto binIn = [&](const auto &profile) {
        const auto bins = int(profile.size());
        return std::size_t(std::clamp(int(std::lround(index)), 0, bins) % bins);
    };
    const auto valueIn = [&](const auto &profile) {
        return number(double(profile[binIn(profile)]));
    };
    const std::vector<double> &average = outcome->stack.profile;
    if (!average.empty())
        lines << QString("Phase %1, average %2")
                     .arg((double(binIn(average)) + 0.5) / double(average.size()), 0, 'f', 3)
                     .arg(valueIn(average));
    if (currentDay >= 0 && !outcome->stack.days[std::size_t(currentDay)].profile.empty())
        lines << "Day " + valueIn(outcome->stack.days[std::size_t(currentDay)].profile) +
                     " of its noise";
    info->setCoords(lines.join('\n'));
}
