#include "simulator/simulatecommand.h"

#include "simulator/recording.h"
#include "simulator/simulationoptions.h"

#include <sysexits.h>

namespace Simulator {

namespace {

const char manual[] =
    "Writes a simulated recording of the telescope: a \".pnt\" file with its passport and float "
    "samples. The same options give the same bytes on every machine.\n"
    "\n"
    "Every option has the default shown in brackets. A pulse reaches a band of frequency f\n"
    "4148.8 DM (1/f^2 - 1/fref^2) seconds after the last band, fref (frequencies in MHz).\n"
    "\n"
    "Exit codes: 0 done, 64 bad command line, 73 the file cannot be made, 74 writing failed, 75\n"
    "stopped.\n"
    "\n"
    "Example: half an hour of 4 rays with a pulsar in ray 2, on a drifting level:\n"
    "  %1 --points 144083 --rays 4 --drift 2 \\\n"
    "      --pulsar ray=2,period=0.7145,width=0.02,dm=26.8,strength=0.5 half-hour.pnt";

int codeOf(WriteFailure::Kind kind)
{
    switch (kind) {
    case WriteFailure::Kind::CannotCreate:
        return EX_CANTCREAT;
    case WriteFailure::Kind::CannotWrite:
        return EX_IOERR;
    case WriteFailure::Kind::Stopped:
        return EX_TEMPFAIL;
    case WriteFailure::Kind::None:
        break;
    }
    return EX_OK;
}

} // namespace

CommandEnd simulate(const QStringList &arguments, const std::function<bool(int)> &progress)
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
        return {EX_USAGE, "give the name of one file to write; --help shows how."};
    Simulation simulation;
    if (parser.isSet("demo"))
        simulation = demonstration();
    if (const QString problem = readOptions(parser, simulation); !problem.isEmpty())
        return {EX_USAGE, problem};
    if (const QString problem = refusal(simulation); !problem.isEmpty())
        return {EX_USAGE, problem};
    const QString path = parser.positionalArguments().constFirst();
    removeAbandoned({path});
    const WriteFailure failure = writeRecording(simulation, path, progress);
    return {codeOf(failure.kind), failure.text()};
}

} // namespace Simulator
