#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Batch {

/// Checks of options that all commands over days have.
CLI::Validator dateRange();   ///< "2015-04-01:2015-06-30"; either may be missing
CLI::Validator partOfWhole(); ///< "2/12"

/// --dates and --days-off.
void addDatesOption(CLI::App &command, std::string &dates);
void addDaysOffOption(CLI::App &command, std::string &daysOff);

} // namespace Batch
