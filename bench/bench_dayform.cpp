// What a day that is switched in the form over days costs, at 300 days: the stack, made beside the
// window (combine), and the pictures, painted by it (show). The argument is the number of bins. Run
// with QT_QPA_PLATFORM=offscreen.

#include "forms/days/fourierjobs.h"
#include "forms/days/spectrumview.h"

#include <QApplication>
#include <benchmark/benchmark.h>
#include <random>

namespace {

constexpr int dayCount = 300;

std::shared_ptr<DaySpectra> noiseDays(int bins)
{
    std::mt19937 random(1);
    std::exponential_distribution<float> noise;
    const auto spectra = std::make_shared<DaySpectra>();
    spectra->rays.resize(1);
    for (int i = 0; i < dayCount; ++i) {
        Days::FourierDay day;
        day.begin = QDateTime({2015, 1, 1}, {3, 0}, Qt::UTC).addMSecs(qint64(i) * 86164091);
        day.binWidth = 0.0025;
        day.sigma = 1;
        day.ratio = 1 + 1e-4 * i / dayCount;
        for (int bin = 0; bin < bins; ++bin)
            day.powers.push_back(noise(random));
        spectra->rays[0].push_back(std::move(day));
        spectra->plan.list.days.push_back({spectra->rays[0].back().begin, {}, {}});
    }
    return spectra;
}

StackRequest requestOf(const std::shared_ptr<DaySpectra> &spectra)
{
    StackRequest request;
    request.spectra = spectra;
    request.decided.assign(dayCount, true);
    request.decided[7] = false;
    return request;
}

void combine(benchmark::State &state)
{
    const StackRequest request = requestOf(noiseDays(int(state.range(0))));
    for (auto step : state)
        benchmark::DoNotOptimize(stackSpectra(request));
}

void show(benchmark::State &state)
{
    const auto spectra = noiseDays(int(state.range(0)));
    const auto outcome = stackSpectra(requestOf(spectra));
    SpectrumView view;
    view.resize(1000, 700);
    view.show();
    for (auto step : state) {
        view.showStack(SpectrumView::DayList(spectra, &spectra->days()), outcome->choice.days,
                       outcome->stack, {});
        benchmark::DoNotOptimize(view.grab());
    }
}

} // namespace

BENCHMARK(combine)->Arg(8192)->Arg(16384)->Unit(benchmark::kMillisecond);
BENCHMARK(show)->Arg(8192)->Arg(16384)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
