#pragma once

#include "calc/analysis.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace Batch {

/// Parameters whose options the fields of a registry name: what the parser writes to. Texts, lists
/// and switches that are on by themselves are taken over into the parameters afterwards.
template <typename Parameters>
class FieldOptions {
public:
    explicit FieldOptions(const Parameters &presets = {}) : parameters(presets) {}
    // The parser keeps pointers to what is here.
    FieldOptions(const FieldOptions &) = delete;
    FieldOptions &operator=(const FieldOptions &) = delete;

    Parameters parameters;

    /// Adds the option of a field, bound to the parameter that it sets.
    ///
    /// @param help         in place of what the field says; empty: that
    /// @param showsPreset  behind the help; empty texts and lists have none
    CLI::Option *add(CLI::App &command, const Field<Parameters> &field, const QString &help = {},
                     bool showsPreset = true)
    {
        const std::string text = (help.isEmpty() ? field.help : help).toStdString();
        if (!field.of)
            return command.add_flag(field.option.toStdString(), text);
        CLI::Option *const added = addBound(command, field, text, showsPreset);
        std::vector<std::string> choices;
        for (const FieldChoice &choice : field.choices)
            choices.push_back(choice.value.toStdString());
        if (!choices.empty())
            added->check(CLI::IsMember(choices));
        return added;
    }

    /// Once the command line was read.
    void takeOver()
    {
        for (const auto &[text, typed] : texts)
            *text = QString::fromStdString(typed);
        for (const auto &[flag, isOff] : switches)
            *flag = !isOff;
        for (const auto &[numbers, typed] : lists) {
            if (typed.size() == numbers->size())
                std::copy(typed.begin(), typed.end(), numbers->begin());
        }
    }

private:
    CLI::Option *addBound(CLI::App &command, const Field<Parameters> &field,
                          const std::string &help, bool showsPreset)
    {
        const std::string option = field.option.toStdString();
        const FieldRef ref = field.of(parameters);
        if (auto *const *flag = std::get_if<bool *>(&ref))
            return command.add_flag(option, **flag ? switches[*flag] : **flag, help);
        if (auto *const *whole = std::get_if<int *>(&ref))
            return addValue(command, field, help, showsPreset, **whole);
        if (auto *const *number = std::get_if<double *>(&ref))
            return addValue(command, field, help, showsPreset, **number);
        if (auto *const *list = std::get_if<std::array<double, 4> *>(&ref))
            return addValue(command, field, help, false, lists[*list])->expected(4);
        QString *const text = std::get<QString *>(ref);
        std::string &typed = texts[text] = text->toStdString();
        return addValue(command, field, help, showsPreset && !typed.empty(), typed);
    }

    template <typename Value>
    CLI::Option *addValue(CLI::App &command, const Field<Parameters> &field,
                          const std::string &help, bool showsPreset, Value &value)
    {
        auto *const added = command.add_option(field.option.toStdString(), value, help)
                                ->type_name(field.value.toStdString());
        if (showsPreset)
            added->capture_default_str();
        return added;
    }

    std::map<QString *, std::string> texts;
    std::map<bool *, bool> switches;
    std::map<std::array<double, 4> *, std::vector<double>> lists;
};

/// Adds the options of all analyses of a command. What one of them alone reads goes with the option
/// that chooses it, or not with that of another.
///
/// @param analyses  first that which no option chooses
template <typename Analysis, typename Parameters>
void addFieldsOfAll(CLI::App &command, const std::vector<const Analysis *> &analyses,
                    FieldOptions<Parameters> &options)
{
    std::map<QString, CLI::Option *> added;
    for (const Analysis *analysis : analyses) {
        for (const Field<Parameters> *field : analysis->fields) {
            CLI::Option *&option = added[field->option];
            if (!option)
                option = options.add(command, *field);
        }
    }
    const auto reads = [](const Analysis &analysis, const QString &option) {
        return std::any_of(
            analysis.fields.begin(), analysis.fields.end(),
            [&option](const Field<Parameters> *field) { return field->option == option; });
    };
    for (const Analysis *analysis : analyses) {
        if (analysis->chosenBy.isEmpty())
            continue;
        CLI::Option *const choice = added[analysis->chosenBy];
        for (const auto &[name, option] : added) {
            if (!reads(*analysis, name))
                option->excludes(choice);
            else if (option != choice && !reads(*analyses.front(), name))
                option->needs(choice);
        }
    }
}

} // namespace Batch
