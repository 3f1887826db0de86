#include "batch/commands.h"
#include "batch/ffawork.h"
#include "batch/inputlist.h"
#include "batch/mergework.h"
#include "calc/pulsar/pulsarfields.h"

#include <cmath>
#include <memory>

// ffa and merge.

namespace Batch {

namespace {

constexpr int mostTrials = 100000;

struct FfaArguments : TableArguments {
    FfaRequest request;
    std::string modules = "1";
    std::string rays = "1";
    std::string moduleNumbers; // empty: by place
    std::string rayNumbers;
    std::string dispersions;
    std::string noise = request.noise.toStdString();
    std::string channelsOff;
    std::string cut;
    bool noDeredden = false;
};

// "all", or numbers from 1 with commas; false for anything else.
bool readNumbers(const std::string &text, std::vector<int> &numbers)
{
    numbers.clear();
    if (text == "all")
        return true;
    for (const QString &item : QString::fromStdString(text).split(',')) {
        const int number = item.toInt();
        if (number < 1)
            return false;
        numbers.push_back(number);
    }
    return true;
}

// "10", "0,10,20" or "from:to:step"; false for anything else.
bool readDispersions(const std::string &text, std::vector<double> &dispersions)
{
    dispersions.clear();
    const QString list = QString::fromStdString(text);
    const QStringList range = list.split(':');
    if (range.size() == 3) {
        const double from = range[0].toDouble();
        const double to = range[1].toDouble();
        const double step = range[2].toDouble();
        if (!(from >= 0) || !(to >= from) || !(step > 0) || !((to - from) / step < mostTrials))
            return false;
        const int count = int(std::floor((to - from) / step + 1e-9)) + 1;
        for (int i = 0; i < count; ++i)
            dispersions.push_back(from + i * step);
        return true;
    }
    for (const QString &item : list.split(',')) {
        bool isNumber = false;
        dispersions.push_back(item.toDouble(&isNumber));
        if (!isNumber || !(dispersions.back() >= 0) || std::isinf(dispersions.back()))
            return false;
    }
    return true;
}

CLI::Validator numberList(bool mayBeAll)
{
    return CLI::Validator(
        [mayBeAll](const std::string &text) {
            std::vector<int> numbers;
            const bool isRead = readNumbers(text, numbers) && (mayBeAll || !numbers.empty());
            return isRead
                       ? std::string()
                       : std::string("numbers from 1 with commas") + (mayBeAll ? ", or all" : "");
        },
        "");
}

CLI::Validator dispersionList()
{
    return CLI::Validator(
        [](const std::string &text) {
            std::vector<double> dispersions;
            return readDispersions(text, dispersions) ? std::string()
                                                      : "a DM, DMs with commas, or from:to:step";
        },
        "");
}

// Modules and rays by place or by number.
void addRayLists(CLI::App &command, FfaArguments &arguments)
{
    const auto add = [&command](const std::string &what, std::string &places,
                                std::string &numbers) {
        auto *const byPlace =
            command
                .add_option("--" + what, places,
                            "Places of " + what + "s in the file, from 1: 1, 1,3 or all.")
                ->type_name("LIST")
                ->capture_default_str()
                ->check(numberList(true));
        command
            .add_option("--" + what + "-number", numbers,
                        "Numbers of " + what +
                            "s by the passport instead, where the files hold different ones.")
            ->type_name("LIST")
            ->check(numberList(false))
            ->excludes(byPlace);
    };
    add("module", arguments.modules, arguments.moduleNumbers);
    add("ray", arguments.rays, arguments.rayNumbers);
}

// The option of a parameter of the search, with what the field says of it.
template <typename Value>
CLI::Option *addField(CLI::App &command, const char *option, Value &value)
{
    const PulsarField &field = pulsarField(option);
    return command.add_option(option, value, field.help.toStdString())
        ->type_name(field.value.toStdString());
}

CLI::Option *addSwitch(CLI::App &command, const char *option, bool &value)
{
    return command.add_flag(option, value, pulsarField(option).help.toStdString());
}

void addNoise(CLI::App &command, std::string &noise)
{
    std::vector<std::string> methods;
    for (const FieldChoice &choice : pulsarField("--noise").choices)
        methods.push_back(choice.value.toStdString());
    addField(command, "--noise", noise)->capture_default_str()->check(CLI::IsMember(methods));
}

void addSearchOptions(CLI::App &command, FfaRequest &request)
{
    addField(command, "--period-min", request.periodMin);
    addField(command, "--period-max", request.periodMax);
    addField(command, "--bins-min", request.binsMin);
    addField(command, "--bins-max", request.binsMax);
    addField(command, "--ducy-max", request.ducyMax);
    addField(command, "--wtsp", request.wtsp);
    addField(command, "--fpmin", request.fewestPeriods);
    addField(command, "--rmed-width", request.medianWidth);
    addField(command, "--rmed-minpts", request.medianPoints);
}

constexpr auto ffaManual =
    "Searches rays for periodic pulses with the fast folding algorithm, over periods, widths\n"
    "and dispersions, as the FFA form: a table of candidates, the strongest first. The period\n"
    "range and the running median are those that the form presets for the length of the\n"
    "recording unless they are given. Where a ray gives a period at several dispersions, the\n"
    "strongest remains. Candidates above --threshold are listed; without it, above what noise\n"
    "alone is expected to reach in one search, so that of many searches of noise about half\n"
    "give one. The remark names harmonics of a stronger candidate, mains hum with the\n"
    "frequency that was measured, and what does not fold to its S/N.\n"
    "Where a range steps through whole downsampling factors from 3 on, S/N comes out several\n"
    "times too low: a warning names the periods and the nearest --period-min without. The\n"
    "candidates there are chosen and ordered by their true S/N, snr times snr_factor.";

constexpr auto ffaExamples =
    "Examples: ray 7 at its dispersion, with the picture of S/N over period; a survey of\n"
    "some rays and dispersions of every recording in a folder, then one table of them:\n"
    "  zrt-batch ffa --ray 7 --dm 26.2 --period-min 0.5 --plot png demo.pnt\n"
    "  zrt-batch ffa --ray 3,7 --dm 0:40:20 --period-min 1 --threshold 8 -o results .\n"
    "  zrt-batch merge --output candidates.txt results/*.ffa.txt";

// What the parser read, as a request.
FfaRequest requestOf(const FfaArguments &arguments)
{
    FfaRequest complete = arguments.request;
    readNumbers(arguments.modules, complete.modules);
    readNumbers(arguments.rays, complete.rays);
    if (!arguments.moduleNumbers.empty())
        readNumbers(arguments.moduleNumbers, complete.moduleNumbers);
    if (!arguments.rayNumbers.empty())
        readNumbers(arguments.rayNumbers, complete.rayNumbers);
    if (!arguments.dispersions.empty())
        readDispersions(arguments.dispersions, complete.dispersions);
    complete.noise = QString::fromStdString(arguments.noise);
    complete.cut = QString::fromStdString(arguments.cut);
    complete.deredden = !arguments.noDeredden;
    complete.channelsOff = QString::fromStdString(arguments.channelsOff);
    complete.output = outputOptionsOf(arguments);
    return complete;
}

void addFfa(CLI::App &app, Chosen &chosen)
{
    const auto arguments = std::make_shared<FfaArguments>();
    CLI::App *const command = app.add_subcommand("ffa", ffaManual);
    command->footer(ffaExamples);
    addRayLists(*command, *arguments);
    command
        ->add_option("--dm", arguments->dispersions,
                     "Dispersions, pc/cm^3: 26.2 or 0,10,20 or from:to:step. Default: that of the "
                     "passport, else 0.")
        ->type_name("LIST")
        ->check(dispersionList());
    FfaRequest &request = arguments->request;
    command->add_option("--first-point", request.firstPoint, "First point of the series, from 0.")
        ->type_name("POINT")
        ->capture_default_str();
    command
        ->add_option("--count", request.points,
                     "Points of the series. Default: all that have every band.")
        ->type_name("N")
        ->check(CLI::Range(1, 2147483647));
    addNoise(*command, arguments->noise);
    addField(*command, "--cut", arguments->cut);
    addSwitch(*command, "--normalise", request.normalise);
    addSwitch(*command, "--delete-step", request.deleteStep);
    addField(*command, "--channels-off", arguments->channelsOff);
    addSearchOptions(*command, request);
    addSwitch(*command, "--no-deredden", arguments->noDeredden);
    command
        ->add_option("--threshold", request.threshold,
                     "True S/N from which on candidates are listed.")
        ->type_name("SNR");
    command->add_option("--most", request.most, "Candidates of each ray and dispersion.")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 10000));
    command->add_flag("--refine", request.refine,
                      "Make the periods more precise, with errors; fold there.");
    addTableOptions(*command, *arguments);
    command->callback([&chosen, arguments] {
        const FfaRequest complete = requestOf(*arguments);
        chosen.paints = !complete.output.picture.isEmpty();
        chosen.run = [arguments, complete] { return runOn(ffaWork(complete), *arguments); };
    });
}

