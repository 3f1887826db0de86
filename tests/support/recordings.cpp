#include "support/recordings.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimeZone>

namespace TestSupport {

namespace {

constexpr double firstBand = 120.0;
constexpr double bandStep = 0.078125;

} // namespace

ObservationData makeRecording(const Shape &shape, const SampleFunction &sample)
{
    ObservationData data;
    data.npoints = shape.npoints;
    data.modules = shape.modules;
    data.channels = shape.channels;
    data.rays = shape.rays;
    data.tresolution = 0.0124928;
    data.beginTime = QDateTime(QDate(2015, 4, 1), QTime(12, 0), Qt::UTC);
    for (int c = 0; c < shape.channels - 1; ++c)
        data.fbands.push_back(firstBand + c * bandStep);

    const auto block =
        SampleBlock::allocate(shape.modules, shape.channels, shape.rays, shape.npoints);
    for (int m = 0; m < shape.modules; ++m)
        for (int c = 0; c < shape.channels; ++c)
            for (int r = 0; r < shape.rays; ++r)
                for (int p = 0; p < shape.npoints; ++p)
                    block->ray(m, c, r)[p] = sample(p, m, c, r);
    data.samples = Samples(block);
    return data;
}

QByteArray recordingBytes(const Shape &shape, const SampleFunction &sample)
{
    QByteArray bands = "fbands";
    for (int c = 0; c < shape.channels - 1; ++c)
        bands += " " + QByteArray::number(firstBand + c * bandStep, 'f', 6);
    QByteArray modules = "modulus";
    for (int m = 1; m <= shape.modules; ++m)
        modules += " " + QByteArray::number(m);
    QByteArray bytes = passportBytes({
        "npoints " + QByteArray::number(shape.npoints),
        "nbands " + QByteArray::number(shape.channels - 1),
        bands,
        modules,
        "rays " + QByteArray::number(shape.rays),
        "tresolution 12.4928",
        "date_begin 01.04.2015",
        "time_begin 12:00:00 UTC",
    });
    for (int p = 0; p < shape.npoints; ++p)
        for (int m = 0; m < shape.modules; ++m)
            for (int r = 0; r < shape.rays; ++r)
                for (int c = 0; c < shape.channels; ++c) {
                    const float value = sample(p, m, c, r);
                    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
                }
    return bytes;
}

QByteArray passportBytes(const QList<QByteArray> &lines)
{
    QByteArray bytes = "numpar " + QByteArray::number(lines.size() + 1) + "\n";
    for (const QByteArray &line : lines)
        bytes += line + "\n";
    return bytes;
}

QString writeFile(const QTemporaryDir &folder, const QString &name, const QByteArray &bytes)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QString realRecording(const QString &fileName)
{
    const QFileInfo file(QString(ZRT_SHARED_DATA "/") + fileName);
    return file.isReadable() ? file.filePath() : QString();
}

} // namespace TestSupport
