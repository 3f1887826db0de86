#pragma once

#include "simulator/simulation.h"

#include <random>
#include <vector>

namespace Simulator {

/// Makes the samples of a simulation in the order of the file: point, module, ray, channel,
/// the extra last channel holding the mean over the bands. How they are cut into blocks does
/// not change them.
class SampleSource {
public:
    /// @param simulation  not refused
    explicit SampleSource(const Simulation &simulation);

    /// Makes the next samples.
    ///
    /// @param block  floatsPerPoint() x count floats
    /// @param count  points; with those made before, at most the simulation's points
    void read(float *block, int count);

private:
    float *row(float *block, int module, int ray) const;
    double level(const std::vector<double> &knots, int point) const;
    void fillWithNoise(float *block, int count);
    void addTrain(float *first, qint64 apart, int count, const PulseTrain &train,
                  double offset) const;
    void addTrain(float *block, int count, const PulseTrain &train) const;
    void addEverywhere(float *block, int count, const PulseTrain &train) const;
    void addSingle(float *block, int count, const SinglePulse &pulse) const;
    void addSingle(float *block, int count, const SinglePulse &pulse, int module, int ray,
                   double share) const;
    void addScattered(float *first, qint64 apart, int count, double time, const SinglePulse &pulse,
                      double height, double tail) const;
    void addSeries(float *block, int count, const PulseSeries &series) const;
    void addPulse(float *first, qint64 apart, int count, double time, double width,
                  double height) const;
    void addLine(float *block, int count, const NarrowBandLine &line) const;
    void addImpulses(float *block, int count, std::size_t index) const;
    void multiply(float *block, int count, const GainStep &step) const;
    void fillMeanChannel(float *block, int count) const;

    const Simulation simulation;
    const DrawnPulses drawn;
    const int bands;
    const qint64 stride; // floats from one point to the next
    const double step;   // s
    std::mt19937 generator;
    std::vector<std::vector<double>> driftKnots; // per ray, module after module
    std::vector<std::vector<int>> impulsePoints; // ascending, per entry of the simulation
    int nextPoint = 0;
};

} // namespace Simulator
