#pragma once

#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/needs.h"
#include "calc/pulsar/pulsarresult.h"
#include "data/observationdata.h"

#include <QObject>
#include <QString>
#include <atomic>
#include <vector>

/// Runs one analysis action of the pulsar form or of the FFA form on one recording and keeps its
/// result. The work is done by the functions of actions.h and bandsum.h; this object remembers what
/// they are asked on and what came out.
class PulsarCalculate : public QObject {
    Q_OBJECT

public:
    /// Length, in points, of the stretch that the channel-summing actions of the pulsar form work
    /// on.
    static constexpr int fixedPoints = Pulsar::fixedPoints;
    /// Bands that take part in a sum; the last of them is the reference.
    static constexpr int sumBands = Pulsar::sumBands;

    /// @param data  a recording that ends early counts as one of the points that are whole
    PulsarCalculate(const ObservationData &data, const PulsarParameters &parameters,
                    QObject *parent = nullptr);

    /// Whether an action accepts its parameters for this recording. Nothing is computed and no
    /// sample looked at: the record may be without any.
    ///
    /// @return false: problems() says why
    bool validate(const QString &action);

    /// Which samples an action that validate() has accepted takes in.
    PulsarNeeds needs(const QString &action) const;

    /// Runs the action of that name. Samples that are no finite numbers count as the median of
    /// what the action takes in of their channel; a channel without any finite one is refused.
    ///
    /// @return false when the action is unknown, refused or cancelled; failure() then says
    ///         why, and the result stays as far as it was built
    bool run(const QString &action);

    const PulsarResult &result() const { return outcome.result; }
    /// The result, which is gone afterwards.
    PulsarResult takeResult() { return std::move(outcome.result); }
    /// Why the last action was refused, with the allowed range; empty after a success and
    /// when it was cancelled.
    QString failure() const { return problems().empty() ? QString() : problems().front().text; }
    /// Field of PulsarParameters that the refusal concerns; empty where there is none.
    QString failedParameter() const
    {
        return problems().empty() ? QString() : problems().front().field;
    }
    /// Everything for which the last action was refused, in the order of the checks. A parameter
    /// stands for one problem, the first of it; what cannot be judged before another parameter
    /// is right is left out.
    const std::vector<FieldProblem> &problems() const { return outcome.problems; }
    bool wasCancelled() const { return cancelled; }

    /// Points that "createFFA" takes: those wanted, or what lies between the first point and the
    /// end of the recording less the largest delay and one, so that every band is summed. Below
    /// 1 where nothing does.
    int ffaPoints() const;

    /// Spectrum of the baseline-free sum: sum, averaging, transform.
    ///
    /// @param out    averagedLength(count, averageCount, withNull) / 2 doubles
    /// @param count  points of the sum
    /// @return false, after a debug line, when a step is refused
    bool getFourierOfSum(double *out, int count, double dispersion, int averageCount,
                         bool withNull);

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

    /// Number, with fraction, that the first harmonic of the typed period has in the spectra of the
    /// actions; averaging does not change it.
    static double harmonicOfPeriod(const PulsarParameters &parameters, double tresolution);

signals:
    void progress(int percent);

public slots:
    /// Ends the running action at its next progress; from any thread.
    void cancel() { cancelled = true; }

private:
    ObservationData data;
    PulsarParameters parameters;
    int completeBands = 0;
    AnalysisOutcome outcome; // of the last action
    std::atomic<bool> cancelled = false;
};
