#pragma once

#include <QFile>
#include <QString>
#include <memory>
#include <vector>

/// The plain way to read a data section: a buffer of 4 MiB, every ray its own array in a
/// tree of arrays, one store per value.
class StraightReader {
public:
    using Rays = std::vector<std::unique_ptr<float[]>>;
    using Samples = std::vector<std::vector<Rays>>; ///< samples[module][channel][ray][point]

    /// @return what a short file lacks is undefined
    static Samples read(const QString &path, qint64 dataBegin, int npoints, int modules, int rays,
                        int channels)
    {
        Samples samples;
        samples.resize(std::size_t(modules));
        for (std::vector<Rays> &module : samples) {
            module.resize(std::size_t(channels));
            for (Rays &channel : module)
                for (int r = 0; r < rays; ++r)
                    channel.emplace_back(new float[std::size_t(npoints)]);
        }

        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || !file.seek(dataBegin))
            return samples;
        std::vector<float> buffer(1 << 20);
        const qint64 bufferBytes = qint64(4) << 20;
        std::size_t held = 0;
        std::size_t next = 0;
        for (std::size_t p = 0; p < std::size_t(npoints); ++p)
            for (std::size_t m = 0; m < std::size_t(modules); ++m)
                for (std::size_t r = 0; r < std::size_t(rays); ++r)
                    for (std::size_t c = 0; c < std::size_t(channels); ++c) {
                        if (next == held) {
                            const qint64 bytes =
                                file.read(reinterpret_cast<char *>(buffer.data()), bufferBytes);
                            if (bytes <= 0)
                                return samples;
                            held = std::size_t(bytes) / sizeof(float);
                            next = 0;
                        }
                        samples[m][c][r][p] = buffer[next++];
                    }
        return samples;
    }
};
