#include "calc/pulsar/pulsarcalculate.h"

#include "calc/pulsar/scan.h"

bool PulsarCalculate::sumMultiDispersions()
{
    // Averaging does not move a harmonic; it only shortens the spectrum.
    beginScan();
    outcome.description += "\nChange: averages (see colors)\n\n";
    const int curves = parameters.averageCount + 1;
    for (int n = 0; n < curves; ++n) {
        Scan scan;
        if (!scanDispersions(parameters.firstPoint, n, 100 * n / curves, 100 * (n + 1) / curves,
                             scan))
            return false;
        addScan(scan, QString("averaging number %1").arg(n));
    }
    markSteps();
    remarkOnHarmonic();
    remarkOnBands();
    return true;
}
