#include "calc/pulsar/pulsarresult.h"

std::vector<Results::Report> PulsarResult::notes() const
{
    std::vector<Results::Report> all = remarks;
    if (!nonFinite.isEmpty())
        all.insert(all.begin(), Results::Report(nonFinite));
    if (!times.isEmpty())
        all.push_back(Results::Report(times));
    return all;
}
