#include "calc/pulsar/pulsarcalculate.h"

#include "base/timetext.h"
#include "calc/fourier.h"
#include "calc/pulsar/channelsoff.h"
#include "data/recordingtime.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <limits>

// What sums of the bands accept, and where in a recording they have every band.

namespace {

constexpr int shortestSpectrum = 128; // points that getFourier takes at least

bool hasBands(const ObservationData &data)
{
    return data.channels > PulsarCalculate::sumBands &&
           int(data.fbands.size()) >= PulsarCalculate::sumBands;
}

bool hasStep(const ObservationData &data)
{
    return data.tresolution > 0 && !std::isinf(data.tresolution);
}

} // namespace

bool PulsarCalculate::acceptFixedSum()
{
    const bool isSelected = acceptSelection(parameters.dispersion);
    return acceptDispersion(parameters.dispersion) && isSelected;
}

// Module and ray of a sum.
bool PulsarCalculate::acceptPlace()
{
    const bool hasModule = (parameters.module >= 1 && parameters.module <= data.modules) ||
                           refuse(QString("Module %1 is not in the recording.\nAllowed: 1 to %2.")
                                      .arg(parameters.module)
                                      .arg(data.modules),
                                  "module");
    const bool hasRay = (parameters.ray >= 1 && parameters.ray <= data.rays) ||
                        refuse(QString("Ray %1 is not in the recording.\nAllowed: 1 to %2.")
                                   .arg(parameters.ray)
                                   .arg(data.rays),
                               "ray");
    return hasModule && hasRay;
}

// Module, ray, channels, step and first point against the recording.
bool PulsarCalculate::acceptSelection(double dispersion)
{
    const bool hasPlace = acceptPlace();
    if (!hasBands(data))
        return refuse(QString("The recording has %1 frequency bands with a known frequency; "
                              "sums need at least %2.")
                          .arg(std::min(data.channels - 1, int(data.fbands.size())))
                          .arg(sumBands));
    if (!hasStep(data))
        return refuse(QString("The passport gives a step of %1 ms (tresolution): delays and "
                              "frequencies cannot be computed.")
                          .arg(ReportText::general(data.tresolution * 1000)));
    const bool hasChannels =
        parameters.channelsOff.isEmpty() || channelsOff(parameters.channelsOff, data.channels) ||
        refuse(QString("\"%1\" does not tell channels to leave out.\nAllowed: numbers from 1 to "
                       "%2, with commas.")
                   .arg(parameters.channelsOff)
                   .arg(data.channels),
               "leaveOutChannels");
    return acceptStart(dispersion) && hasPlace && hasChannels;
}

bool PulsarCalculate::acceptStart(double dispersion)
{
    const int last = data.npoints - stretch - 1;
    if (last < 0)
        return refuse(QString("The recording has %1 points; sums need more than %2.")
                          .arg(data.npoints)
                          .arg(stretch));
    if (parameters.firstPoint >= 0 && parameters.firstPoint <= last)
        return true;
    const QString reason =
        parameters.firstPoint < 0 ? "lies before the recording"
        : stretch == 1
            ? "is not before the last one of the recording, which sums do not take"
            : QString("leaves fewer than %1 points before the last one of the recording, "
                      "which sums do not take")
                  .arg(stretch);
    return refuse(QString("First point %1 %2.\nAllowed: %3 to %4; %5.")
                      .arg(pointText(parameters.firstPoint), reason, pointText(0), pointText(last),
                           fullStartText(dispersion)),
                  "firstPoint");
}

// A point as the user chose the start: by number, or as a time.
QString PulsarCalculate::pointText(int point) const
{
    if (parameters.startTime.isEmpty())
        return QString::number(point);
    return textOfTime(RecordingClock(data).utc(point), "hh:mm:ss.zzz");
}

// Which starts give sums with every band whole.
QString PulsarCalculate::fullStartText(double dispersion) const
{
    const int last = lastFullStart(dispersion);
    if (last < 0)
        return "at this dispersion no first point has every band whole";
    return QString("up to %1 every band has all its points").arg(pointText(last));
}

// Samples by which the sum, and the sum with opposite delays where there is one, reads a band later
// at most (of `sign` 1) or earlier (of `sign` -1).
int PulsarCalculate::longestReading(double dispersion, int sign) const
{
    const Tools::BandDelays delays = bandDelays(dispersion);
    const double later = delays.longestLater();
    const double earlier = delays.longestEarlier();
    const double longest = parameters.noise == "backSum" ? std::max(later, earlier)
                           : sign > 0                    ? later
                                                         : earlier;
    return int(std::min(longest, double(data.npoints)));
}

// Last first point whose sum at this dispersion has every sample of every band; -1 when the
// recording is too short for one.
int PulsarCalculate::lastFullStart(double dispersion) const
{
    const int last = data.npoints - stretch - std::max(1, longestReading(dispersion, 1));
    return std::max(-1, last);
}

// Points at the begin of a stretch that lack a band whose shifted samples lie before the
// recording: with falling frequencies, or in the sum with opposite delays.
int PulsarCalculate::pointsWithoutAllBands(double dispersion, int firstPoint) const
{
    return std::clamp(longestReading(dispersion, -1) - firstPoint, 0, stretch);
}

bool PulsarCalculate::acceptDispersion(double dispersion, const QString &parameter)
{
    if (!(dispersion >= 0) || std::isinf(dispersion))
        return refuse(QString("Dispersion %1 is not possible.\nAllowed: 0 pc/cm^3 and more.")
                          .arg(ReportText::general(dispersion)),
                      parameter);
    largestDispersion = std::max(largestDispersion, dispersion);
    if (!hasBands(data) || !hasStep(data)) // which is refused by itself
        return true;
    const Tools::BandDelays delays = bandDelays(dispersion);
    for (int band = 0; band < sumBands - 1; ++band) {
        if (!(std::abs(delays.delay(band)) < std::numeric_limits<int>::max()))
            return refuse(QString("Dispersion %1 delays band %2 (%3 MHz) beyond all bounds.\n"
                                  "Check the dispersion and the frequencies of the passport.")
                              .arg(ReportText::general(dispersion))
                              .arg(band + 1)
                              .arg(data.fbands[std::size_t(band)]),
                          parameter);
    }
    return true;
}

bool PulsarCalculate::acceptSpectrum(int length)
{
    if (length >= shortestSpectrum)
        return true;
    return refuse(QString("Averaging %1 leaves %2 points, too few for a spectrum (at least %3).\n"
                          "Allowed: 0 to %4, or 0 to %5 with null.")
                      .arg(parameters.averageCount)
                      .arg(length)
                      .arg(shortestSpectrum)
                      .arg(7)
                      .arg(8),
                  "averageCount");
}

bool PulsarCalculate::acceptHarmonic(int spectrumLength)
{
    if (parameters.harmonicNum >= 0 && parameters.harmonicNum < spectrumLength)
        return true;
    return refuse(QString("Harmonic number %1 is outside the spectrum.\nAllowed: 0 to %2.")
                      .arg(parameters.harmonicNum)
                      .arg(spectrumLength - 1),
                  "harmonicNum");
}
