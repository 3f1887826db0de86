#include "batch/dayoptions.h"
#include "batch/fieldoptions.h"
#include "batch/skywork.h"

#include <QDate>
#include <memory>
#include <tuple>

// map and search: the sky over the days of folders.

namespace Batch {

namespace {

struct SkyArguments : DayArguments {
    FieldOptions<Sky::SkyParameters> options;
    std::string name;
};

void addSkyOptions(CLI::App &command, SkyArguments &arguments)
{
    addDatesOption(command, arguments);
    addKeptOption(command, arguments, "stacks");
    addPartOption(command, arguments,
                  "Add up every N-th day only, from the K-th on, and make nothing but stacks; the "
                  "same command without this option joins them.");
    addInterferenceOption(command, arguments);
}

SkyRequest requestOf(const SkyArguments &arguments, const Sky::SkyAnalysis &analysis)
{
    SkyRequest request;
    request.analysis = &analysis;
    request.parameters = arguments.options.parameters;
    request.folders = foldersOf(arguments);
    request.kept = textOf(arguments.kept);
    const auto [first, last] = datesOf(arguments);
    request.dates = {QDate::fromString(first, Qt::ISODate), QDate::fromString(last, Qt::ISODate)};
    std::tie(request.part, request.parts) = partOf(arguments);
    request.interference = textOf(arguments.interference);
    request.name = textOf(arguments.name);
    request.output = outputOptionsOf(arguments);
    return request;
}

// Adds a command and what its --ffa chooses.
void addAnalysis(CLI::App &app, Chosen &chosen, const Sky::SkyAnalysis &analysis)
{
    const Sky::SkyAnalysis &folding =
        *Sky::findSkyAnalysis({true, analysis.flags.map, analysis.flags.search});
    CLI::App *const command =
        app.add_subcommand(analysis.command.toStdString(), analysis.manual.toStdString());
    command->footer(analysis.examples.toStdString());
    const auto arguments = std::make_shared<SkyArguments>();
    addFieldsOfAll(*command, std::vector{&analysis, &folding}, arguments->options);
    addSkyOptions(*command, *arguments);
    if (analysis.flags.map)
        command
            ->add_option("--name", arguments->name,
                         "Name of the map: its file is map_NAME_np..., with the base lines median "
                         "and polinom5; with others NAME itself.")
            ->type_name("NAME");
    addRunOptions(*command, *arguments, dayFoldersHelp, "DIR");
    addOutputOptions(*command, *arguments);
    command->callback([&chosen, arguments, &analysis, &folding] {
        arguments->options.takeOver();
        chosen.paints = !arguments->picture.empty();
        chosen.run = [arguments, &analysis, &folding] {
            const bool folds = arguments->options.parameters.isFfa;
            return workOnSky(requestOf(*arguments, folds ? folding : analysis),
                             runOptionsOf(*arguments));
        };
    });
}

} // namespace

void addSkyCommands(CLI::App &app, Chosen &chosen)
{
    for (const Sky::SkyAnalysis &analysis : Sky::skyAnalyses()) {
        if (analysis.chosenBy.isEmpty())
            addAnalysis(app, chosen, analysis);
    }
}

} // namespace Batch
