#include "data/recordingfile.h"
#include "data/recordingset.h"
#include "jobs/items.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int files = 10000;
constexpr int bands = 32;

// A folder of recordings with a header as the telescope writes it and a few samples.
const QStringList &recordings()
{
    static const QTemporaryDir folder;
    static const QStringList paths = [] {
        QStringList made;
        for (int i = 0; i < files; ++i) {
            QByteArray lines = "npoints 1\nnbands 32\nmodulus 1 2 3 4 5 6\nrays 8\n"
                               "tresolution 12.4928\ndate_begin 01.04.2015\ntime_begin 12:00:00 "
                               "UTC\nstar_time 01:02:03\nfbands";
            for (int band = 0; band < bands; ++band)
                lines += " " + QByteArray::number(109.0 + band * 0.078125, 'f', 6);
            QFile file(folder.filePath(QString("%1.pnt").arg(i, 5, 10, QChar('0'))));
            if (!file.open(QIODevice::WriteOnly))
                qFatal("no room for the recordings");
            file.write("numpar 10\n" + lines + "\n" + QByteArray(6 * 8 * 33 * 4, '\0'));
            made << file.fileName();
        }
        return made;
    }();
    return paths;
}

// Takes the files out of the system's cache, as far as a user may.
void forget(const QStringList &paths)
{
    for (const QString &path : paths) {
        const int handle = open(QFile::encodeName(path).constData(), O_RDONLY);
        fsync(handle);
        posix_fadvise(handle, 0, 0, POSIX_FADV_DONTNEED);
        close(handle);
    }
}

void headers(benchmark::State &state)
{
    const QStringList &paths = recordings();
    const bool isCold = state.range(1) != 0;
    for (auto _ : state) {
        if (isCold) {
            state.PauseTiming();
            forget(paths);
            state.ResumeTiming();
        }
        Jobs::runItems(files, int(state.range(0)), {}, [&](int item, const Jobs::Control &) {
            RecordingFile file;
            benchmark::DoNotOptimize(file.open(paths[item]));
        });
    }
}

void wholeFolder(benchmark::State &state)
{
    const QString folder = recordings().first().section('/', 0, -2);
    for (auto _ : state)
        benchmark::DoNotOptimize(recordingsOfFolder(folder, true));
}

BENCHMARK(headers)
    ->ArgNames({"threads", "cold"})
    ->ArgsProduct({{1, 2, 8, 32}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(wholeFolder)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
