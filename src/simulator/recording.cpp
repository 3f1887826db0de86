#include "simulator/recording.h"

#include "base/freeroom.h"
#include "base/numbertext.h"
#include "base/timetext.h"
#include "coords/site.h"
#include "data/recordingtime.h"
#include "data/recordingwriter.h"
#include "simulator/samplesource.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr qint64 floatsPerBlock = qint64(1) << 18;

int pointsPerBlock(const Simulation &simulation)
{
    return int(std::max<qint64>(1, floatsPerBlock / floatsPerPoint(simulation)));
}

} // namespace

// Greenwich at 0h UT: 24110.54841 s + 8640184.812866 T + 0.093104 T^2, T in Julian centuries
// from 2000 January 1, 12h UT.
QString siderealTime(const QDateTime &utc)
{
    constexpr double daySeconds = 86400;
    const double days = double(utc.date().toJulianDay() - 2451545) - 0.5;
    const double t = days / 36525;
    const double seconds = 24110.54841 + 8640184.812866 * t + 0.093104 * t * t +
                           QTime(0, 0).secsTo(utc.time()) * siderealRate +
                           Tools::Site::eastLongitude * 3600;
    const int whole = int(seconds - daySeconds * std::floor(seconds / daySeconds));
    return QString("%1:%2:%3").arg(whole / 3600).arg(whole / 60 % 60).arg(whole % 60);
}

QByteArray passport(const Simulation &s)
{
    QStringList bands;
    for (const double frequency : s.fbands)
        bands << exactText(frequency);
    QStringList modules;
    for (int module = 0; module < s.modules; ++module)
        modules << QString::number(s.firstModule + module);
    const QDateTime begin = s.beginTime;
    const QDateTime end = begin.addMSecs(qint64(s.npoints * s.msPerPoint));

    const QStringList lines = {
        "npoints " + QString::number(s.npoints),
        "nbands " + QString::number(s.fbands.size()),
        "fbands " + bands.join(' '),
        "modulus " + modules.join(' '),
        "rays " + QString::number(s.rays),
        "tresolution " + exactText(s.msPerPoint),
        "date_begin " + textOfTime(begin, "dd.MM.yyyy"),
        "time_begin " + textOfTime(begin, "h:mm:ss") + " UTC",
        "date_end " + textOfTime(end, "dd.MM.yyyy"),
        "time_end " + textOfTime(end, "h:mm:ss") + " UTC",
        "star_time " + siderealTime(begin),
        "source simulated, seed " + QString::number(s.seed),
    };
    return passportText(lines);
}

WriteFailure writeRecording(const Simulation &simulation, const QString &path,
                            const std::function<bool(int)> &progress)
{
    const QByteArray header = passport(simulation);
    if (WriteFailure failure = missingRoom(path, header.size() + sampleBytes(simulation)))
        return failure;
    RecordingWriter writer;
    if (WriteFailure failure = writer.open(path, header))
        return failure;

    SampleSource source(simulation);
    const int blockPoints = pointsPerBlock(simulation);
    const qint64 stride = floatsPerPoint(simulation);
    std::vector<float> block(std::size_t(blockPoints * stride));
    int percent = -1;
    for (int point = 0; point < simulation.npoints;) {
        const int count = std::min(blockPoints, simulation.npoints - point);
        source.read(block.data(), count);
        if (WriteFailure failure = writer.write(block.data(), count * stride))
            return failure;
        point += count;
        const int reached = int(qint64(point) * 100 / simulation.npoints);
        if (progress && reached != percent && !progress(percent = reached))
            return {WriteFailure::Kind::Stopped, path, {}};
    }
    return writer.commit();
}

ObservationData makeRecording(const Simulation &simulation)
{
    ObservationData data;
    if (!refusal(simulation).isEmpty())
        return data;
    const int channels = int(simulation.fbands.size()) + 1;
    const auto samples =
        SampleBlock::allocate(simulation.modules, channels, simulation.rays, simulation.npoints);
    if (!samples)
        return data;
    data.npoints = simulation.npoints;
    data.modules = simulation.modules;
    data.channels = channels;
    data.rays = simulation.rays;
    data.firstModule = simulation.firstModule;
    for (int module = 0; module < simulation.modules; ++module)
        data.moduleNumbers.push_back(simulation.firstModule + module);
    data.tresolution = simulation.msPerPoint / 1000.0;
    data.sampleFactor = 0.89;
    data.sampleMarker = -1.0;
    data.beginTime = simulation.beginTime;
    data.starTime = siderealTime(simulation.beginTime);
    data.fbands = simulation.fbands;

    SampleSource source(simulation);
    const int blockPoints = pointsPerBlock(simulation);
    std::vector<float> block(std::size_t(blockPoints * floatsPerPoint(simulation)));
    for (int point = 0; point < simulation.npoints;) {
        const int count = std::min(blockPoints, simulation.npoints - point);
        source.read(block.data(), count);
        const float *value = block.data();
        for (const int end = point + count; point < end; ++point)
            for (int module = 0; module < data.modules; ++module)
                for (int ray = 0; ray < data.rays; ++ray)
                    for (int channel = 0; channel < channels; ++channel)
                        samples->ray(module, channel, ray)[point] = *value++;
    }
    data.samples = Samples(samples);
    return data;
}

} // namespace Simulator
