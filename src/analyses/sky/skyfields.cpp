#include "analyses/days/stretchfields.h"
#include "analyses/sky/skyparameters.h"

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

using Days::recordedField;

std::vector<SkyField> cellFields()
{
    return {
        recordedField<P>({"modules", "--modules", "LIST",
                          "Numbers of the modules, as the telescope counts them: 1,3-5 or all.",
                          "modules"},
                         refOf<&P::modules>),
        recordedField<P>({"rays", "--rays", "LIST",
                          "Numbers of the rays, as the telescope counts them: 1,3-5 or all.",
                          "rays"},
                         refOf<&P::rays>),
        recordedField<P>({"dispersions", "--dms", "LIST",
                          "Dispersions, pc/cm^3: numbers with commas, or from:to:step.",
                          "dispersions", "pc/cm^3"},
                         refOf<&P::dispersions>),
        Days::pointsField<P>("Points of a stretch: a power of two from 1024 to 131072."),
        recordedField<P>(
            ranged({"starts", "--starts", "N",
                    "Stretches, in steps of half a stretch; 0: as many as the longest recording "
                    "holds.",
                    "starts"},
                   0, 100000),
            refOf<&P::starts>),
    };
}

std::vector<SkyField> placeFields()
{
    std::vector<SkyField> fields =
        Days::startFields<P>("Known pulsar that culminates in the middle of all stretches.",
                             "Sidereal time at the telescope of the first point of all, hh:mm:ss.",
                             "UTC of the first point of all of every date, hh:mm:ss.");
    fields.push_back(Days::pointField<P>(
        "Point of every file at which the first stretch begins; below 0: where the sidereal time "
        "is that at which the first recording begins.",
        -1));
    fields.push_back(Days::clockOffsetField<P>());
    return fields;
}

std::vector<SkyField> spectrumFields()
{
    SkyField noise = recordedField<P>(
        {"groupBox_method", "--noise", "METHOD",
         "Base line that is taken off: polinom5, median, backSum or without.", "noise"},
        refOf<&P::noise>);
    noise.choices = pulsarField("--noise").choices;
    return {
        noise,
        recordedField<P>(
            ranged({"averageCount", "--average", "N",
                    "Times that neighbouring pairs are averaged before the transform.", "average"},
                   0, 8),
            refOf<&P::averageCount>),
        Days::windowField<P>(),
        Days::earthMotionField<P>(),
        recordedField<P>({"allDays", "--all-days", "",
                          "Count stretches too that most of three or more rays show as disturbed.",
                          "all_days"},
                         refOf<&P::allDays>),
    };
}

std::vector<SkyField> foldFields()
{
    return Days::foldFields<P>("Add up folds at trial periods in place of spectra.");
}

std::vector<SkyField> searchFields()
{
    return {
        recordedField<P>(
            ranged({"falseAlarms", "--false-alarms", "N",
                    "Candidates are listed down to the significance that noise reaches so often "
                    "in the whole search.",
                    "false_alarms"},
                   1e-6, 1e6),
            refOf<&P::falseAlarms>),
        recordedField<P>(ranged({"most", "--most", "N", "Candidates at most.", "most"}, 1, 100000),
                         refOf<&P::most>),
        recordedField<P>(
            ranged({"beamAlfa", "--beam-ra", "DEGREES",
                    "Full width of the beams at half maximum, on the sky, along right ascension: "
                    "from it come position and its error.",
                    "beam_ra", "degrees"},
                   0.01, 90),
            refOf<&P::beamAlfa>),
        recordedField<P>(ranged({"beamDelta", "--beam-dec", "DEGREES",
                                 "The same along declination.", "beam_dec", "degrees"},
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
    SkyField over = recordedField<P>(
        {"over", "--over", "AXIS", "Vertical axis of the map: starts or dms.", "over"},
        refOf<&P::over>);
    over.choices = {{"starts", "overStarts", "Right ascension"},
                    {"dms", "overDispersions", "Dispersion"}};
    return {
        over,
        recordedField<P>(ranged({"mapModule", "--map-module", "N",
                                 "Number of the module that is shown; 0: the first.", "map_module"},
                                0, 99),
                         refOf<&P::mapModule>),
        recordedField<P>(ranged({"mapRay", "--map-ray", "N",
                                 "Number of the ray that is shown; 0: the first.", "map_ray"},
                                0, 99),
                         refOf<&P::mapRay>),
        recordedField<P>(
            ranged({"mapDispersion", "--map-dm", "DM",
                    "Over starts: the dispersion that is shown, the nearest of the list; below "
                    "0: at each point the best of all.",
                    "map_dispersion", "pc/cm^3"},
                   -1, 10000),
            refOf<&P::mapDispersion>),
        recordedField<P>(
            ranged({"mapStart", "--map-start", "N",
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
        fields.push_back(Days::harmonicsField<P>());
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
