#include "batch/commands.h"
#include "batch/pulsarwork.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/pulsarcommand.h"

#include <map>
#include <memory>

// native, sum, fourier, fold and dmscan: the actions of the pulsar form.

namespace Batch {

namespace {

// What the parser writes to; texts and lists are taken over into the parameters afterwards.
struct PulsarArguments : TableArguments {
    PulsarParameters parameters = pulsarPresets();
    PlaceOptions places;
    std::map<QString *, std::string> texts;
    std::map<std::array<double, 4> *, std::vector<double>> lists;
};

CLI::Option *addFlag(CLI::App &command, const PulsarField &field, bool *value)
{
    const std::string option = field.option.toStdString();
    const std::string help = field.help.toStdString();
    return value ? command.add_flag(option, *value, help) : command.add_flag(option, help);
}

template <typename Value>
CLI::Option *addValue(CLI::App &command, const PulsarField &field, const CommandOption &option,
                      Value &value)
{
    const QString &help = option.help.isEmpty() ? field.help : option.help;
    auto *const added = command.add_option(field.option.toStdString(), value, help.toStdString())
                            ->type_name(field.value.toStdString());
    if (option.showsPreset)
        added->capture_default_str();
    return added;
}

// The option of a field, bound to the parameter that it sets.
CLI::Option *addOption(CLI::App &command, const PulsarField &field, const CommandOption &option,
                       PulsarArguments &arguments)
{
    if (!field.of)
        return addFlag(command, field, nullptr);
    const FieldRef ref = field.of(arguments.parameters);
    if (auto *const *flag = std::get_if<bool *>(&ref))
        return addFlag(command, field, *flag);
    if (auto *const *whole = std::get_if<int *>(&ref))
        return addValue(command, field, option, **whole);
    if (auto *const *number = std::get_if<double *>(&ref))
        return addValue(command, field, option, **number);
    if (auto *const *list = std::get_if<std::array<double, 4> *>(&ref)) {
        CommandOption plain = option;
        plain.showsPreset = false;
        return addValue(command, field, plain, arguments.lists[*list])->expected(4);
    }
    QString *const text = std::get<QString *>(ref);
    std::string &typed = arguments.texts[text] = text->toStdString();
    return addValue(command, field, option, typed);
}

// The field's option with what the command allows.
void addChecked(CLI::App &command, const CommandOption &option, PulsarArguments &arguments)
{
    const PulsarField &field = pulsarField(option.option);
    CLI::Option *const added = addOption(command, field, option, arguments);
    if (option.least != option.most)
        added->check(CLI::Range(option.least, option.most));
    std::vector<std::string> choices;
    for (const FieldChoice &choice : field.choices)
        choices.push_back(choice.value.toStdString());
    if (!choices.empty())
        added->check(CLI::IsMember(choices));
    if (!option.excludes.isEmpty())
        added->excludes(command.get_option(option.excludes.toStdString()));
    if (!option.needs.isEmpty())
        added->needs(command.get_option(option.needs.toStdString()));
}

// The analysis that an option of the command chooses; without such an option the one that needs
// none.
const PulsarAnalysis &chosenAnalysis(const CLI::App &command)
{
    const PulsarAnalysis *chosen = nullptr;
    for (const PulsarAnalysis &analysis : pulsarAnalyses()) {
        if (analysis.command.toStdString() != command.get_name() || analysis.label.isEmpty())
            continue;
        if (analysis.chosenBy.isEmpty()) {
            chosen = &analysis;
            continue;
        }
        if (command.count(analysis.chosenBy.toStdString()) > 0)
            return analysis;
    }
    return *chosen;
}

PulsarRequest requestOf(const CLI::App &command, const PulsarArguments &arguments)
{
    PulsarRequest request;
    request.command = QString::fromStdString(command.get_name());
    request.parameters = arguments.parameters;
    request.moduleNumber = arguments.places.moduleNumber;
    request.rayNumber = arguments.places.rayNumber;
    request.output = outputOptionsOf(arguments);
    const PulsarAnalysis &analysis = chosenAnalysis(command);
    request.action = analysis.name;
    PulsarParameters &parameters = request.parameters;
    if (!analysis.onChannel && parameters.points == PulsarCalculate::fixedPoints)
        parameters.points = 0; // its own length
    return request;
}

void addCommand(CLI::App &app, Chosen &chosen, const PulsarCommand &described)
{
    CLI::App *const command =
        app.add_subcommand(described.name.toStdString(), described.manual.toStdString());
    command->footer(described.examples.toStdString());
    const auto arguments = std::make_shared<PulsarArguments>();
    addPlaceOptions(*command, arguments->parameters.module, arguments->parameters.ray,
                    arguments->places);
    for (const CommandOption &option : described.options)
        addChecked(*command, option, *arguments);
    addTableOptions(*command, *arguments);
    command->callback([&chosen, arguments, command] {
        for (const auto &[text, typed] : arguments->texts)
            *text = QString::fromStdString(typed);
        arguments->parameters.dispersions = comparedDispersions(arguments->parameters.dispersion);
        for (const auto &[numbers, typed] : arguments->lists) {
            if (typed.size() == numbers->size())
                std::copy(typed.begin(), typed.end(), numbers->begin());
        }
        const PulsarRequest request = requestOf(*command, *arguments);
        chosen.paints = !request.output.picture.isEmpty();
        chosen.run = [arguments, request] { return runOn(pulsarWork(request), *arguments); };
    });
}

} // namespace

void addPulsarCommands(CLI::App &app, Chosen &chosen)
{
    for (const PulsarCommand &command : pulsarCommands())
        addCommand(app, chosen, command);
}

} // namespace Batch
