// How fast the series of days are made of their recordings, beside read() alone over the same
// bytes: 20 days of one ray and of eight, of which one is summed. Warm: the files are in the
// system's cache; cold: they were thrown out of it before. Compare the two of a kind, in processor
// time and in real time; run with --benchmark_enable_random_interleaving=true and some repetitions.

#include "analyses/days/daysums.h"
#include "simulator/writedays.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <map>
#include <unistd.h>

namespace {

constexpr int points = 16384;

struct Strip {
    QTemporaryDir folder;
    RecordingSet set;
    Days::DayList days;
};

// Written once for each number of rays.
const Strip &stripOf(int rays)
{
    static std::map<int, Strip> strips;
    Strip &strip = strips[rays];
    if (strip.set.entries.empty()) {
        Simulator::DaysSimulation days = Simulator::demonstrationDays();
        days.recording.rays = rays;
        days.days = 20;
        Simulator::writeDays(days, strip.folder.path());
        strip.set = recordingsOfFolder(strip.folder.path(), false);
        Days::DayChoice choice;
        choice.points = points;
        choice.pointsAfter = 1;
        choice.start.point = 500;
        strip.days = Days::findDays(strip.set, choice);
    }
    return strip;
}

int openPart(const Strip &strip, const Days::DayPart &part)
{
    const RecordingEntry &entry = Days::entryOf(strip.set, part);
    return open(QFile::encodeName(entry.path).constData(), O_RDONLY);
}

// Outside of the measured time.
void prepare(benchmark::State &state, const Strip &strip)
{
    if (state.range(1) == 0)
        return;
    state.PauseTiming();
    for (const Days::Day &day : strip.days.days) {
        for (const Days::DayPart &part : day.parts) {
            const int file = openPart(strip, part);
            fsync(file);
            posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
            close(file);
        }
    }
    state.ResumeTiming();
}

void readAlone(benchmark::State &state)
{
    const Strip &strip = stripOf(int(state.range(0)));
    std::vector<char> buffer(std::size_t(256) << 10);
    qint64 bytes = 0;
    for (auto _ : state) {
        prepare(state, strip);
        for (const Days::Day &day : strip.days.days) {
            for (const Days::DayPart &part : day.parts) {
                const RecordingEntry &entry = Days::entryOf(strip.set, part);
                const qint64 pointBytes = qint64(4) * entry.header.channels * entry.header.rays;
                const int file = openPart(strip, part);
                lseek(file, entry.size - pointBytes * (entry.header.npoints - part.first),
                      SEEK_SET);
                for (qint64 left = pointBytes * part.count; left > 0;) {
                    const qint64 got =
                        read(file, buffer.data(), std::min(std::size_t(left), buffer.size()));
                    if (got <= 0)
                        break;
                    left -= got;
                    bytes += got;
                }
                close(file);
            }
        }
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(bytes);
}

void seriesOfDays(benchmark::State &state)
{
    const Strip &strip = stripOf(int(state.range(0)));
    for (auto _ : state) {
        prepare(state, strip);
        for (const Days::Day &day : strip.days.days) {
            if (!day.parts.empty())
                benchmark::DoNotOptimize(
                    Days::sumsOfDay(strip.set, day, points, {{1, 1, 26.2}}, {}));
        }
    }
}

} // namespace

BENCHMARK(readAlone)
    ->ArgNames({"rays", "cold"})
    ->Args({1, 0})
    ->Args({8, 0})
    ->Args({1, 1})
    ->Args({8, 1})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(seriesOfDays)
    ->ArgNames({"rays", "cold"})
    ->Args({1, 0})
    ->Args({8, 0})
    ->Args({1, 1})
    ->Args({8, 1})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
