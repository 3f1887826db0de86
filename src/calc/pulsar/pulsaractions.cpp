#include "calc/pulsar/pulsarcalculate.h"

#include "base/timetext.h"
#include "calc/approximation.h"
#include "calc/channelsum.h"
#include "calc/fourier.h"
#include "data/recordingtime.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

// Dispatch, checks and the channel sums with their spectra. Each action checks the selection,
// fills the result and returns; the arithmetic is that of the operations it calls.

namespace {

constexpr int maxListedHarmonics = 15;
constexpr double spectrumRaise = 0.05; // distance between neighbouring spectra of four
constexpr int shortestSpectrum = 128;  // points that getFourier takes at least

QString baselineText(const QString &noise)
{
    if (noise == "polinom5")
        return "\nApproximation with polinom 5";
    if (noise == "median")
        return "\nApproximation with median line 256";
    if (noise == "backSum")
        return "\nLinear approximation of back sum";
    return "\nWithow deduct noise base line";
}

} // namespace

const PulsarCalculate::Action *PulsarCalculate::findAction(const QString &name)
{
    using Calculate = PulsarCalculate;
    static const std::vector<Action> actions = {
        {"showNative", &Calculate::acceptChannelSelection, &Calculate::showNative},
        {"sumPeriod", &Calculate::acceptFold, &Calculate::sumPeriod},
        {"sumChannels", &Calculate::acceptSum, &Calculate::sumChannelsAction},
        {"sumChannelsDemoNoise", &Calculate::acceptSum, &Calculate::sumChannelsAction},
        {"sumChannelsAndAverage", &Calculate::acceptFixedSum, &Calculate::sumChannelsAndAverage},
        {"sumChannelsAndFourier", &Calculate::acceptFourier, &Calculate::sumChannelsAndFourier},
        {"sum4Dispersions", &Calculate::acceptFourDispersions, &Calculate::sum4Dispersions},
        {"sumAllDispersions", &Calculate::acceptScan, &Calculate::sumAllDispersions},
        {"sumMultiDispersions", &Calculate::acceptScan, &Calculate::sumMultiDispersions},
        {"sumTimeDispersions", &Calculate::acceptStarts, &Calculate::sumTimeDispersions},
        {"createFFA", &Calculate::acceptFfa, &Calculate::createFFA},
    };
    for (const Action &action : actions) {
        if (action.name == name)
            return &action;
    }
    return nullptr;
}

bool PulsarCalculate::run(const QString &action)
{
    outcome = {};
    cancelled = false;
    fewestBands = sumBands;
    workingCopy = {};
    stepPoints.clear();
    stepCount = 0;
    if (!validate(action))
        return false;
    if (!data.samples)
        return refuse("Error of data! data.npoints=" + QString::number(data.npoints));
    outcome.points = stretch;
    outcome.stretch = stretch;
    outcome.axis.first = parameters.firstPoint;
    bool done = false;
    try {
        done = prepareSamples(action) && (this->*findAction(action)->compute)() && !cancelled &&
               acceptCurves();
    } catch (const std::bad_alloc &) {
        done = refuse("There is not enough memory for this action.\nClose other programs, or take "
                      "a shorter stretch.");
    }
    workingCopy = {};
    return done;
}

// Finite samples may have sums that no float holds.
bool PulsarCalculate::acceptCurves()
{
    const std::vector<float> &curve = outcome.curves[0];
    return curve.empty() ||
           std::any_of(curve.begin(), curve.end(),
                       [](float value) { return std::isfinite(value); }) ||
           refuse("No finite value came out: the samples are too large to be added.\nCheck the "
                  "file, or choose another stretch, ray or module.");
}

bool PulsarCalculate::sumChannelsAction()
{
    outcome.description =
        "One summation of channels\nDispersion = " + ReportText::general(parameters.dispersion) +
        (stretch == fixedPoints ? QString("\nNumber of points is fixed - 16384")
                                : QString("\nNumber of points = %1").arg(stretch));

    auto sum = std::vector<double>(std::size_t(stretch));
    if (!sumChannels(sum.data(), stretch, parameters.dispersion, true))
        return refuse("The channels cannot be summed.");
    fewestBands = completeBands;
    std::vector<double> baseline(sum.size());
    std::vector<double> backSum;
    if (!noiseBaseline(sum, parameters.dispersion, baseline.data(), &backSum))
        return refuse("The noise base line cannot be computed.\nIt needs more points; take more, "
                      "or none of the base lines.");

    if (parameters.deductNoise) {
        removeBaseline(sum, baseline);
        addCurve(sum, "minus noise base line");
    } else {
        addCurve(sum, "sum on canals");
        if (parameters.noise == "polinom5")
            addCurve(baseline, "polinom5 approximation");
        else if (parameters.noise == "median")
            addCurve(baseline, "median line approximation");
        else if (parameters.noise == "backSum") {
            addCurve(backSum, "back sum on canals");
            addCurve(baseline, "noise approximation");
        }
    }
    outcome.description += baselineText(parameters.noise);
    if (parameters.normalise && !parameters.deductNoise)
        outcome.remarks << "Normalization applies to the sum less its base line only.";
    markSteps();
    remarkOnBands();
    remarkOnTimes(sumBands);
    return true;
}

