#include "batch/ffawork.h"

#include "calc/ffacandidates.h"
#include "calc/pulsar/bandsum.h"
#include "calc/pulsar/needs.h"
#include "calc/pulsar/pulsaranalyses.h"
#include "calc/pulsar/pulsarcalculate.h"
#include "calc/pulsar/searchffa.h"
#include "data/truenumbers.h"
#include "picture/resultplot.h"
#include "results/candidates.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace Batch {

using namespace Results;

namespace {

// Far more than any telescope has; a passport that says more is damaged.
constexpr qint64 mostRays = 100000;

// One search of a recording; module and ray by their numbers.
struct Search {
    int module = 1;
    int ray = 1;
    double dispersion = 0;
};

// In ascending order, each once.
std::vector<int> chosenOrAll(std::vector<int> chosen, int count)
{
    if (chosen.empty()) {
        chosen.resize(std::size_t(std::max(count, 0)));
        std::iota(chosen.begin(), chosen.end(), 1);
    }
    std::sort(chosen.begin(), chosen.end());
    chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
    return chosen;
}

// Asked before lists of them are made.
bool hasTooManyRays(const FfaRequest &request, const ObservationData &header)
{
    const auto countOf = [](const std::vector<int> &chosen, int all) {
        return chosen.empty() ? qint64(std::max(all, 0)) : qint64(chosen.size());
    };
    return countOf(request.modules, header.modules) > mostRays ||
           countOf(request.modules, header.modules) * countOf(request.rays, header.rays) > mostRays;
}

RaySelection selectionOf(const FfaRequest &request, const ObservationData &header)
{
    return {chosenOrAll(request.modules, header.modules), chosenOrAll(request.rays, header.rays)};
}

// The request with numbers of the passport turned into places in the file.
Failure findRays(FfaRequest &request, const RecordingFile &file)
{
    if (!request.moduleNumbers.empty())
        if (Failure failure =
                findPlaces(file, Numbered::Module, request.moduleNumbers, request.modules))
            return failure;
    if (!request.rayNumbers.empty())
        if (Failure failure = findPlaces(file, Numbered::Ray, request.rayNumbers, request.rays))
            return failure;
    return {};
}

std::vector<double> dispersionsOf(const FfaRequest &request, const ObservationData &header)
{
    if (!request.dispersions.empty())
        return request.dispersions;
    return {double(std::max(0, header.dispersion))};
}

PulsarParameters parametersOf(const FfaRequest &request, const ObservationData &header,
                              double dispersion)
{
    PulsarParameters parameters;
    parameters.dispersion = dispersion;
    parameters.firstPoint = request.firstPoint;
    parameters.points = request.points;
    parameters.noise = request.noise;
    parameters.normalise = request.normalise;
    parameters.deleteStep = request.deleteStep;
    parameters.channelsOff = request.channelsOff;
    parameters.cut = request.cut;
    const int points = PulsarCalculate(header, parameters).ffaPoints();
    FfaParameters &ffa = parameters.ffa;
    ffa = Tools::presetFfa(points, header.tresolution);
    const auto take = [](auto &field, const auto &given) {
        if (given)
            field = *given;
    };
    take(ffa.period_min, request.periodMin);
    take(ffa.period_max, request.periodMax);
    take(ffa.bins_min, request.binsMin);
    take(ffa.bins_max, request.binsMax);
    take(ffa.ducy_max, request.ducyMax);
    take(ffa.wtsp, request.wtsp);
    take(ffa.fpmin, request.fewestPeriods);
    ffa.rmed_width = request.medianWidth.value_or(
        Tools::presetMedianWidth(ffa.period_max, points, header.tresolution));
    take(ffa.rmed_minpts, request.medianPoints);
    ffa.deredden = request.deredden;
    if (!request.periodMin && Tools::findFfaProblems(ffa, points, header.tresolution).empty())
        ffa.period_min = Tools::periodMinWithoutWholeFactors(ffa, points, header.tresolution);
    return parameters;
}

// What to know of the downsampling factors of a search, with the option that avoids whole ones;
// empty where none is.
QString wholeFactorRemark(const PulsarParameters &parameters, const ObservationData &header)
{
    const FfaParameters &ffa = parameters.ffa;
    const int points = PulsarCalculate(header, parameters).ffaPoints();
    if (!Tools::findFfaProblems(ffa, points, header.tresolution).empty())
        return {};
    const QString text =
        Tools::wholeFactorText(Tools::wholeFactorSteps(ffa, points, header.tresolution));
    if (text.isEmpty())
        return {};
    const double offered = Tools::periodMinWithoutWholeFactors(ffa, points, header.tresolution);
    return offered == ffa.period_min
               ? text
               : text + QString(" --period-min %1 avoids it.").arg(QString(numberText(offered)));
}

Failure refusalOf(const FieldProblem &problem, const Search &search, const QString &path)
{
    return {ExitCode::BadData, path +
                                   QString(": module %1, ray %2, dispersion %3: ")
                                       .arg(search.module)
                                       .arg(search.ray)
                                       .arg(search.dispersion) +
                                   problem.line()};
}

// S/N over period, as the form draws it.
PlotData plotOf(const FfaResult &result, double threshold)
{
    FfaSpectrum spectrum = Tools::sortedSpectrum(result.periodogram);
    std::vector<float> level = Tools::snrFactors(spectrum, result.wholeFactors);
    for (float &value : level)
        value = float(threshold) / value;
    return Plot::periodPlot(std::move(spectrum.periods),
                            {std::move(spectrum.snr), std::move(level)},
                            {"S/N, best width", "threshold"});
}

QString nameOf(const Search &search)
{
    return QString("module %1, ray %2, dispersion %3 pc/cm^3")
        .arg(search.module)
        .arg(search.ray)
        .arg(search.dispersion);
}

// Searches of one recording, from the first to the last.
class Searches {
public:
    Searches(const FfaRequest &ffaRequest, RecordingFile &recording, const Control &runControl)
        : request(ffaRequest), file(recording), control(runControl)
    {}

