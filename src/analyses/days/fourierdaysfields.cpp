#include "analyses/days/fourierdays.h"
#include "analyses/days/stretchfields.h"

// The parameters of the spectra of days as forms, options and headers have them.

namespace Days {

namespace {

using P = FourierDaysParameters;

std::vector<FourierDaysField> placeFields()
{
    std::vector<FourierDaysField> fields = {
        recordedField<P>(
            ranged({"module", "--module", "N",
                    "Number of the module, as the telescope counts them; 0: that of the beam "
                    "nearest to the source.",
                    "module"},
                   0, 6),
            refOf<&P::module>),
        recordedField<P>(
            ranged({"ray", "--ray", "N",
                    "Number of the ray, as the telescope counts them; 0: the nearest.", "ray"},
                   0, 33),
            refOf<&P::ray>),
        recordedField<P>(
            ranged({"dispersion", "--dm", "DM", "Dispersion, pc/cm^3.", "dispersion", "pc/cm^3"}, 0,
                   10000),
            refOf<&P::dispersion>),
        pointsField<P>("Points of each day: a power of two from 1024 to 131072."),
    };
    for (const FourierDaysField &start :
         startFields<P>("Known pulsar that culminates in the middle of the stretch.",
                        "Sidereal time at the telescope of the first point, hh:mm:ss.",
                        "UTC of the first point of every date, hh:mm:ss."))
        fields.push_back(start);
    fields.push_back(pointField<P>("First point in every file, from 0.", 0));
    fields.push_back(clockOffsetField<P>());
    return fields;
}

std::vector<FourierDaysField> spectrumFields()
{
    return {
        recordedField<P>(pulsarField("--noise"), refOf<&P::noise>),
        recordedField<P>(pulsarField("--normalise"), refOf<&P::normalise>),
        recordedField<P>(pulsarField("--average"), refOf<&P::averageCount>),
        windowField<P>(),
        harmonicsField<P>(),
        earthMotionField<P>(),
        recordedField<P>(ranged({"threshold", "--sigma", "N",
                                 "Lowest significance of a listed line, sigma.", "sigma"},
                                1, 1000),
                         refOf<&P::threshold>),
        recordedField<P>(
            {"otherRays", "--other-rays", "LIST",
             "Rays of the module, as 1,4,7: a line that three of them have, none beside another, "
             "is told as interference.",
             "other_rays"},
            refOf<&P::otherRays>),
        recordedField<P>({"equalGains", "--equal-gains", "",
                          "The gain is the same on all days: weight them by 1 / sigma^2.",
                          "equal_gains"},
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

const FieldText &fourierDaysField(const QString &option)
{
    const std::vector<FourierDaysField> &all = fourierDaysFields();
    return *std::find_if(all.begin(), all.end(),
                         [&](const FourierDaysField &one) { return one.option == option; });
}

} // namespace Days