bool PulsarCalculate::sumChannelsAndAverage()
{
    const int n = parameters.averageCount;
    std::vector<double> sum(fixedPoints);
    if (!sumWithoutNoise(sum.data(), fixedPoints, parameters.dispersion))
        return refuse("The channels cannot be summed.");
    fewestBands = completeBands;
    std::vector<double> averaged(fixedPoints);
    if (!Tools::averagePairs(sum.data(), averaged.data(), fixedPoints, n, false))
        return refuse("The sum cannot be averaged.");
    // Zeros that pad a transform are no part of the series.
    const int length = Tools::averagedLength(fixedPoints, n, false);
    averaged.resize(std::size_t(length));
    addCurve(averaged, "Sum channels and average");

    const double factor = Tools::averagedStepFactor(n, false);
    outcome.points = length;
    outcome.axis.step = factor;
    outcome.description =
        QString("Sum channels and average\nDispersion = %1\nNumber of points is "
                "fixed - 16384%2\nAveraging number = %3\nStep = %4 ms, length = "
                "%5 points, %6 s")
            .arg(ReportText::general(parameters.dispersion), baselineText(parameters.noise))
            .arg(n)
            .arg(factor * data.tresolution * 1000)
            .arg(length)
            .arg(fixedPoints * data.tresolution);
    markSteps();
    remarkOnBands();
    remarkOnTimes(sumBands);
    return true;
}

bool PulsarCalculate::getFourierOfSum(double *out, int count, double dispersion, int averageCount,
                                      bool withNull)
{
    auto sum = std::vector<double>(std::size_t(std::max(count, 0)));
    if (!sumWithoutNoise(sum.data(), count, dispersion))
        return false;
    fewestBands = std::min(fewestBands, completeBands);
    std::vector<double> averaged(2 * sum.size());
    if (!Tools::averagePairs(sum.data(), averaged.data(), count, averageCount, withNull))
        return false;
    const int length = Tools::averagedLength(count, averageCount, withNull);
    return getFourier(averaged.data(), out, length, length / 2);
}

bool PulsarCalculate::sumChannelsAndFourier()
{
    const int count = Tools::powerOfTwoFloor(fixedPoints);
    const int length = Tools::averagedLength(count, parameters.averageCount, parameters.withNull);
    const int n = length / 2;

    auto spectrum = std::vector<double>(std::size_t(n));
    if (!getFourierOfSum(spectrum.data(), count, parameters.dispersion, parameters.averageCount,
                         parameters.withNull))
        return refuse("The spectrum of the sum cannot be computed.");

    const int multiple = parameters.sigmaMultiple;
    const double sigma = Tools::sigma(spectrum.data(), n);
    const double threshold = multiple * sigma;
    QString &text = outcome.description;
    text = "Sigma = " + ReportText::general(sigma) + "\n" + QString::number(multiple) +
           " sigma = " + ReportText::general(threshold) +
           "\n\nHarmonics >= " + QString::number(multiple) + " sigma:\n\n";
    int above = 0;
    std::vector<int> listed;
    for (int i = 0; i < n; ++i) {
        const double value = spectrum[std::size_t(i)];
        if (!(value > threshold) || ++above > maxListedHarmonics)
            continue;
        text += QString::number(i) + ": " + ReportText::general(value) + "\n";
        listed.push_back(i);
    }
    text += "\nFirst harmonic:\nnum = " + QString::number(parameters.harmonicNum) +
            "\nvalue = " + ReportText::general(spectrum[std::size_t(parameters.harmonicNum)]) +
            "\n";

    addCurve(spectrum, "fourier of sum channels");
    addCurve(std::vector<double>(std::size_t(n), sigma), "1 sigma of fourier");
    addCurve(std::vector<double>(std::size_t(n), threshold),
             QString::number(multiple) + " sigma of fourier");
    outcome.points = n;
    setSpectrumAxis(parameters.averageCount);

    remarkOnLines(spectrum, threshold, listed, above);
    markSteps();
    remarkOnBands();
    return true;
}

bool PulsarCalculate::sum4Dispersions()
{
    const int count = Tools::powerOfTwoFloor(fixedPoints);
    const int length = Tools::averagedLength(count, parameters.averageCount, parameters.withNull);
    const int n = length / 2;
    const int harmonic = parameters.harmonicNum;
    QString harmonicText;
    auto spectrum = std::vector<double>(std::size_t(n));
    for (int k = 0; k < 4; ++k) {
        const double dispersion = parameters.dispersions[std::size_t(k)];
        if (!getFourierOfSum(spectrum.data(), count, dispersion, parameters.averageCount,
                             parameters.withNull))
            return refuse(QString("The spectrum at dispersion %1 cannot be computed.")
                              .arg(ReportText::general(dispersion)));
        if (harmonic > 0 && harmonic < n)
            harmonicText += QString("\ndisp%1 = %2 value = %3")
                                .arg(k + 1)
                                .arg(dispersion, 0, 'f', 1)
                                .arg(spectrum[std::size_t(harmonic)], 0, 'f', 5);
        const double raise = (3 - k) * spectrumRaise;
        for (double &value : spectrum)
            value += raise;
        addCurve(spectrum, QString("dispersion %1").arg(k + 1));
        if (!goOn(25 * (k + 1)))
            return false;
    }
    outcome.description = "Sum of channels and fourier\nFixed number of points = 16384";
    if (!harmonicText.isEmpty())
        outcome.description +=
            "\n\nFirst harmonic:\n\nHarmonic number = " + QString::number(harmonic) + harmonicText;
    else
        outcome.remarks << QString("Harmonic number %1 is outside 1 to %2: no value is reported.")
                               .arg(harmonic)
                               .arg(n - 1);
    outcome.remarks << "The first three spectra are raised by 0.15, 0.10 and 0.05.";
    outcome.points = n;
    setSpectrumAxis(parameters.averageCount);
    markSteps();
    remarkOnBands();
    return true;
}