    Failure run(TableResult &result)
    {
        const ObservationData &header = file.header();
        if (Failure failure = findRays(request, file))
            return failure;
        if (hasTooManyRays(request, header))
            return {ExitCode::BadData,
                    file.path() + QString(": its passport announces %1 modules of %2 rays, too "
                                          "many to search all of them. Choose some with --module "
                                          "and --ray.")
                                      .arg(header.modules)
                                      .arg(header.rays)};
        const RaySelection all = selectionOf(request, header);
        const std::vector<double> dispersions = dispersionsOf(request, header);
        count = all.count() * int(dispersions.size());
        for (const int module : {all.modules.front(), all.modules.back()})
            for (const int ray : {all.rays.front(), all.rays.back()})
                if (Failure failure = findRay(file, module, ray))
                    return failure;
        wholeFactors =
            wholeFactorRemark(parametersOf(request, header, dispersions.front()), header);
        if (!wholeFactors.isEmpty())
            control.remark(file.path() + ": " + wholeFactors);
        for (const RaySelection &group : groupsOf(all, memoryOfRay(file, header.npoints))) {
            if (Failure failure = searchGroup(group, dispersions, result))
                return failure;
        }
        sortCandidates(candidates);
        describe(all, dispersions, result.table);
        result.table.columns = candidateColumns(candidates, false);
        return {};
    }

private:
    Failure searchGroup(const RaySelection &group, const std::vector<double> &dispersions,
                        TableResult &result)
    {
        ObservationData data;
        if (Failure failure = readRays(file, group, 0, file.header().npoints, control, data))
            return failure;
        for (std::size_t module = 0; module < group.modules.size(); ++module) {
            for (std::size_t ray = 0; ray < group.rays.size(); ++ray) {
                std::vector<Candidate> ofRay;
                for (const double dispersion : dispersions) {
                    const Search selected = {moduleNumber(file.header(), group.modules[module] - 1),
                                             rayNumber(file.header(), group.rays[ray] - 1),
                                             dispersion};
                    const Place place = {int(module) + 1, int(ray) + 1};
                    if (Failure failure = search(data, place, selected, ofRay, result))
                        return failure;
                    ++done;
                }
                const std::vector<Candidate> strongest = strongestOfDispersions(ofRay, length);
                candidates.insert(candidates.end(), strongest.begin(), strongest.end());
            }
        }
        return {};
    }

    void showProgress(int percent) const { control.progress((100 * done + percent) / count); }

    // Where a ray stands in the record that was read, from 1.
    struct Place {
        int module = 1;
        int ray = 1;
    };

