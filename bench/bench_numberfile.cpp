#include "calc/seriesstatistics.h"
#include "data/numberfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cmath>

// Text files of ten million numbers, as long as the largest series of a day.

namespace {

constexpr int numbers = 10000000;

// state.range(0) numbers a line, six decimals.
void readNumberFile(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("numbers.txt");
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return state.SkipWithError("cannot write");
        for (int i = 0; i < numbers; ++i)
            file.write(QByteArray::number(std::sin(i) * 100, 'f', 6) +
                       ((i + 1) % state.range(0) == 0 ? '\n' : ' '));
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(Tools::readNumberFile(path).table.count());
    state.SetItemsProcessed(state.iterations() * numbers);
}

void statistics(benchmark::State &state)
{
    std::vector<double> values(numbers);
    for (int i = 0; i < numbers; ++i)
        values[std::size_t(i)] = std::sin(i);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Tools::seriesStatistics(values).median);
        benchmark::DoNotOptimize(Tools::histogram(values, -1, 1, 100).data());
    }
    state.SetItemsProcessed(state.iterations() * numbers);
}

BENCHMARK(readNumberFile)->Arg(1)->Arg(3)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(statistics)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
