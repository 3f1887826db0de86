#include "simulator/writedays.h"

#include "base/freeroom.h"
#include "jobs/items.h"
#include "simulator/recording.h"

#include <QDir>
#include <QFileInfo>
#include <atomic>
#include <mutex>

namespace Simulator {

namespace {

constexpr qint64 passportRoom = 4096; // bytes, more than it takes

WriteFailure madeFolder(const QString &folder)
{
    const QFileInfo info(folder);
    if (info.exists() && !info.isDir())
        return {WriteFailure::Kind::CannotCreate, folder, "it is a file, not a folder"};
    if (!QDir().mkpath(folder))
        return {WriteFailure::Kind::CannotCreate, folder, "the folder around it cannot be written"};
    return {};
}

// What the threads of one call share.
class Writing {
public:
    Writing(const DaysSimulation &simulation, const QString &path,
            const std::function<bool(int)> &heard)
        : days(simulation), folder(path), progress(heard), files(dayFiles(simulation))
    {
        written.allFiles = int(files.size());
    }

    DaysWritten write(int threads)
    {
        QStringList paths;
        qint64 bytes = 0;
        for (const DayFile &file : files) {
            paths << pathOf(file);
            Simulation s = days.recording;
            s.npoints = file.points;
            bytes += sampleBytes(s) + passportRoom;
        }
        written.failure = missingRoom(folder, bytes);
        if (!written.failure)
            written.failure = madeFolder(folder);
        if (written.failure)
            return written;
        removeAbandoned(paths);
        writeFiles(threads);
        return written;
    }

private:
    QString pathOf(const DayFile &file) const { return QDir(folder).filePath(file.name); }

    void writeFiles(int threads)
    {
        Jobs::Control control;
        control.isStopped = [this] { return hasEnded.load(); };
        control.progress = [this](int all) { percent = all; };
        const std::vector<Jobs::Ending> endings = Jobs::runItems(
            int(files.size()), threads, control, [this](int item, const Jobs::Control &own) {
                const DayFile &file = files[std::size_t(item)];
                note(writeRecording(simulationOf(days, file), pathOf(file), [&](int done) {
                    own.progress(done);
                    return goesOn();
                }));
            });
        for (const Jobs::Ending &ending : endings) {
            if (ending.kind == Jobs::Ending::Failed && !written.failure)
                written.failure = {WriteFailure::Kind::CannotWrite, folder, ending.problem};
        }
    }

    bool goesOn()
    {
        const std::lock_guard lock(mutex);
        if (progress && !progress(percent))
            hasEnded = true;
        return !hasEnded;
    }

    void note(const WriteFailure &failure)
    {
        const std::lock_guard lock(mutex);
        if (!failure) {
            ++written.files;
            return;
        }
        hasEnded = true;
        // What stopped because of a failure elsewhere does not hide that failure.
        const bool isFirst =
            !written.failure || written.failure.kind == WriteFailure::Kind::Stopped;
        if (isFirst)
            written.failure = failure;
    }

    const DaysSimulation &days;
    const QString folder;
    const std::function<bool(int)> &progress;
    const std::vector<DayFile> files;
    std::atomic<bool> hasEnded = false;
    std::atomic<int> percent = 0;
    std::mutex mutex; // of what follows, and of progress
    DaysWritten written;
};

} // namespace

DaysWritten writeDays(const DaysSimulation &days, const QString &folder,
                      const std::function<bool(int)> &progress, int threads)
{
    return Writing(days, folder, progress).write(threads);
}

} // namespace Simulator
