#include "forms/profiles/profilejobs.h"

#include "base/systemmemory.h"

#include <stdexcept>

std::shared_ptr<const ProfileProducts> foldDays(const ProfileReading &reading,
                                                const Jobs::Control &control)
{
    const auto made = std::make_shared<ProfileProducts>();
    made->plan = Profiles::planProfiles(*reading.recordings, reading.parameters);
    if (!made->plan.problems.empty())
        return made;
    const qint64 bytes = Profiles::bytesOf(made->plan, 0);
    // Thrown, for the worker tells it like every other lack of memory.
    if (!hasMemoryFor(double(bytes)))
        throw std::runtime_error(
            QString("The folds of %1 days take %2, more memory than there is. Take fewer bins.")
                .arg(made->plan.days.list.days.size())
                .arg(sizeText(bytes))
                .toStdString());
    made->kept = Days::keptFolder(reading.directory);
    made->days = std::make_shared<const std::vector<Profiles::ProfileDay>>(
        Profiles::foldDays(*reading.recordings, made->plan, made->kept.path, 0, control));
    return control.isStopped() ? nullptr : made;
}
