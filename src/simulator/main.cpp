#include "simulator/recording.h"
#include "simulator/simulationoptions.h"

#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>
#include <unistd.h>

namespace {

const char manual[] =
    "Writes a simulated recording of the telescope: a \".pnt\" file with its passport and float "
    "samples. The same options give the same bytes on every machine.\n"
    "\n"
    "Every option has the default shown in brackets. A pulse reaches a band of frequency f\n"
    "4148.8 DM (1/f^2 - 1/fref^2) seconds after the last band, fref (frequencies in MHz).\n"
    "\n"
    "Example: half an hour of 4 rays with a pulsar in ray 2, on a drifting level:\n"
    "  zrt-simulate --points 144083 --rays 4 --drift 2 \\\n"
    "      --pulsar ray=2,period=0.7145,width=0.02,dm=26.8,strength=0.5 half-hour.pnt";

// Shows the percentage in one line of a terminal; a log file gets nothing.
void showProgress(int percent)
{
    if (!isatty(fileno(stderr)))
        return;
    QTextStream(stderr) << '\r' << percent << " %" << (percent == 100 ? "\n" : "");
}

int fail(const QString &text)
{
    QTextStream(stderr) << "zrt-simulate: " << text << '\n';
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("zrt-simulate");
    QCoreApplication::setApplicationVersion("2.0.0");

    QCommandLineParser parser;
    parser.setApplicationDescription(manual);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({"demo", "Start from the demonstration recording (85 MB, a pulsar in ray 7 "
                              "that the presets of the pulsar form show) instead of the "
                              "defaults; further options change it."});
    Simulator::addOptions(parser);
    parser.addPositionalArgument("FILE", "The recording to write; replaced when it exists.");
    parser.process(application);

    if (parser.positionalArguments().size() != 1)
        return fail("give the name of one file to write; --help shows how.");
    Simulator::Simulation simulation;
    if (parser.isSet("demo"))
        simulation = Simulator::demonstration();
    if (const QString error = Simulator::readOptions(parser, simulation); !error.isEmpty())
        return fail(error);
    const QString error = Simulator::writeRecording(
        simulation, parser.positionalArguments().constFirst(), showProgress);
    return error.isEmpty() ? 0 : fail(error);
}
