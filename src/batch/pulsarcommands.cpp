#include "batch/commands.h"
#include "batch/fieldoptions.h"
#include "batch/pulsarwork.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"

#include <memory>

// native, sum, fourier, fold and dmscan: the actions of the pulsar form.

namespace Batch {

namespace {

struct PulsarArguments : TableArguments {
    FieldOptions<PulsarParameters> options{pulsarPresets()};
    PlaceOptions places;
};

// The field's option with what the command allows.
void addChecked(CLI::App &command, const CommandOption &option, PulsarArguments &arguments)
{
    CLI::Option *const added =
        arguments.options.add(command, pulsarField(option.option), option.help, option.showsPreset);
    if (option.least != option.most)
        added->check(CLI::Range(option.least, option.most));
    if (!option.excludes.isEmpty())
        added->excludes(command.get_option(option.excludes.toStdString()));
    if (!option.needs.isEmpty())
        added->needs(command.get_option(option.needs.toStdString()));
}

// The analysis that an option of the command chooses; without such an option the one that needs
// none.
const PulsarAnalysis &chosenAnalysis(const CLI::App &command)
{
    const PulsarAnalysis *chosen = nullptr;
    for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
        if (analysis.command.toStdString() != command.get_name())
            continue;
        if (analysis.chosenBy.isEmpty()) {
            // Where an analysis has two names the form shows the last.
            chosen = &analysis;
            continue;
        }
        if (command.count(analysis.chosenBy.toStdString()) > 0)
            return analysis;
    }
    return *chosen;
}

PulsarRequest requestOf(const CLI::App &command, const PulsarArguments &arguments)
{
    PulsarRequest request;
    request.command = QString::fromStdString(command.get_name());
    request.parameters = arguments.options.parameters;
    request.moduleNumber = arguments.places.moduleNumber;
    request.rayNumber = arguments.places.rayNumber;
    request.output = outputOptionsOf(arguments);
    const PulsarAnalysis &analysis = chosenAnalysis(command);
    request.action = analysis.name;
    PulsarParameters &parameters = request.parameters;
    if (!takesPoints(analysis.name) && parameters.points == PulsarCalculate::fixedPoints)
        parameters.points = 0; // its own length
    return request;
}

void addCommand(CLI::App &app, Chosen &chosen, const PulsarCommand &described)
{
    CLI::App *const command =
        app.add_subcommand(described.name.toStdString(), described.manual.toStdString());
    command->footer(described.examples.toStdString());
    const auto arguments = std::make_shared<PulsarArguments>();
    PulsarParameters &parameters = arguments->options.parameters;
    addPlaceOptions(*command, parameters.module, parameters.ray, arguments->places);
    for (const CommandOption &option : described.options)
        addChecked(*command, option, *arguments);
    addTableOptions(*command, *arguments);
    command->callback([&chosen, arguments, command] {
        PulsarParameters &given = arguments->options.parameters;
        given.dispersions = comparedDispersions(given.dispersion);
        arguments->options.takeOver();
        const PulsarRequest request = requestOf(*command, *arguments);
        chosen.paints = !request.output.picture.isEmpty();
        chosen.run = [arguments, request] { return runOn(pulsarWork(request), *arguments); };
    });
}

} // namespace

void addPulsarCommands(CLI::App &app, Chosen &chosen)
{
    for (const PulsarCommand &command : pulsarCommands())
        addCommand(app, chosen, command);
}

} // namespace Batch
