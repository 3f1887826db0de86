#include "analyses/compare/comparedays.h"
#include "analyses/days/stretchfields.h"

#include <algorithm>

// The parameters as forms, options and headers have them.

namespace Compare {

namespace {

using P = CompareParameters;

constexpr char manual[] =
    "Puts up to 64 days under each other on one axis of sidereal time: \"Sum channels\" of the\n"
    "workbench. Of each day the sum of the bands over the stretch, less its base line, is divided\n"
    "by its noise. The mean day is the median of all days at each point. A transit telescope sees\n"
    "the same sky each day, so that what differs from it is weather, interference or a transient.\n"
    "Written are the mean day, the days, and the strongest differences: runs of 1, 2, 4, ... "
    "points\n"
    "whose mean lies above or below that of the other days, with day, sidereal time, S/N, how "
    "many\n"
    "such ones noise is expected to have in the whole list, and which other rays of the module "
    "have\n"
    "the same. Series are kept as those of survey are, so that the command reads each recording "
    "once.";

constexpr char examples[] =
    "Examples: an hour that begins at 5 h 20 m, with pictures; the other rays as well:\n"
    "  zrt-batch days --module 1 --ray 7 --sidereal 05:20:00 --count 32768 --plot png .\n"
    "  zrt-batch days --module 1 --ray 7 --sidereal 05:20:00 --other-rays 1,2,3,4,5,6,8 .";

CompareField field(const FieldText &text, FieldRef (*of)(P &))
{
    return Days::recordedField<P>(text, of);
}

// The place in the day and the sum are asked for as by the other analyses over days.
CompareField sameField(const QString &option, FieldRef (*of)(P &))
{
    return field(Days::fourierDaysField(option), of);
}

const std::vector<CompareField> &compareFields()
{
    static const std::vector<CompareField> all = {
        sameField("--module", refOf<&P::module>),
        sameField("--ray", refOf<&P::ray>),
        sameField("--dm", refOf<&P::dispersion>),
        sameField("--count", refOf<&P::points>),
        sameField("--source", refOf<&P::source>),
        sameField("--ra", refOf<&P::alfa>),
        sameField("--dec", refOf<&P::delta>),
        sameField("--sidereal", refOf<&P::siderealTime>),
        sameField("--utc", refOf<&P::utc>),
        sameField("--point", refOf<&P::firstPoint>),
        sameField("--clock-offset", refOf<&P::clockOffset>),
        sameField("--noise", refOf<&P::noise>),
        field({"otherRays", "--other-rays", "LIST",
               "Rays of the module, as 1,4,7, in which each difference is looked up.",
               "other_rays"},
              refOf<&P::otherRays>),
        field({"firstDate", "--first-date", "DATE",
               "Date of the first of the days, UTC, as 2015-04-01.", "first_date"},
              refOf<&P::firstDate>),
        field(
            ranged({"byChance", "--by-chance", "N",
                    "Listed differences that noise is expected to have in all days.", "by_chance"},
                   1e-9, 1000),
            refOf<&P::byChance>),
    };
    return all;
}

} // namespace

const CompareAnalysis &compareAnalysis()
{
    static const CompareAnalysis only = [] {
        CompareAnalysis analysis;
        analysis.name = "sumChannelsOfDays";
        analysis.label = "Sum channels";
        analysis.command = "days";
        analysis.manual = manual;
        analysis.examples = examples;
        for (const CompareField &one : compareFields())
            analysis.fields.push_back(&one);
        return analysis;
    }();
    return only;
}

} // namespace Compare
