#include "forms/native/nativeview.h"

#include "calc/waterfall.h"
#include "forms/native/nativeplot.h"
#include "forms/native/nativetexts.h"
#include "forms/native/nativewaterfall.h"
#include "forms/native/overviewstrip.h"
#include "forms/savefolder.h"
#include "picture/plotgeometry.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"

#include <QScopedValueRollback>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

NativeView::NativeView(const RecordingFile &recording, QWidget *parent)
    : QWidget(parent), file(recording)
{
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    waterfall = new WaterfallView;
    plot = new PulsarGrafik;
    overview = new OverviewStrip;
    waterfall->setObjectName("waterfall");
    plot->setObjectName("grafik");
    overview->setObjectName("overview");
    waterfall->setPlot(plot);
    waterfall->setFrequencies(file.header().fbands, file.header().channels - 1);
    overview->setRecording(file.completePoints());
    layout->addWidget(waterfall, 3);
    layout->addWidget(plot, 2);
    layout->addWidget(overview);
    connectPictures();
}

void NativeView::connectPictures()
{
    shareSaveFolder(plot);
    auto *const menu = new PictureMenu(waterfall);
    menu->setDrawing([this] { return waterfall->sizeWithAxis(); },
                     [this](QPainter &painter) { waterfall->drawWithAxis(painter); });
    shareSaveFolder(menu);

    connect(plot, &PulsarGrafik::viewChanged, this, &NativeView::followView);
    connect(plot, &PulsarGrafik::selectionChanged, this, &NativeView::selectionChanged);
    connect(plot, &PulsarGrafik::partWanted, this, [this](double first, double points) {
        emit partWanted({drawn.first + first * drawn.step, points * drawn.step});
    });
    connect(overview, &OverviewStrip::rangeWanted, this, [this](double first, double points) {
        noteView();
        emit partWanted({first, points});
    });
    connect(plot, &PulsarGrafik::coordsChanged, this, [this](const QPointF &coords) {
        const double point = std::floor(drawn.first + std::floor(coords.x()) * drawn.step);
        const QString value = Plot::coordinateText(coords.y(), plot->dataPerPixel().y());
        emit pointed(NativeTexts::coordsText(file.header(), point, "value " + value));
    });
    connect(waterfall, &WaterfallView::pointed, this, [this](double point, int band, float value) {
        emit pointed(NativeTexts::bandText(file.header(), point, band, double(value)));
    });
}

void NativeView::showMessage(const QString &message)
{
    plot->showMessage(message);
}

void NativeView::draw(const Picture &newPicture, const NativeChoice &choice,
                      const NativeRange &part)
{
    if (newPicture != picture)
        means = ObservationData();
    picture = newPicture;
    chosen = choice;
    waterfall->setVisible(chosen.show == NativeShow::Waterfall);
    drawCurves(part);
    overview->setPart(visible().first, visible().points);
    drawWaterfall();
}

void NativeView::drawWhole(const NativePicture &whole, const NativeChoice &choice)
{
    const Tools::Reduction &reduction = whole.reduction;
    const int row = choice.show == NativeShow::Channel ? choice.channel : reduction.channels;
    const auto rowOf = [&](const std::vector<float> &values) {
        const auto begin = values.begin() + std::ptrdiff_t(reduction.index(row, 0));
        return std::vector<float>(begin, begin + reduction.columns);
    };
    overview->setExtremes(rowOf(reduction.low), rowOf(reduction.high));
}

// Shows the same points as before, however many curves or values there were.
void NativeView::drawCurves(const NativeRange &part)
{
    const NativeCurves before = std::move(drawn);
    drawn = nativeCurves(*picture, chosen);
    if (!drawn.problem.isEmpty()) {
        plot->showMessage(drawn.problem);
        return;
    }
    PlotData next = nativePlot(drawn, chosen, *picture, file);
    const QScopedValueRollback<bool> isSetting(isSettingData, true);
    const double first = drawn.first;
    const double step = drawn.step;
    const double firstX = (part.first - first) / step;
    const double pointsX = part.points / step;
    const PlotData &shown = plot->data();
    const bool isOtherPart = before.first != first || before.step != step;
    if (isOtherPart && !shown.messageMode && shown.yName == next.yName) {
        const Plot::IndexMap moved = {(before.first - first) / step, before.step / step};
        plot->setPart(std::move(next), moved, firstX, pointsX);
    } else {
        if (isOtherPart)
            plot->clearSelection();
        plot->setData(std::move(next));
        plot->setVisibleX(firstX, pointsX);
    }
}

// The part in sight, one column per pixel.
void NativeView::drawWaterfall()
{
    if (!picture || chosen.show != NativeShow::Waterfall)
        return;
    const bool hasSamples = bool(picture->window.samples);
    if (!hasSamples && !means.samples)
        means = Tools::recordOfMeans(picture->reduction, file.header());
    const NativeRange range = visible();
    waterfall->setPicture(nativeWaterfall(*picture, hasSamples ? picture->window : means, chosen,
                                          range, waterfall->pictureWidth()));
    waterfall->setPart(range.first, range.points);
}

NativeRange NativeView::visible() const
{
    const PulsarGrafik::VisibleRange range = plot->visibleRange();
    return {drawn.first + range.first * drawn.step, range.points * drawn.step};
}

NativeView::Part NativeView::shownPart() const
{
    const double end = drawn.first + drawn.count * drawn.step;
    NativeRange part = visible();
    const auto selected = plot->selectedRange();
    if (selected) {
        part.first = drawn.first + std::ceil(selected->x.min) * drawn.step;
        part.points = (std::floor(selected->x.max) - std::ceil(selected->x.min) + 1) * drawn.step;
    }
    const double first = std::clamp(std::floor(part.first), drawn.first, end - 1);
    const double last = std::clamp(std::ceil(part.first + part.points), first + 1, end);
    return {{first, last - first}, selected.has_value()};
}

void NativeView::followView()
{
    if (!picture || isSettingData)
        return;
    frame(visible());
    drawWaterfall();
    emit viewChanged();
}

void NativeView::goTo(const NativeRange &part)
{
    plot->setVisibleX((part.first - drawn.first) / drawn.step, part.points / drawn.step);
}

void NativeView::frame(const NativeRange &part)
{
    overview->setPart(part.first, part.points);
}

void NativeView::fitHeight()
{
    const PulsarGrafik::VisibleRange range = plot->visibleRange();
    const Plot::Range y = rangeInSight(plot->data().graphs, range.first, range.points);
    if (y.max > y.min)
        plot->setVisibleY(y.min, y.max);
}

void NativeView::noteView()
{
    plot->noteView();
}
