#pragma once

#include "calc/pulsar/pulsarcalculate.h"
#include "simulator/recording.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QRegularExpression>
#include <cmath>

namespace TestSupport {

inline Simulator::Simulation oneRay()
{
    Simulator::Simulation simulation;
    simulation.npoints = 40000;
    simulation.rays = 1;
    return simulation;
}

inline PulsarParameters parametersFor(double dispersion, int harmonic)
{
    PulsarParameters parameters;
    parameters.dispersion = dispersion;
    parameters.dispersions = {0, dispersion / 2, dispersion, 2 * dispersion};
    parameters.harmonicNum = harmonic;
    parameters.period = 1;
    return parameters;
}

template <typename Member, typename Value>
PulsarParameters with(PulsarParameters parameters, Member member, Value value)
{
    parameters.*member = value;
    return parameters;
}

// Sum of sines of amplitude 1 at `first` and its multiples, the same in each of 32 bands.
inline ObservationData sines(int first, int count)
{
    return TestSupport::makeRecording({20000}, [=](int p, int, int, int) {
        double sum = 0;
        for (int k = 1; k <= count; ++k)
            sum += std::sin(2 * M_PI * first * k * p / 16384);
        return float(sum);
    });
}

inline PulsarResult resultOf(const QString &action, const ObservationData &data,
                             const PulsarParameters &parameters)
{
    PulsarCalculate calculate(data, parameters);
    if (!calculate.run(action))
        QTest::qFail(qPrintable(calculate.failure()), __FILE__, __LINE__);
    return calculate.result();
}

// What stands below the report, one text per remark.
inline QStringList notesOf(const PulsarResult &result)
{
    QStringList texts;
    for (const Results::Report &note : result.notes())
        texts << note.plainText();
    return texts;
}

// The number behind a text of the report, or NaN.
inline double numberAfter(const QString &report, const QString &text)
{
    const QRegularExpression number(QRegularExpression::escape(text) +
                                    "\\s*(-?[0-9.]+(e[-+]\\d+)?)");
    const QRegularExpressionMatch match = number.match(report);
    return match.hasMatch() ? match.captured(1).toDouble() : std::nan("");
}

} // namespace TestSupport
