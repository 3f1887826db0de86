#include "batch/commands.h"
#include "batch/fieldoptions.h"
#include "batch/inputlist.h"
#include "batch/pulseswork.h"

#include <memory>

// pulses: single pulses of recordings. repeats: their tables joined, and the sources that repeat.

namespace Batch {

namespace {

struct PulsesArguments : TableArguments {
    FieldOptions<Pulses::PulseParameters> options;
};

void addPulses(CLI::App &app, Chosen &chosen)
{
    const Pulses::PulseAnalysis &analysis = Pulses::pulseAnalysis();
    const auto arguments = std::make_shared<PulsesArguments>();
    CLI::App *const command =
        app.add_subcommand(analysis.command.toStdString(), analysis.manual.toStdString());
    command->footer(analysis.examples.toStdString());
    for (const Pulses::PulseField *field : analysis.fields)
        arguments->options.add(*command, *field);
    addRunOptions(*command, *arguments, "Recordings, folders of them, or @LIST of them.");
    addFolderOptions(*command, *arguments);
    command->callback([&chosen, arguments] {
        arguments->options.takeOver();
        chosen.run = [arguments] {
            const PulsesRequest request = {arguments->options.parameters,
                                           outputOptionsOf(*arguments)};
            if (const Failure failure = refusalOf(request.parameters)) {
                printError(failure.text);
                return failure.code;
            }
            return runOn(pulsesWork(request), *arguments);
        };
    });
}

struct RepeatsArguments {
    std::vector<std::string> inputs;
    std::string output;
    std::string format = "text";
    bool all = false;
    RepeatsRequest request;
};

void addRepeatsOptions(CLI::App &command, RepeatsArguments &arguments)
{
    Pulses::RepeatingParameters &parameters = arguments.request.parameters;
    command.add_option("FILE", arguments.inputs, "Tables of pulses, or @LIST of them.")->required();
    command
        .add_option("-o,--output", arguments.output,
                    "The list of all pulses; replaced when it exists. The sources go beside it.")
        ->type_name("TABLE")
        ->required();
    addFormatOption(command, arguments.format);
    command
        .add_option("--minutes", parameters.minutes,
                    "Sidereal time by which pulses of one source may differ.")
        ->type_name("MINUTES")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 720.0));
    command
        .add_option("--dm-apart", parameters.dispersion,
                    "Dispersion, pc/cm^3, by which they may differ; three of their errors they "
                    "may always.")
        ->type_name("DM")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 1e5));
    command.add_option("--dates", parameters.dates, "Fewest dates of a source.")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000));
    command.add_flag("--all", arguments.all,
                     "Take pulses with a verdict against them as well: interference too.");
}

ExitCode joinTables(const RepeatsArguments &arguments)
{
    QStringList names;
    for (const std::string &input : arguments.inputs)
        names << textOf(input);
    InputList list = expandInputs(names);
    if (!list.failure) {
        RepeatsRequest request = arguments.request;
        request.output = textOf(arguments.output);
        request.format = formatOf(arguments.format);
        request.parameters.onlyCandidates = !arguments.all;
        list.failure = joinPulses(list.paths, request);
    }
    if (list.failure)
        printError(list.failure.text);
    return list.failure.code;
}

void addRepeats(CLI::App &app, Chosen &chosen)
{
    const auto arguments = std::make_shared<RepeatsArguments>();
    CLI::App *const command = app.add_subcommand(
        "repeats",
        "Joins tables of pulses into one list, and finds the sources that repeat: pulses of\n"
        "several dates in one ray, or the next one, at the same sidereal time and dispersion. "
        "Their\n"
        "table tells dates, dispersion, position and how many pulses an hour they give.");
    command->footer("Example: all pulses of a survey, and its repeating sources:\n"
                    "  zrt-batch pulses --dm-max 100 -o results .\n"
                    "  zrt-batch repeats -o survey.txt results/*.pulses.txt");
    addRepeatsOptions(*command, *arguments);
    command->callback(
        [&chosen, arguments] { chosen.run = [arguments] { return joinTables(*arguments); }; });
}

} // namespace

void addPulsesCommands(CLI::App &app, Chosen &chosen)
{
    addPulses(app, chosen);
    addRepeats(app, chosen);
}

} // namespace Batch
