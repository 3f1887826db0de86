#include "analyses/days/fourierdays.h"
#include "calc/pulsar/pulsarfields.h"

// The parameters of the periodograms of days as forms, options and headers have them.

namespace Days {

namespace {

using P = FourierDaysParameters;

template <auto member>
FieldRef ffaRefOf(P &parameters)
{
    return &(parameters.ffa.*member);
}

// What the search of one recording calls it; its name stands in headers too.
FourierDaysField searchField(const QString &option, FieldRef (*of)(P &), const QString &unit = {})
{
    FourierDaysField made{pulsarField(option), of};
    made.key = made.name;
    made.unit = unit;
    made.recorded = Recorded::Always;
    return made;
}

FourierDaysField optional(FourierDaysField field, const QString &preset)
{
    field.isOptional = true;
    field.help += " 0: " + preset + ".";
    return field;
}

std::vector<FourierDaysField> searchFields()
{
    using F = FfaParameters;
    FourierDaysField ffa{FieldText{"ffa", "--ffa", "",
                                   "Stack periodograms of fast folding in place of spectra.",
                                   "ffa"},
                         refOf<&P::isFfa>};
    ffa.recorded = Recorded::Always;
    return {ffa,
            optional(searchField("--period-min", ffaRefOf<&F::period_min>, "s"),
                     "as short as the bins allow, 0.1 s at least"),
            optional(searchField("--period-max", ffaRefOf<&F::period_max>, "s"),
                     "as long as the fewest periods allow, 30 s at most"),
            searchField("--bins-min", ffaRefOf<&F::bins_min>),
            searchField("--bins-max", ffaRefOf<&F::bins_max>),
            searchField("--ducy-max", ffaRefOf<&F::ducy_max>),
            searchField("--wtsp", ffaRefOf<&F::wtsp>),
            searchField("--fpmin", ffaRefOf<&F::fpmin>),
            searchField("--no-deredden", ffaRefOf<&F::deredden>),
            optional(searchField("--rmed-width", ffaRefOf<&F::rmed_width>, "s"),
                     "three of the longest periods"),
            searchField("--rmed-minpts", ffaRefOf<&F::rmed_minpts>)};
}

} // namespace

const std::vector<FourierDaysField> &ffaDaysFields()
{
    static const std::vector<FourierDaysField> all = [] {
        const QStringList ofSpectra = {"--normalise", "--average", "--window", "--harmonics",
                                       "--equal-gains"};
        std::vector<FourierDaysField> fields;
        for (const FourierDaysField &field : fourierDaysFields()) {
            if (!ofSpectra.contains(field.option))
                fields.push_back(field);
        }
        for (const FourierDaysField &field : searchFields())
            fields.push_back(field);
        return fields;
    }();
    return all;
}

} // namespace Days