bool PulsarCalculate::refuse(const QString &reason, const QString &parameter)
{
    refusal = reason;
    refusedParameter = parameter;
    return false;
}

// Module, ray, channels, step and first point against the recording.
bool PulsarCalculate::acceptSelection(double dispersion)
{
    if (parameters.module < 1 || parameters.module > data.modules)
        return refuse(QString("Module %1 is not in the recording.\nAllowed: 1 to %2.")
                          .arg(parameters.module)
                          .arg(data.modules),
                      "module");
    if (parameters.ray < 1 || parameters.ray > data.rays)
        return refuse(QString("Ray %1 is not in the recording.\nAllowed: 1 to %2.")
                          .arg(parameters.ray)
                          .arg(data.rays),
                      "ray");
    if (data.channels < sumBands + 1 || int(data.fbands.size()) < sumBands)
        return refuse(QString("The recording has %1 frequency bands with a known frequency; "
                              "sums need at least %2.")
                          .arg(std::min(data.channels - 1, int(data.fbands.size())))
                          .arg(sumBands));
    if (!(data.tresolution > 0) || std::isinf(data.tresolution))
        return refuse(QString("The passport gives a step of %1 ms (tresolution): delays and "
                              "frequencies cannot be computed.")
                          .arg(ReportText::general(data.tresolution * 1000)));
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

// Longest delay of a band against the reference, in whole samples; limited to the recording.
int PulsarCalculate::longestShift(double dispersion) const
{
    double longest = 0;
    for (int band = 0; band < sumBands - 1; ++band)
        longest = std::max(longest, std::abs(Tools::dispersionDelay(data.fbands[std::size_t(band)],
                                                                    data.fbands[sumBands - 1],
                                                                    dispersion, data.tresolution)));
    return int(std::min(std::ceil(longest), double(data.npoints)));
}

// Samples by which the sum, and the sum with opposite delays where there is one, reads a band later
// at most (of `sign` 1) or earlier (of `sign` -1).
int PulsarCalculate::longestReading(double dispersion, int sign) const
{
    double longest = 0;
    for (int band = 0; band < sumBands - 1; ++band) {
        const double delay =
            Tools::dispersionDelay(data.fbands[std::size_t(band)], data.fbands[sumBands - 1],
                                   dispersion, data.tresolution);
        const double shift = std::round(delay);
        longest = std::max(longest, parameters.noise == "backSum" ? std::abs(shift) : sign * shift);
    }
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
    for (int band = 0; band < sumBands - 1; ++band) {
        const double delay =
            Tools::dispersionDelay(data.fbands[std::size_t(band)], data.fbands[sumBands - 1],
                                   dispersion, data.tresolution);
        if (!(std::abs(delay) < std::numeric_limits<int>::max()))
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

// Reports the progress; false when the user wants to stop.
bool PulsarCalculate::goOn(int percent)
{
    emit progress(percent);
    return !cancelled;
}

void PulsarCalculate::addCurve(const std::vector<double> &values, const QString &name)
{
    outcome.curves.emplace_back(values.begin(), values.end());
    outcome.visible.push_back(true);
    outcome.names << name;
}

// Padding with zeros lengthens the transform but not the sampling step.
void PulsarCalculate::setSpectrumAxis(int averageCount)
{
    const double step = data.tresolution * Tools::averagedStepFactor(averageCount, false);
    outcome.axis = {PulsarAxis::Kind::Frequency, 0, 1 / (2 * outcome.points * step), 0};
}

// Subtracts a baseline, and normalises where that is asked for. Returns what the rest was divided
// by: 1 where it was not.
double PulsarCalculate::removeBaseline(std::vector<double> &samples,
                                       const std::vector<double> &baseline) const
{
    const int count = int(samples.size());
    std::vector<double> rest(samples.size());
    Tools::deduct(samples.data(), baseline.data(), rest.data(), count);
    Tools::clearResidue(samples.data(), rest.data(), count);
    samples.swap(rest);
    const double sigma = parameters.normalise ? Tools::sigma(samples.data(), count) : 0;
    if (parameters.normalise)
        Tools::normalise(samples.data(), count);
    return sigma > 0 ? sigma : 1;
}
