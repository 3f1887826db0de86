#pragma once

#include "analyses/days/stretchparameters.h"
#include "calc/pulsar/pulsarfields.h"

/// Fields of StretchParameters that stacks, maps and searches tell alike.
namespace Days {

/// A field that every header of a table has.
template <typename P>
Field<P> recordedField(const FieldText &text, FieldRef (*of)(P &))
{
    Field<P> made{text, of};
    made.recorded = Recorded::Always;
    return made;
}

template <typename P>
Field<P> pointsField(const QString &help)
{
    return recordedField<P>(
        ranged({"points", "--count", "N", help, "count"}, fewestPoints, mostPoints),
        refOf<&P::points>);
}

/// Source, sidereal time and UTC, of which one at most is given.
///
/// @param inSource, atSidereal, atUtc  help: where the source stands, of which point the times are
template <typename P>
std::vector<Field<P>> startFields(const QString &inSource, const QString &atSidereal,
                                  const QString &atUtc)
{
    return {
        recordedField<P>({"source", "--source", "NAME", inSource, "source"}, refOf<&P::source>),
        recordedField<P>({"alfa", "--ra", "RA",
                          "Right ascension of 2000 of a source, hh:mm:ss, with --dec.", "ra"},
                         refOf<&P::alfa>),
        recordedField<P>({"delta", "--dec", "DEC",
                          "Declination of 2000 of a source, +dd:mm:ss, with --ra.", "dec"},
                         refOf<&P::delta>),
        recordedField<P>({"siderealTime", "--sidereal", "TIME", atSidereal, "sidereal"},
                         refOf<&P::siderealTime>),
        recordedField<P>({"zrtUtc", "--utc", "TIME", atUtc, "utc"}, refOf<&P::utc>),
    };
}

/// @param least  point
template <typename P>
Field<P> pointField(const QString &help, int least)
{
    return recordedField<P>(
        ranged({"firstPoint", "--point", "POINT", help, "point"}, least, 2147483647),
        refOf<&P::firstPoint>);
}

template <typename P>
Field<P> clockOffsetField()
{
    return recordedField<P>({"clockOffset", "--clock-offset", "SECONDS",
                             "Seconds by which the recordings' clock is ahead of UTC.",
                             "clock_offset", "s"},
                            refOf<&P::clockOffset>);
}

template <typename P>
Field<P> windowField()
{
    return recordedField<P>(
        ranged({"window", "--window", "BINS",
                "Bins, an odd number, whose median is the noise around a line.", "window"},
               129, 513),
        refOf<&P::window>);
}

template <typename P>
Field<P> harmonicsField()
{
    return recordedField<P>(
        ranged({"harmonics", "--harmonics", "N",
                "Harmonics that are summed at most: 1, 2, 4, 8 or 16.", "harmonics"},
               1, 16),
        refOf<&P::harmonics>);
}

template <typename P>
Field<P> earthMotionField()
{
    return recordedField<P>({"earthMotion", "--no-earth-motion", "",
                             "Do not turn the frequencies of the days to the barycentre.",
                             "earth_motion"},
                            refOf<&P::earthMotion>);
}

template <auto member, typename P>
FieldRef ffaRefOf(P &parameters)
{
    return &(parameters.ffa.*member);
}

/// What the search of one recording calls it; its name stands in headers too.
///
/// @param preset  what 0 stands for; empty: a number is needed
template <typename P>
Field<P> foldField(const QString &option, FieldRef (*of)(P &), const QString &unit = {},
                   const QString &preset = {})
{
    Field<P> made = recordedField<P>(pulsarField(option), of);
    made.key = made.name;
    made.unit = unit;
    made.isOptional = !preset.isEmpty();
    if (made.isOptional)
        made.help += " 0: " + preset + ".";
    return made;
}

/// The switch --ffa and what it asks for.
///
/// @param help  of the switch
template <typename P>
std::vector<Field<P>> foldFields(const QString &help)
{
    using F = FfaParameters;
    return {
        recordedField<P>({"ffa", "--ffa", "", help, "ffa"}, refOf<&P::isFfa>),
        foldField<P>("--period-min", ffaRefOf<&F::period_min>, "s",
                     "as short as the bins allow, 0.1 s at least"),
        foldField<P>("--period-max", ffaRefOf<&F::period_max>, "s",
                     "as long as the fewest periods allow, 30 s at most"),
        foldField<P>("--bins-min", ffaRefOf<&F::bins_min>),
        foldField<P>("--bins-max", ffaRefOf<&F::bins_max>),
        foldField<P>("--ducy-max", ffaRefOf<&F::ducy_max>),
        foldField<P>("--wtsp", ffaRefOf<&F::wtsp>),
        foldField<P>("--fpmin", ffaRefOf<&F::fpmin>),
        foldField<P>("--no-deredden", ffaRefOf<&F::deredden>),
        foldField<P>("--rmed-width", ffaRefOf<&F::rmed_width>, "s", "three of the longest periods"),
        foldField<P>("--rmed-minpts", ffaRefOf<&F::rmed_minpts>)};
}

} // namespace Days
