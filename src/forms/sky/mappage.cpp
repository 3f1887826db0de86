#include "forms/sky/mappage.h"

#include "analyses/sky/skytables.h"
#include "forms/days/stacktexts.h"
#include "forms/savefolder.h"
#include "forms/sky/cellwindow.h"
#include "forms/sky/mappanel.h"
#include "forms/sky/mapview.h"
#include "picture/periodmarks.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"
#include "plot/savedialog.h"
#include "results/reporttext.h"

#include <QScrollArea>
#include <QSplitter>
#include <cmath>

namespace {

constexpr double pointerAccuracy = 2; // pixels
constexpr int digits = 8;             // significant, of frequencies and periods

} // namespace

MapPage::MapPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
                 QWidget *form)
    : SkyPage(skyAnalysis, path, jobs, form), splitter(new QSplitter(Qt::Horizontal)),
      map(new MapView), grafik(new PulsarGrafik), panel(new MapPanel(skyAnalysis.flags.ffa))
{
    splitter->setObjectName("splitter");
    splitter->setChildrenCollapsible(false);
    auto *const pictures = new QSplitter(Qt::Vertical, splitter);
    pictures->setObjectName("pictures");
    pictures->setChildrenCollapsible(false);
    auto *const area = new QScrollArea(pictures);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(map);
    pictures->addWidget(grafik);
    splitter->addWidget(panel);
    map->setObjectName("map");
    grafik->setObjectName("grafik");
    map->setPlot(grafik);
    pictures->setSizes({340, 260});
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setSizes({640, 270});
    shareSaveFolder(grafik);
    auto *const menu = new PictureMenu(map);
    menu->setDrawing(
        [this] { return pictureSize(); },
        [this](QPainter &painter) { Plot::paintMap(painter, map->picture(), pictureSize()); });
    shareSaveFolder(menu);
    connectViews();
    map->setWantedSize(inputs()->pictureSize());
}

MapPage::~MapPage() = default;

void MapPage::connectViews()
{
    connect(map, &MapView::pointed, this, &MapPage::point);
    connect(map, &MapView::clicked, this, &MapPage::openCell);
    connect(map, &MapView::doubleClicked, this, [this](const Plot::MapPlace &place) {
        openCell(place);
        openDays();
    });
    connect(grafik, &PulsarGrafik::coordsChanged, this, [this](const QPointF &coords) {
        Plot::MapPlace place = map->cell();
        place.column = coords.x();
        if (hasCell)
            point(place);
    });
    connect(panel, &MapPanel::lineChosen, this, &MapPage::goToLine);
    connect(panel, &MapPanel::daysWanted, this, &MapPage::openDays);
    connect(panel, &MapPanel::mapWanted, this, &MapPage::saveMap);
    connect(panel, &MapPanel::pictureWanted, this, &MapPage::savePicture);
    connect(inputs(), &SkyInputs::shownChanged, this, [this] {
        if (!outcome)
            return;
        const auto next = std::make_shared<Sky::SkyPlan>(*plan);
        inputs()->readShown(next->parameters);
        plan = next;
        showStacks();
    });
    connect(inputs(), &SkyInputs::pictureSizeChanged, this, &MapPage::fitToWindow);
}

// A line out of sight comes into it with its harmonics.
void MapPage::goToLine(double bin)
{
    const double value = Plot::axisValue(grafik->data().x, bin);
    const PulsarGrafik::VisibleRange shown = grafik->visibleRange();
    if (bin < shown.first || bin > shown.first + shown.points) {
        const Plot::Range wanted = rangeAround(grafik->data().x, value);
        grafik->setVisibleX(wanted.min, wanted.extent());
    }
    if (!plan->trials) {
        grafik->setFundamental(value);
        return;
    }
    markedPeriod = value;
    markPeriod();
}

void MapPage::markPeriod()
{
    if (!markedPeriod || grafik->data().messageMode)
        return;
    PlotData plot = grafik->data();
    Plot::markPeriods(plot, *markedPeriod);
    grafik->setData(std::move(plot));
    map->update();
}