void addMerge(CLI::App &app, Chosen &chosen)
{
    struct Arguments {
        std::vector<std::string> inputs;
        std::string output;
        std::string format = "text";
        MergeRequest request;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "merge",
        "Joins tables of candidates, of ffa or of merge itself, into one: sorted by S/N, every\n"
        "candidate once, the same bytes whatever the order of the inputs.");
    command->footer("Example: a survey in two parts, its candidates from S/N 9 on as CSV:\n"
                    "  zrt-batch ffa --ray 7 --dm 26.2 --period-min 1 demo.pnt\n"
                    "  zrt-batch ffa --ray 3 --dm 15.5 --period-min 1 --tag weak demo.pnt\n"
                    "  zrt-batch merge --threshold 9 --format csv --output both.csv *.ffa*.txt");
    command->add_option("FILE", arguments->inputs, "Tables of candidates, or @LIST of them.")
        ->required();
    command
        ->add_option("-o,--output", arguments->output, "The joined table; replaced when it exists.")
        ->type_name("TABLE")
        ->required();
    addFormatOption(*command, arguments->format);
    command
        ->add_option("--threshold", arguments->request.threshold,
                     "True S/N from which on they are kept.")
        ->type_name("SNR")
        ->capture_default_str();
    command->add_flag("--only-base", arguments->request.onlyBase,
                      "Leave out candidates with a remark: harmonics, mains hum and what does not "
                      "fold.");
    command->callback([&chosen, arguments] {
        chosen.run = [arguments] {
            QStringList names;
            for (const std::string &input : arguments->inputs)
                names << textOf(input);
            InputList list = expandInputs(names);
            if (!list.failure) {
                MergeRequest request = arguments->request;
                request.output = textOf(arguments->output);
                request.format = formatOf(arguments->format);
                list.failure = mergeCandidates(list.paths, request);
            }
            if (list.failure)
                printError(list.failure.text);
            return list.failure.code;
        };
    });
}

} // namespace

void addSearchCommands(CLI::App &app, Chosen &chosen)
{
    addFfa(app, chosen);
    addMerge(app, chosen);
}

} // namespace Batch
