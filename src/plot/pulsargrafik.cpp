#include "plot/pulsargrafik.h"

#include "picture/legend.h"
#include "picture/plotgeometry.h"
#include "picture/plotpainter.h"
#include "picture/whitenedplot.h"
#include "plot/plotlegend.h"

#include <QPainter>
#include <QResizeEvent>
#include <algorithm>
#include <utility>

namespace {

// Whether what was zoomed in the old data is the same part of the new.
bool haveSameAxes(const PlotData &a, const PlotData &b)
{
    return Plot::allOfX(a) == Plot::allOfX(b) && a.x.name == b.x.name && a.x.unit == b.x.unit &&
           a.yName == b.yName && a.yUnit == b.yUnit;
}

} // namespace

PulsarGrafik::PulsarGrafik(QWidget *parent) : QWidget(parent), legend(new PlotLegend(this))
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus); // a click brings the keys here, hovering takes none away
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    qRegisterMetaType<VisibleRange>("PulsarGrafik::VisibleRange");
    connect(legend, &PlotLegend::curveToggled, this, &PulsarGrafik::toggleCurve);
    connect(legend, &PlotLegend::stateChanged, this, &PulsarGrafik::legendChanged);
}

PulsarGrafik::~PulsarGrafik() = default;

void PulsarGrafik::replaceData(PlotData data)
{
    // The caller may hold the lock already, so may a press whose signal led here.
    const bool locked = busy.tryLock();
    if (plotData.names != data.names)
        legend->forget();
    plotData = std::move(data);
    prepareSpectrum();
    if (locked)
        busy.unlock();
}

// Whitens new data and lets Y begin where they do, as far as the user wants it.
void PulsarGrafik::prepareSpectrum()
{
    given.reset();
    const bool isSpectrum = !plotData.messageMode && Plot::isSpectrum(plotData);
    if (wantsWhitening && isSpectrum && Plot::isAmplitudeSpectrum(plotData)) {
        PlotData whitened = Plot::whitened(plotData);
        given = std::exchange(plotData, std::move(whitened));
    }
    plotData.isLogarithmic = isSpectrum && wantsLogarithm;
    plotData.yLeast = plotData.isLogarithmic ? Plot::logarithmicFloor(plotData) : 0;
    blocks = Plot::blocksOf(plotData);
}

// The same data after the user has chosen another way to show them.
void PulsarGrafik::renewSpectrum()
{
    if (given)
        plotData = std::move(*given);
    prepareSpectrum();
    zoom.y.reset();
    history.clear();
    legend->setCurvesOf(plotData);
    applyZoom(zoom);
    placeLegend();
}

void PulsarGrafik::setLogarithmic(bool logarithmic)
{
    wantsLogarithm = logarithmic;
    renewSpectrum();
}

void PulsarGrafik::setWhitened(bool whitened)
{
    wantsWhitening = whitened;
    renewSpectrum();
}

void PulsarGrafik::setData(PlotData data)
{
    const bool keepsZoom = haveSameAxes(plotData, data);
    replaceData(std::move(data));
    if (!keepsZoom) {
        history.clear();
        zoom = {};
        removeMarks();
    }
    applyZoom(zoom);
    legend->setCurvesOf(plotData);
    placeLegend();
}

void PulsarGrafik::setPart(PlotData data, const Plot::IndexMap &moved, double first, double points)
{
    const Plot::Range before = Plot::allOfX(plotData);
    replaceData(std::move(data));
    history.move(moved, before);
    marks.readOut.reset();
    pointed.setX(moved(pointed.x()));
    const Plot::Range all = Plot::allOfX(plotData);
    Plot::moveCursors(marks, moved, all);
    selected.move(moved);
    if (const auto range = selectedRange(); range && !Plot::covers(all, range->x))
        clearSelection();
    applyZoom({Plot::Range{first, first + points}, zoom.y});
    legend->setCurvesOf(plotData);
    placeLegend();
}

