#pragma once

#include "batch/failure.h"
#include "batch/runner.h"
#include "batch/tablework.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Batch {

/// What the command line asks for: run once the application object exists.
struct Chosen {
    std::function<ExitCode()> run;
    bool paints = false; ///< needs fonts
};

/// Options of every subcommand that works on files.
struct RunArguments {
    std::vector<std::string> inputs;
    std::string json;
    std::string memory;
    int jobs = 0;
    bool force = false;
    bool quiet = false;
};

/// Options of those that make a table.
struct TableArguments : RunArguments {
    std::string folder;
    std::string tag;
    std::string format = "text";
    std::string picture;
    std::string pictureSize = "1280x720";
};

/// Numbers of the passport that choose a module and a ray instead of their places in the file.
struct PlaceOptions {
    std::optional<int> moduleNumber;
    std::optional<int> rayNumber;
};

QString textOf(const std::string &text);

void addRunOptions(CLI::App &command, RunArguments &arguments, const std::string &inputHelp,
                   const std::string &inputName = "FILE");
/// --output, --tag and --format.
void addFolderOptions(CLI::App &command, TableArguments &arguments);
/// The same, then those of pictures.
void addOutputOptions(CLI::App &command, TableArguments &arguments);
void addTableOptions(CLI::App &command, TableArguments &arguments);
/// --module and --ray, by place, and --module-number and --ray-number.
void addPlaceOptions(CLI::App &command, int &module, int &ray, PlaceOptions &numbers);
void addFormatOption(CLI::App &command, std::string &format);
void addSizeOption(CLI::App &command, std::string &size);

Results::Format formatOf(const std::string &name);
/// A text that addSizeOption() has checked.
void readSize(const std::string &text, OutputOptions &output);
RunOptions runOptionsOf(const RunArguments &arguments);
OutputOptions outputOptionsOf(const TableArguments &arguments);

/// Expands the inputs and works on them.
ExitCode runOn(const Work &work, const RunArguments &arguments);

void addDayCommands(CLI::App &app, Chosen &chosen);
void addSkyCommands(CLI::App &app, Chosen &chosen);
void addProfileCommands(CLI::App &app, Chosen &chosen);
void addPeriodCommands(CLI::App &app, Chosen &chosen);
void addPulsarCommands(CLI::App &app, Chosen &chosen);
void addPulsesCommands(CLI::App &app, Chosen &chosen);
void addSearchCommands(CLI::App &app, Chosen &chosen);
void addFileCommands(CLI::App &app, Chosen &chosen);
void addCoordinateCommands(CLI::App &app, Chosen &chosen);

} // namespace Batch
