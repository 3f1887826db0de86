#include "base/progressdots.h"
#include "base/stopsignal.h"
#include "base/version.h"
#include "batch/commands.h"
#include "batch/filework.h"
#include "batch/info.h"
#include "batch/inputlist.h"
#include "calc/pulsar/pulsarcommand.h"
#include "simulator/simulatecommand.h"

#include <QCoreApplication>
#include <memory>

// simulate, info, totext, plot, export and import.

namespace Batch {

using namespace Results;

namespace {

void addFolder(CLI::App &command, std::string &folder)
{
    command
        .add_option("-o,--output", folder,
                    "Folder of the results, made where it is missing. Default: beside each input.")
        ->type_name("FOLDER");
}

// The simulator reads its own options.
void addSimulate(CLI::App &app, Chosen &chosen)
{
    CLI::App *const command =
        app.add_subcommand("simulate", "Writes a simulated recording; see simulate --help.");
    command->set_help_flag();
    command->prefix_command();
    command->callback([&chosen, command] {
        QStringList arguments = {"zrt-batch simulate"};
        for (const std::string &word : command->remaining())
            arguments << textOf(word);
        chosen.run = [arguments] {
            QCoreApplication::setApplicationVersion(Version::number);
            const auto goOn = [dots = ProgressDots()](int percent) mutable {
                dots(percent);
                return !isStopRequested();
            };
            const Simulator::CommandEnd end = Simulator::simulate(arguments, goOn);
            if (!end.problem.isEmpty())
                printError("simulate: " + end.problem);
            return ExitCode(end.code);
        };
    });
}

void addInfo(CLI::App &app, Chosen &chosen)
{
    struct Arguments {
        std::vector<std::string> inputs;
        std::string format = "text";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "info",
        "What the passports of recordings say, and whether their files have the size that belongs\n"
        "to it. Nothing but the passports is read; the answer goes to the standard output. A file\n"
        "that is too short or no recording makes the exit code 65.");
    command->footer("Examples: one recording; a table of a folder:\n"
                    "  zrt-batch info demo.pnt\n"
                    "  zrt-batch info --format csv .");
    command
        ->add_option("FILE", arguments->inputs,
                     "Recordings (.pnt, .pnthr), folders of them, or @LIST with one path a line.")
        ->required();
    addFormatOption(*command, arguments->format);
    command->callback([&chosen, arguments] {
        chosen.run = [arguments] {
            QStringList names;
            for (const std::string &input : arguments->inputs)
                names << textOf(input);
            return printInfo(names, formatOf(arguments->format));
        };
    });
}

void addTotext(CLI::App &app, Chosen &chosen)
{
    struct Arguments : RunArguments {
        std::string folder;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "totext",
        "Recordings and result files with float blocks as text, one value after the other with as\n"
        "many digits as bring back the same number: INPUT.txt. Text takes about three times the\n"
        "room of the file.");
    command->footer("Example: everything in a small recording as text:\n"
                    "  zrt-batch simulate --points 500 --rays 1 small.pnt\n"
                    "  zrt-batch totext small.pnt");
    addRunOptions(*command, *arguments,
                  "Recordings, result files, folders of recordings or @LIST.");
    addFolder(*command, arguments->folder);
    command->callback([&chosen, arguments] {
        OutputOptions output;
        output.folder = textOf(arguments->folder);
        chosen.run = [arguments, output] { return runOn(textWork(output), *arguments); };
    });
}

void addPlot(CLI::App &app, Chosen &chosen)
{
    struct Arguments : RunArguments {
        std::string folder;
        std::string kind = "png";
        std::string size = "1280x720";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "plot",
        "Pictures of results that are there already, of any command and in any form (text, CSV,\n"
        "JSON). Curves look as --plot makes them beside a new result; tables of candidates, of "
        "ffa\n"
        "and of merge, become S/N over period, those with a remark in a colour of their own.");
    command->footer("Example: a vector picture of a spectrum for a paper:\n"
                    "  zrt-batch fourier --tag paper demo.pnt\n"
                    "  zrt-batch plot --kind pdf --size 800x500 demo.pnt.fourier.paper.txt");
    addRunOptions(*command, *arguments, "Results of zrt-batch, or @LIST with one path a line.");
    addFolder(*command, arguments->folder);
    command->add_option("--kind", arguments->kind, "Kind of the pictures: png, svg or pdf.")
        ->type_name("KIND")
        ->capture_default_str()
        ->check(CLI::IsMember({"png", "svg", "pdf"}));
    addSizeOption(*command, arguments->size);
    command->callback([&chosen, arguments] {
        OutputOptions output;
        output.folder = textOf(arguments->folder);
        output.picture = textOf(arguments->kind);
        readSize(arguments->size, output);
        chosen.paints = true;
        chosen.run = [arguments, output] { return runOn(plotWork(output), *arguments); };
    });
}

void addExport(CLI::App &app, Chosen &chosen)
{
    struct Arguments : RunArguments {
        std::string folder;
        std::string kind = "fil";
        int module = pulsarPresets().module;
        int ray = pulsarPresets().ray;
        PlaceOptions places;
        double dispersion = pulsarPresets().dispersion;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "export",
        "A ray of a recording for the field's other programs: \"fil\" is a SIGPROC filterbank of\n"
        "all bands (32-bit floats, highest band first), \"dat\" the sum of the bands with the\n"
        "delays of --dm as float32 values with a PRESTO-style description (.inf) beside it.");
    command->footer("Examples: both forms of ray 7:\n"
                    "  zrt-batch export --ray 7 demo.pnt\n"
                    "  zrt-batch export --ray 7 --kind dat --dm 26.2 demo.pnt");
    addRunOptions(*command, *arguments,
                  "Recordings (.pnt, .pnthr), folders of them, or @LIST with one path a line.");
    addFolder(*command, arguments->folder);
    command->add_option("--kind", arguments->kind, "fil or dat.")
        ->type_name("KIND")
        ->capture_default_str()
        ->check(CLI::IsMember({"fil", "dat"}));
    addPlaceOptions(*command, arguments->module, arguments->ray, arguments->places);
    command->add_option("--dm", arguments->dispersion, "Dispersion of a \"dat\", pc/cm^3.")
        ->type_name("DM")
        ->capture_default_str();
    command->callback([&chosen, arguments] {
        ExportRequest request;
        request.kind = textOf(arguments->kind);
        request.module = arguments->module;
        request.ray = arguments->ray;
        request.moduleNumber = arguments->places.moduleNumber;
        request.rayNumber = arguments->places.rayNumber;
        request.dispersion = arguments->dispersion;
        request.output.folder = textOf(arguments->folder);
        chosen.run = [arguments, request] { return runOn(exportWork(request), *arguments); };
    });
}

void addImport(CLI::App &app, Chosen &chosen)
{
    struct Arguments : RunArguments {
        std::string folder;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "import",
        "Recordings of SIGPROC filterbanks (8 and 16 bits, 32-bit floats, one polarisation):\n"
        "INPUT.pnt with one module and one ray, lowest band first. The extra channel holds the\n"
        "mean of the bands.");
    command->footer("Example: there and back:\n"
                    "  zrt-batch export --ray 3 demo.pnt\n"
                    "  zrt-batch import demo.pnt.m1_r3.fil");
    addRunOptions(*command, *arguments, "Filterbanks (.fil), or @LIST with one path a line.");
    addFolder(*command, arguments->folder);
    command->callback([&chosen, arguments] {
        OutputOptions output;
        output.folder = textOf(arguments->folder);
        chosen.run = [arguments, output] { return runOn(importWork(output), *arguments); };
    });
}

} // namespace

void addFileCommands(CLI::App &app, Chosen &chosen)
{
    addSimulate(app, chosen);
    addInfo(app, chosen);
    addTotext(app, chosen);
    addPlot(app, chosen);
    addExport(app, chosen);
    addImport(app, chosen);
}

} // namespace Batch
