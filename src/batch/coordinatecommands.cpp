#include "batch/commands.h"
#include "batch/programname.h"
#include "calculators/calculators.h"
#include "coords/raytables.h"

#include <cstdio>
#include <memory>

// cat2zrt, zrt2cat and ray: the calculators, on the standard output.

namespace Batch {

using namespace Results;

namespace {

// Names of the values for the fields that a calculator fills.
using Names = std::vector<std::pair<QString, QString>>;

ExitCode printAnswer(const QString &command, const std::vector<HeaderLine> &given,
                     const Calculator::Answer &answer, const Names &names, Format format)
{
    const QString problem = answer.problems.join(' ');
    const auto isEmpty = [&](const auto &name) { return answer.outputs[name.first].isEmpty(); };
    if (!answer.failing.isEmpty() || std::any_of(names.begin(), names.end(), isEmpty)) {
        printError(command + ": " + problem);
        return answer.failing.isEmpty() ? ExitCode::BadData : ExitCode::Usage;
    }
    if (!problem.isEmpty())
        printError(command + ": " + problem);
    ResultTable table;
    table.request = {{"program", programName()}, {"command", command}};
    QByteArray text;
    const auto add = [&](const QString &name, const QString &value) {
        table.columns.push_back({name, {}, QStringList(value)});
        text += QString("%1 %2\n").arg(name, -12).arg(value).toUtf8();
    };
    for (const HeaderLine &line : given)
        add(line.key, line.value);
    for (const auto &[field, name] : names)
        add(name, answer.outputs[field]);
    if (format != Format::Text)
        text = table.toBytes(format);
    const auto size = std::size_t(text.size());
    if (std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0)
        return ExitCode::Done;
    printError("The standard output cannot be written.");
    return ExitCode::InputOutput;
}

void addTres(CLI::App &command, std::string &tres)
{
    command.add_option("--tres", tres, "Step of the recording, s: 0.0124928, 0.0999424, 0.003072.")
        ->type_name("SECONDS")
        ->capture_default_str();
}

CLI::Option *addPlosh(CLI::App &command, std::string &plosh)
{
    return command.add_option("--plosh", plosh, "Site: N0, N1, N2 or N4.")
        ->type_name("SITE")
        ->capture_default_str()
        ->check(CLI::IsMember({"N0", "N1", "N2", "N4"}));
}

void addCatalogToZrt(CLI::App &app, Chosen &chosen)
{
    struct Arguments {
        std::string alfa, delta, date, plosh = "N1", tres = "0.0124928", format = "text";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "cat2zrt", "From catalogue coordinates of 2000 to the telescope: when a source crosses the "
                   "beam plane\n"
                   "on a date (UTC), in which recording, and at which of its points.");
    command->footer("Example:\n"
                    "  zrt-batch cat2zrt 03:23:27 39:44:52 01.04.2015");
    command->add_option("ALFA", arguments->alfa, "Right ascension of 2000, hh:mm:ss.")->required();
    command->add_option("DELTA", arguments->delta, "Declination of 2000, dd:mm:ss.")->required();
    command->add_option("DATE", arguments->date, "dd.mm.yyyy, UTC.")->required();
    addPlosh(*command, arguments->plosh);
    addTres(*command, arguments->tres);
    addFormatOption(*command, arguments->format);
    command->callback([&chosen, arguments] {
        chosen.run = [arguments] {
            Calculator::CatalogInput input;
            input.alfa = textOf(arguments->alfa);
            input.delta = textOf(arguments->delta);
            input.date = textOf(arguments->date);
            input.plosh = textOf(arguments->plosh);
            input.tres = textOf(arguments->tres);
            return printAnswer("cat2zrt",
                               {{"alfa", input.alfa}, {"delta", input.delta}, {"date", input.date}},
                               Calculator::catalogToZrt(input),
                               {{"cat2zrt_time", "utc"},
                                {"cat2zrt_sec", "seconds"},
                                {"cat2zrt_fileName", "recording"},
                                {"cat2zrt_culmPoint", "point"}},
                               formatOf(arguments->format));
        };
    });
}

void addZrtToCatalog(CLI::App &app, Chosen &chosen)
{
    struct Arguments {
        std::string date, time, point, delta, tres = "0.0124928", format = "text";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command =
        app.add_subcommand("zrt2cat", "From the telescope to the catalogue: coordinates of 2000, "
                                      "and the name after them, of what\n"
                                      "crosses the beam plane at a declination and a time (UTC).");
    command->footer("Example:\n"
                    "  zrt-batch zrt2cat 01.04.2015 12:13:20.66 64090 39:44:52");
    command->add_option("DATE", arguments->date, "dd.mm.yyyy, UTC.")->required();
    command->add_option("TIME", arguments->time, "hh:mm:ss, with or without decimals, UTC.")
        ->required();
    command->add_option("POINT", arguments->point, "Sample of the culmination, for the estimate.")
        ->required();
    command->add_option("DELTA", arguments->delta, "Declination of the date, dd:mm:ss.")
        ->required();
    addTres(*command, arguments->tres);
    addFormatOption(*command, arguments->format);
    command->callback([&chosen, arguments] {
        chosen.run = [arguments] {
            Calculator::ZrtInput input;
            input.date = textOf(arguments->date);
            input.time = textOf(arguments->time);
            input.point = textOf(arguments->point);
            input.delta = textOf(arguments->delta);
            input.tres = textOf(arguments->tres);
            return printAnswer("zrt2cat",
                               {{"date", input.date}, {"time", input.time}, {"point", input.point}},
                               Calculator::zrtToCatalog(input),
                               {{"zrt2cat_alfa", "alfa"},
                                {"zrt2cat_delta", "delta"},
                                {"zrt2cat_pulsarName", "name"},
                                {"zrt2cat_alfaKest", "alfa_kest"}},
                               formatOf(arguments->format));
        };
    });
}

void addRay(CLI::App &app, Chosen &chosen)
{
    struct Arguments {
        int module = 1, ray = 1;
        std::string plosh = "N1", format = "text";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "ray", "Declination of a ray: the direction of a module's beam at a site.");
    command->footer("Example: module 2, ray 5 at the site N1:\n"
                    "  zrt-batch ray 2 5 --plosh N1");
    command->add_option("MODULE", arguments->module, "From 1.")->required();
    command->add_option("RAY", arguments->ray, "From 1.")->required();
    addPlosh(*command, arguments->plosh);
    addFormatOption(*command, arguments->format);
    command->callback([&chosen, arguments] {
        chosen.run = [arguments] {
            const QString plosh = textOf(arguments->plosh);
            return printAnswer("ray",
                               {{"module", QString::number(arguments->module)},
                                {"ray", QString::number(arguments->ray)},
                                {"plosh", plosh}},
                               Calculator::deltaFromRay({plosh, arguments->module, arguments->ray},
                                                        Tools::rayTables()),
                               {{"calcdelta_delta", "delta"}, {"calcdelta_deltaD", "degrees"}},
                               formatOf(arguments->format));
        };
    });
}

} // namespace

void addCoordinateCommands(CLI::App &app, Chosen &chosen)
{
    addCatalogToZrt(app, chosen);
    addZrtToCatalog(app, chosen);
    addRay(app, chosen);
}

} // namespace Batch
