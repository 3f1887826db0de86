#include "calc/pulsar/pulsarcalculate.h"

#include "calc/approximation.h"
#include "calc/fourier.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "results/reporttext.h"

#include <algorithm>
#include <cmath>
#include <new>

// What is the same in the run of every action.

bool PulsarCalculate::validate(const QString &action)
{
    refusal = "";
    refusedParameter = "";
    stretch = fixedPoints;
    largestDispersion = 0;
    const PulsarAnalysis *const known = findAnalysis(action);
    return known ? (this->*known->accept)() : refuse("There is no action \"" + action + "\".");
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
        done = prepareSamples(action) && (this->*findAnalysis(action)->compute)() && !cancelled &&
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

bool PulsarCalculate::refuse(const QString &reason, const QString &parameter)
{
    refusal = reason;
    refusedParameter = parameter;
    return false;
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
