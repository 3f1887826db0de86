#include "batch/commands.h"
namespace Batch {
void addCoordinateCommands(CLI::App &, Chosen &)
{}
} // namespace Batch
