#include "batch/comparework.h"
#include "batch/dayoptions.h"
#include "batch/dayswork.h"
#include "batch/fieldoptions.h"

#include <memory>
#include <tuple>

// survey, stack and days: analyses over the days of folders.

namespace Batch {

namespace {

using Days::FourierDaysAnalysis;
using Days::FourierDaysField;
using Days::FourierDaysParameters;

constexpr char surveyManual[] =
    "Reads what analyses over days need and keeps it: of each day the sum of the bands over the\n"
    "stretch, before any base line, as a small result file. Recordings are read once; stacks are\n"
    "made of what is kept. Days are worked on side by side, in any order and on any number of\n"
    "machines; what is kept is skipped, so that the same command goes on where it stopped. Days\n"
    "and recordings that do not fit are told with their reasons.";

constexpr char surveyExamples[] =
    "Examples: ray 7 from point 1000 of every file on; the second of twelve parts of the days:\n"
    "  zrt-batch survey --module 1 --ray 7 --dm 26.2 --point 1000 .\n"
    "  zrt-batch survey --module 1 --ray 7 --dm 26.2 --part 2/12 .";

struct DaysArguments : DayArguments {
    FieldOptions<FourierDaysParameters> options;
    std::string daysOff;
    bool allDays = false;
    bool savesSpectra = false;
};

void addSeriesFields(CLI::App &command, const FourierDaysAnalysis &analysis,
                     DaysArguments &arguments)
{
    for (const FourierDaysField *field : analysis.fields) {
        if (analysis.seriesOptions.contains(field->option))
            arguments.options.add(command, *field);
    }
}

void addStackOptions(CLI::App &command, DaysArguments &arguments)
{
    command.add_flag("--all-days", arguments.allDays,
                     "Count days too that the rule proposes to leave out.");
    addDaysOffOption(command, arguments.daysOff);
    addInterferenceOption(command, arguments);
    command.add_flag("--save-spectra", arguments.savesSpectra,
                     "Write the whitened spectra of the days, with --ffa their periodograms too, "
                     "as a result file.");
}

DaysRequest requestOf(const DaysArguments &arguments)
{
    DaysRequest request;
    request.parameters = arguments.options.parameters;
    request.folders = foldersOf(arguments);
    request.kept = textOf(arguments.kept);
    std::tie(request.firstDate, request.lastDate) = datesOf(arguments);
    std::tie(request.part, request.parts) = partOf(arguments);
    request.allDays = arguments.allDays;
    request.daysOff = textOf(arguments.daysOff).split(',', Qt::SkipEmptyParts);
    request.interference = textOf(arguments.interference);
    request.savesSpectra = arguments.savesSpectra;
    request.output = outputOptionsOf(arguments);
    return request;
}

void addSurvey(CLI::App &app, Chosen &chosen, const FourierDaysAnalysis &analysis)
{
    CLI::App *const command = app.add_subcommand(Days::surveyCommand, surveyManual);
    command->footer(surveyExamples);
    const auto arguments = std::make_shared<DaysArguments>();
    addSeriesFields(*command, analysis, *arguments);
    addDatesOption(*command, *arguments);
    addKeptOption(*command, *arguments, "series");
    addPartOption(*command, *arguments, "Every N-th day only, from the K-th on.");
    addRunOptions(*command, *arguments, dayFoldersHelp, "DIR");
    command->callback([&chosen, arguments] {
        arguments->options.takeOver();
        chosen.run = [arguments] {
            return surveyDays(requestOf(*arguments), runOptionsOf(*arguments));
        };
    });
}

void addStack(CLI::App &app, Chosen &chosen)
{
    const FourierDaysAnalysis &first = Days::fourierDaysAnalyses().front();
    CLI::App *const command =
        app.add_subcommand(first.command.toStdString(), first.manual.toStdString());
    command->footer(first.examples.toStdString());
    const auto arguments = std::make_shared<DaysArguments>();
    std::vector<const FourierDaysAnalysis *> analyses;
    for (const FourierDaysAnalysis &analysis : Days::fourierDaysAnalyses())
        analyses.push_back(&analysis);
    addFieldsOfAll(*command, analyses, arguments->options);
    addDatesOption(*command, *arguments);
    addKeptOption(*command, *arguments, "series");
    addStackOptions(*command, *arguments);
    addRunOptions(*command, *arguments, dayFoldersHelp, "DIR");
    addOutputOptions(*command, *arguments);
    command->callback([&chosen, arguments] {
        arguments->options.takeOver();
        chosen.paints = !arguments->picture.empty();
        chosen.run = [arguments] {
            return stackDays(requestOf(*arguments), runOptionsOf(*arguments));
        };
    });
}

struct CompareArguments : DayArguments {
    FieldOptions<Compare::CompareParameters> options;
    std::string daysOff;
};

CompareRequest requestOf(const CompareArguments &arguments)
{
    CompareRequest request;
    request.parameters = arguments.options.parameters;
    request.folders = foldersOf(arguments);
    request.kept = textOf(arguments.kept);
    request.daysOff = textOf(arguments.daysOff).split(',', Qt::SkipEmptyParts);
    request.output = outputOptionsOf(arguments);
    return request;
}

void addCompare(CLI::App &app, Chosen &chosen)
{
    const Compare::CompareAnalysis &analysis = Compare::compareAnalysis();
    CLI::App *const command =
        app.add_subcommand(analysis.command.toStdString(), analysis.manual.toStdString());
    command->footer(analysis.examples.toStdString());
    const auto arguments = std::make_shared<CompareArguments>();
    for (const Compare::CompareField *field : analysis.fields)
        arguments->options.add(*command, *field);
    addKeptOption(*command, *arguments, "series");
    addDaysOffOption(*command, arguments->daysOff);
    addRunOptions(*command, *arguments, dayFoldersHelp, "DIR");
    addOutputOptions(*command, *arguments);
    command->callback([&chosen, arguments] {
        arguments->options.takeOver();
        chosen.paints = !arguments->picture.empty();
        chosen.run = [arguments] {
            return compareDays(requestOf(*arguments), runOptionsOf(*arguments));
        };
    });
}

} // namespace

void addDayCommands(CLI::App &app, Chosen &chosen)
{
    addSurvey(app, chosen, Days::fourierDaysAnalyses().front());
    addStack(app, chosen);
    addCompare(app, chosen);
}

} // namespace Batch
