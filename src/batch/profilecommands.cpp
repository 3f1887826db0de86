#include "batch/commands.h"
#include "batch/dayoptions.h"
#include "batch/fieldoptions.h"
#include "batch/profilework.h"

#include <QDir>
#include <QFileInfo>
#include <memory>

// profile: average profiles over the days of folders.

namespace Batch {

namespace {

struct ProfileArguments : TableArguments {
    FieldOptions<Profiles::ProfileParameters> options;
    std::string kept;
    std::string dates;
    std::string daysOff;
};

ProfileRequest requestOf(const ProfileArguments &arguments)
{
    ProfileRequest request;
    request.parameters = arguments.options.parameters;
    QString &parFile = request.parameters.parFile;
    if (!parFile.isEmpty())
        parFile = QFileInfo(parFile).absoluteFilePath();
    for (const std::string &folder : arguments.inputs)
        request.days.folders << QDir::cleanPath(QDir().absoluteFilePath(textOf(folder)));
    request.days.kept = textOf(arguments.kept);
    const QString dates = textOf(arguments.dates);
    request.days.firstDate = dates.section(':', 0, 0);
    request.days.lastDate = dates.section(':', 1, 1);
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
    addDatesOption(*command, arguments->dates);
    command
        ->add_option("--kept", arguments->kept,
                     "Folder of the folded days that are kept. Default: zrt-days in the first "
                     "folder, or in the user's cache where that cannot be written.")
        ->type_name("FOLDER");
    addDaysOffOption(*command, arguments->daysOff);
    addRunOptions(*command, *arguments,
                  "Folders of recordings (.pnt, .pnthr), with their sub-folders.", "DIR");
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
