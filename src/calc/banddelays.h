#pragma once

#include "data/observationdata.h"

#include <vector>

namespace Tools {

/// Dispersion constant, s MHz^2 cm^3/pc: one unit in the last place below the double
/// nearest to 4148.8. Stored sums were made with these bits.
inline constexpr double dispersionConstant = 0x1.034ccccccccccp+12;

/// 1/f^2 - 1/fref^2, MHz^-2; both frequencies in MHz. Times the dispersion constant and a
/// dispersion it is the delay of the band against the reference, s.
inline double inverseSquares(double frequency, double reference)
{
    return (1 / frequency) / frequency - (1 / reference) / reference;
}

/// Delay, in samples, of a band against the reference band: positive when the band is the
/// lower of the two and its signal arrives later.
///
/// @param frequency, reference  MHz
/// @param dispersion            pc/cm^3
/// @param tresolution           s
double dispersionDelay(double frequency, double reference, double dispersion, double tresolution);

/// True when the first `bands` values are there and each is a frequency (at least 0.0001 MHz).
bool areFrequencies(const std::vector<double> &fbands, int bands);

/// How a delay becomes a shift of whole samples.
enum class ShiftRounding {
    /// For sums over a whole recording: truncated toward zero, then one more when the rest
    /// exceeds a half. Halves of positive delays go down; for negative delays the correction
    /// goes toward plus (-2.7 gives -1). Every caller relies on these shifts.
    WholeRecording,
    /// For sums over a stretch: nearest, halves away from zero.
    Nearest
};

/// The delay, in samples, rounded to a whole number of them.
double roundedDelay(double delay, ShiftRounding rounding);

/// The delays of the bands of a recording against the last of them, at one dispersion, and the
/// shifts of whole samples that a sum reads the bands by. Where a shifted band leaves the
/// recording the caller chooses what happens: wrapped() goes round its end, part() leaves out
/// what is missing and tells whether the band is cut off.
class BandDelays {
public:
    /// @param header      fbands of `bands` frequencies, tresolution; samples are not looked at
    /// @param bands       that take part; the last of them is the reference
    /// @param dispersion  pc/cm^3
    BandDelays(const ObservationData &header, int bands, double dispersion, ShiftRounding rounding);

    /// The same bands, each shifted the other way: a dispersed pulse does not add up in their sum.
    BandDelays reversed() const;

    int bands() const { return int(delays.size()); }

    /// Samples, with their fraction, by which a band is later than the reference; reversed() does
    /// not change it. A fit takes delays at dispersion 1.
    double delay(int band) const { return delays[std::size_t(band)]; }

    /// True when the delay is a number that a shift can hold: at most 2^31 - 1 either way.
    bool isShift(int band) const;
    /// The highest band below the reference whose delay no shift can hold; -1 when there is none.
    int highestWithoutShift() const;

    /// Samples by which a sum reads the band later. Only for bands with isShift().
    int shift(int band) const;

    /// Largest shift of a band, 0 at least: the samples beyond the end of a stretch that its sum
    /// takes in. A double, for it may exceed an int.
    double longestLater() const { return longest(sign); }
    /// The same of the samples before the begin of a stretch.
    double longestEarlier() const { return longest(-sign); }

    /// Where a band is read for the first point of the recording, when shifts wrap round its end:
    /// 0 to npoints - 1.
    int wrapped(int band, int npoints) const;

    /// The part of a stretch for which a band has samples.
    struct Part {
        qint64 first = 0;   ///< point that the band is read at for the begin of the stretch
        int begin = 0;      ///< index within the stretch
        int end = 0;        ///< not included
        bool isCut = false; ///< the recording ends before the band does
    };
    Part part(int band, int firstPoint, int count, int npoints) const;

private:
    double longest(int direction) const;

    std::vector<double> delays;
    ShiftRounding rounding;
    int sign = 1;
};

} // namespace Tools
