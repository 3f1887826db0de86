#include "calc/pulsar/pulsaranalyses.h"

// What the batch program says of the actions, and the options of its commands.

namespace {

constexpr int mostPoints = 2147483647;
constexpr int mostAverages = 8;

// What every command takes first.
const std::vector<CommandOption> common = {
    {"--first-point"},
    {"--utc", "", 0, 0, false, "--first-point"},
    {"--noise"},
    {"--delete-step"},
};

PulsarCommand command(const char *name, const char *manual, const char *examples,
                      const std::vector<CommandOption> &own)
{
    PulsarCommand made = {name, manual, examples, common};
    made.options.insert(made.options.end(), own.begin(), own.end());
    return made;
}

PulsarCommand nativeCommand()
{
    return command(
        "native",
        "One channel of a ray as recorded, with its base line beside it: \"Show native\" of the\n"
        "pulsar form. Numbers are in the units of the recording.",
        "Example: 2000 points of channel 5 of ray 3, and their picture:\n"
        "  zrt-batch native --ray 3 --channel 5 --count 2000 --plot png demo.pnt",
        {{"--channel"},
         {"--count", "Points to show, at least 512. Default: 16384.", 512, mostPoints, false}});
}

PulsarCommand sumCommand()
{
    return command(
        "sum",
        "Adds the first 32 bands of a ray over a stretch, each shifted back by its dispersion\n"
        "delay, and finds the base line of the sum: \"Sum channels\" of the pulsar form. With\n"
        "--deduct the sum less its base line; with --average that, averaged in pairs so often.\n"
        "Only the stretch is read, however long the recording.",
        "Examples: the sum of ray 7 with its base line; less its base line, as CSV; 5000 points\n"
        "from 12:10:52 UTC on:\n"
        "  zrt-batch sum --dm 26.2 demo.pnt\n"
        "  zrt-batch sum --deduct --noise median --format csv --tag less demo.pnt\n"
        "  zrt-batch sum --count 5000 --utc 12:10:52 --tag short demo.pnt",
        {{"--dm"},
         {"--channels-off", "", 0, 0, false},
         {"--normalise"},
         {"--deduct"},
         {"--average", "The sum less its base line, pairs averaged so often.", 0, mostAverages,
          false, "--deduct"},
         {"--count", "Points of the sum. Default: 16384.", 1, mostPoints, false, "--average"}});
}

PulsarCommand fourierCommand()
{
    return command(
        "fourier",
        "Amplitude spectrum of the sum of the bands over 16384 points, less its base line:\n"
        "\"Fourier of sum channels\" of the pulsar form. Columns: the spectrum, one sigma and N\n"
        "sigma; the report lists the first 15 lines above N sigma. With --compare the spectra at\n"
        "four dispersions, the first three raised by 0.15, 0.10 and 0.05.",
        "Examples: spectra of all recordings of a folder with pictures; four dispersions:\n"
        "  zrt-batch fourier --ray 7 --dm 26.2 --plot png -o results .\n"
        "  zrt-batch fourier --compare 0 13.1 26.2 52.4 --tag four demo.pnt",
        {{"--dm"},
         {"--channels-off", "", 0, 0, false},
         {"--normalise"},
         {"--average", "", 0, mostAverages},
         {"--with-null"},
         {"--harmonic"},
         {"--cut", "", 0, 0, false},
         {"--sigma", "", 1, 1000},
         {"--period", "Period, s, whose harmonic number the report tells."},
         {"--compare"}});
}

PulsarCommand foldCommand()
{
    return command(
        "fold",
        "Folds one channel of a ray on a period, from the first point to the end of the "
        "recording,\n"
        "after its base line is taken off: \"Sum period\" of the pulsar form. One value per phase\n"
        "bin; the report gives the S/N of the best boxcar, its width and its phase. With --sum "
        "the\n"
        "sum of the first 32 bands, each shifted back by its dispersion delay, and a column for\n"
        "each band, in sigmas of its samples: phase against frequency, which --plot paints as a\n"
        "picture of its own.",
        "Examples: channel 20 of ray 7 on the period 3.032 s, from the begin on; the sum of the\n"
        "bands with both pictures:\n"
        "  zrt-batch fold --channel 20 --period 3.032 --first-point 0 demo.pnt\n"
        "  zrt-batch fold --sum --dm 26.2 --period 3.032 --first-point 0 --tag sum --plot png "
        "demo.pnt",
        {{"--channel"},
         {"--sum", "", 0, 0, true, "--channel"},
         {"--dm", "Dispersion, pc/cm^3, of the sum."},
         {"--channels-off", "", 0, 0, false},
         {"--normalise"},
         {"--cut", "", 0, 0, false},
         {"--period"},
         {"--count", "Points to fold, at least 512. Default: all to the end.", 512, mostPoints,
          false}});
}

PulsarCommand dmscanCommand()
{
    return command(
        "dmscan",
        "The amplitude of one line of the spectrum at 201 dispersions from 0 to twice the given "
        "one\n"
        "(at least to 20), with a polynomial of degree 3: \"First harmonic/disp\" of the pulsar\n"
        "form. The report gives the dispersion at which the bands add up best, with its error.",
        "Examples: harmonic 1080; the same for every averaging to 2; from several first points:\n"
        "  zrt-batch dmscan --harmonic 1080 demo.pnt\n"
        "  zrt-batch dmscan --harmonic 1080 --average 2 --each-average --tag averages demo.pnt\n"
        "  zrt-batch dmscan --harmonic 1080 --first-point 0 --each-start --tag starts demo.pnt",
        {{"--dm"},
         {"--channels-off", "", 0, 0, false},
         {"--normalise"},
         {"--average", "", 0, mostAverages},
         {"--with-null"},
         {"--harmonic"},
         {"--period", "Period, s; the report says if the harmonic is none of its."},
         {"--each-average"},
         {"--each-start", "", 0, 0, true, "--each-average"},
         {"--delta", "", 0, 0, false, "", "--each-start"}});
}

} // namespace

const std::vector<PulsarCommand> &pulsarCommands()
{
    static const std::vector<PulsarCommand> all = {nativeCommand(), sumCommand(), fourierCommand(),
                                                   foldCommand(), dmscanCommand()};
    return all;
}
