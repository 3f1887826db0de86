#pragma once

#include "batch/commands.h"

namespace Batch {

/// What all commands over days take beside the parameters of their analysis.
struct DayArguments : TableArguments {
    std::string kept;
    std::string dates;
    std::string part = "1/1";
    std::string interference;
};

inline constexpr char dayFoldersHelp[] =
    "Folders of recordings (.pnt, .pnthr), with their sub-folders.";

void addDatesOption(CLI::App &command, DayArguments &arguments);
/// @param what  is kept: "series"
void addKeptOption(CLI::App &command, DayArguments &arguments, const std::string &what);
void addPartOption(CLI::App &command, DayArguments &arguments, const std::string &help);
void addInterferenceOption(CLI::App &command, DayArguments &arguments);

/// The folders that were given, as absolute paths.
QStringList foldersOf(const DayArguments &arguments);

/// First and last date, "2015-04-01"; either may be empty.
std::pair<QString, QString> datesOf(const DayArguments &arguments);

/// The part and the number of parts.
std::pair<int, int> partOf(const DayArguments &arguments);

} // namespace Batch
