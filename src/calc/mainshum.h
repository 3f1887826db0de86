#pragma once

#include <vector>

/// How the variance of a series is spread over frequency.
struct PowerSpectrum {
    std::vector<double> powers; ///< variance that value k stands for, at the frequency k x step
    double step = 0;            ///< Hz
    double rate = 0;            ///< samples a second
    int averaged = 1;           ///< spectra that the powers are the mean of
};

/// One line of mains hum. Frequencies are those of the mains, also where the sampling folds the
/// line back, see Tools::foldedFrequency.
struct MainsLine {
    double nominal = 0;   ///< Hz: 50, 60 or the double
    double frequency = 0; ///< Hz, measured: the centre of gravity of the line's power
    double error = 0;     ///< Hz, one sigma of it, from the noise: hum that wanders is wider
    double from = 0;      ///< Hz, where the line begins to stand out of the noise
    double to = 0;        ///< Hz, and where it ends
    double strength = 0;  ///< its highest power over the noise round it
    double variance = 0;  ///< of the series, that the line holds
};

namespace Tools {

/// Power spectrum of a series under a Hann window: the mean over stretches of the same length, the
/// longest power of two up to 2^20 of which two fit in; evenly spread, and 64 at most.
///
/// @param tsamp  s, above 0
/// @return no powers below 64 values
PowerSpectrum powerSpectrum(const std::vector<double> &series, double tsamp);

/// Where a sine shows in samples of that rate: between 0 and half of the rate.
double foldedFrequency(double frequency, double rate);

/// Measures mains hum: lines within 1 % of 50, 60, 100 and 120 Hz whose highest power exceeds the
/// noise, told by the median within 10 Hz, by 19 of its standard deviations, and by 4 times as
/// much as every other line there. The second keeps out the harmonics of a pulsar, which come in
/// rows. A line that the sampling folds back below 5 Hz, where pulsars turn, is not looked for,
/// unless it is the double of one that was found. Where two frequencies show at the same place and
/// are equally near, as 49.8 and 50.2 Hz at 100 samples a second, the one told is either.
///
/// A line that can be of either mains, as 60 and 100 Hz at some 80 samples a second, is named by
/// the mains of which more lines are found, else by the nearer frequency.
///
/// @return none where none is found
std::vector<MainsLine> findMains(const PowerSpectrum &spectrum);

/// Sigma that a series of variance 1 has without these lines, 0.001 at least.
double sigmaWithoutMains(const std::vector<MainsLine> &lines);

/// Whether more than half of a folded power, S/N squared, goes when hum is taken out of the series.
inline bool isMostlyHum(double snr, double snrWithoutHum)
{
    return 2 * snrWithoutHum * snrWithoutHum < snr * snr;
}

/// Subtracts what oscillates between two frequencies: a carrier halfway, whose amplitude and phase
/// follow the series in blocks short enough for both ends of the band. At most 0.5 % of the
/// amplitude of a line inside is left; what lies within some ten widths of the band goes partly
/// too.
///
/// @param tsamp  s
/// @param low    Hz, above 0, as the sampling shows it
/// @param high   Hz, above `low`, at most half of the rate
void removeBand(std::vector<double> &series, double tsamp, double low, double high);

/// Takes all lines of hum out of a series, the strongest first.
void removeMains(std::vector<double> &series, double tsamp, std::vector<MainsLine> lines);

} // namespace Tools
