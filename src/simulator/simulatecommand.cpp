#include "simulator/simulatecommand.h"

#include "simulator/daysoptions.h"
#include "simulator/recording.h"
#include "simulator/simulationoptions.h"
#include "simulator/writedays.h"

#include <sysexits.h>

namespace Simulator {

namespace {

const char manual[] =
    "Writes a simulated recording of the telescope: a \".pnt\" file with its passport and float "
    "samples; or, with --days, a folder of recordings of many days. The same options give the "
    "same bytes on every machine.\n"
    "\n"
    "Every option has the default shown in brackets. A pulse reaches a band of frequency f\n"
    "4148.8 DM (1/f^2 - 1/fref^2) seconds after the last band, fref (frequencies in MHz).\n"
    "\n"
    "Exit codes: 0 done, 64 bad command line, 73 the file cannot be made, 74 writing failed, 75\n"
    "stopped.\n"
    "\n"
    "Example: half an hour of 4 rays with a pulsar in ray 2, on a drifting level:\n"
    "  %1 --points 144083 --rays 4 --drift 2 \\\n"
    "      --pulsar ray=2,period=0.7145,width=0.02,dm=26.8,strength=0.5 half-hour.pnt\n"
    "\n"
    "Example: a year with a pulsar that no single day shows:\n"
    "  %1 --demo --days 365 year";

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

// One recording.
CommandEnd simulateFile(const QCommandLineParser &parser, const QString &path,
                        const std::function<bool(int)> &progress)
{
    Simulation simulation;
    if (parser.isSet("demo"))
        simulation = demonstration();
    if (const QString problem = readOptions(parser, simulation); !problem.isEmpty())
        return {EX_USAGE, problem};
    if (const QString problem = refusal(simulation); !problem.isEmpty())
        return {EX_USAGE, problem};
    removeAbandoned({path});
    const WriteFailure failure = writeRecording(simulation, path, progress);
    return {codeOf(failure.kind), failure.text()};
}

// A folder of days.
CommandEnd simulateDays(const QCommandLineParser &parser, const QString &folder,
                        const std::function<bool(int)> &progress)
{
    DaysSimulation days;
    if (parser.isSet("demo"))
        days = demonstrationDays();
    if (const QString problem = readDaysOptions(parser, days); !problem.isEmpty())
        return {EX_USAGE, problem};
    if (const QString problem = refusal(days); !problem.isEmpty())
        return {EX_USAGE, problem};
    const DaysWritten written = writeDays(days, folder, progress);
    if (!written.failure)
        return {};
    return {codeOf(written.failure.kind), QString("%1 Of %2 recordings %3 stand in %4.")
                                              .arg(written.failure.text())
                                              .arg(written.allFiles)
                                              .arg(written.files)
                                              .arg(folder)};
}

} // namespace

CommandEnd simulate(const QStringList &arguments, const std::function<bool(int)> &progress)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString(manual).arg(arguments.constFirst()));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({"demo",
                      "Start from the demonstration recording (85 MB, a pulsar in ray 7 that the "
                      "presets of the pulsar form show) instead of the defaults; further options "
                      "change it. With --days a strip with a weak pulsar at 05:30:00 +28:36:00, in "
                      "ray 1; a year takes 870 MB."});
    addOptions(parser);
    addDaysOptions(parser);
    parser.addPositionalArgument("FILE", "The recording to write; replaced when it exists. With "
                                         "--days the folder.");
    parser.process(arguments);

    if (parser.positionalArguments().size() != 1)
        return {EX_USAGE, "give the name of one file to write; --help shows how."};
    const QString path = parser.positionalArguments().constFirst();
    if (parser.isSet("days"))
        return simulateDays(parser, path, progress);
    if (const QString option = daysOptionGiven(parser); !option.isEmpty())
        return {EX_USAGE, option + " needs --days."};
    return simulateFile(parser, path, progress);
}

} // namespace Simulator
