#include "analyses/sky/skyparameters.h"

#include "base/shellword.h"
#include "base/typednumber.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace Sky {

namespace {

using P = SkyParameters;

constexpr int mostNumber = 99;
constexpr int mostDispersions = 1000;
constexpr int mostStarts = 100000;

std::optional<int> wholeNumber(const QString &text)
{
    bool isNumber = false;
    const int number = text.trimmed().toInt(&isNumber);
    return isNumber && number >= 1 && number <= mostNumber ? std::optional(number) : std::nullopt;
}

void addListProblems(const P &parameters, std::vector<FieldProblem> &problems)
{
    const QString allowed = " Write numbers and ranges with commas, as 1,3-5, or all.";
    if (!numbersOf(parameters.modules))
        problems.push_back(
            {"modules",
             QString("\"%1\" is no list of modules.").arg(parameters.modules) + allowed});
    if (!numbersOf(parameters.rays))
        problems.push_back(
            {"rays", QString("\"%1\" is no list of rays.").arg(parameters.rays) + allowed});
    if (!dispersionsOf(parameters.dispersions))
        problems.push_back(
            {"dispersions",
             QString("\"%1\" is no list of dispersions. Write numbers from 0 on with "
                     "commas, or from:to:step, at most %2 of them.")
                 .arg(parameters.dispersions)
                 .arg(mostDispersions)});
}

} // namespace

std::optional<std::vector<int>> numbersOf(const QString &list)
{
    std::set<int> numbers;
    if (list.trimmed() == "all")
        return std::vector<int>();
    for (const QString &part : list.split(',')) {
        const auto first = wholeNumber(part.section('-', 0, 0));
        const auto last = part.contains('-') ? wholeNumber(part.section('-', 1)) : first;
        if (!first || !last || *last < *first)
            return std::nullopt;
        for (int number = *first; number <= *last; ++number)
            numbers.insert(number);
    }
    return std::vector<int>(numbers.begin(), numbers.end());
}

std::optional<std::vector<double>> dispersionsOf(const QString &list)
{
    std::vector<double> typed;
    const bool isRange = list.contains(':');
    for (const QString &part : list.split(isRange ? ':' : ',')) {
        const auto number = Tools::typedNumber(part.trimmed());
        if (!number || !(*number >= 0) || !std::isfinite(*number))
            return std::nullopt;
        typed.push_back(*number);
    }
    if (!isRange) {
        const std::set<double> numbers(typed.begin(), typed.end());
        return numbers.size() > mostDispersions
                   ? std::nullopt
                   : std::optional(std::vector<double>(numbers.begin(), numbers.end()));
    }
    // A last step that ends beyond by rounding alone counts.
    constexpr double rounding = 1e-9;
    if (typed.size() != 3 || !(typed[2] > 0) || typed[1] < typed[0] ||
        (typed[1] - typed[0]) / typed[2] > mostDispersions - 1)
        return std::nullopt;
    std::vector<double> numbers;
    for (int i = 0; i <= (typed[1] - typed[0]) / typed[2] + rounding; ++i)
        numbers.push_back(typed[0] + i * typed[2]);
    return numbers;
}

std::vector<FieldProblem> problemsOf(const SkyParameters &parameters)
{
    Days::DayPlace place = parameters;
    place.module = 1;
    place.ray = 1;
    place.firstPoint = std::max(0, parameters.firstPoint);
    std::vector<FieldProblem> problems = Days::problemsOf(place);
    addListProblems(parameters, problems);
    for (const FieldProblem &problem : Days::problemsOfSpectrum(parameters))
        problems.push_back(problem);
    if (parameters.starts < 0 || parameters.starts > mostStarts)
        problems.push_back(
            {"starts", QString("Allowed: up to %1 stretches; 0: as many as fit.").arg(mostStarts)});
    constexpr double mostPoints = 1e9; // from the first stretch to the last one
    if (parameters.starts * (parameters.points * 0.5) > mostPoints)
        problems.push_back({"starts", "The stretches reach over too many points."});
    if (!(parameters.falseAlarms > 0) || !(parameters.falseAlarms <= 1e6))
        problems.push_back({"falseAlarms", "The false alarms must be a number above 0, at most a "
                                           "million."});
    if (parameters.most < 1)
        problems.push_back({"most", "List one candidate at least."});
    if (parameters.over != "starts" && parameters.over != "dms")
        problems.push_back({"over", "A map stands over starts or over dms."});
    for (const auto &[name, width] : {std::pair("beamAlfa", parameters.beamAlfa),
                                      std::pair("beamDelta", parameters.beamDelta)}) {
        if (!(width > 0.01 && width < 90))
            problems.push_back({name, "The width of the beams must be from 0.01 to 90 degrees."});
    }
    return problems;
}

const SkyAnalysis *findSkyAnalysis(const SurveyFlags &flags)
{
    for (const SkyAnalysis &analysis : skyAnalyses()) {
        if (analysis.flags == flags)
            return &analysis;
    }
    return nullptr;
}

QString skyCommand(const SkyAnalysis &analysis, const SkyParameters &parameters,
                   const QStringList &folders)
{
    QStringList words = {"zrt-batch", analysis.command};
    words += Tools::optionWords(analysis, parameters);
    for (const QString &folder : folders)
        words << shellWord(folder);
    return words.join(' ');
}

} // namespace Sky
