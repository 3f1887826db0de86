#include "batch/dayoptions.h"

#include <QDate>
#include <QStringList>

namespace Batch {

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

void addDatesOption(CLI::App &command, std::string &dates)
{
    command
        .add_option("--dates", dates,
                    "First and last date of the days, UTC, as 2015-04-01:2015-06-30.")
        ->type_name("DATES")
        ->check(dateRange());
}

void addDaysOffOption(CLI::App &command, std::string &daysOff)
{
    command
        .add_option("--days-off", daysOff,
                    "Days that do not count: dates, or dates with times as the table of days has "
                    "them, with commas.")
        ->type_name("LIST");
}

} // namespace Batch
