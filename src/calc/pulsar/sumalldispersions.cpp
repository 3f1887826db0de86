#include "calc/pulsar/pulsarcalculate.h"

#include "calc/pulsar/scan.h"

bool PulsarCalculate::sumAllDispersions()
{
    beginScan();
    Scan scan;
    if (!scanDispersions(parameters.firstPoint, parameters.averageCount, 0, 100, scan))
        return false;
    addCurve(scan.values, QString("value of harmonic %1").arg(parameters.harmonicNum));
    addCurve(scan.cubic, "approximation by polinom 3");
    outcome.description += "\n" + describeScan(scan);
    markSteps();
    remarkOnHarmonic();
    remarkOnBands();
    return true;
}
