#include "analyses/sky/skyparameters.h"
#include "calc/pulsar/pulsarfields.h"

// The parameters of maps and searches as forms, options and headers have them, and the list of the
// analyses.

namespace Sky {

namespace {

using P = SkyParameters;

constexpr char mapManual[] =
    "Maps the sky over all days of folders: \"Sum of signals\", \"Fourier - map\" of the "
    "workbench.\n"
    "Stretches follow each other in steps of half a stretch through each passage of the sky; for\n"
    "each of them, each ray and each dispersion the spectra of all days are added up. The map "
    "shows\n"
    "the significance of the harmonic sum over the days, against frequency and either the right\n"
    "ascension of the stretches or the dispersion. Every recording is read once. What was added "
    "up\n"
    "is kept: a stopped or killed command goes on where it was, and other maps and the search of\n"
    "the same stacks read no recording at all.\n"
    "With --ffa, \"FFA - map\" of the workbench, folds at trial periods are added up in place of\n"
    "spectra: see the command stack for which pulsars they show.";

constexpr char mapExamples[] =
    "Examples: rays 1 to 8, the map of ray 3 over right ascension; the same over dispersions:\n"
    "  zrt-batch map --rays 1-8 --map-ray 3 --dms 0:95:5 --name strip --plot png -o results .\n"
    "  zrt-batch map --rays 1-8 --map-ray 3 --dms 0:95:5 --over dms --name strip -o results .";

constexpr char searchManual[] =
    "Searches the sky over all days of folders: \"Search\", \"Fourier\" of the workbench. The "
    "stacks are\n"
    "those of the command map. Lines and harmonic sums of all stacks become one table of "
    "candidates:\n"
    "those of neighbouring stretches, dispersions and rays that agree in frequency are one\n"
    "candidate, harmonics stand under their base. Period, dispersion and position come with their\n"
    "errors, the significance counts the trials of the whole search. Verdicts and notes of a "
    "table\n"
    "that stands in its place already are taken over. With --ffa, \"FFA\" of the workbench, "
    "periods\n"
    "at which the days fold are searched; dispersion and position are then those of the best "
    "stack.";

constexpr char searchExamples[] = "Examples: eight rays at twenty dispersions; the second of four "
                                  "parts of the days, whose stacks\n"
                                  "the last call joins:\n"
                                  "  zrt-batch search --rays 1-8 --dms 0:95:5 -o results .\n"
                                  "  zrt-batch search --rays 1-8 --dms 0:95:5 --part 2/4 .\n"
                                  "  zrt-batch search --rays 1-8 --dms 0:95:5 -o results .";

template <auto member>
FieldRef refOf(P &parameters)
{
    return &(parameters.*member);
}

SkyField field(const FieldText &text, FieldRef (*of)(P &))
{
    SkyField made{text, of};
    made.recorded = Recorded::Always;
    return made;
}

FieldText ranged(FieldText text, double least, double most)
{
    text.least = least;
    text.most = most;
    return text;
}

std::vector<SkyField> cellFields()
{
    return {
        field({"modules", "--modules", "LIST",
               "Numbers of the modules, as the telescope counts them: 1,3-5 or all.", "modules"},
              refOf<&P::modules>),
        field({"rays", "--rays", "LIST",
               "Numbers of the rays, as the telescope counts them: 1,3-5 or all.", "rays"},
              refOf<&P::rays>),
        field({"dispersions", "--dms", "LIST",
               "Dispersions, pc/cm^3: numbers with commas, or from:to:step.", "dispersions",
               "pc/cm^3"},
              refOf<&P::dispersions>),
        field(ranged({"points", "--count", "N",
                      "Points of a stretch: a power of two from 1024 to 131072.", "count"},
                     Days::fewestPoints, Days::mostPoints),
              refOf<&P::points>),
        field(ranged({"starts", "--starts", "N",
                      "Stretches, in steps of half a stretch; 0: as many as the longest recording "
                      "holds.",
                      "starts"},
                     0, 100000),
              refOf<&P::starts>),
    };
}

std::vector<SkyField> placeFields()
{
    return {
        field({"source", "--source", "NAME",
               "Known pulsar that culminates in the middle of all stretches.", "source"},
              refOf<&P::source>),
        field({"alfa", "--ra", "RA", "Right ascension of 2000 of a source, hh:mm:ss, with --dec.",
               "ra"},
              refOf<&P::alfa>),
        field({"delta", "--dec", "DEC", "Declination of 2000 of a source, +dd:mm:ss, with --ra.",
               "dec"},
              refOf<&P::delta>),
        field({"siderealTime", "--sidereal", "TIME",
               "Sidereal time at the telescope of the first point of all, hh:mm:ss.", "sidereal"},
              refOf<&P::siderealTime>),
        field({"zrtUtc", "--utc", "TIME", "UTC of the first point of all of every date, hh:mm:ss.",
               "utc"},
              refOf<&P::utc>),
        field(ranged({"firstPoint", "--point", "POINT",
                      "Point of every file at which the first stretch begins; below 0: where the "
                      "sidereal time is that at which the first recording begins.",
                      "point"},
                     -1, 2147483647),
              refOf<&P::firstPoint>),
        field({"clockOffset", "--clock-offset", "SECONDS",
               "Seconds by which the recordings' clock is ahead of UTC.", "clock_offset", "s"},
              refOf<&P::clockOffset>),
    };
}

std::vector<SkyField> spectrumFields()
{
    SkyField noise =
        field({"groupBox_method", "--noise", "METHOD",
               "Base line that is taken off: polinom5, median, backSum or without.", "noise"},
              refOf<&P::noise>);
    noise.choices = pulsarField("--noise").choices;
    return {
        noise,
        field(
            ranged({"averageCount", "--average", "N",
                    "Times that neighbouring pairs are averaged before the transform.", "average"},
                   0, 8),
            refOf<&P::averageCount>),
        field(ranged({"window", "--window", "BINS",
                      "Bins, an odd number, whose median is the noise around a line.", "window"},
                     129, 513),
              refOf<&P::window>),
        field({"earthMotion", "--no-earth-motion", "",
               "Do not turn the frequencies of the days to the barycentre.", "earth_motion"},
              refOf<&P::earthMotion>),
        field({"allDays", "--all-days", "",
               "Count stretches too that most of three or more rays show as disturbed.",
               "all_days"},
              refOf<&P::allDays>),
    };
}

template <auto member>
FieldRef ffaRefOf(P &parameters)
{
    return &(parameters.ffa.*member);
}

// What the search of one recording calls it; its name stands in headers too.
SkyField foldField(const QString &option, FieldRef (*of)(P &), const QString &unit = {},
                   const QString &preset = {})
{
    SkyField made = field(pulsarField(option), of);
    made.key = made.name;
    made.unit = unit;
    made.isOptional = !preset.isEmpty();
    if (made.isOptional)
        made.help += " 0: " + preset + ".";
    return made;
}

std::vector<SkyField> foldFields()
{
    using F = FfaParameters;
    return {
        field({"ffa", "--ffa", "", "Add up folds at trial periods in place of spectra.", "ffa"},
              refOf<&P::isFfa>),
        foldField("--period-min", ffaRefOf<&F::period_min>, "s",
                  "as short as the bins allow, 0.1 s at least"),
        foldField("--period-max", ffaRefOf<&F::period_max>, "s",
                  "as long as the fewest periods allow, 30 s at most"),
        foldField("--bins-min", ffaRefOf<&F::bins_min>),
        foldField("--bins-max", ffaRefOf<&F::bins_max>),
        foldField("--ducy-max", ffaRefOf<&F::ducy_max>),
        foldField("--wtsp", ffaRefOf<&F::wtsp>),
        foldField("--fpmin", ffaRefOf<&F::fpmin>),
        foldField("--no-deredden", ffaRefOf<&F::deredden>),
        foldField("--rmed-width", ffaRefOf<&F::rmed_width>, "s", "three of the longest periods"),
        foldField("--rmed-minpts", ffaRefOf<&F::rmed_minpts>)};
}

SkyField harmonicsField()
{
    return field(ranged({"harmonics", "--harmonics", "N",
                         "Harmonics that are summed at most: 1, 2, 4, 8 or 16.", "harmonics"},
                        1, 16),
                 refOf<&P::harmonics>);
}

std::vector<SkyField> searchFields()
{
    return {
        field(ranged({"falseAlarms", "--false-alarms", "N",
                      "Candidates are listed down to the significance that noise reaches so often "
                      "in the whole search.",
                      "false_alarms"},
                     1e-6, 1e6),
              refOf<&P::falseAlarms>),
        field(ranged({"most", "--most", "N", "Candidates at most.", "most"}, 1, 100000),
              refOf<&P::most>),
        field(ranged({"beamAlfa", "--beam-ra", "DEGREES",
                      "Full width of the beams at half maximum, on the sky, along right ascension: "
                      "from it come position and its error.",
                      "beam_ra", "degrees"},
                     0.01, 90),
              refOf<&P::beamAlfa>),
        field(ranged({"beamDelta", "--beam-dec", "DEGREES", "The same along declination.",
                      "beam_dec", "degrees"},
                     0.01, 90),
              refOf<&P::beamDelta>),
    };
}

// The place of a fold is that of its stack, whatever the beams are.
std::vector<SkyField> searchOfFoldsFields()
{
    std::vector<SkyField> fields = searchFields();
    const auto isBeam = [](const SkyField &one) { return one.option.startsWith("--beam-"); };
    fields.erase(std::remove_if(fields.begin(), fields.end(), isBeam), fields.end());
    return fields;
}

std::vector<SkyField> mapFields()
{
    SkyField over =
        field({"over", "--over", "AXIS", "Vertical axis of the map: starts or dms.", "over"},
              refOf<&P::over>);
    over.choices = {{"starts", "overStarts", "Right ascension"},
                    {"dms", "overDispersions", "Dispersion"}};
    return {
        over,
        field(ranged({"mapModule", "--map-module", "N",
                      "Number of the module that is shown; 0: the first.", "map_module"},
                     0, 99),
              refOf<&P::mapModule>),
        field(ranged({"mapRay", "--map-ray", "N", "Number of the ray that is shown; 0: the first.",
                      "map_ray"},
                     0, 99),
              refOf<&P::mapRay>),
        field(ranged({"mapDispersion", "--map-dm", "DM",
                      "Over starts: the dispersion that is shown, the nearest of the list; below "
                      "0: at each point the best of all.",
                      "map_dispersion", "pc/cm^3"},
                     -1, 10000),
              refOf<&P::mapDispersion>),
        field(ranged({"mapStart", "--map-start", "N",
                      "Over dms: number of the stretch that is shown, from 1; 0: at each point the "
                      "best of all.",
                      "map_start"},
                     0, 100000),
              refOf<&P::mapStart>),
    };
}

// Fields that the stacks of either product read.
const std::vector<SkyField> &stackFields()
{
    static const std::vector<SkyField> all = [] {
        std::vector<SkyField> fields = cellFields();
        for (const std::vector<SkyField> &more : {placeFields(), spectrumFields(), foldFields()})
            fields.insert(fields.end(), more.begin(), more.end());
        return fields;
    }();
    return all;
}

bool isAmong(const std::vector<SkyField> &fields, const SkyField &field)
{
    return std::any_of(fields.begin(), fields.end(),
                       [&field](const SkyField &one) { return one.option == field.option; });
}

std::vector<const SkyField *> fieldsOf(const std::vector<SkyField> &own, Product product)
{
    std::vector<const SkyField *> fields;
    for (const SkyField &field : skyFields()) {
        const bool isHarmonics = field.option == "--harmonics" && product == Product::Fourier;
        if (decidesStacks(field, product) || isHarmonics || isAmong(own, field))
            fields.push_back(&field);
    }
    return fields;
}

// The same with folds.
SkyAnalysis withFolds(SkyAnalysis analysis, const QString &label, const std::vector<SkyField> &own)
{
    analysis.name.replace("Fourier", "Ffa");
    analysis.label = label;
    analysis.chosenBy = "--ffa";
    analysis.flags.ffa = true;
    analysis.product = Product::Ffa;
    analysis.presets.isFfa = true;
    analysis.fields = fieldsOf(own, Product::Ffa);
    return analysis;
}

} // namespace

const std::vector<SkyField> &skyFields()
{
    static const std::vector<SkyField> all = [] {
        std::vector<SkyField> fields = stackFields();
        fields.push_back(harmonicsField());
        for (const std::vector<SkyField> &more : {searchFields(), mapFields()})
            fields.insert(fields.end(), more.begin(), more.end());
        return fields;
    }();
    return all;
}

bool decidesStacks(const SkyField &field, Product product)
{
    static const std::vector<SkyField> folds = foldFields();
    const QStringList ofSpectra = {"--average", "--window"};
    const bool isOther =
        product == Product::Ffa ? ofSpectra.contains(field.option) : isAmong(folds, field);
    return isAmong(stackFields(), field) && !isOther;
}

const std::vector<SkyAnalysis> &skyAnalyses()
{
    static const std::vector<SkyAnalysis> all = [] {
        SkyAnalysis map;
        map.name = "mapOfDaysFourier";
        map.label = "Fourier - map";
        map.command = "map";
        map.flags = {false, true, false};
        map.manual = mapManual;
        map.examples = mapExamples;
        map.fields = fieldsOf(mapFields(), Product::Fourier);
        SkyAnalysis search;
        search.name = "searchOfDaysFourier";
        search.label = "Fourier";
        search.command = "search";
        search.flags = {false, false, true};
        search.manual = searchManual;
        search.examples = searchExamples;
        search.fields = fieldsOf(searchFields(), Product::Fourier);
        return std::vector<SkyAnalysis>{map, search, withFolds(map, "FFA - map", mapFields()),
                                        withFolds(search, "FFA", searchOfFoldsFields())};
    }();
    return all;
}

} // namespace Sky
