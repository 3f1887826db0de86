#include "batch/commands.h"
#include "batch/dayoptions.h"
#include "batch/fieldoptions.h"
#include "batch/skywork.h"

#include <QDir>
#include <memory>

// map and search: the sky over the days of folders.

namespace Batch {

namespace {

struct SkyArguments : TableArguments {
    FieldOptions<Sky::SkyParameters> options;
    std::string kept;
    std::string dates;
    std::string part = "1/1";
    std::string interference;
    std::string name;
};

void addSkyOptions(CLI::App &command, SkyArguments &arguments)
{
    addDatesOption(command, arguments.dates);
    command
        .add_option("--kept", arguments.kept,
                    "Folder of the stacks that are kept. Default: zrt-days in the first folder, or "
                    "in the user's cache where that cannot be written.")
        ->type_name("FOLDER");
    command
        .add_option("--part", arguments.part,
                    "Add up every N-th day only, from the K-th on, and make nothing but stacks; "
                    "the same command without this option joins them.")
        ->type_name("K/N")
        ->check(partOfWhole());
    command
        .add_option("--interference", arguments.interference,
                    "List of frequencies and periods that are left out, or none. Default: the "
                    "user's own list.")
        ->type_name("FILE");
}

SkyRequest requestOf(const SkyArguments &arguments, const Sky::SkyAnalysis &analysis)
{
    SkyRequest request;
    request.analysis = &analysis;
    request.parameters = arguments.options.parameters;
    for (const std::string &folder : arguments.inputs)
        request.folders << QDir::cleanPath(QDir().absoluteFilePath(textOf(folder)));
    request.kept = textOf(arguments.kept);
    const QString dates = textOf(arguments.dates);
    request.dates = {QDate::fromString(dates.section(':', 0, 0), Qt::ISODate),
                     QDate::fromString(dates.section(':', 1, 1), Qt::ISODate)};
    const QString part = textOf(arguments.part);
    request.part = part.section('/', 0, 0).toInt();
    request.parts = part.section('/', 1, 1).toInt();
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
    addRunOptions(*command, *arguments,
                  "Folders of recordings (.pnt, .pnthr), with their "
                  "sub-folders.",
                  "DIR");
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
