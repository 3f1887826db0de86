#include "calc/pulsar/pulsarcalculate.h"

#include "calc/pulsar/actions.h"
#include "calc/pulsar/runanalysis.h"

PulsarCalculate::PulsarCalculate(const ObservationData &recording,
                                 const PulsarParameters &pulsarParameters, QObject *parent)
    : QObject(parent), data(Pulsar::wholePointsOf(recording)), parameters(pulsarParameters)
{}

bool PulsarCalculate::validate(const QString &action)
{
    outcome.problems = findProblems(action, data, parameters);
    return outcome.problems.empty();
}

PulsarNeeds PulsarCalculate::needs(const QString &action) const
{
    return findNeeds(action, data, parameters);
}

bool PulsarCalculate::run(const QString &action)
{
    cancelled = false;
    Jobs::Control control;
    control.progress = [this](int percent) { emit progress(percent); };
    control.isStopped = [this] { return bool(cancelled); };
    outcome = runAnalysis(action, data, parameters, control);
    return outcome.isWhole();
}

int PulsarCalculate::ffaPoints() const
{
    return Pulsar::ffaPoints(data, parameters);
}

bool PulsarCalculate::getFourierOfSum(double *out, int count, double dispersion, int averageCount,
                                      bool withNull)
{
    Pulsar::SumNotes notes;
    const bool isDone = Pulsar::getFourierOfSum(data, parameters, out, count, dispersion,
                                                averageCount, withNull, notes);
    completeBands = notes.wholeBands;
    return isDone;
}

bool PulsarCalculate::sumChannels(double *dataOut, int count, double dispersion, bool forward)
{
    completeBands = Pulsar::sumChannels(data, parameters, dataOut, count, dispersion, forward);
    return completeBands > 0;
}

bool PulsarCalculate::sumWithoutNoise(double *dataOut, int count, double dispersion)
{
    return Pulsar::sumWithoutNoise(data, parameters, dataOut, count, dispersion, completeBands);
}

bool PulsarCalculate::getFourier(const double *dataIn, double *dataOut, int countIn, int countOut)
{
    return Pulsar::getFourier(dataIn, dataOut, countIn, countOut);
}

double PulsarCalculate::harmonicOfPeriod(const PulsarParameters &parameters, double tresolution)
{
    return Pulsar::harmonicOfPeriod(parameters, tresolution);
}