QWidget *MapPage::view() const
{
    return splitter;
}

void MapPage::fitToWindow()
{
    map->setWantedSize(inputs()->pictureSize());
}

QSize MapPage::pictureSize() const
{
    const QSize wanted = inputs()->pictureSize();
    return {wanted.width() > 0 ? wanted.width() : map->width(),
            wanted.height() > 0 ? wanted.height() : map->height()};
}

std::vector<Sky::MapChoice> MapPage::mapsMeanwhile(const Sky::SkyPlan &wanted) const
{
    return inputs()->shownMaps(wanted);
}

void MapPage::showMeanwhile(const SkyMaps &next)
{
    showMaps(next);
}

void MapPage::showMessage(const QString &message)
{
    mapper.stop();
    maps.clear();
    hasCell = false;
    markedPeriod.reset();
    map->setPicture({});
    grafik->showMessage(message);
    panel->setCell("Click a cell of the map", {});
    panel->setUsed({});
    panel->setCanSave(false);
}

// The maps of the stacks, which take seconds where the best of many dispersions is shown.
void MapPage::showStacks()
{
    if (!hasCell)
        grafik->showMessage("Making the map...");
    panel->setUsed((usedLines() << stackTexts(analysis.flags.ffa).sees).join('\n'));
    mapper.start<SkyMaps>(
        [made = outcome, used = plan, choices = inputs()->shownMaps(*plan)](
            const Jobs::Control &control, const Jobs::Deliver<SkyMaps> &deliver) {
            SkyMaps next = mapsOf(made->run.stack, *used, choices, control);
            if (next.size() == choices.size())
                deliver(std::move(next));
        },
        [this](const SkyMaps &next) {
            showMaps(next);
            panel->setCanSave(!maps.empty());
            if (!hasCell)
                chooseStrongest();
            else
                openCell(map->cell());
        });
}

void MapPage::showMaps(const SkyMaps &next)
{
    if (next.empty())
        return;
    const bool isOther = maps.size() != next.size() ||
                         maps.front()->rows.size() != next.front()->rows.size() ||
                         maps.front()->choice.axis != next.front()->choice.axis;
    maps = next;
    map->setPicture(Plot::mapPicture(*plan, maps));
    if (isOther) {
        hasCell = false;
        map->setCell({-1, 0, 0});
    }
    if (!outcome)
        grafik->showMessage("Adding up the days... The stack of a cell can be opened then");
}

void MapPage::chooseStrongest()
{
    Plot::MapPlace best{-1, 0, 0};
    float highest = -INFINITY;
    for (std::size_t i = 0; i < maps.size(); ++i) {
        const std::vector<float> &sigma = maps[i]->sigma;
        const int columns = maps[i]->columns;
        for (std::size_t at = 0; at < sigma.size(); ++at) {
            if (!(sigma[at] > highest))
                continue;
            highest = sigma[at];
            best = {int(i), int(at / std::size_t(columns)),
                    double(at % std::size_t(columns)) + 0.5};
        }
    }
    if (best.panel >= 0)
        openCell(best);
    else
        grafik->showMessage(maps.empty() ? QString() : maps.front()->problem);
}

// A pixel may hold many columns; the pointer means the highest of them.
Plot::MapPlace MapPage::highestAt(const Plot::MapPlace &place) const
{
    const Sky::SkyMap &one = *maps[std::size_t(place.panel)];
    const std::vector<QRect> areas = Plot::mapAreas(map->picture(), map->size());
    const double perPixel =
        map->picture().columns.extent() / std::max(1, areas[std::size_t(place.panel)].width());
    const double reach = std::max(0.5, pointerAccuracy * perPixel);
    const double last = one.columns - 1;
    const auto begin = int(std::clamp(std::ceil(place.column - reach), 0.0, last));
    const auto end = int(std::clamp(std::floor(place.column + reach), 0.0, last));
    const float *const row = one.sigma.data() + qint64(place.row) * one.columns;
    int best = begin;
    for (int column = begin; column <= end; ++column) {
        if (row[column] > row[best] || std::isnan(row[best]))
            best = column;
    }
    return {place.panel, place.row, double(best)};
}

