#include "batch/dayoptions.h"

#include <QDate>
#include <QDir>
#include <QStringList>

namespace Batch {

namespace {

// "2015-04-01:2015-06-30"; either may be missing.
CLI::Validator dateRange()
{
    return CLI::Validator(
        [](const std::string &text) {
            const QStringList ends = QString::fromStdString(text).split(':');
            const auto isDate = [](const QString &end) {
                return end.isEmpty() || QDate::fromString(end, Qt::ISODate).isValid();
            };
            return ends.size() == 2 && isDate(ends[0]) && isDate(ends[1])
                       ? std::string()
                       : "dates are like 2015-04-01:2015-06-30; either may be missing";
        },
        "");
}

// "2/12".
CLI::Validator partOfWhole()
{
    return CLI::Validator(
        [](const std::string &text) {
            const QStringList numbers = QString::fromStdString(text).split('/');
            return numbers.size() == 2 && numbers[0].toInt() >= 1 &&
                           numbers[0].toInt() <= numbers[1].toInt()
                       ? std::string()
                       : "a part is like 2/12";
        },
        "");
}

} // namespace

void addDatesOption(CLI::App &command, DayArguments &arguments)
{
    command
        .add_option("--dates", arguments.dates,
                    "First and last date of the days, UTC, as 2015-04-01:2015-06-30.")
        ->type_name("DATES")
        ->check(dateRange());
}

void addKeptOption(CLI::App &command, DayArguments &arguments, const std::string &what)
{
    command
        .add_option("--kept", arguments.kept,
                    "Folder of the " + what +
                        " that are kept. Default: zrt-days in the first folder, or in the user's "
                        "cache where that cannot be written.")
        ->type_name("FOLDER");
}

void addPartOption(CLI::App &command, DayArguments &arguments, const std::string &help)
{
    command.add_option("--part", arguments.part, help)->type_name("K/N")->check(partOfWhole());
}

void addInterferenceOption(CLI::App &command, DayArguments &arguments)
{
    command
        .add_option("--interference", arguments.interference,
                    "List of frequencies and periods that are left out, or none. Default: the "
                    "user's own list.")
        ->type_name("FILE");
}

QStringList foldersOf(const DayArguments &arguments)
{
    QStringList folders;
    for (const std::string &folder : arguments.inputs)
        folders << QDir::cleanPath(QDir().absoluteFilePath(textOf(folder)));
    return folders;
}

std::pair<QString, QString> datesOf(const DayArguments &arguments)
{
    const QString dates = textOf(arguments.dates);
    return {dates.section(':', 0, 0), dates.section(':', 1, 1)};
}

std::pair<int, int> partOf(const DayArguments &arguments)
{
    const QString part = textOf(arguments.part);
    return {part.section('/', 0, 0).toInt(), part.section('/', 1, 1).toInt()};
}

} // namespace Batch
