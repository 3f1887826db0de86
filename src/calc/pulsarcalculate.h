#pragma once

#include "data/observationdata.h"

#include <QObject>
#include <QString>
#include <array>
#include <vector>

/// What the pulsar form asks for, as typed.
struct PulsarParameters {
    int module = 1;        ///< from 1
    int ray = 1;           ///< from 1
    int channel = 1;       ///< from 1
    double dispersion = 0; ///< pc/cm^3
    double period = 0;     ///< s
    int firstPoint = 0;    ///< first sample of the stretch, from 0
    int points = 16384;    ///< length of the stretch, for the actions that do not fix it
    int averageCount = 0;  ///< halvings before the transform
    bool withNull = false; ///< zero padding to double length
    int harmonicNum = 0;   ///< index of the spectrum value reported as first harmonic
    int sigmaMultiple = 6; ///< threshold for listing harmonics
    std::array<double, 4> dispersions = {}; ///< pc/cm^3, compared by "sum4Dispersions"
    QString noise = "polinom5"; ///< "polinom5", "median", "backSum"; anything else: no baseline
    bool normalise = false;     ///< divide by sigma after the baseline is removed
    bool deductNoise = false;   ///< "sumChannelsDemoNoise": show the sum less its baseline
};

/// Runs one analysis action on one recording and keeps what the pulsar form shows of it:
/// curves with names and visibility, the number of X values and a description.
class PulsarCalculate : public QObject {
    Q_OBJECT

public:
    /// Length, in points, of the stretch that every channel-summing action works on.
    static constexpr int fixedPoints = 16384;
    /// Bands that take part in a sum; the last of them is the reference.
    static constexpr int sumBands = 32;

    PulsarCalculate(const ObservationData &data, const PulsarParameters &parameters,
                    QObject *parent = nullptr);

    /// Sums the first 32 bands of the selected module and ray over the stretch that begins
    /// at the first point, each band shifted by its delay against band 32. No wrap-around:
    /// where a band's shifted samples begin before the recording the missing ones are left
    /// out, and the first band that needs a sample past its end stops the sum, which is
    /// still a success (see bandsSummed()).
    ///
    /// @param dataOut     count doubles; untouched on refusal
    /// @param dispersion  pc/cm^3, not negative
    /// @param forward     false applies the delays with the opposite sign
    /// @return false, after a debug line, on a stretch that does not end before the
    ///         recording's last point, a bad module, ray or first point, fewer than 33
    ///         channels, a missing frequency or a delay beyond an int; without a line on a
    ///         dispersion that is negative or not a number
    bool sumChannels(double *dataOut, int count, double dispersion, bool forward);

    /// Bands that the last sumChannels() added completely: 32 unless the recording ended, 0
    /// after a refusal. After sumWithoutNoise() it speaks of the sum, not of the back sum.
    int bandsSummed() const { return completeBands; }

    /// Sum of the bands less the chosen baseline, normalised where that is asked for.
    /// Baselines: "polinom5", the polynomial of degree 5; "median", the line through medians of
    /// 256 points; "backSum", the line through means of 128 points of the sum with opposite
    /// delays, in which no dispersed pulse adds up.
    ///
    /// @param dataOut  count doubles; untouched on refusal
    /// @return false, after a debug line, when the sum or the baseline is refused
    bool sumWithoutNoise(double *dataOut, int count, double dispersion);

    /// One-sided amplitude spectrum of a series, see Tools::amplitudeSpectrum.
    ///
    /// @param countIn   power of two, at least 128
    /// @param countOut  countIn / 2
    /// @return false, after a debug line, on other counts or without an array; dataOut is then
    ///         untouched
    static bool getFourier(const double *dataIn, double *dataOut, int countIn, int countOut);

signals:
    void progress(int percent);

private:
    bool subtractBaseline(const std::vector<double> &sum, double dispersion, double *dataOut);

    ObservationData data;
    PulsarParameters parameters;
    int completeBands = 0;
};
