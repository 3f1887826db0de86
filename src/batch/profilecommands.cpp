#include "batch/commands.h"
#include "batch/dayoptions.h"
#include "batch/fieldoptions.h"
#include "batch/profilework.h"

#include <QFileInfo>
#include <memory>
#include <tuple>

// profile: average profiles over the days of folders.

namespace Batch {

namespace {

struct ProfileArguments : DayArguments {
    FieldOptions<Profiles::ProfileParameters> options;
    std::string daysOff;
};

ProfileRequest requestOf(const ProfileArguments &arguments)
{
    ProfileRequest request;
    request.parameters = arguments.options.parameters;
    QString &parFile = request.parameters.parFile;
    if (!parFile.isEmpty())
        parFile = QFileInfo(parFile).absoluteFilePath();
    request.days.folders = foldersOf(arguments);
    request.days.kept = textOf(arguments.kept);
    std::tie(request.days.firstDate, request.days.lastDate) = datesOf(arguments);
    request.days.daysOff = textOf(arguments.daysOff).split(',', Qt::SkipEmptyParts);
    request.days.output = outputOptionsOf(arguments);
    return request;
}

} // namespace

void addProfileCommands(CLI::App &app, Chosen &chosen)
{
    const Profiles::ProfileAnalysis &analysis = Profiles::profileAnalysis();
    CLI::App *const command =
        app.add_subcommand(analysis.command.toStdString(), analysis.manual.toStdString());
    command->footer(analysis.examples.toStdString());
    const auto arguments = std::make_shared<ProfileArguments>();
    for (const Profiles::ProfileField *field : analysis.fields)
        arguments->options.add(*command, *field);
    addDatesOption(*command, *arguments);
    addKeptOption(*command, *arguments, "folded days");
    addDaysOffOption(*command, arguments->daysOff);
    addRunOptions(*command, *arguments, dayFoldersHelp, "DIR");
    addOutputOptions(*command, *arguments);
    command->callback([&chosen, arguments] {
        arguments->options.takeOver();
        chosen.paints = !arguments->picture.empty();
        chosen.run = [arguments] {
            return profileDays(requestOf(*arguments), runOptionsOf(*arguments));
        };
    });
}

} // namespace Batch
