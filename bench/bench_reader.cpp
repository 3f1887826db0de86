// Reading one recording of 1 GB from the file cache into fresh memory: the reader, the plain
// way of doing it, and a limit, which is reading the file and touching as much fresh memory
// without putting any value into its place. Run the three of a shape together and compare
// their real times.

#include "data/reader.h"
#include "straightreader.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr qint64 fileBytes = qint64(1) << 30;
constexpr std::size_t blockBytes = std::size_t(4) << 20;
constexpr std::size_t hugePage = std::size_t(2) << 20;

// A recording on disk that lasts as long as the benchmarks of its shape.
class RecordingFile {
public:
    RecordingFile(int moduleCount, int rayCount, int channelCount)
        : modules(moduleCount), rays(rayCount), channels(channelCount),
          npoints(int(fileBytes / 4 / (qint64(modules) * rays * channels)))
    {
        QByteArray passport = "numpar 6\nnpoints " + QByteArray::number(npoints) + "\nnbands " +
                              QByteArray::number(channels - 1) + "\nrays " +
                              QByteArray::number(rays) + "\ntresolution 12.4928\nmodulus";
        for (int m = 1; m <= modules; ++m)
            passport += " " + QByteArray::number(m);
        passport += "\n";
        dataBegin = passport.size();

        QFile file(path());
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        file.write(passport);
        std::vector<float> values(blockBytes / sizeof(float));
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = float(i % 10007);
        for (qint64 left = qint64(npoints) * modules * rays * channels * 4; left > 0;)
            left -= file.write(reinterpret_cast<const char *>(values.data()),
                               std::min(left, qint64(blockBytes)));
        size = file.size();
    }

    QString path() const { return folder.filePath("a.pnt"); }

    const int modules;
    const int rays;
    const int channels;
    const int npoints;
    qint64 dataBegin = 0;
    qint64 size = 0;

private:
    QTemporaryDir folder;
};

// One file at a time: the next shape replaces it.
const RecordingFile &recording(const benchmark::State &state)
{
    static std::unique_ptr<RecordingFile> file;
    const int modules = int(state.range(0));
    const int rays = int(state.range(1));
    const int channels = int(state.range(2));
    if (!file || file->modules != modules || file->rays != rays || file->channels != channels) {
        file.reset();
        file = std::make_unique<RecordingFile>(modules, rays, channels);
    }
    return *file;
}

// Freeing is not reading: it stays outside the measured time, for all three alike.
template <typename Read>
void measure(benchmark::State &state, const Read &read)
{
    const RecordingFile &file = recording(state);
    for (auto _ : state) {
        auto samples = read(file);
        benchmark::DoNotOptimize(samples);
        state.PauseTiming();
        samples = decltype(samples)();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * file.size);
}

void reader(benchmark::State &state)
{
    measure(state, [](const RecordingFile &file) {
        const ObservationData data = Reader::readDataFile(nullptr, file.path());
        if (data.samples == nullptr)
            std::abort();
        return data.samples;
    });
}

void straight(benchmark::State &state)
{
    measure(state, [](const RecordingFile &file) {
        return StraightReader::read(file.path(), file.dataBegin, file.npoints, file.modules,
                                    file.rays, file.channels);
    });
}

struct Unmap {
    std::size_t bytes = 0;
    void operator()(char *memory) const { munmap(memory, bytes); }
};

void limit(benchmark::State &state)
{
    measure(state, [](const RecordingFile &file) {
        const std::unique_ptr<void, decltype(&std::free)> buffer(
            std::aligned_alloc(4096, blockBytes), &std::free);
        const int handle = open(QFile::encodeName(file.path()).constData(), O_RDONLY | O_CLOEXEC);
        while (read(handle, buffer.get(), blockBytes) > 0)
            benchmark::ClobberMemory();
        close(handle);

        const std::size_t mapped = std::size_t(file.size) + hugePage;
        void *const mapping = mmap(nullptr, mapped, PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        std::unique_ptr<char, Unmap> memory(static_cast<char *>(mapping), Unmap{mapped});
        madvise(mapping, mapped, MADV_HUGEPAGE);
        float *const first = reinterpret_cast<float *>(memory.get());
        std::fill(first, first + file.size / qint64(sizeof(float)), 1.0f);
        benchmark::ClobberMemory();
        return memory;
    });
}

void registerShapes()
{
    for (const std::vector<int64_t> &shape :
         {std::vector<int64_t>{6, 8, 33}, {1, 8, 33}, {1, 1, 513}, {1, 1, 2}, {1, 1, 1500000}}) {
        for (const auto &[name, function] :
             {std::pair("limit", &limit), std::pair("reader", &reader),
              std::pair("straight", &straight)})
            benchmark::RegisterBenchmark(name, function)
                ->Args(shape)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    registerShapes();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
