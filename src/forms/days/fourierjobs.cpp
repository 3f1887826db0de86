#include "forms/days/fourierjobs.h"

#include "base/systemmemory.h"
#include "jobs/items.h"
#include "results/reporttext.h"

#include <stdexcept>

// Thrown, for the worker tells it like every other lack of memory.
void checkMemory(const DaySpectra &spectra)
{
    const qint64 bytes = spectra.plan.rays * Days::analysisOf(spectra.parameters)
                                                 .bytes(spectra.parameters, spectra.plan.header,
                                                        int(spectra.plan.list.days.size()));
    constexpr double bytesPerMegabyte = 1e6;
    if (hasMemoryFor(double(bytes)))
        return;
    throw std::runtime_error(
        QString("The %1 of %2 take %3 MB, more memory than there is. Take fewer points or other "
                "rays, or average.")
            .arg(spectra.parameters.isFfa ? "periodograms" : "spectra")
            .arg(ReportText::counted(int(spectra.plan.list.days.size()), "day"))
            .arg(double(bytes) / bytesPerMegabyte, 0, 'f', 0)
            .toStdString());
}

void readSpectra(const SpectraRequest &request, const Jobs::Control &control,
                 const std::function<void(SpectraNews news)> &deliver)
{
    const auto begun = std::make_shared<DaySpectra>();
    begun->parameters = request.parameters;
    begun->plan = Days::planDays(*request.recordings, request.parameters);
    begun->kept = Days::keptFolder(request.directory);
    const std::vector<Days::Day> &days = begun->plan.list.days;
    if (begun->plan.problems.empty()) {
        begun->parameters = Days::usedParameters(request.parameters, begun->plan);
        checkMemory(*begun);
    }
    begun->rays.assign(std::size_t(begun->plan.rays), std::vector<Days::FourierDay>(days.size()));
    deliver({begun, 0, {}});
    if (!begun->plan.problems.empty())
        return;
    Jobs::runItems(int(days.size()), 0, control, [&](int item, const Jobs::Control &own) {
        const Days::Day &day = days[std::size_t(item)];
        SpectraNews news = {nullptr, item, {}};
        const Jobs::Ending ending = Jobs::runGuarded([&] {
            news.rays = Days::readRays(*request.recordings, begun->plan, day, begun->parameters,
                                       begun->kept.path, own);
        });
        if (ending.kind == Jobs::Ending::Failed) {
            news.rays.assign(std::size_t(begun->plan.rays), {});
            for (Days::FourierDay &ray : news.rays) {
                ray.begin = day.begin;
                ray.problem = ending.problem;
            }
        }
        if (!own.isStopped())
            deliver(std::move(news));
    });
}
