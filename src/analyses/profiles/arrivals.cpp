#include "analyses/profiles/arrivals.h"

#include "coords/barycentre.h"

#include <cmath>

namespace Profiles {

namespace {

constexpr double secondsPerDay = 86400;
constexpr qint64 msPerDay = 86400000;
constexpr qint64 mjdOfUnixEpoch = 40587;
constexpr double microseconds = 1e6;

// s by which the pulse at the mean delay of the bands is later than in the reference band. There,
// an error of the dispersion does not move the sum of the bands.
double meanDelay(const ProfileDay &product, double dispersion)
{
    double sum = 0;
    for (int band = 0; band < product.bands(); ++band) {
        if (product.used[std::size_t(band)])
            sum += delayPerDispersion(product, band);
    }
    return dispersion * sum / product.usedBands();
}

// MHz of the same delay.
double meanFrequency(const ProfileDay &product)
{
    double sum = 0;
    for (int band = 0; band < product.bands(); ++band) {
        if (product.used[std::size_t(band)])
            sum += std::pow(product.frequencies[std::size_t(band)], -2);
    }
    return 1 / std::sqrt(sum / product.usedBands());
}

// s from the begin of the stretch to the arrival nearest to its middle, of pulses that come so much
// later than in the reference band.
double nearestToMiddle(const ProfileDay &product, double phase, double frequency, double delay)
{
    const double middle = product.phase.at(0.5) - delay * frequency; // of what arrives there
    const double turns = phase + std::round(middle - phase);
    return product.seconds / 2 + (turns - middle) / frequency;
}

} // namespace

QString Arrival::utcText() const
{
    constexpr int digits = 13;
    return QString::number(utcDay) + QString::number(utcPart, 'f', digits).mid(1);
}

std::vector<Arrival> arrivalsOf(const std::vector<ProfileDay> &products, const ProfileStack &stack,
                                const StackChoice &choice)
{
    std::vector<Arrival> arrivals;
    for (std::size_t i = 0; i < products.size(); ++i) {
        const StackedDay &day = stack.days[i];
        const bool isAlone = stack.inAverage == 1;
        if (day.use == DayUse::Out || day.snr.boxcar.snr < leastAlignedSnr ||
            !(isAlone || std::isfinite(day.offset)))
            continue;
        const ProfileDay &product = products[i];
        const double phase = stack.pulse.phase + (isAlone ? 0 : day.offset);
        const double phaseError = isAlone ? stack.pulse.phaseError : day.offsetError;
        const double frequency = product.phase.frequency + choice.moreFrequency;
        const double delay = meanDelay(product, product.dispersion + choice.moreDispersion);
        const double seconds = nearestToMiddle(product, phase, frequency, delay);
        Arrival arrival;
        arrival.day = int(i);
        const qint64 ms = product.utc.toMSecsSinceEpoch();
        const qint64 midnight = ms / msPerDay - (ms % msPerDay < 0 ? 1 : 0);
        const double part = (double(ms - midnight * msPerDay) / 1000 + seconds) / secondsPerDay;
        arrival.utcDay = mjdOfUnixEpoch + midnight + qint64(std::floor(part));
        arrival.utcPart = part - std::floor(part);
        const Tools::BarycentricView view = Tools::barycentricView(
            Tools::ownSite(), product.utc.addMSecs(qint64(std::llround(1000 * seconds))),
            product.direction);
        arrival.barycentric = double(arrival.utcDay) + arrival.utcPart + view.delay / secondsPerDay;
        arrival.error = std::hypot(phaseError / frequency, choice.beginError);
        arrival.frequency = meanFrequency(product);
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
        bytes += names[arrival.day].toUtf8() + " " + QByteArray::number(arrival.frequency, 'f', 6) +
                 " " + arrival.utcText().toUtf8() + " " +
                 QByteArray::number(arrival.error * microseconds, 'f', 1) + " " + site.toUtf8() +
                 "\n";
    return bytes;
}

} // namespace Profiles