SkyPlace MapPage::placeOf(const Plot::MapPlace &place) const
{
    const Sky::SkyMap &one = *maps[std::size_t(place.panel)];
    const int best =
        one.best[std::size_t(place.row) * std::size_t(one.columns) + std::size_t(place.column)];
    if (one.choice.axis == Sky::MapAxis::Starts)
        return {one.choice.ray, best, place.row};
    return {one.choice.ray, place.row, best};
}

void MapPage::point(const Plot::MapPlace &place)
{
    if (place.panel >= 0 && place.panel < int(maps.size()))
        panel->setCoords(coordsText(highestAt(place)));
}

QString MapPage::coordsText(const Plot::MapPlace &place) const
{
    const Sky::SkyMap &one = *maps[std::size_t(place.panel)];
    const double axis = one.axisAt(place.column);
    const QString unit = one.axisName.section(", ", 1);
    const bool isFrequency = unit == "Hz";
    QStringList lines = {
        QString("%1 %2 %3")
            .arg(one.axisName.section(',', 0, 0), QString::number(axis, 'g', digits), unit),
        axis > 0 ? QString("%1 %2 %3")
                       .arg(isFrequency ? "period" : "frequency",
                            QString::number(1 / axis, 'g', digits), isFrequency ? "s" : "Hz")
                 : QString()};
    const float sigma =
        one.sigma[std::size_t(place.row) * std::size_t(one.columns) + std::size_t(place.column)];
    lines << (std::isnan(sigma)
                  ? QString("not ranked")
                  : QString("%1 sigma, %2")
                        .arg(double(sigma), 0, 'f', 1)
                        .arg(ReportText::counted(one.rows[std::size_t(place.row)].days, "day")));
    return lines.join('\n') + "\n" + placeText(*plan, placeOf(place));
}

void MapPage::openCell(const Plot::MapPlace &place)
{
    if (place.panel < 0 || place.panel >= int(maps.size()))
        return;
    const Plot::MapPlace chosen = highestAt(place);
    map->setCell(chosen);
    if (!outcome)
        return;
    hasCell = true;
    const SkyPlace where = placeOf(chosen);
    ShownCell cell = cellOf(outcome->run.stack, *plan, where, usedLines());
    grafik->setData(std::move(cell.plot));
    markPeriod();
    panel->setCell(placeText(*plan, where) + "\n" + ReportText::counted(cell.days, "day"),
                   cell.lines);
    panel->setCoords(coordsText(chosen));
}

void MapPage::openDays()
{
    if (outcome && hasCell)
        new CellWindow({recordings, plan, placeOf(map->cell())}, splitter);
}

void MapPage::saveMap()
{
    if (maps.empty() || !outcome)
        return;
    const Sky::SkyMap &one = *maps[std::size_t(std::max(0, map->cell().panel))];
    const Sky::SkyRay &ray = plan->rays[std::size_t(one.choice.ray)];
    const QString name =
        QString("m%1_r%2%3").arg(ray.module).arg(ray.ray).arg(plan->trials ? "-ffa" : "");
    const QString path = askSavePath(splitter, "Save map", Sky::mapFileName(*plan, one, name),
                                     "Result file (*.txt)");
    if (path.isEmpty())
        return;
    const Results::ResultTable table = skyTable(*recordings, *plan, outcome->run, requestLines(),
                                                Sky::mapLines(one, *plan), Sky::mapColumns(one));
    endSave(splitter, path, "The map was not saved.",
            writeWhole(path, table.toBytes(Results::Format::Text)).text());
}

void MapPage::savePicture()
{
    if (maps.empty())
        return;
    const QString path = askSavePath(splitter, "Save picture", "map.png", Plot::pictureFilters);
    if (path.isEmpty())
        return;
    endSave(
        splitter, path, "The picture was not saved.",
        Plot::saveDrawing(path, Plot::mapDrawing(map->picture(), pictureSize(), Plot::printScale)));
}
