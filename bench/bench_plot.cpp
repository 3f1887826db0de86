// Time of a whole plot of noise (ground, frame, curve, texts, grid) at 1600 x 900: our painting
// with and without the extremes of blocks, one QPainter line per segment on the same picture, and
// QCustomPlot where it is installed. The second argument is the part of the points that is shown,
// in thousandths. Run with QT_QPA_PLATFORM=offscreen; moveWindow means most on a display.

#include "picture/plotgeometry.h"
#include "picture/plotpainter.h"
#include "picture/straightplot.h"
#include "plot/pulsargrafik.h"

#include <QApplication>
#include <QWindow>
#include <benchmark/benchmark.h>
#include <cmath>
#include <random>
#ifdef ZRT_BENCH_QCUSTOMPLOT
#include <qcustomplot.h>
#endif

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

// The middle of the plot.
Plot::Zoom part(const PlotData &data, int64_t thousandths)
{
    if (thousandths >= 1000)
        return {};
    const double shown = data.numPoints * double(thousandths) / 1000;
    const double first = (data.numPoints - shown) / 2;
    return {Plot::Range{first, first + shown}, {}};
}

void paint(benchmark::State &state, bool withBlocks)
{
    const PlotData data = noisePlot(int(state.range(0)));
    const Plot::Zoom zoom = part(data, state.range(1));
    const Plot::CurveBlocks blocks = withBlocks ? Plot::blocksOf(data) : Plot::CurveBlocks();
    QImage straight(frameSize, QImage::Format_RGB32);
    TestSupport::paintStraight(data, zoom, {}, straight);
    QImage picture(frameSize, QImage::Format_RGB32);
    while (state.KeepRunning())
        Plot::paintPlot(data, zoom, blocks, picture);
    if (picture != straight)
        state.SkipWithError("pixels differ from the straight drawing");
}

void paintPlot(benchmark::State &state)
{
    paint(state, true);
}

void paintWithoutBlocks(benchmark::State &state)
{
    paint(state, false);
}

void paintStraight(benchmark::State &state)
{
    const PlotData data = noisePlot(int(state.range(0)));
    const Plot::Zoom zoom = part(data, state.range(1));
    QImage picture(frameSize, QImage::Format_RGB32);
    while (state.KeepRunning())
        TestSupport::paintStraight(data, zoom, {}, picture);
}

// A plot in a window that moves by a pixel from frame to frame, showing half of its points.
void moveWindow(benchmark::State &state)
{
    PulsarGrafik plot;
    plot.resize(frameSize);
    plot.setData(noisePlot(int(state.range(0))));
    plot.show();
    while (!plot.windowHandle()->isExposed())
        QApplication::processEvents();
    const double points = double(state.range(0));
    double first = 0;
    while (state.KeepRunning()) {
        first = std::fmod(first + points / 2 / frameSize.width(), points / 2);
        plot.setVisibleX(first, points / 2);
        plot.repaint();
    }
}

void findBlocks(benchmark::State &state)
{
    const PlotData data = noisePlot(int(state.range(0)));
    while (state.KeepRunning())
        benchmark::DoNotOptimize(Plot::blocksOf(data));
}

#ifdef ZRT_BENCH_QCUSTOMPLOT
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
#endif

void findRange(benchmark::State &state)
{
    const PlotData data = noisePlot(int(state.range(0)));
    while (state.KeepRunning())
        benchmark::DoNotOptimize(Plot::verticalRange(data));
}

} // namespace

void views(benchmark::internal::Benchmark *bench)
{
    for (const int points : {16384, 300000, 1000000, 3000000, 10000000})
        for (const int thousandths : {1000, 100, 1})
            bench->Args({points, thousandths});
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(paintPlot)->Apply(views);
BENCHMARK(paintWithoutBlocks)->Apply(views);
BENCHMARK(paintStraight)->Apply(views);
BENCHMARK(moveWindow)->Arg(1000000)->Arg(3000000)->Arg(10000000)->Unit(benchmark::kMillisecond);
BENCHMARK(findBlocks)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kMillisecond);
#ifdef ZRT_BENCH_QCUSTOMPLOT
BENCHMARK(customPlotReplot)->Arg(16384)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(customPlotPixmap)->Arg(16384)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond);
#endif
BENCHMARK(findRange)->Arg(1000000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
