#include "analyses/profiles/arrivals.h"

#include "coords/barycentre.h"

#include <cmath>
#include <limits>

namespace Profiles {

namespace {

constexpr double secondsPerDay = 86400;
constexpr qint64 msPerDay = 86400000;
constexpr qint64 mjdOfUnixEpoch = 40587;
constexpr double microseconds = 1e6;

// s from the begin of the stretch to the arrival nearest to its middle.
double nearestToMiddle(const ProfileDay &product, double phase)
{
    const double middle = product.phase.at(0.5);
    const double turns = phase + std::round(middle - phase);
    return product.seconds / 2 + (turns - middle) / product.phase.frequency;
}

} // namespace

QString Arrival::utcText() const
{
    constexpr int digits = 13;
    return QString::number(utcDay) + QString::number(utcPart, 'f', digits).mid(1);
}

std::vector<Arrival> arrivalsOf(const std::vector<ProfileDay> &products, const ProfileStack &stack,
                                double beginError)
{
    std::vector<Arrival> arrivals;
    for (std::size_t i = 0; i < products.size(); ++i) {
        const StackedDay &day = stack.days[i];
        if (day.use == DayUse::Out || day.snr.boxcar.snr < leastAlignedSnr)
            continue;
        const ProfileDay &product = products[i];
        double phase = stack.pulse.phase + day.shift;
        double phaseError = day.shiftError;
        if (!std::isfinite(day.shift)) { // the only day with a pulse
            phase = stack.pulse.phase;
            phaseError = stack.pulse.phaseError;
        }
        Arrival arrival;
        arrival.day = int(i);
        const double seconds = nearestToMiddle(product, phase);
        const qint64 ms = product.utc.toMSecsSinceEpoch();
        const qint64 midnight = ms / msPerDay - (ms % msPerDay < 0 ? 1 : 0);
        const double part = (double(ms - midnight * msPerDay) / 1000 + seconds) / secondsPerDay;
        arrival.utcDay = mjdOfUnixEpoch + midnight + qint64(std::floor(part));
        arrival.utcPart = part - std::floor(part);
        arrival.barycentric = product.phase.isTurned ? double(arrival.utcDay) + arrival.utcPart +
                                                           product.phase.delay / secondsPerDay
                                                     : std::numeric_limits<double>::quiet_NaN();
        arrival.error = std::hypot(phaseError / product.phase.frequency, beginError);
        arrival.frequency = product.frequencies.back();
        arrival.snr = day.snr.boxcar.snr;
        arrivals.push_back(arrival);
    }
    return arrivals;
}

QByteArray timBytes(const std::vector<Arrival> &arrivals, const QStringList &names,
                    const QString &site)
{
    QByteArray bytes = "FORMAT 1\n";
    for (const Arrival &arrival : arrivals)
        bytes += names[arrival.day].toUtf8() + " " + QByteArray::number(arrival.frequency, 'f', 4) +
                 " " + arrival.utcText().toUtf8() + " " +
                 QByteArray::number(arrival.error * microseconds, 'f', 1) + " " + site.toUtf8() +
                 "\n";
    return bytes;
}

} // namespace Profiles
