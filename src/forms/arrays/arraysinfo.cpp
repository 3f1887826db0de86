#include "forms/arrays/arraysinfo.h"

#include "calc/seriesstatistics.h"
#include "fields/numberbox.h"
#include "forms/arrays/statisticsmodel.h"
#include "picture/plotgeometry.h"
#include "plot/pulsargrafik.h"
#include "ui_arraysinfo.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <cmath>

namespace {

constexpr int coordsLines = 3;
constexpr int histogramBins = 100;
constexpr int histogramHeight = 150;  // pixels
constexpr int leastWidth = 260;       // pixels
constexpr int mostTableColumns = 100; // curves with statistics
constexpr int statisticsDelay = 50;   // ms

} // namespace

ArraysInfo::ArraysInfo(PulsarGrafik *grafik, QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::ArraysInfo>()), plot(grafik),
      statistics(new StatisticsModel(this)), axis(std::make_shared<Results::ArrayAxis>())
{
    ui->setupUi(this);
    ui->histogram->setFixedHeight(histogramHeight);
    ui->histogram->setMinimumWidth(leastWidth);
    ui->histogram->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    ui->coords->setMinimumHeight(ui->coords->fontMetrics().lineSpacing() * coordsLines);
    // The plot must not change its width with these texts.
    for (QLabel *label : {ui->coords, ui->stretch})
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    ui->table->showTable(statistics);
    ui->table->setCopiesRowTitles(true);
    statisticsTimer.setSingleShot(true);
    statisticsTimer.setInterval(statisticsDelay);

    connect(&statisticsTimer, &QTimer::timeout, this, &ArraysInfo::showStatistics);
    connect(ui->changePointsButton, &QPushButton::clicked, this, &ArraysInfo::changePoints);
    connect(ui->resetPointsButton, &QPushButton::clicked, this, &ArraysInfo::resetPoints);
    connect(ui->copyButton, &QPushButton::clicked, ui->table, &TableView::copy);
    connect(plot, &PulsarGrafik::coordsChanged, this, &ArraysInfo::setCoords);
    connect(plot, &PulsarGrafik::viewChanged, this, &ArraysInfo::showPoints);
    connect(plot, &PulsarGrafik::selectionChanged, &statisticsTimer, qOverload<>(&QTimer::start));
    connect(ui->histogram, &PulsarGrafik::coordsChanged, this,
            [this](const QPointF &coords, const QVector<QString> &labels) {
                setCoordsText(QString("Histogram\nvalue: %1\nnumber: %2")
                                  .arg(labels.value(0))
                                  .arg(std::lround(coords.y())));
            });
}

ArraysInfo::~ArraysInfo() = default;

void ArraysInfo::setSeries(std::vector<ArrayPlot::Series> series, Results::ArrayAxis x,
                           const QStringList &source)
{
    shown = std::move(series);
    axis = std::make_shared<const Results::ArrayAxis>(std::move(x));
    length = ArrayPlot::longest(shown);
    ui->firstPoint->setMaximum(std::max(0, length - 1));
    ui->points->setMaximum(std::max(1, length));
    if (shown.empty()) {
        plot->showMessage("No curve is checked");
    } else {
        PlotData curves = ArrayPlot::plot(shown, axis);
        curves.source = source;
        plot->setData(std::move(curves));
    }
    showPoints();
}

void ArraysInfo::setPointsEnabled(bool enabled)
{
    ui->groupBox_points->setEnabled(enabled);
}

void ArraysInfo::setReport(const QStringList &lines)
{
    ui->texts->setPlainText(lines.join("\n"));
}

void ArraysInfo::setCoordsText(const QString &text)
{
    ui->coords->setText(text);
}

void ArraysInfo::changePoints()
{
    if (Fields::refuseUnread(ui->groupBox_points))
        return;
    plot->setVisibleX(ui->firstPoint->value(), ui->points->value());
    showPoints();
}

void ArraysInfo::resetPoints()
{
    plot->showAll();
}

// A curve's last point stands a step before the right edge.
ArrayPlot::IndexRange ArraysInfo::visiblePoints() const
{
    const PulsarGrafik::VisibleRange range = plot->visibleRange();
    const bool isWhole = range.points >= length;
    return ArrayPlot::pointsBetween(range.first, isWhole ? length : range.first + range.points,
                                    length);
}

void ArraysInfo::showPoints()
{
    const ArrayPlot::IndexRange visible = visiblePoints();
    ui->firstPoint->setValue(visible.first);
    ui->points->setValue(visible.count);
    statisticsTimer.start();
}

void ArraysInfo::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto *const button = qobject_cast<QPushButton *>(focusWidget());
    if (isEnter && button)
        button->click();
    else if (isEnter && ui->groupBox_points->isAncestorOf(focusWidget()))
        changePoints();
    else
        QWidget::keyPressEvent(event);
}

void ArraysInfo::setCoords(QPointF coords, const QVector<QString> &labels)
{
    const QPointF perPixel = plot->dataPerPixel();
    QString text = QString("Point: %1   Y: %2")
                       .arg(int(coords.x()))
                       .arg(Plot::coordinateText(coords.y(), perPixel.y()));
    if (!axis->isIndex())
        text += "\n" + axis->name + ": " + labels.value(0);
    const auto index = std::size_t(std::max(0.0, coords.x()));
    if (shown.size() == 1 && index < shown[0].values.size())
        text += "\nValue: " + ArrayPlot::numberText(shown[0].values[index]);
    setCoordsText(text);
}

void ArraysInfo::showStatistics()
{
    const auto selected = plot->selectedRange();
    const ArrayPlot::IndexRange part =
        selected ? ArrayPlot::pointsBetween(selected->x.min, selected->x.max, length)
                 : visiblePoints();
    const QString text = selected ? "Points %1 to %2, selected" : "Points %1 to %2";
    ui->stretch->setText(part.count > 0 ? text.arg(part.first).arg(part.first + part.count - 1)
                                        : QString());
    std::vector<StatisticsModel::Curve> curves;
    for (const ArrayPlot::Series &one : shown) {
        if (int(curves.size()) < mostTableColumns)
            curves.push_back(
                {one.name, one.index, Tools::seriesStatistics(ArrayPlot::part(one.values, part))});
    }
    statistics->setCurves(std::move(curves));
    ui->table->resizeColumnsToContents();
    ui->table->resizeRowsToContents();
    ui->table->setFixedHeight(
        ui->table->verticalHeader()->length() + ui->table->horizontalHeader()->sizeHint().height() +
        ui->table->horizontalScrollBar()->sizeHint().height() + 2 * ui->table->frameWidth());
    ui->histogram->setData(ArrayPlot::histogramPlot(shown, part, histogramBins));
}
