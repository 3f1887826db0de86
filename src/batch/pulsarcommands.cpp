#include "batch/commands.h"
#include "batch/pulsarwork.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"

#include <memory>

// native, fold, sum, fourier and dmscan: the actions of the pulsar form.

namespace Batch {

namespace {

struct PulsarArguments : TableArguments {
    PulsarParameters parameters = pulsarPresets();
    std::string utc;
    std::string noise = parameters.noise.toStdString();
    std::vector<double> compare;
    int count = 0;
    int average = -1; // not given
    PlaceOptions places;
    bool eachAverage = false;
    bool eachStart = false;
};

void addSelection(CLI::App &command, PulsarArguments &arguments)
{
    PulsarParameters &parameters = arguments.parameters;
    addPlaceOptions(command, parameters.module, parameters.ray, arguments.places);
    auto *const point = command
                            .add_option("--first-point", parameters.firstPoint,
                                        "First point of the stretch, from 0.")
                            ->type_name("POINT")
                            ->capture_default_str();
    command
        .add_option("--utc", arguments.utc,
                    "UTC time of the first point, hh:mm:ss, instead of --first-point.")
        ->type_name("TIME")
        ->excludes(point);
    command
        .add_option("--noise", arguments.noise,
                    "Base line that is taken off: polinom5, median, backSum or without.")
        ->type_name("METHOD")
        ->capture_default_str()
        ->check(CLI::IsMember({"polinom5", "median", "backSum", "without"}));
    command.add_flag("--delete-step", parameters.deleteStep, "Take jumps of the level out first.");
}

void addNormalise(CLI::App &command, PulsarArguments &arguments)
{
    command.add_flag("--normalise", arguments.parameters.normalise,
                     "Divide by the standard deviation once the base line is off.");
}

void addChannel(CLI::App &command, PulsarArguments &arguments)
{
    command.add_option("--channel", arguments.parameters.channel, "Frequency channel, from 1.")
        ->type_name("N")
        ->capture_default_str();
}

void addDispersion(CLI::App &command, PulsarArguments &arguments)
{
    command.add_option("--dm", arguments.parameters.dispersion, "Dispersion, pc/cm^3.")
        ->type_name("DM")
        ->capture_default_str();
}

void addPeriod(CLI::App &command, PulsarArguments &arguments, const std::string &help)
{
    command.add_option("--period", arguments.parameters.period, help)
        ->type_name("SECONDS")
        ->capture_default_str();
}

void addSpectrum(CLI::App &command, PulsarArguments &arguments)
{
    command
        .add_option("--average", arguments.parameters.averageCount,
                    "Times that neighbouring pairs are averaged before the transform.")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(0, 8));
    command.add_flag("--with-null", arguments.parameters.withNull,
                     "Append as many zeros: twice as many lines.");
    command
        .add_option("--harmonic", arguments.parameters.harmonicNum,
                    "Number of the line that is reported or scanned.")
        ->type_name("N")
        ->capture_default_str();
}

using Arguments = std::shared_ptr<PulsarArguments>;

Arguments addCommand(CLI::App &app, Chosen &chosen, const std::string &name,
                     const std::string &manual, const std::string &examples,
                     const std::function<void(CLI::App &, PulsarArguments &)> &addOptions,
                     const std::function<void(const PulsarArguments &, PulsarRequest &)> &complete)
{
    CLI::App *const command = app.add_subcommand(name, manual);
    command->footer(examples);
    const auto arguments = std::make_shared<PulsarArguments>();
    addSelection(*command, *arguments);
    addOptions(*command, *arguments);
    addTableOptions(*command, *arguments);
    command->callback([&chosen, arguments, name, complete] {
        PulsarRequest request;
        request.command = QString::fromStdString(name);
        request.parameters = arguments->parameters;
        request.moduleNumber = arguments->places.moduleNumber;
        request.rayNumber = arguments->places.rayNumber;
        request.parameters.startTime = QString::fromStdString(arguments->utc);
        request.parameters.noise = QString::fromStdString(arguments->noise);
        const double dm = request.parameters.dispersion;
        request.parameters.dispersions = {0, dm / 2, dm, 2 * dm};
        request.output = outputOptionsOf(*arguments);
        complete(*arguments, request);
        chosen.paints = !request.output.picture.isEmpty();
        chosen.run = [arguments, request] { return runOn(pulsarWork(request), *arguments); };
    });
    return arguments;
}

void addNative(CLI::App &app, Chosen &chosen)
{
    addCommand(
        app, chosen, "native",
        "One channel of a ray as recorded, with its base line beside it: \"Show native\" of the\n"
        "pulsar form. Numbers are in the units of the recording.",
        "Example: 2000 points of channel 5 of ray 3, and their picture:\n"
        "  zrt-batch native --ray 3 --channel 5 --count 2000 --plot png demo.pnt",
        [](CLI::App &command, PulsarArguments &arguments) {
            addChannel(command, arguments);
            command
                .add_option("--count", arguments.parameters.points,
                            "Points to show, at least 512. Default: 16384.")
                ->type_name("N")
                ->check(CLI::Range(512, 2147483647));
        },
        [](const PulsarArguments &, PulsarRequest &request) { request.action = "showNative"; });
}

void addFold(CLI::App &app, Chosen &chosen)
{
    addCommand(
        app, chosen, "fold",
        "Folds one channel of a ray on a period, from the first point to the end of the "
        "recording,\n"
        "after its base line is taken off: \"Sum period\" of the pulsar form. One value per phase\n"
        "bin; the report gives the S/N of the best boxcar, its width and its phase.",
        "Example: channel 20 of ray 7 on the period 3.032 s, from the begin on:\n"
        "  zrt-batch fold --channel 20 --period 3.032 --first-point 0 demo.pnt",
        [](CLI::App &command, PulsarArguments &arguments) {
            addChannel(command, arguments);
            addNormalise(command, arguments);
            addPeriod(command, arguments, "Period, s.");
            command
                .add_option("--count", arguments.parameters.points,
                            "Points to fold, at least 512. Default: all to the end.")
                ->type_name("N")
                ->check(CLI::Range(512, 2147483647));
        },
        [](const PulsarArguments &, PulsarRequest &request) { request.action = "sumPeriod"; });
}

void addSum(CLI::App &app, Chosen &chosen)
{
    addCommand(
        app, chosen, "sum",
        "Adds the first 32 bands of a ray over a stretch, each shifted back by its dispersion\n"
        "delay, and finds the base line of the sum: \"Sum channels\" of the pulsar form. With\n"
        "--deduct the sum less its base line; with --average that, averaged in pairs so often.\n"
        "Only the stretch is read, however long the recording.",
        "Examples: the sum of ray 7 with its base line; less its base line, as CSV; 5000 points\n"
        "from 12:10:52 UTC on:\n"
        "  zrt-batch sum --dm 26.2 demo.pnt\n"
        "  zrt-batch sum --deduct --noise median --format csv --tag less demo.pnt\n"
        "  zrt-batch sum --count 5000 --utc 12:10:52 --tag short demo.pnt",
        [](CLI::App &command, PulsarArguments &arguments) {
            addDispersion(command, arguments);
            addNormalise(command, arguments);
            auto *const deduct = command.add_flag("--deduct", arguments.parameters.deductNoise,
                                                  "The sum less its base line instead of both.");
            auto *const average =
                command
                    .add_option("--average", arguments.average,
                                "The sum less its base line, pairs averaged so often.")
                    ->type_name("N")
                    ->check(CLI::Range(0, 8))
                    ->excludes(deduct);
            command.add_option("--count", arguments.count, "Points of the sum. Default: 16384.")
                ->type_name("N")
                ->check(CLI::Range(1, 2147483647))
                ->excludes(average);
        },
        [](const PulsarArguments &arguments, PulsarRequest &request) {
            const bool isAverage = arguments.average >= 0;
            request.action = isAverage ? "sumChannelsAndAverage" : "sumChannelsDemoNoise";
            if (isAverage)
                request.parameters.averageCount = arguments.average;
            if (arguments.count != PulsarCalculate::fixedPoints)
                request.parameters.points = arguments.count;
        });
}

void addFourier(CLI::App &app, Chosen &chosen)
{
    addCommand(
        app, chosen, "fourier",
        "Amplitude spectrum of the sum of the bands over 16384 points, less its base line:\n"
        "\"Fourier of sum channels\" of the pulsar form. Columns: the spectrum, one sigma and N\n"
        "sigma; the report lists the first 15 lines above N sigma. With --compare the spectra at\n"
        "four dispersions, the first three raised by 0.15, 0.10 and 0.05.",
        "Examples: spectra of all recordings of a folder with pictures; four dispersions:\n"
        "  zrt-batch fourier --ray 7 --dm 26.2 --plot png -o results .\n"
        "  zrt-batch fourier --compare 0 13.1 26.2 52.4 --tag four demo.pnt",
        [](CLI::App &command, PulsarArguments &arguments) {
            addDispersion(command, arguments);
            addNormalise(command, arguments);
            addSpectrum(command, arguments);
            command
                .add_option("--sigma", arguments.parameters.sigmaMultiple,
                            "Threshold of the listed lines, in sigmas.")
                ->type_name("N")
                ->capture_default_str()
                ->check(CLI::Range(1, 1000));
            addPeriod(command, arguments, "Period, s, whose harmonic number the report tells.");
            command.add_option("--compare", arguments.compare, "Four dispersions to compare.")
                ->type_name("DM DM DM DM")
                ->expected(4);
        },
        [](const PulsarArguments &arguments, PulsarRequest &request) {
            const bool isFour = arguments.compare.size() == 4;
            request.action = isFour ? "sum4Dispersions" : "sumChannelsAndFourier";
            if (isFour)
                std::copy(arguments.compare.begin(), arguments.compare.end(),
                          request.parameters.dispersions.begin());
        });
}

void addDmScan(CLI::App &app, Chosen &chosen)
{
    addCommand(
        app, chosen, "dmscan",
        "The amplitude of one line of the spectrum at 201 dispersions from 0 to twice the given "
        "one\n"
        "(at least to 20), with a polynomial of degree 3: \"First harmonic/disp\" of the pulsar\n"
        "form. The report gives the dispersion at which the bands add up best, with its error.",
        "Examples: harmonic 1080; the same for every averaging to 2; from several first points:\n"
        "  zrt-batch dmscan --harmonic 1080 demo.pnt\n"
        "  zrt-batch dmscan --harmonic 1080 --average 2 --each-average --tag averages demo.pnt\n"
        "  zrt-batch dmscan --harmonic 1080 --first-point 0 --each-start --tag starts demo.pnt",
        [](CLI::App &command, PulsarArguments &arguments) {
            addDispersion(command, arguments);
            addNormalise(command, arguments);
            addSpectrum(command, arguments);
            addPeriod(command, arguments,
                      "Period, s; the report says if the harmonic is none of its.");
            auto *const averages =
                command.add_flag("--each-average", arguments.eachAverage,
                                 "One scan for every averaging up to --average.");
            auto *const starts =
                command
                    .add_flag("--each-start", arguments.eachStart,
                              "One scan for every first point, a delta apart, at most eight.")
                    ->excludes(averages);
            command
                .add_option(
                    "--delta", arguments.parameters.startDelta,
                    "Points between the first points. Default: a sixteenth of the recording.")
                ->type_name("POINTS")
                ->needs(starts);
        },
        [](const PulsarArguments &arguments, PulsarRequest &request) {
            request.action = arguments.eachAverage ? "sumMultiDispersions"
                             : arguments.eachStart ? "sumTimeDispersions"
                                                   : "sumAllDispersions";
        });
}

} // namespace

void addPulsarCommands(CLI::App &app, Chosen &chosen)
{
    addNative(app, chosen);
    addSum(app, chosen);
    addFourier(app, chosen);
    addFold(app, chosen);
    addDmScan(app, chosen);
}

} // namespace Batch