    Failure search(const ObservationData &data, const Place &place, const Search &selected,
                   std::vector<Candidate> &found, TableResult &result)
    {
        PulsarParameters parameters = parametersOf(request, data, selected.dispersion);
        parameters.module = place.module;
        parameters.ray = place.ray;
        Jobs::Control own = control;
        own.progress = [this](int percent) { showProgress(percent); };
        FfaSearchOutcome outcome =
            searchFfa({data, parameters, request.threshold, request.most}, own);
        if (control.isStopped())
            return stopped();
        if (!outcome.result.ffa)
            return refusalOf(outcome.problem, selected, file.path());
        if (const QString &text = outcome.result.nonFinite; !text.isEmpty())
            noteNonFinite(selected, text);
        const FfaResult &ffa = *outcome.result.ffa;
        estimate = outcome.estimate;
        std::vector<FfaCandidate> &peaks = outcome.candidates;
        if (request.refine)
            for (FfaCandidate &peak : peaks)
                Tools::refineCandidate(ffa, peak, [this](int) { return !control.isStopped(); });
        if (control.isStopped())
            return stopped();
        addCandidates(peaks, selected, found);
        notes = outcome.result.notes();
        wholeFactorsOfSearch = Tools::wholeFactorText(ffa.wholeFactors);
        length = double(ffa.series.size()) * ffa.tsamp;
        searched = parameters.ffa;
        usedThreshold = request.threshold.value_or(estimate.noiseThreshold);
        points = PulsarCalculate(data, parameters).ffaPoints();
        trials = ffa.periodogram.length;
        widths = ffa.periodogram.nwidths;
        const double highest = peaks.empty() ? 0 : peaks.front().strength();
        if (!request.output.picture.isEmpty() && highest > shownSnr) {
            shownSnr = highest;
            shown = selected;
            result.plot = plotOf(ffa, usedThreshold);
            result.plot->source = QStringList{"ffa of " + file.path(), nameOf(selected)};
        }
        return {};
    }

    static void addCandidates(const std::vector<FfaCandidate> &peaks, const Search &selected,
                              std::vector<Candidate> &found)
    {
        for (const FfaCandidate &peak : peaks) {
            // A table may mix the candidates of many searches, so that numbers would not tell.
            const double base = peak.base < 0 ? 0 : peaks[std::size_t(peak.base)].period;
            constexpr int digits = 9;
            Candidate candidate =
                Tools::tableCandidate(peak, QString::number(base, 'g', digits) + " s");
            candidate.module = selected.module;
            candidate.ray = selected.ray;
            candidate.dispersion = selected.dispersion;
            found.push_back(candidate);
        }
    }

    // Once a ray: its dispersions take in nearly the same samples.
    void noteNonFinite(const Search &selected, const QString &text)
    {
        const std::pair ray(selected.module, selected.ray);
        if (ray == notedRay)
            return;
        notedRay = ray;
        nonFinite << QString("module %1, ray %2: ").arg(selected.module).arg(selected.ray) + text;
        control.remark(file.path() + ": " + nonFinite.constLast());
    }

    // True numbers of what was searched.
    void describeRays(const RaySelection &all, std::vector<HeaderLine> &lines) const
    {
        const auto numbers = [](const std::vector<int> &places, const auto &numberOf) {
            QStringList texts;
            for (const int place : places)
                texts << QString::number(numberOf(place - 1));
            return texts.join(' ');
        };
        const ObservationData &header = file.header();
        lines.push_back(
            {"modules", numbers(all.modules, [&](int i) { return moduleNumber(header, i); })});
        lines.push_back({"rays", numbers(all.rays, [&](int i) { return rayNumber(header, i); })});
        lines.push_back(beginLine(header));
    }

    void describe(const RaySelection &all, const std::vector<double> &dispersions,
                  ResultTable &table) const
    {
        const ObservationData &header = file.header();
        std::vector<HeaderLine> &lines = table.result;
        describeRays(all, lines);
        lines.push_back({"first_point", QString::number(request.firstPoint)});
        if (dispersions.size() == 1) // of several, every candidate has its own
            lines.push_back({"disp", QString::number(std::lround(dispersions.front()))});
        lines.push_back({"tresolution", numberText(header.tresolution) + " s"});
        if (int(header.fbands.size()) >= PulsarCalculate::sumBands)
            lines.push_back({"reference_frequency",
                             numberText(header.fbands[PulsarCalculate::sumBands - 1]) + " MHz"});
        lines.push_back({"searches", QString::number(count)});
        lines.push_back({"searched_points", QString::number(points)});
        lines.push_back({"period_min", numberText(searched.period_min) + " s"});
        lines.push_back({"period_max", numberText(searched.period_max) + " s"});
        lines.push_back(
            {"bins", QString("%1 to %2").arg(searched.bins_min).arg(searched.bins_max)});
        lines.push_back({"ducy_max", numberText(searched.ducy_max)});
        lines.push_back({"wtsp", numberText(searched.wtsp)});
        lines.push_back({"running_median", searched.deredden
                                               ? numberText(searched.rmed_width) + " s"
                                               : QString("no")});
        lines.push_back({"trials", QString("%1 periods x %2 widths").arg(trials).arg(widths)});
        lines.push_back({"noise_reaches",
                         QString::number(estimate.noiseThreshold, 'f', 2) + " S/N in each search"});
        lines.push_back({"threshold_used", QString::number(usedThreshold, 'f', 2)});
        if (shownSnr > 0)
            lines.push_back({"picture_of", nameOf(shown)});
        if (!wholeFactors.isEmpty())
            lines.push_back({"remark", wholeFactors});
        for (const Report &note : count == 1 ? notes : std::vector<Report>()) {
            if (const QString text = note.plainText(); text != wholeFactorsOfSearch)
                lines.push_back({"remark", text});
        }
        lines.push_back({"report", "Periods are topocentric. S/N is that of the best boxcar of the "
                                   "fold; it is too low by snr_factor, which is 1 but at whole "
                                   "downsampling factors. fold_snr is that of the series folded at "
                                   "the period."});
        for (const QString &note : nonFinite)
            lines.push_back({"report", note});
    }

