// Time until the list of all periods of a search stands laid out in the report of the calculator,
// and until it is laid out again in another width. The argument is the number of points of the
// series. Run with QT_QPA_PLATFORM=offscreen.

#include "calculators/calculators.h"

#include <QApplication>
#include <QTextBrowser>
#include <benchmark/benchmark.h>

namespace {

Calculator::Answer listOfPeriods(int64_t points)
{
    return Calculator::ffaInfo({QString::number(points), "0.01", "1", "10.0", 100, 110, 0.2, 1.5},
                               true);
}

void showPeriods(benchmark::State &state)
{
    QTextBrowser report;
    report.resize(830, 580);
    report.show();
    for (auto _ : state) {
        report.setHtml(listOfPeriods(state.range(0)).report);
        benchmark::DoNotOptimize(report.document()->size());
    }
    state.counters["rows"] = listOfPeriods(state.range(0)).outputs.value("ffa_rows").toInt();
}

void resizePeriods(benchmark::State &state)
{
    QTextBrowser report;
    report.show();
    report.setHtml(listOfPeriods(state.range(0)).report);
    int width = 800;
    for (auto _ : state) {
        report.resize(width ^= 16, 580);
        benchmark::DoNotOptimize(report.document()->size());
    }
}

} // namespace

BENCHMARK(showPeriods)->Arg(2000)->Arg(10880)->Unit(benchmark::kMillisecond);
BENCHMARK(resizePeriods)->Arg(10880)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
