// Frames per second of a whole plot of noise (ground, frame, curve, texts, grid) at 1600 x 900:
// our painting, one QPainter line per segment on the same picture, and QCustomPlot. Run with
// QT_QPA_PLATFORM=offscreen.

#include "plot/plotgeometry.h"
#include "plot/plotpainter.h"
#include "plot/straightplot.h"

#include <QApplication>
#include <benchmark/benchmark.h>
#include <qcustomplot.h>
#include <random>

namespace {

const QSize frameSize(1600, 900);

PlotData noisePlot(int points)
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise;
    PlotData data;
    data.graphs.resize(1);
    for (int i = 0; i < points; ++i)
        data.graphs[0].push_back(noise(random));
    data.numPoints = points;
    const Plot::Range range = Plot::verticalRange(data);
    data.yMin = range.min;
    data.yMax = range.max;
    return data;
}

void paintPlot(benchmark::State &state)
{
    const PlotData data = noisePlot(int(state.range(0)));
    QImage straight(frameSize, QImage::Format_RGB32);
    TestSupport::paintStraight(data, {}, straight);
    QImage picture(frameSize, QImage::Format_RGB32);
    while (state.KeepRunning())
        Plot::paintPlot(data, {}, picture);
    if (picture != straight)
        state.SkipWithError("pixels differ from the straight drawing");
}

void paintStraight(benchmark::State &state)
{
    const PlotData data = noisePlot(int(state.range(0)));
    QImage picture(frameSize, QImage::Format_RGB32);
    while (state.KeepRunning())
        TestSupport::paintStraight(data, {}, picture);
}

template <typename Paint>
void customPlot(benchmark::State &state, Paint paint)
{
    const PlotData data = noisePlot(int(state.range(0)));
    QVector<double> x;
    QVector<double> y;
    for (const float sample : data.graphs[0]) {
        x.append(x.size());
        y.append(double(sample));
    }
    QCustomPlot plot;
    plot.resize(frameSize);
    plot.setViewport(QRect(QPoint(0, 0), frameSize));
    plot.addGraph();
    plot.graph(0)->setPen(QPen(QColor("#0000FF")));
    plot.graph(0)->setData(x, y, true);
    plot.rescaleAxes();
    while (state.KeepRunning())
        paint(plot);
}

// Into the buffer that its widget shows.
void customPlotReplot(benchmark::State &state)
{
    customPlot(state, [](QCustomPlot &plot) { plot.replot(QCustomPlot::rpImmediateRefresh); });
}

void customPlotPixmap(benchmark::State &state)
{
    customPlot(state, [](QCustomPlot &plot) {
        benchmark::DoNotOptimize(plot.toPixmap(frameSize.width(), frameSize.height()));
    });
}

void findRange(benchmark::State &state)
{
    const PlotData data = noisePlot(int(state.range(0)));
    while (state.KeepRunning())
        benchmark::DoNotOptimize(Plot::verticalRange(data));
}

} // namespace

BENCHMARK(paintPlot)->Arg(16384)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(paintStraight)->Arg(16384)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(customPlotReplot)->Arg(16384)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(customPlotPixmap)->Arg(16384)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(findRange)->Arg(1000000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
