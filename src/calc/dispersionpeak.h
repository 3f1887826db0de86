#pragma once

#include <QString>
#include <complex>
#include <vector>

namespace Tools {

/// One harmonic in every band, and the lines of the spectrum beside it.
struct BandHarmonics {
    int number = 0;       ///< of the harmonic
    int highest = 0;      ///< number that a harmonic of this spectrum can have
    double frequency = 0; ///< cycles per sample of the recording
    /// Samples by which each band is later than the reference, per unit of dispersion.
    std::vector<double> delays;
    /// The harmonic in each band, all phases counted from the same sample of the recording; 0
    /// where a band holds nothing.
    std::vector<std::complex<double>> amplitudes;
    /// The same of neighbouring lines, [line][band], at least 16 lines.
    std::vector<std::complex<double>> beside;
};

/// The dispersion at which a harmonic is strongest.
struct DispersionPeak {
    double dispersion = 0; ///< pc/cm^3; may lie beyond the scan, below 0 too
    double error = 0;      ///< pc/cm^3, one standard deviation
    double snr = 0;        ///< of the sum of the bands there, over the Rayleigh scale of the noise
    QString unconstrained; ///< why there is no such number; empty when there is one
};

/// Finds the dispersion at which the bands of a harmonic add up best: the maximum of
///
///     A(DM) = |S(DM)|,  S(DM) = sum over bands b of Y_b exp(2 pi i f d_b DM)
///
/// with the amplitudes Y_b, the frequency f and the delays d_b. No delay is rounded, so that the
/// samples' length sets no limit. With S', S'' the derivatives by DM, noise N_b in the bands moves
/// the maximum by
///
///     dDM = Re(conj(S) N' + conj(N) S') / K,  K = -|S'|^2 - Re(conj(S) S'')
///
/// to first order, N and N' being made of N_b as S and S' are of Y_b. The error is the standard
/// deviation of dDM with the neighbouring lines of the spectrum for N_b: it knows that bands differ
/// in noise, hold nothing or share theirs. It is right from an S/N of about 6 on; below 5 no number
/// is given, nor where another maximum of A is as high within three standard deviations of their
/// difference, nor where the error exceeds half of the scan.
///
/// The maximum is searched from `first` to `last` and three quarters of a turn beyond: so far as
/// makes the delay across the bands three quarters of the harmonic's period longer.
///
/// @param first, last  pc/cm^3, of the scan
DispersionPeak findDispersionPeak(const BandHarmonics &harmonics, double first, double last);

} // namespace Tools
