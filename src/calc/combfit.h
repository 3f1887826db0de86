#pragma once

#include <vector>

namespace Tools {

/// The fundamental of the lines that a periodic signal has in an amplitude spectrum.
struct CombFit {
    double fundamental = 0; ///< in lines of the spectrum; 0 where no line stands out
    double error = 0;       ///< the same, one sigma
    int lines = 0;          ///< harmonics that were used
};

/// Fits a fundamental to the strongest of its harmonics.
///
/// Lines count that noise hardly makes near a multiple of the fundamental: the first from 4.5
/// noise levels on (see localNoise()), the others the higher the wider they are looked for; each
/// new one narrows where the next are. The fundamental and its error are those of all lines
/// together, each frequency as likely as it makes the amplitudes around them by the law of Rice for
/// a signal in noise, be it steady or passing through a beam in any time. One error holds in 68 %
/// and two in 95 % of cases. Two hold in more where the amplitudes do not tell on which side of a
/// value the signal stands: that of a single line in a spectrum that is not padded. Spectra of
/// series that were padded with zeros to double their length are recognised.
///
/// In simulations of 110 kinds (S/N 5 to 64 of a line, 1 to 30 lines, steady or a beam of 0.12 or
/// 0.25 of the series, padded or not, 400 seeds each) one error held in 61 to 90 % of cases and two
/// in 90 to 99.5 %; above 80 and 98.5 % only for steady lines of which the wings, S/N over
/// distance, reach the noise at the next line.
///
/// @param amplitudes  values 0 to n - 1 belong to the frequencies 0 to n - 1
/// @param start       a first guess, good to half a line at the harmonic `number`
CombFit fitComb(const std::vector<double> &amplitudes, double start, int number);

} // namespace Tools
