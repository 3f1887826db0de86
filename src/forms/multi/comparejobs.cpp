#include "forms/multi/comparejobs.h"

#include "base/systemmemory.h"
#include "jobs/items.h"

#include <stdexcept>

namespace {

constexpr double bytesPerMegabyte = 1e6;

// Thrown, for the worker tells it like every other lack of memory.
void checkMemory(const Compare::ComparePlan &plan)
{
    const qint64 bytes = Compare::bytesOf(plan);
    if (hasMemoryFor(double(bytes)))
        return;
    throw std::runtime_error(QString("The sums of %1 days take %2 MB, more memory than there is. "
                                     "Take fewer points or other rays.")
                                 .arg(plan.days.list.days.size())
                                 .arg(double(bytes) / bytesPerMegabyte, 0, 'f', 0)
                                 .toStdString());
}

} // namespace

std::shared_ptr<const Compare::CompareProducts> readDays(const CompareReading &reading,
                                                         const Jobs::Control &control)
{
    const auto made = std::make_shared<Compare::CompareProducts>();
    made->plan = Compare::planCompare(*reading.recordings, reading.parameters);
    made->parameters = reading.parameters;
    made->kept = Days::keptFolder(reading.directory);
    if (!made->plan.days.problems.empty())
        return made;
    made->parameters = Compare::usedParameters(reading.parameters, made->plan);
    checkMemory(made->plan);
    const std::size_t days = made->plan.days.list.days.size();
    made->rays.assign(std::size_t(made->plan.days.rays), std::vector<Compare::CompareDay>(days));
    const auto endings =
        Jobs::runItems(int(days), 0, control, [&](int item, const Jobs::Control &own) {
            std::vector<Compare::CompareDay> rays = Compare::readDay(
                *reading.recordings, made->plan, item, made->parameters, made->kept.path, own);
            for (std::size_t ray = 0; ray < rays.size(); ++ray)
                made->rays[ray][std::size_t(item)] = std::move(rays[ray]);
        });
    for (std::size_t i = 0; i < endings.size(); ++i) {
        if (endings[i].kind == Jobs::Ending::Failed)
            made->rays.front()[i].problem = endings[i].problem;
    }
    return control.isStopped() ? nullptr : made;
}
