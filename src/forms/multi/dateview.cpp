#include "forms/multi/dateview.h"

#include "analyses/compare/comparetables.h"
#include "calc/waterfall.h"
#include "forms/native/waterfallview.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"
#include "ui_datepanel.h"

#include <algorithm>
#include <cmath>

DateView::DateView(QWidget *parent) : QSplitter(Qt::Horizontal, parent), ui(new Ui::DatePanel)
{
    setObjectName("splitter");
    setChildrenCollapsible(false);
    auto *const middle = new QSplitter(Qt::Vertical, this);
    middle->setObjectName("pictures");
    middle->setChildrenCollapsible(false);
    waterfall = new WaterfallView(middle);
    waterfall->setObjectName("waterfall");
    grafik = new PulsarGrafik(middle);
    grafik->setObjectName("grafik");
    waterfall->setPlot(grafik);
    panel = new QWidget(this);
    ui->setupUi(panel);
    constexpr int coordsLines = 5;
    ui->coords->setMinimumHeight(coordsLines * fontMetrics().lineSpacing());
    shareSaveFolder(grafik);
    auto *const menu = new PictureMenu(waterfall);
    menu->setDrawing([this] { return waterfall->sizeWithAxis(); },
                     [this](QPainter &painter) { waterfall->drawWithAxis(painter); });
    shareSaveFolder(menu);
    middle->setSizes({240, 320});
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);
    setSizes({620, 240});

    connect(grafik, &PulsarGrafik::viewChanged, this, &DateView::showPart);
    connect(grafik, &PulsarGrafik::selectionChanged, this, &DateView::showPart);
    connect(grafik, &PulsarGrafik::coordsChanged, this,
            [this](const QPointF &coords) { pointAt(coords.x(), {}); });
    connect(waterfall, &WaterfallView::pointed, this, [this](double point, int band, float value) {
        QString channel = QString("channel %1").arg(band + 1);
        if (plan && std::size_t(band) < plan->list.fbands.size())
            channel += QString(", %1 MHz").arg(plan->list.fbands[std::size_t(band)]);
        pointAt(point, channel + QString(", %1 sigma").arg(double(value), 0, 'f', 2));
    });
}

DateView::~DateView() = default;

void DateView::showStretch(const std::shared_ptr<const DateStretch> &newStretch,
                           const std::shared_ptr<const Days::DayPlan> &newPlan,
                           const QStringList &used)
{
    if (!newStretch->problem.isEmpty()) {
        showMessage(newStretch->problem);
        return;
    }
    stretch = newStretch;
    plan = newPlan;
    waterfall->setFrequencies(plan->list.fbands, stretch->samples.channels - 1);
    grafik->setData(datePlot(*stretch, *plan, used));
    QStringList lines = used;
    if (!stretch->remark.isEmpty())
        lines << stretch->remark;
    ui->used->setText(lines.join('\n'));
    showPart();
}

void DateView::showMessage(const QString &message)
{
    stretch = nullptr;
    grafik->showMessage(message);
    waterfall->setPicture({});
    ui->statistics->clear();
    ui->coords->clear();
}

// Statistics and waterfall of what is in sight.
void DateView::showPart()
{
    if (!stretch)
        return;
    const PulsarGrafik::VisibleRange shown = grafik->visibleRange();
    double first = shown.first;
    double points = shown.points;
    const auto selected = grafik->selectedRange();
    if (selected) {
        first = selected->x.min;
        points = selected->x.max - selected->x.min;
    }
    ui->statistics->setText(dateStatistics(*stretch, int(std::floor(first)),
                                           std::max(1, int(std::ceil(points))),
                                           selected.has_value(), plan->list.tresolution));
    showWaterfall();
}

void DateView::showWaterfall()
{
    const PulsarGrafik::VisibleRange shown = grafik->visibleRange();
    waterfall->setPart(shown.first, shown.points);
    const int points = int(stretch->sums.size());
    const int begin = std::clamp(int(std::floor(shown.first)), 0, points - 1);
    const int end = std::clamp(int(std::ceil(shown.first + shown.points)), begin + 1, points);
    WaterfallView::Picture picture;
    picture.rows = stretch->samples.channels - 1;
    picture.columns = std::min(end - begin, waterfall->pictureWidth());
    picture.first = begin;
    picture.points = end - begin;
    picture.values =
        Tools::waterfall(stretch->samples, {0, 0, stretch->before + begin, end - begin,
                                            picture.columns, plan->series.front().dispersion});
    if (picture.values.empty())
        picture.columns = 0;
    else
        Tools::normaliseRows(picture.values, picture.rows, picture.columns);
    waterfall->setPicture(std::move(picture));
}

void DateView::pointAt(double point, const QString &value)
{
    if (!stretch)
        return;
    const int index = std::clamp(int(std::lround(point)), 0, int(stretch->sums.size()) - 1);
    const PlotData &curves = grafik->data();
    QStringList lines = {
        QString("point %1, %2 s").arg(index).arg(index * plan->list.tresolution, 0, 'f', 4),
        QString("sum %1, less base line %2")
            .arg(stretch->sums[std::size_t(index)], 0, 'g', 7)
            .arg(stretch->sums[std::size_t(index)] - stretch->baseline[std::size_t(index)], 0, 'g',
                 4),
        "UTC " + curves.textX2(index), "sidereal " + curves.textX3(index)};
    if (!value.isEmpty())
        lines << value;
    ui->coords->setText(lines.join('\n'));
}
