#include "analyses/days/fourierdays.h"
#include "calc/pulsar/pulsarfields.h"

// The parameters of the spectra of days as forms, options and headers have them.

namespace Days {

namespace {

using P = FourierDaysParameters;

FourierDaysField field(const FieldText &text, FieldRef (*of)(P &))
{
    FourierDaysField made{text, of};
    made.recorded = Recorded::Always;
    return made;
}

std::vector<FourierDaysField> placeFields()
{
    return {
        field(ranged({"module", "--module", "N",
                      "Number of the module, as the telescope counts them; 0: that of the beam "
                      "nearest to the source.",
                      "module"},
                     0, 6),
              refOf<&P::module>),
        field(ranged({"ray", "--ray", "N",
                      "Number of the ray, as the telescope counts them; 0: the nearest.", "ray"},
                     0, 33),
              refOf<&P::ray>),
        field(ranged({"dispersion", "--dm", "DM", "Dispersion, pc/cm^3.", "dispersion", "pc/cm^3"},
                     0, 10000),
              refOf<&P::dispersion>),
        field(ranged({"points", "--count", "N",
                      "Points of each day: a power of two from 1024 to 131072.", "count"},
                     fewestPoints, mostPoints),
              refOf<&P::points>),
        field({"source", "--source", "NAME",
               "Known pulsar that culminates in the middle of the stretch.", "source"},
              refOf<&P::source>),
        field({"alfa", "--ra", "RA", "Right ascension of 2000 of a source, hh:mm:ss, with --dec.",
               "ra"},
              refOf<&P::alfa>),
        field({"delta", "--dec", "DEC", "Declination of 2000 of a source, +dd:mm:ss, with --ra.",
               "dec"},
              refOf<&P::delta>),
        field({"siderealTime", "--sidereal", "TIME",
               "Sidereal time at the telescope of the first point, hh:mm:ss.", "sidereal"},
              refOf<&P::siderealTime>),
        field({"zrtUtc", "--utc", "TIME", "UTC of the first point of every date, hh:mm:ss.", "utc"},
              refOf<&P::utc>),
        field(ranged(
                  {"firstPoint", "--point", "POINT", "First point in every file, from 0.", "point"},
                  0, 2147483647),
              refOf<&P::firstPoint>),
        field({"clockOffset", "--clock-offset", "SECONDS",
               "Seconds by which the recordings' clock is ahead of UTC.", "clock_offset", "s"},
              refOf<&P::clockOffset>),
    };
}

std::vector<FourierDaysField> spectrumFields()
{
    return {
        field(pulsarField("--noise"), refOf<&P::noise>),
        field(pulsarField("--normalise"), refOf<&P::normalise>),
        field(pulsarField("--average"), refOf<&P::averageCount>),
        field(ranged({"window", "--window", "BINS",
                      "Bins, an odd number, whose median is the noise around a line.", "window"},
                     129, 513),
              refOf<&P::window>),
        field(ranged({"harmonics", "--harmonics", "N",
                      "Harmonics that are summed at most: 1, 2, 4, 8 or 16.", "harmonics"},
                     1, 16),
              refOf<&P::harmonics>),
        field({"earthMotion", "--no-earth-motion", "",
               "Do not turn the frequencies of the days to the barycentre.", "earth_motion"},
              refOf<&P::earthMotion>),
        field(ranged({"threshold", "--sigma", "N", "Lowest significance of a listed line, sigma.",
                      "sigma"},
                     1, 1000),
              refOf<&P::threshold>),
        field({"otherRays", "--other-rays", "LIST",
               "Rays of the module, as 1,4,7: a line that three of them have, none beside another, "
               "is told as interference.",
               "other_rays"},
              refOf<&P::otherRays>),
        field({"equalGains", "--equal-gains", "",
               "The gain is the same on all days: weight them by 1 / sigma^2.", "equal_gains"},
              refOf<&P::equalGains>),
    };
}

} // namespace

const std::vector<FourierDaysField> &fourierDaysFields()
{
    static const std::vector<FourierDaysField> all = [] {
        std::vector<FourierDaysField> fields = placeFields();
        for (const FourierDaysField &next : spectrumFields())
            fields.push_back(next);
        return fields;
    }();
    return all;
}

} // namespace Days
