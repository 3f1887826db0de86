#include "batch/commands.h"
#include "batch/fieldoptions.h"
#include "batch/periodwork.h"

#include <QDir>
#include <memory>

// period: the period of arrival times.

namespace Batch {

namespace {

struct PeriodArguments : TableArguments {
    FieldOptions<Timing::PeriodParameters> options;
};

ExitCode findPeriods(const PeriodArguments &arguments)
{
    const PeriodRequest request = {arguments.options.parameters, outputOptionsOf(arguments)};
    const std::vector<FieldProblem> problems = Timing::problemsOf(request.parameters);
    if (!problems.empty()) {
        QString option;
        for (const Timing::PeriodField &field : Timing::periodFields()) {
            if (field.name == problems.front().field)
                option = field.option + ": ";
        }
        printError(option + problems.front().line());
        return ExitCode::Usage;
    }
    if (request.parameters.times.isEmpty() == arguments.inputs.empty()) {
        printError("Give files with arrival times, or times behind --times.");
        return ExitCode::Usage;
    }
    if (arguments.inputs.empty())
        return runWork(periodWork(request), {QDir().absoluteFilePath(typedTimesName())},
                       runOptionsOf(arguments));
    return runOn(periodWork(request), arguments);
}

} // namespace

void addPeriodCommands(CLI::App &app, Chosen &chosen)
{
    const Timing::PeriodAnalysis &analysis = Timing::periodAnalysis();
    CLI::App *const command =
        app.add_subcommand(analysis.command.toStdString(), analysis.manual.toStdString());
    command->footer(analysis.examples.toStdString());
    const auto arguments = std::make_shared<PeriodArguments>();
    for (const Timing::PeriodField *field : analysis.fields)
        arguments->options.add(*command, *field);
    addRunOptions(*command, *arguments,
                  "Tables of pulses or arrival times, .tim files, lists of times, or @LIST with "
                  "one path a line.");
    command->get_option("FILE")->required(false);
    addOutputOptions(*command, *arguments);
    command->callback([&chosen, arguments] {
        arguments->options.takeOver();
        chosen.paints = !arguments->picture.empty();
        chosen.run = [arguments] { return findPeriods(*arguments); };
    });
}

} // namespace Batch
