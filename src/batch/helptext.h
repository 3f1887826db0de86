#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Batch {

/// Lays out the manuals of the commands: 80 columns, defaults in brackets behind what an option
/// does.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option(const CLI::Option *option, bool isPositional) const override;
    std::string make_subcommand(const CLI::App *command) const override;
    std::string make_description(const CLI::App *app) const override;
};

} // namespace Batch