void PulsarGrafik::recomputeRange()
{
    const Plot::Range range = Plot::verticalRange(plotData, blocks);
    plotData.yMin = range.min;
    plotData.yMax = range.max;
    if (given) {
        const Plot::Range ofGiven = Plot::verticalRange(*given);
        given->yMin = ofGiven.min;
        given->yMax = ofGiven.max;
    }
    placeLegend();
    // A zoom into values that the curves no longer have would show nothing.
    if (zoom.y && (zoom.y->max < range.min || zoom.y->min > range.max))
        zoom.y.reset();
    applyZoom(zoom);
}

void PulsarGrafik::showMessage(const QString &message)
{
    plotData.messageMode = true;
    plotData.message = message;
    legend->hide();
    repaintPlot();
}

void PulsarGrafik::clear()
{
    showMessage(QString());
}

void PulsarGrafik::clearSelection()
{
    const bool had = selectedRange().has_value();
    selected.remove();
    update();
    if (had)
        emit selectionChanged();
}

QSize PulsarGrafik::sizeHint() const
{
    return {800, 500};
}

QSize PulsarGrafik::minimumSizeHint() const
{
    return {300, 200};
}

void PulsarGrafik::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (zoom.isNone())
        selected.anchor(view());
    else
        selected.follow(view());
    placeLegend();
}

void PulsarGrafik::paintEvent(QPaintEvent * /*event*/)
{
    if (!Plot::isPainted(size()))
        return;
    const QSize pixels = size() * devicePixelRatioF();
    if (pictureIsStale || picture.size() != pixels)
        renewPicture();
    QPainter painter(this);
    painter.drawImage(0, 0, picture);
    if (!plotData.messageMode)
        Plot::paintMarks(painter, plotData, view(), shownMarks());
    if (showsFocus) {
        painter.setPen(QPen(QColor("#0032C8"), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
    }
}

void PulsarGrafik::toggleCurve(int curve, bool visible)
{
    const QString name = plotData.names.value(curve);
    legend->remember(name, visible);
    for (PlotData *const data : {&plotData, given ? &*given : nullptr}) {
        if (!data)
            continue;
        data->visible.resize(std::max(data->visible.size(), size_t(curve) + 1), true);
        data->visible[size_t(curve)] = visible;
    }
    repaintPlot();
    emit curveToggled(name, visible);
}

void PulsarGrafik::repaintPlot()
{
    pictureIsStale = true;
    update();
}

// Curves are painted in the widget's own pixels; where the screen has finer ones they are
// enlarged, and the texts are painted on top with all the pixels there are.
void PulsarGrafik::renewPicture()
{
    const qreal ratio = devicePixelRatioF();
    pictureIsStale = false;
    if (picture.size() != size() * ratio)
        picture = QImage(size() * ratio, QImage::Format_RGB32);
    const Plot::View shown = view();
    const Plot::XAxisLabels x = Plot::xAxisOf(plotData, shown, picture);
    if (ratio == 1) {
        Plot::paintCurves(plotData, shown, blocks, x, picture);
        QPainter painter(&picture);
        Plot::paintLabels(painter, plotData, shown, x);
        return;
    }
    QImage curves(size(), QImage::Format_RGB32);
    Plot::paintCurves(plotData, shown, blocks, x, curves);
    picture.setDevicePixelRatio(ratio);
    QPainter painter(&picture);
    painter.drawImage(rect(), curves);
    Plot::paintLabels(painter, plotData, shown, x);
}

void PulsarGrafik::placeLegend()
{
    const Plot::View shown = view();
    legend->placeBeside(plotData, blocks, shown, Plot::columnsToSpare(plotData, shown, marks));
}

// Moves the legend only where it hides a marker, a cursor or a harmonic: it does not jump about
// while the user zooms.
void PulsarGrafik::keepLegendClear()
{
    const std::vector<int> columns = Plot::columnsToSpare(plotData, view(), marks);
    const QRect place = legend->geometry();
    const bool hides = std::any_of(columns.begin(), columns.end(), [&](int column) {
        return column >= place.left() && column <= place.right();
    });
    if (hides && !legend->isHidden() && !legend->wasDragged())
        placeLegend();
}

void PulsarGrafik::setLegendState(const QString &state)
{
    legend->setState(state);
    placeLegend();
}

Plot::Marks PulsarGrafik::shownMarks() const
{
    Plot::Marks shown = marks;
    shown.selection = selected.rectangle();
    return shown;
}
