#include "forms/multi/compareview.h"

#include "analyses/compare/comparetables.h"
#include "base/timetext.h"
#include "fields/tableview.h"
#include "forms/days/daysview.h"
#include "forms/multi/comparepanel.h"
#include "forms/multi/comparetexts.h"
#include "forms/multi/differencesmodel.h"
#include "forms/savefolder.h"
#include "picture/compareplot.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <algorithm>
#include <cmath>
#include <limits>

CompareView::CompareView(QWidget *parent)
    : QSplitter(Qt::Horizontal, parent), list(new DifferencesModel(this))
{
    setObjectName("splitter");
    setChildrenCollapsible(false);
    auto *const middle = new QSplitter(Qt::Vertical, this);
    middle->setObjectName("pictures");
    middle->setChildrenCollapsible(false);
    picture = new DaysView(compareTexts(), middle);
    picture->setObjectName("dayPicture");
    grafik = new PulsarGrafik(middle);
    grafik->setObjectName("grafik");
    picture->setPlot(grafik);
    info = new ComparePanel(this);
    shareSaveFolder(grafik);
    shareSaveFolder(new PictureMenu(picture));
    middle->setSizes({360, 220});
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);
    setSizes({620, 320});

    TableView *const differences = info->differences();
    differences->showSorted(list);
    differences->verticalHeader()->hide();
    connect(grafik, &PulsarGrafik::coordsChanged, this,
            [this](const QPointF &coords) { pointAt(coords.x(), -1); });
    connect(picture, &DaysView::pointed, this,
            [this](int day, double index) { pointAt(index, day); });
    connect(picture, &DaysView::dayClicked, this, &CompareView::dayClicked);
    connect(differences->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this, differences](const QModelIndex &row) {
                chooseDifference(differences->tableRow(row));
            });
    connect(differences, &QAbstractItemView::clicked, this,
            [this, differences](const QModelIndex &row) {
                openDifference(differences->tableRow(row));
            });
    connect(differences, &QAbstractItemView::activated, this,
            [this, differences](const QModelIndex &row) {
                openDifference(differences->tableRow(row));
            });
}

void CompareView::showComparison(const Products &newProducts, const Compared &newComparison,
                                 const std::vector<bool> &counts, const QString &used)
{
    products = newProducts;
    comparison = newComparison;
    counting = counts;
    PlotData mean = Plot::meanDayPlot(products->plan, *comparison);
    mean.source = used.split('\n');
    if (comparison->days > 0)
        grafik->setData(std::move(mean));
    else
        grafik->showMessage(comparison->problem);
    showRows();
    list->setComparison(products, comparison);
    TableView *const differences = info->differences();
    differences->resizeColumnsToContents();
    info->setDifferencesText(differencesText(*comparison));
    info->setUsed(used);
}

void CompareView::showMessage(const QString &message)
{
    products = nullptr;
    comparison = nullptr;
    cursorPoint = -1;
    grafik->showMessage(message);
    picture->setRows({}, nullptr);
    list->setComparison(nullptr, nullptr);
    info->setDifferencesText({});
}

void CompareView::showDifferences(bool differences)
{
    showsDifferences = differences;
    if (comparison)
        showRows();
}

// The sums of a day, or its differences where it has any.
const std::vector<float> &CompareView::rowOf(std::size_t day) const
{
    const std::vector<float> &differences = comparison->own.differences[day];
    return showsDifferences && !differences.empty() ? differences : products->days()[day].values;
}

void CompareView::showRows()
{
    std::vector<DaysView::Row> rows;
    for (std::size_t i = 0; i < products->days().size(); ++i) {
        const std::vector<float> &row = rowOf(i);
        if (!row.empty())
            rows.push_back({int(i),
                            products->plan.days.list.days[i].begin,
                            {row.data(), int(row.size()), 1},
                            counting[i]});
    }
    using Owners = std::pair<Products, Compared>;
    picture->setRows(std::move(rows), std::make_shared<const Owners>(products, comparison));
}

void CompareView::markDay(int day)
{
    picture->markDay(day);
}

void CompareView::pointAt(double index, int day)
{
    if (!comparison)
        return;
    cursorPoint = std::clamp(int(std::lround(index)), 0, products->plan.points() - 1);
    info->setCoords(coordsText(cursorPoint, day));
    emit cursorMoved();
}

QString CompareView::coordsText(int point, int day) const
{
    const auto number = [](float value) { return QString::number(double(value), 'f', 2); };
    const std::size_t place = std::size_t(point);
    QStringList lines = {QString("Point %1, sidereal time %2")
                             .arg(point)
                             .arg(Compare::siderealText(products->plan.siderealTimeAt(point))),
                         "Mean day " + number(comparison->own.median[place]) + " sigma"};
    if (day >= 0) {
        const std::size_t own = std::size_t(day);
        lines << textOfTime(products->plan.utcAt(day, point), "yyyy-MM-dd hh:mm:ss.zzz") + " UTC"
              << "Day " + number(products->days()[own].values[place]) + " sigma";
        if (!comparison->own.differences[own].empty())
            lines << "Differs by " + number(comparison->own.differences[own][place]) + " sigma";
    }
    return lines.join('\n');
}

std::vector<double> CompareView::differencesUnderCursor() const
{
    std::vector<double> values;
    for (std::size_t i = 0; comparison && i < comparison->own.differences.size(); ++i) {
        const std::vector<float> &row = comparison->own.differences[i];
        const bool isKnown =
            cursorPoint >= 0 && !row.empty() && std::isfinite(row[std::size_t(cursorPoint)]);
        values.push_back(isKnown ? double(row[std::size_t(cursorPoint)])
                                 : -std::numeric_limits<double>::infinity());
    }
    return values;
}

// Marks its place, and shows it where another part is in sight.
void CompareView::chooseDifference(int row)
{
    if (!comparison || row < 0)
        return;
    const Compare::ListedDifference &one = list->difference(row);
    PlotData marked = grafik->data();
    marked.markers = {one.first, one.first + one.width};
    grafik->setData(std::move(marked));
    const PulsarGrafik::VisibleRange shown = grafik->visibleRange();
    if (one.first < shown.first || one.first > shown.first + shown.points)
        grafik->setVisibleX(one.first - shown.points / 2, shown.points);
    picture->markDay(one.day);
    pointAt(one.first + one.width / 2, one.day);
}

void CompareView::openDifference(int row)
{
    if (!comparison || row < 0 || isLeft)
        return;
    isLeft = true; // a click may count twice, as on desktops where one activates
    const Compare::ListedDifference &one = list->difference(row);
    emit opened(one.day, one.first + one.width / 2);
}
