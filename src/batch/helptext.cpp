#include "batch/helptext.h"

#include <sstream>

namespace Batch {

namespace {

constexpr std::size_t lineWidth = 80;
constexpr std::size_t indent = 26;

// The text in lines that begin in the column `indent`, the first beside `label`.
std::string besideLabel(const std::string &label, const std::string &text)
{
    std::string lines = "  " + label;
    std::string line;
    const auto endLine = [&] {
        const std::size_t begin =
            lines.rfind('\n') == std::string::npos ? 0 : lines.rfind('\n') + 1;
        const std::size_t used = lines.size() - begin;
        if (used + 2 > indent)
            lines += "\n" + std::string(indent, ' ');
        else
            lines += std::string(indent - used, ' ');
        lines += line;
        line.clear();
    };
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!line.empty() && indent + line.size() + 1 + word.size() > lineWidth) {
            endLine();
            lines += "\n";
        }
        line += (line.empty() ? "" : " ") + word;
    }
    endLine();
    return lines + "\n";
}

} // namespace

std::string HelpFormatter::make_option(const CLI::Option *option, bool isPositional) const
{
    std::string label = option->get_name(isPositional, true);
    if (isPositional)
        label = option->get_name(true) + (option->get_expected_max() > 1 ? "..." : "");
    else if (option->get_type_size() != 0 && !option->get_type_name().empty())
        label += " " + option->get_type_name().substr(0, option->get_type_name().find(':'));
    std::string text = option->get_description();
    if (!option->get_default_str().empty())
        text += " [" + option->get_default_str() + "]";
    return besideLabel(label, text);
}

// What a command does, up to the first colon or full stop.
std::string HelpFormatter::make_subcommand(const CLI::App *command) const
{
    const std::string text = command->get_description();
    return besideLabel(command->get_name(), text.substr(0, text.find_first_of(".:")) + ".");
}

std::string HelpFormatter::make_description(const CLI::App *app) const
{
    return app->get_description() + "\n\n";
}

} // namespace Batch
