#pragma once

#include <QString>
#include <QStringList>
#include <algorithm>
#include <array>
#include <limits>
#include <variant>
#include <vector>

/// An analysis told as a value: which parameters it reads, what they are called wherever a user
/// meets them, and how the batch program is asked for it. Forms, the batch program, copied
/// commands and the headers of tables read this, so that nothing of it is written twice.

using FieldRef = std::variant<int *, double *, bool *, QString *, std::array<double, 4> *>;
using FieldValue = std::variant<int, double, bool, QString, std::array<double, 4>>;

/// One of the texts that a parameter can be.
struct FieldChoice {
    QString value;
    QString button; ///< object name of its radio button in the form
    QString label;  ///< beside the button
};

/// Which analyses write a parameter into the headers of their tables; an empty one has no line. The
/// headers tell the batch program what is done already, so that they stay as they are.
enum class Recorded { Never, Always, OfSums, WhereRead };

/// What a parameter is called and what it takes.
struct FieldText {
    QString name;      ///< object name in the form; the field that a refusal concerns
    QString option;    ///< of the batch program; of a switch that is on by itself "--no-..."
    QString value;     ///< what the help calls the value of the option; empty: a switch
    QString help;      ///< one sentence
    QString key = {};  ///< in the header of a table
    QString unit = {}; ///< behind the value there
    Recorded recorded = Recorded::Never;
    double least = -std::numeric_limits<double>::infinity(); ///< of a form's field with arrows
    double most = std::numeric_limits<double>::infinity();
    std::vector<FieldChoice> choices = {}; ///< empty: any text or number
    bool isOptional = false;               ///< an empty field of a form leaves it to the analysis
};

/// A parameter of `Parameters`.
template <typename Parameters>
struct Field : FieldText {
    /// Null for a switch that only chooses one of the analyses of a command.
    FieldRef (*of)(Parameters &) = nullptr;

    FieldValue valueIn(Parameters parameters) const
    {
        return std::visit([](auto *parameter) { return FieldValue(*parameter); }, of(parameters));
    }
};

/// The same parameter with the range of its field with arrows.
inline FieldText ranged(FieldText text, double least, double most)
{
    text.least = least;
    text.most = most;
    return text;
}

/// Gives a member of a set of parameters by reference, as Field::of needs it:
/// refOf<&Parameters::member>.
template <auto member, typename Parameters>
FieldRef refOf(Parameters &parameters)
{
    return &(parameters.*member);
}

/// What opens an analysis over days: periodograms of the FFA instead of spectra, maps, a search.
struct SurveyFlags {
    bool ffa = false;
    bool map = false;
    bool search = false;

    bool operator==(const SurveyFlags &other) const = default;
};

template <typename Parameters>
struct Analysis {
    QString name;     ///< of the action
    QString label;    ///< beside its button in the form; empty where it has none
    QString command;  ///< of the batch program
    QString chosenBy; ///< option that chooses it among the analyses of its command; empty: it is
                      ///< what the command does without such an option
    bool onChannel = false; ///< works on one channel instead of on the sum of the bands
    /// The parameters it reads, in the order of a copied command.
    std::vector<const Field<Parameters> *> fields;
    Parameters presets;
    QStringList alwaysGiven = {}; ///< options that a copied command names at their presets too

    bool reads(const Field<Parameters> &field) const
    {
        return std::find(fields.begin(), fields.end(), &field) != fields.end();
    }
};

namespace Tools {

/// The words of a value behind its option in a shell command.
QStringList commandWords(const FieldValue &value);

/// A value as the header of a table has it: "yes", a text, numbers with all their digits.
QString headerText(const FieldValue &value);

/// The options of a call of the batch program: those of parameters that are not at their presets,
/// that choose the analysis, or that are always given.
template <typename Parameters>
QStringList optionWords(const Analysis<Parameters> &analysis, const Parameters &given)
{
    QStringList words;
    for (const Field<Parameters> *field : analysis.fields) {
        const bool isDemanded =
            field->option == analysis.chosenBy || analysis.alwaysGiven.contains(field->option);
        if (!field->of) {
            if (isDemanded)
                words << field->option;
            continue;
        }
        const FieldValue value = field->valueIn(given);
        if (isDemanded || value != field->valueIn(analysis.presets))
            words << field->option << commandWords(value);
    }
    return words;
}

} // namespace Tools
