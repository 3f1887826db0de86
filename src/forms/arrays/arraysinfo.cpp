#include "forms/arrays/arraysinfo.h"

#include "calc/seriesstatistics.h"
#include "fields/numberbox.h"
#include "picture/plotgeometry.h"
#include "plot/pulsargrafik.h"
#include "ui_arraysinfo.h"

#include <QClipboard>
#include <QGuiApplication>
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

const QStringList rowNames = {"Count", "Mean", "Median", "Sigma", "Min", "Max"};

QStringList rowTexts(const SeriesStatistics &found)
{
    QStringList texts = {QString::number(found.count)};
    for (const double value : {found.mean, found.median, found.sigma, found.min, found.max})
        texts << ArrayPlot::numberText(value);
    return texts;
}

} // namespace

ArraysInfo::ArraysInfo(PulsarGrafik *grafik, QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::ArraysInfo>()), plot(grafik),
      axis(std::make_shared<Results::ArrayAxis>())
{
    ui->setupUi(this);
    ui->histogram->setFixedHeight(histogramHeight);
    ui->histogram->setMinimumWidth(leastWidth);
    ui->histogram->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    ui->coords->setMinimumHeight(ui->coords->fontMetrics().lineSpacing() * coordsLines);
    // The plot must not change its width with these texts.
    for (QLabel *label : {ui->coords, ui->stretch})
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    ui->table->setRowCount(rowNames.size());
    ui->table->setVerticalHeaderLabels(rowNames);
    statisticsTimer.setSingleShot(true);
    statisticsTimer.setInterval(statisticsDelay);

    connect(&statisticsTimer, &QTimer::timeout, this, &ArraysInfo::showStatistics);
    connect(ui->changePointsButton, &QPushButton::clicked, this, &ArraysInfo::changePoints);
    connect(ui->resetPointsButton, &QPushButton::clicked, this, &ArraysInfo::resetPoints);
    connect(ui->copyButton, &QPushButton::clicked, this, &ArraysInfo::copyTable);
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
ArrayPlot::Stretch ArraysInfo::visiblePoints() const
{
    const PulsarGrafik::VisibleRange range = plot->visibleRange();
    const bool isWhole = range.points >= length;
    return ArrayPlot::pointsBetween(range.first, isWhole ? length : range.first + range.points,
                                    length);
}

void ArraysInfo::showPoints()
{
    const ArrayPlot::Stretch stretch = visiblePoints();
    ui->firstPoint->setValue(stretch.first);
    ui->points->setValue(stretch.count);
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
    const ArrayPlot::Stretch part =
        selected ? ArrayPlot::pointsBetween(selected->x.min, selected->x.max, length)
                 : visiblePoints();
    const QString text = selected ? "Points %1 to %2, selected" : "Points %1 to %2";
    ui->stretch->setText(part.count > 0 ? text.arg(part.first).arg(part.first + part.count - 1)
                                        : QString());
    const int columns = std::min(int(shown.size()), mostTableColumns);
    ui->table->setColumnCount(columns);
    for (int column = 0; column < columns; ++column) {
        const ArrayPlot::Series &one = shown[std::size_t(column)];
        const SeriesStatistics found = Tools::seriesStatistics(ArrayPlot::part(one.values, part));
        auto *const header = new QTableWidgetItem(one.name);
        header->setForeground(QColor(plotColour(one.index).code));
        ui->table->setHorizontalHeaderItem(column, header);
        const QStringList texts = rowTexts(found);
        for (int row = 0; row < texts.size(); ++row) {
            auto *const item = new QTableWidgetItem(texts[row]);
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (row == 0 && found.missing > 0)
                item->setToolTip(QString("%1 values are no finite numbers").arg(found.missing));
            ui->table->setItem(row, column, item);
        }
    }
    ui->table->resizeColumnsToContents();
    ui->table->resizeRowsToContents();
    ui->table->setFixedHeight(
        ui->table->verticalHeader()->length() + ui->table->horizontalHeader()->sizeHint().height() +
        ui->table->horizontalScrollBar()->sizeHint().height() + 2 * ui->table->frameWidth());
    ui->histogram->setData(ArrayPlot::histogramPlot(shown, part, histogramBins));
}

void ArraysInfo::copyTable() const
{
    QStringList lines = {""};
    for (int column = 0; column < ui->table->columnCount(); ++column)
        lines[0] += "\t" + ui->table->horizontalHeaderItem(column)->text();
    for (int row = 0; row < ui->table->rowCount(); ++row) {
        QString line = rowNames[row];
        for (int column = 0; column < ui->table->columnCount(); ++column)
            line += "\t" + ui->table->item(row, column)->text();
        lines << line;
    }
    QGuiApplication::clipboard()->setText(lines.join("\n") + "\n");
}
