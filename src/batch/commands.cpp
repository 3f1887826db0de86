#include "batch/commands.h"

#include "base/progressdots.h"
#include "batch/inputlist.h"

#include <QDir>
#include <QFile>

namespace Batch {

using namespace Results;

namespace {

// "500M", "2G" or bytes; CLI11 has checked it.
qint64 bytesOf(const std::string &text)
{
    if (text.empty())
        return 0;
    CLI::AsSizeValue convert(false);
    std::string value = text;
    convert(value);
    return QString::fromStdString(value).toLongLong();
}

} // namespace

QString textOf(const std::string &text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

void addRunOptions(CLI::App &command, RunArguments &arguments, const std::string &inputHelp,
                   const std::string &inputName)
{
    command.add_option(inputName, arguments.inputs, inputHelp)->required();
    command.add_flag("--force", arguments.force, "Do again what is done with the same parameters.");
    command.add_flag("--quiet", arguments.quiet,
                     "No dots on the standard output, nothing about what is skipped.");
    command
        .add_option("--json", arguments.json,
                    "Append one line of JSON per input to this file: status, exit code, outputs.")
        ->type_name("LOG");
    command
        .add_option("--jobs", arguments.jobs,
                    "Recordings side by side. Default: the processors that the batch system gave, "
                    "else all. Results do not depend on it.")
        ->type_name("N")
        ->check(CLI::Range(1, 4096));
    command
        .add_option("--memory", arguments.memory,
                    "Memory for all recordings together, as 500MB or 4GB. Default: 90 % of what "
                    "is available.")
        ->type_name("SIZE")
        ->check(CLI::AsSizeValue(false));
}

void addPlaceOptions(CLI::App &command, int &module, int &ray, PlaceOptions &numbers)
{
    const auto add = [&command](const std::string &what, int &place, std::optional<int> &number) {
        auto *const byPlace =
            command
                .add_option("--" + what, place, "Place of the " + what + " in the file, from 1.")
                ->type_name("N")
                ->capture_default_str();
        command
            .add_option("--" + what + "-number", number,
                        "Number of the " + what +
                            " by the passport instead, where the files hold different ones.")
            ->type_name("N")
            ->excludes(byPlace);
    };
    add("module", module, numbers.moduleNumber);
    add("ray", ray, numbers.rayNumber);
}

void addFormatOption(CLI::App &command, std::string &format)
{
    command.add_option("--format", format, "Form of the numbers: text, csv or json.")
        ->type_name("FORM")
        ->capture_default_str()
        ->check(CLI::IsMember({"text", "csv", "json"}));
}

void addSizeOption(CLI::App &command, std::string &size)
{
    command
        .add_option("--size", size,
                    "Size of the picture, in pixels. 800x500@3 draws a PNG of that size with three "
                    "times the pixels each way, as the forms save it.")
        ->type_name("WxH")
        ->capture_default_str()
        ->check([](const std::string &text) {
            const QStringList parts = QString::fromStdString(text).split('@');
            const QStringList sides = parts[0].split('x');
            const bool isScaled = parts.size() == 1 || (parts.size() == 2 && parts[1].size() == 1 &&
                                                        parts[1] >= "1" && parts[1] <= "6");
            const auto isSide = [](const QString &side) {
                return side.toInt() > 100 && side.toInt() <= 10000;
            };
            return isScaled && sides.size() == 2 && isSide(sides[0]) && isSide(sides[1])
                       ? std::string()
                       : "a size is like 1280x720, each side from 101 to 10000";
        });
}

void addTableOptions(CLI::App &command, TableArguments &arguments)
{
    addRunOptions(command, arguments,
                  "Recordings (.pnt, .pnthr), folders of them, or @LIST with one path a line.");
    addOutputOptions(command, arguments);
}

void addFolderOptions(CLI::App &command, TableArguments &arguments)
{
    command
        .add_option("-o,--output", arguments.folder,
                    "Folder of the results, made where it is missing. Default: beside each input.")
        ->type_name("FOLDER");
    command
        .add_option("--tag", arguments.tag,
                    "Part of the names of the results, to keep those of other parameters.")
        ->type_name("TEXT")
        ->check([](const std::string &text) {
            return text.find('/') == std::string::npos ? std::string() : "a tag has no slash";
        });
    addFormatOption(command, arguments.format);
}

void addOutputOptions(CLI::App &command, TableArguments &arguments)
{
    addFolderOptions(command, arguments);
    command.add_option("--plot", arguments.picture, "Add the picture: png, svg or pdf.")
        ->type_name("KIND")
        ->check(CLI::IsMember({"png", "svg", "pdf"}));
    addSizeOption(command, arguments.pictureSize);
}

Format formatOf(const std::string &name)
{
    return Results::formatOf(QString::fromStdString(name));
}

OutputOptions outputOptionsOf(const TableArguments &arguments)
{
    OutputOptions output;
    output.folder = textOf(arguments.folder);
    output.tag = textOf(arguments.tag);
    output.format = formatOf(arguments.format);
    output.picture = textOf(arguments.picture);
    readSize(arguments.pictureSize, output);
    return output;
}

void readSize(const std::string &text, OutputOptions &output)
{
    const QString size = QString::fromStdString(text);
    const QString sides = size.section('@', 0, 0);
    output.pictureSize = {sides.section('x', 0, 0).toInt(), sides.section('x', 1, 1).toInt()};
    output.pictureScale = size.contains('@') ? size.section('@', 1).toInt() : 1;
}

RunOptions runOptionsOf(const RunArguments &arguments)
{
    RunOptions options;
    options.force = arguments.force;
    options.quiet = arguments.quiet;
    options.jsonPath = textOf(arguments.json);
    options.jobs = arguments.jobs;
    options.memory = bytesOf(arguments.memory);
    options.progress = ProgressDots();
    return options;
}

ExitCode runOn(const Work &work, const RunArguments &arguments)
{
    QStringList names;
    for (const std::string &input : arguments.inputs)
        names << textOf(input);
    const InputList list = expandInputs(names);
    if (list.failure) {
        printError(list.failure.text);
        return list.failure.code;
    }
    return runWork(work, list.paths, runOptionsOf(arguments));
}

} // namespace Batch
