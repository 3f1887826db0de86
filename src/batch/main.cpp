#include "base/process.h"
#include "base/stopsignal.h"
#include "batch/commands.h"
#include "batch/helptext.h"
#include "batch/programname.h"

#include <QGuiApplication>
#include <cstdio>
#include <exception>
#include <memory>

namespace {

const char manual[] =
    "The analyses of the workbench without a window, for many recordings of the ZRT.\n"
    "\n"
    "A result stands beside its recording (or in the folder of --output) as\n"
    "RECORDING.COMMAND.txt: a header with everything it was made from and with, then the\n"
    "numbers. It appears whole or not at all. The same command again skips what is done.\n"
    "\n"
    "Exit codes: 0 done or skipped, 64 bad command line, 65 bad data, 66 no such input, 73 an\n"
    "output cannot be made, 74 reading or writing failed, 75 stopped or out of memory, try\n"
    "again. After several failures the first in the order of the inputs counts.";

// Debug lines of the computations; what matters of them is reported in plain words.
void hideDebugLines(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    // The folder of a user's session means nothing here.
    if (type != QtDebugMsg && !text.startsWith("QStandardPaths: XDG_RUNTIME_DIR"))
        Batch::printError(text);
}

std::unique_ptr<QCoreApplication> makeApplication(bool paints, int &argc, char **argv)
{
    if (!paints)
        return std::make_unique<QCoreApplication>(argc, argv);
    // Fonts without a display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

int run(int argc, char **argv)
{
    setUpProcess();
    CLI::App app(manual, "zrt-batch");
    app.set_version_flag("--version", Batch::programName().toStdString());
    app.require_subcommand(1);
    app.footer("zrt-batch COMMAND --help is the manual of a command.");
    app.formatter(std::make_shared<Batch::HelpFormatter>());
    Batch::Chosen chosen;
    Batch::addPulsarCommands(app, chosen);
    Batch::addSearchCommands(app, chosen);
    Batch::addPulsesCommands(app, chosen);
    Batch::addDayCommands(app, chosen);
    Batch::addSkyCommands(app, chosen);
    Batch::addProfileCommands(app, chosen);
    Batch::addPeriodCommands(app, chosen);
    Batch::addFileCommands(app, chosen);
    Batch::addCoordinateCommands(app, chosen);

    // Before there is an application object, whose locale may write numbers with a comma.
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : int(Batch::ExitCode::Usage);
    }
    qInstallMessageHandler(hideDebugLines);
    catchStopSignals();
    const auto application = makeApplication(chosen.paints, argc, argv);
    return int(chosen.run());
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "zrt-batch: %s\n", error.what());
        return int(Batch::ExitCode::TryLater);
    }
}
