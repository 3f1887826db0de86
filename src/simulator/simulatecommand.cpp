#include "simulator/simulatecommand.h"

#include "simulator/recording.h"
#include "simulator/simulationoptions.h"

namespace Simulator {

namespace {

const char manual[] =
    "Writes a simulated recording of the telescope: a \".pnt\" file with its passport and float "
    "samples. The same options give the same bytes on every machine.\n"
    "\n"
    "Every option has the default shown in brackets. A pulse reaches a band of frequency f\n"
    "4148.8 DM (1/f^2 - 1/fref^2) seconds after the last band, fref (frequencies in MHz).\n"
    "\n"
    "Example: half an hour of 4 rays with a pulsar in ray 2, on a drifting level:\n"
    "  %1 --points 144083 --rays 4 --drift 2 \\\n"
    "      --pulsar ray=2,period=0.7145,width=0.02,dm=26.8,strength=0.5 half-hour.pnt";

} // namespace

CommandEnd simulate(const QStringList &arguments, const std::function<void(int)> &progress)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString(manual).arg(arguments.constFirst()));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({"demo", "Start from the demonstration recording (85 MB, a pulsar in ray 7 "
                              "that the presets of the pulsar form show) instead of the "
                              "defaults; further options change it."});
    addOptions(parser);
    parser.addPositionalArgument("FILE", "The recording to write; replaced when it exists.");
    parser.process(arguments);

    if (parser.positionalArguments().size() != 1)
        return {true, "give the name of one file to write; --help shows how."};
    Simulation simulation;
    if (parser.isSet("demo"))
        simulation = demonstration();
    if (const QString problem = readOptions(parser, simulation); !problem.isEmpty())
        return {true, problem};
    if (const QString problem = refusal(simulation); !problem.isEmpty())
        return {true, problem};
    return {false, writeRecording(simulation, parser.positionalArguments().constFirst(), progress)};
}

} // namespace Simulator
