#include "base/process.h"
#include "base/stopsignal.h"
#include "base/version.h"
#include "simulator/simulatecommand.h"

#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>
#include <unistd.h>

namespace {

// Shows the percentage in one line of a terminal; a log file gets nothing. False where the user
// wants to stop.
bool showProgress(int percent)
{
    if (isatty(fileno(stderr)))
        QTextStream(stderr) << '\r' << percent << " %" << (percent == 100 ? "\n" : "");
    return !isStopRequested();
}

} // namespace

int main(int argc, char **argv)
{
    setUpProcess();
    catchStopSignals();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("zrt-simulate");
    QCoreApplication::setApplicationVersion(Version::number);

    QStringList arguments = QCoreApplication::arguments();
    arguments[0] = "zrt-simulate";
    const Simulator::CommandEnd end = Simulator::simulate(arguments, showProgress);
    if (end.problem.isEmpty())
        return 0;
    QTextStream(stderr) << "zrt-simulate: " << end.problem << '\n';
    return end.code;
}
