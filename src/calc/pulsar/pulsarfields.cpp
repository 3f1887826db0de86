#include "calc/pulsar/pulsarfields.h"

#include <QtGlobal>

namespace {

using P = PulsarParameters;

template <auto member>
FieldRef ffaRefOf(P &parameters)
{
    return &(parameters.ffa.*member);
}

// The noise methods with their buttons.
const std::vector<FieldChoice> noiseChoices = {
    {"polinom5", "noisePolinom5", "Polinom 5"},
    {"median", "noiseMedian", "Median line 256"},
    {"backSum", "noiseBack", "Back channels linear 128"},
    {"without", "noiseWithout", "Without noise deduction"},
};

PulsarField field(FieldText text, FieldRef (*of)(P &))
{
    return {std::move(text), of};
}

PulsarField optional(PulsarField field)
{
    field.isOptional = true;
    return field;
}

std::vector<PulsarField> selectionFields()
{
    std::vector<PulsarField> fields = {
        field(ranged({"module", "--module", "N", "Place of the module in the file, from 1."}, 1, 6),
              refOf<&P::module>),
        field(ranged({"ray", "--ray", "N", "Place of the ray in the file, from 1."}, 1, 33),
              refOf<&P::ray>),
        field(ranged({"channel", "--channel", "N", "Frequency channel, from 1.", "channel", "",
                      Recorded::WhereRead},
                     1, 33),
              refOf<&P::channel>),
        field({"dispersion", "--dm", "DM", "Dispersion, pc/cm^3.", "dispersion", "pc/cm^3",
               Recorded::OfSums},
              refOf<&P::dispersion>),
        field({"leaveOutChannels", "--channels-off", "LIST",
               "Numbers of channels, from 1, that sums leave out: 4,21.", "channels_off", "",
               Recorded::WhereRead},
              refOf<&P::channelsOff>),
        optional(field(
            {"points", "--count", "N", "Points of the stretch.", "count", "", Recorded::Always},
            refOf<&P::points>)),
        field({"zrtUtc", "--utc", "TIME",
               "UTC time of the first point, hh:mm:ss, instead of --first-point.", "start_utc", "",
               Recorded::Always},
              refOf<&P::startTime>),
        field({"firstPoint", "--first-point", "POINT", "First point of the stretch, from 0.",
               "start_point", "", Recorded::Always},
              refOf<&P::firstPoint>),
        field({"period", "--period", "SECONDS", "Period, s.", "period", "s", Recorded::WhereRead},
              refOf<&P::period>),
    };
    PulsarField noise = field({"groupBox_method", "--noise", "METHOD",
                               "Base line that is taken off: polinom5, median, backSum or without.",
                               "noise", "", Recorded::Always},
                              refOf<&P::noise>);
    noise.choices = noiseChoices;
    fields.push_back(noise);
    return fields;
}

std::vector<PulsarField> actionFields()
{
    return {
        field({"withNormalization", "--normalise", "",
               "Divide by the standard deviation once the base line is off.", "normalise", "",
               Recorded::Always},
              refOf<&P::normalise>),
        field({"showDeductNoise", "--deduct", "", "The sum less its base line instead of both.",
               "deduct", "", Recorded::Always},
              refOf<&P::deductNoise>),
        field({"checkDeleteStep", "--delete-step", "", "Take jumps of the level out first.",
               "delete_step", "", Recorded::Always},
              refOf<&P::deleteStep>),
        field({"cutLines", "--cut", "LIST",
               "Take out first: hum, as measured, and lines, Hz, as in "
               "hum,33.3,24.9-25.1; 0.1 Hz to either side of hum and of a single frequency go too.",
               "cut", "", Recorded::WhereRead},
              refOf<&P::cut>),
        field(ranged({"averageCount", "--average", "N",
                      "Times that neighbouring pairs are averaged before the transform.", "average",
                      "", Recorded::OfSums},
                     0, 8),
              refOf<&P::averageCount>),
        field({"averageWithNull", "--with-null", "", "Append as many zeros: twice as many lines.",
               "with_null", "", Recorded::OfSums},
              refOf<&P::withNull>),
        field(ranged({"harmonicNum", "--harmonic", "N",
                      "Number of the line that is reported or scanned.", "harmonic", "",
                      Recorded::OfSums},
                     0, 16383),
              refOf<&P::harmonicNum>),
        field(ranged({"maxSigma", "--sigma", "N", "Threshold of the listed lines, in sigmas.",
                      "sigma", "", Recorded::WhereRead},
                     1, 1000),
              refOf<&P::sigmaMultiple>),
        field({"dispersion1", "--compare", "DM DM DM DM", "Four dispersions to compare.",
               "dispersions", "pc/cm^3", Recorded::WhereRead},
              refOf<&P::dispersions>),
        field({"", "--sum", "",
               "Fold the sum of the bands, with the delays of --dm, instead of one channel."},
              nullptr),
        field({"", "--each-average", "", "One scan for every averaging up to --average."}, nullptr),
        field({"", "--each-start", "",
               "One scan for every first point, a delta apart, at most eight."},
              nullptr),
        optional(field({"firstPointDelta", "--delta", "POINTS",
                        "Points between the first points. Default: a sixteenth of the recording.",
                        "delta", "points", Recorded::WhereRead},
                       refOf<&P::startDelta>)),
    };
}

std::vector<PulsarField> searchFields()
{
    using F = FfaParameters;
    return {
        field({"period_min", "--period-min", "SECONDS", "Shortest period, s."},
              ffaRefOf<&F::period_min>),
        field({"period_max", "--period-max", "SECONDS", "Longest period, s."},
              ffaRefOf<&F::period_max>),
        field(ranged({"bins_min", "--bins-min", "N", "Fewest phase bins of a fold."}, 2, 9999),
              ffaRefOf<&F::bins_min>),
        field(ranged({"bins_max", "--bins-max", "N", "Most phase bins of a fold."}, 2, 9999),
              ffaRefOf<&F::bins_max>),
        field({"ducy_max", "--ducy-max", "PART", "Largest part of a period that a pulse fills."},
              ffaRefOf<&F::ducy_max>),
        field({"wtsp", "--wtsp", "FACTOR", "Growth from one width to the next."},
              ffaRefOf<&F::wtsp>),
        field(ranged({"fpmin", "--fpmin", "N", "Fewest periods in the series."}, 1, 100000),
              ffaRefOf<&F::fpmin>),
        field({"deredden", "--no-deredden", "", "Do not subtract a running median."},
              ffaRefOf<&F::deredden>),
        optional(
            field({"rmed_width", "--rmed-width", "SECONDS", "Window of the running median, s."},
                  ffaRefOf<&F::rmed_width>)),
        field(ranged({"rmed_minpts", "--rmed-minpts", "N", "Points of that window."}, 3, 99999),
              ffaRefOf<&F::rmed_minpts>),
    };
}

} // namespace

const std::vector<PulsarField> &pulsarFields()
{
    static const std::vector<PulsarField> all = [] {
        std::vector<PulsarField> fields = selectionFields();
        for (auto *const more : {&actionFields, &searchFields})
            for (PulsarField &next : more())
                fields.push_back(std::move(next));
        return fields;
    }();
    return all;
}

const PulsarField &pulsarField(const QString &option)
{
    const std::vector<PulsarField> &fields = pulsarFields();
    const auto found =
        std::find_if(fields.begin(), fields.end(),
                     [&](const PulsarField &candidate) { return candidate.option == option; });
    Q_ASSERT(found != fields.end());
    return *found;
}