    FfaRequest request;
    RecordingFile &file;
    const Control &control;
    std::vector<Candidate> candidates;
    int count = 1;
    int done = 0;
    // These describe the last search; the others differ in points by their delays only.
    double length = 0;
    FfaParameters searched;
    FfaEstimate estimate;
    double usedThreshold = 0;
    QString wholeFactors; // a remark
    QString wholeFactorsOfSearch;
    std::vector<Report> notes;
    int points = 0;
    int trials = 0;
    int widths = 0;
    double shownSnr = 0;
    Search shown;
    QStringList nonFinite; // of each ray that has samples which are no numbers
    std::pair<int, int> notedRay;
};

template <typename Number>
QString givenOr(const std::optional<Number> &given, const QString &unit = {})
{
    if (!given)
        return "preset";
    return QString(numberText(double(*given))) + unit;
}

template <typename Number>
QString listOr(const std::vector<Number> &numbers, const QString &otherwise)
{
    if (numbers.empty())
        return otherwise;
    QStringList texts;
    for (const Number number : numbers)
        texts << numberText(double(number));
    return texts.join(' ');
}

std::vector<HeaderLine> parameterLines(const FfaRequest &request)
{
    const auto yesNo = [](bool is) { return QString(is ? "yes" : "no"); };
    std::vector<HeaderLine> lines = {
        {"action", "createFFA"},
        request.moduleNumbers.empty()
            ? HeaderLine{"module_places", listOr(request.modules, "all")}
            : HeaderLine{"module_numbers", listOr(request.moduleNumbers, {})},
        request.rayNumbers.empty() ? HeaderLine{"ray_places", listOr(request.rays, "all")}
                                   : HeaderLine{"ray_numbers", listOr(request.rayNumbers, {})},
        {"dispersions", listOr(request.dispersions, "of the passport") + " pc/cm^3"},
        {"start_point", QString::number(request.firstPoint)},
        {"count", request.points > 0 ? QString::number(request.points) : QString("all")},
        {"noise", request.noise},
        {"normalise", yesNo(request.normalise)},
        {"delete_step", yesNo(request.deleteStep)},
        {"given_periods", givenOr(request.periodMin) + " to " + givenOr(request.periodMax) + " s"},
        {"given_bins", givenOr(request.binsMin) + " to " + givenOr(request.binsMax)},
        {"given_ducy_max", givenOr(request.ducyMax)},
        {"given_wtsp", givenOr(request.wtsp)},
        {"given_fewest_periods", givenOr(request.fewestPeriods)},
        {"deredden", yesNo(request.deredden)},
        {"given_median",
         givenOr(request.medianWidth, " s") + ", " + givenOr(request.medianPoints, " points")},
        {"threshold", request.threshold ? QString(numberText(*request.threshold)) : "noise"},
        {"most", QString::number(request.most)},
        {"refine", yesNo(request.refine)}};
    if (!request.channelsOff.isEmpty())
        lines.push_back({"channels_off", request.channelsOff});
    if (!request.cut.isEmpty())
        lines.push_back({"cut", request.cut});
    return lines;
}

qint64 memoryOf(FfaRequest request, const RecordingFile &file)
{
    const ObservationData &header = file.header();
    if (findRays(request, file) || hasTooManyRays(request, header)) // which the search will refuse
        return 0;
    const PulsarParameters parameters =
        parametersOf(request, header, dispersionsOf(request, header).front());
    const ObservationData whole = Pulsar::wholePointsOf(header);
    // What has problems has no size; the search will refuse it.
    const bool isSearch = findAnalysis("createFFA")->check(whole, parameters).empty();
    const qint64 search = isSearch ? findBytes("createFFA", whole, parameters) : 0;
    const RaySelection group =
        groupsOf(selectionOf(request, header), memoryOfRay(file, header.npoints)).front();
    return memoryOfRay(file, header.npoints) * group.count() + search;
}

} // namespace

Work ffaWork(const FfaRequest &request)
{
    TableRequest table;
    table.command = "ffa";
    table.parameters = parameterLines(request);
    table.output = request.output;
    table.memory = [request](const RecordingFile &file) { return memoryOf(request, file); };
    table.fill = [request](RecordingFile &file, const Control &control, TableResult &result) {
        return Searches(request, file, control).run(result);
    };
    return tableWork(table);
}

} // namespace Batch
