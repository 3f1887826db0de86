#include "analyses/days/fourierdays.h"

#include "analyses/days/ffaday.h"
#include "analyses/days/ffastack.h"
#include "analyses/days/powerstack.h"
#include "base/shellword.h"
#include "base/timetext.h"
#include "calc/pulsar/pulsarfields.h"
#include "coords/barycentre.h"
#include "coords/skyclock.h"

#include <algorithm>
#include <cmath>

namespace Days {

namespace {

using P = FourierDaysParameters;

constexpr char stackManual[] =
    "Adds up the spectra of one place of the sky over all days of folders: \"Sum of signals\",\n"
    "\"Fourier\" of the workbench. A day is one passage of the place. The sum of the bands of\n"
    "each day less its base line is transformed, padded to double its length, and its powers are\n"
    "divided by the noise around them. Their sum over the days is searched for lines and harmonic\n"
    "sums of them. Written are the stacked spectrum, the lines with what speaks for and against\n"
    "each, and the list of days with the reason of each that does not count. Days that a rule\n"
    "proposes to leave out do not count unless --all-days is given.\n"
    "With --ffa, \"FFA\" of the workbench, periodograms of fast folding are added in place of\n"
    "spectra: the S/N of each period and pulse width, standardised over the periods of the day.\n"
    "Pulses that fill 5 % of the period and fold to S/N 1, 2, 3 and 4 a day make 1.9, 6.9, 15.5\n"
    "and 24.4 sigma of 100 days that way, and 1.9, 5.5, 11.2 and 18.4 in spectra, before trials.";

constexpr char stackExamples[] =
    "Examples: all days of ray 7 from the begin of every file on, with pictures; lines alone from\n"
    "point 1000 on:\n"
    "  zrt-batch stack --module 1 --ray 7 --dm 26.2 --all-days --plot png -o results .\n"
    "  zrt-batch stack --module 1 --ray 7 --point 1000 --all-days --harmonics 1 --tag single .\n"
    "Periods of 0.5 to 20 s by folding:\n"
    "  zrt-batch stack --ffa --module 1 --ray 7 --period-min 0.5 --period-max 20 .";

QStringList partsOf(const QString &list)
{
    return list.isEmpty() ? QStringList() : list.split(',');
}

bool areNumbers(const QString &list)
{
    const QStringList parts = partsOf(list);
    return std::all_of(parts.begin(), parts.end(),
                       [](const QString &part) { return part.trimmed().toInt() > 0; });
}

std::vector<FieldProblem> validate(const P &parameters)
{
    std::vector<FieldProblem> problems = problemsOf(parameters);
    if (!(parameters.dispersion >= 0))
        problems.push_back({"dispersion", "The dispersion cannot be below 0."});
    for (const FieldProblem &problem : problemsOfSpectrum(parameters))
        problems.push_back(problem);
    if (!(parameters.threshold >= 1))
        problems.push_back({"threshold", "The threshold must be at least 1 sigma."});
    if (!areNumbers(parameters.otherRays))
        problems.push_back({"otherRays", "Write the numbers of the other rays with commas, as "
                                         "1,4,7."});
    return problems;
}

std::vector<int> otherRays(const P &parameters, int own)
{
    std::vector<int> rays;
    for (const QString &part : partsOf(parameters.otherRays)) {
        const int ray = part.trimmed().toInt();
        if (ray != own && std::find(rays.begin(), rays.end(), ray) == rays.end())
            rays.push_back(ray);
    }
    return rays;
}

qint64 bytesOf(const P &parameters, const ObservationData & /*header*/, int days)
{
    const qint64 bins = parameters.points >> std::clamp(parameters.averageCount, 0, 30);
    constexpr int others = 8; // arrays of one value a bin beside the fine positions
    return days * bins * qint64(sizeof(float)) +
           (finePerBin + others) * bins * qint64(sizeof(double));
}

// The turned rows of a picture come in addition.
qint64 bytesOfPeriodograms(const P &parameters, const ObservationData &header, int days)
{
    constexpr int sums = 4; // of the stack: double, with levels
    const FfaParameters ffa = ffaOfDays(parameters.ffa, parameters.points, header.tresolution);
    if (!problemsOfTrials(ffa, parameters.points, header.tresolution).empty())
        return 0;
    const qint64 ofDay = periodogramBytes(ffa, parameters.points, header.tresolution);
    const qint64 ofSpectrum = parameters.points * qint64(sizeof(float));
    return days * (ofDay + ofDay / 2 + ofSpectrum) + sums * ofDay;
}

void findBeam(const RecordingSet &set, const P &parameters, DayPlan &plan)
{
    const QString site = siteOf(set);
    plan.choice.module = parameters.module;
    plan.choice.ray = parameters.ray;
    if (parameters.module > 0 && parameters.ray > 0) {
        plan.beam = beamOf(site, parameters.module, parameters.ray);
        return;
    }
    const auto hasBegin = [](const RecordingEntry &entry) { return entry.begin.isValid(); };
    const auto first = std::find_if(set.entries.begin(), set.entries.end(), hasBegin);
    const QDate date = first == set.entries.end() ? QDate(2000, 1, 1) : first->begin.date();
    plan.beam = nearestBeam(site, *plan.source, date);
    if (!plan.beam.isKnown()) {
        plan.problems.push_back(
            {"ray", "Which ray sees the source is not known: neither the folder nor the names of "
                    "the recordings tell the site (N0 to N4). Give module and ray."});
        return;
    }
    plan.choice.module = plan.beam.module;
    plan.choice.ray = plan.beam.ray;
}

// What the search will be, and why it cannot be.
void planSearch(const P &parameters, DayPlan &plan)
{
    const double step = plan.header.tresolution;
    const FfaParameters used = ffaOfDays(parameters.ffa, parameters.points, step);
    for (const FieldProblem &problem : problemsOfTrials(used, parameters.points, step))
        plan.problems.push_back(problem);
    if (parameters.ffa.period_min > 0 && used.period_min != parameters.ffa.period_min)
        plan.remarks << QString("The shortest period is %1 s: from %2 s on, the search would "
                                "downsample by whole factors, which make S/N too low.")
                            .arg(used.period_min)
                            .arg(parameters.ffa.period_min);
}

FourierDaysAnalysis spectra()
{
    FourierDaysAnalysis fourier;
    fourier.name = "sumOfDaysFourier";
    fourier.label = "Fourier";
    fourier.command = "stack";
    fourier.manual = stackManual;
    fourier.examples = stackExamples;
    fourier.seriesOptions = QStringList{
        "--module",   "--ray", "--dm",    "--count", "--source",       "--ra",        "--dec",
        "--sidereal", "--utc", "--point", "--noise", "--clock-offset", "--other-rays"};
    for (const FourierDaysField &one : fourierDaysFields())
        fourier.fields.push_back(&one);
    fourier.bytes = bytesOf;
    fourier.ofDay = fourierOfDay;
    fourier.combine = combineDays;
    return fourier;
}

FourierDaysAnalysis periodograms()
{
    FourierDaysAnalysis ffa = spectra();
    ffa.name = "sumOfDaysFfa";
    ffa.label = "FFA";
    ffa.chosenBy = "--ffa";
    ffa.flags.ffa = true;
    ffa.presets.isFfa = true;
    ffa.fields.clear();
    for (const FourierDaysField &one : ffaDaysFields())
        ffa.fields.push_back(&one);
    ffa.bytes = bytesOfPeriodograms;
    ffa.ofDay = ffaOfDay;
    ffa.combine = combineFfaDays;
    return ffa;
}

} // namespace

const std::vector<FourierDaysAnalysis> &fourierDaysAnalyses()
{
    static const std::vector<FourierDaysAnalysis> all = {spectra(), periodograms()};
    return all;
}

const FourierDaysAnalysis &analysisOf(const FourierDaysParameters &parameters)
{
    return *findDayAnalysis({.ffa = parameters.isFfa});
}

const FourierDaysAnalysis *findDayAnalysis(const SurveyFlags &flags)
{
    for (const FourierDaysAnalysis &analysis : fourierDaysAnalyses()) {
        if (analysis.flags == flags)
            return &analysis;
    }
    return nullptr;
}

DayNeeds needsOf(const FourierDaysParameters &parameters, const DayChoice &choice,
                 const ObservationData &header)
{
    DayNeeds needs = {choice, {}};
    needs.choice.pointsAfter = pointsBehind(header, parameters.dispersion);
    const bool hasBackSum = parameters.noise == "backSum";
    if (hasBackSum)
        needs.choice.pointsBefore = needs.choice.pointsAfter;
    std::vector<int> rays = otherRays(parameters, choice.ray);
    rays.insert(rays.begin(), choice.ray);
    for (const int ray : rays) {
        needs.series.push_back({choice.module, ray, parameters.dispersion, false});
        if (hasBackSum)
            needs.series.push_back({choice.module, ray, parameters.dispersion, true});
    }
    return needs;
}

DayPlan planDays(const RecordingSet &set, const FourierDaysParameters &parameters)
{
    DayPlan plan;
    plan.problems = validate(parameters);
    if (!plan.problems.empty())
        return plan;
    plan.choice.points = parameters.points;
    plan.choice.start = startOf(parameters);
    plan.source = sourceOf(parameters);
    findBeam(set, parameters, plan);
    if (!plan.problems.empty())
        return plan;
    plan.choice.pointsAfter = 1;
    plan.list = findDays(set, plan.choice);
    plan.header.tresolution = plan.list.tresolution;
    plan.header.fbands = plan.list.fbands;
    if (plan.list.days.empty())
        return plan;
    const DayNeeds needs = needsOf(parameters, plan.choice, plan.header);
    if (needs.choice.pointsAfter < 0) {
        plan.problems.push_back(
            {"dispersion", "The bands cannot be delayed: there are fewer than 32 of them, or the "
                           "dispersion is too high."});
        return plan;
    }
    plan.choice = needs.choice;
    plan.series = needs.series;
    plan.rays = 1 + int(otherRays(parameters, plan.choice.ray).size());
    plan.list = findDays(set, plan.choice, plan.list);
    if (parameters.isFfa)
        planSearch(parameters, plan);
    return plan;
}

FourierDaysParameters usedParameters(FourierDaysParameters parameters, const DayPlan &plan)
{
    parameters.module = plan.choice.module;
    parameters.ray = plan.choice.ray;
    if (parameters.isFfa && plan.header.tresolution > 0)
        parameters.ffa = ffaOfDays(parameters.ffa, parameters.points, plan.header.tresolution);
    return parameters;
}

FourierDay readDay(const RecordingSet &set, const DayPlan &plan, const Day &day,
                   const FourierDaysParameters &parameters, const QString &folder,
                   const Jobs::Control &control)
{
    return readRays(set, plan, day, parameters, folder, control).front();
}

std::vector<FourierDay> readRays(const RecordingSet &set, const DayPlan &plan, const Day &day,
                                 const FourierDaysParameters &parameters, const QString &folder,
                                 const Jobs::Control &control)
{
    std::vector<FourierDay> products(std::size_t(plan.rays));
    for (FourierDay &product : products) {
        product.begin = day.begin;
        product.problem = day.reason;
    }
    if (!day.reason.isEmpty())
        return products;
    const std::vector<DaySeries> series =
        seriesOfDay(set, day, plan.choice.points, plan.series, folder, control);
    DayStretch stretch;
    stretch.begin = day.begin;
    stretch.tresolution = plan.list.tresolution;
    stretch.clockOffset = plan.choice.start.clockOffset;
    stretch.direction = directionOf(plan, day.begin);
    const std::size_t perRay = series.size() / products.size();
    for (std::size_t ray = 0; ray < products.size(); ++ray) {
        const auto first = series.begin() + std::ptrdiff_t(ray * perRay);
        stretch.series.assign(first, first + std::ptrdiff_t(perRay));
        products[ray] = analysisOf(parameters).ofDay(stretch, parameters, control);
    }
    return products;
}

std::vector<int> otherRaysOf(const FourierDaysParameters &parameters, const DayPlan &plan)
{
    return otherRays(parameters, plan.choice.ray);
}

OtherRay otherRayOf(const FourierDaysAnalysis &analysis, int module, int ray,
                    const std::vector<FourierDay> &products, const FourierDaysChoice &choice,
                    const Jobs::Control &control)
{
    constexpr double threshold = 4; // sigma
    FourierDaysChoice other = choice;
    other.threshold = threshold;
    other.otherRays.clear();
    other.beam = {};
    OtherRay lines = {module, ray, {}};
    for (const FourierLine &line : analysis.combine(products, other, control).lines)
        lines.frequencies.push_back(line.telescope);
    return lines;
}

QString dayName(const QDateTime &begin)
{
    return textOfTime(begin, "yyyy-MM-ddThh:mm:ss");
}

DayRule ruleOf(const FourierDaysParameters &parameters, const DayPlan &plan,
               const std::vector<Interference> &leftOut)
{
    DayRule rule = {leftOut, 0};
    const Tools::KnownPulsar *pulsar =
        parameters.source.isEmpty() ? nullptr
                                    : Tools::findPulsar(Tools::knownPulsars(), parameters.source);
    if (pulsar && !plan.list.days.empty()) {
        const double frequency =
            pulsar->frequencyAt(Tools::modifiedJulianDay(plan.list.days.front().begin));
        rule.frequency = std::isfinite(frequency) ? frequency : 0;
    }
    return rule;
}

FourierDaysChoice choiceOf(const DayPlan &plan, const FourierDaysParameters &parameters)
{
    FourierDaysChoice choice;
    choice.earthMotion = parameters.earthMotion;
    choice.harmonics = parameters.harmonics;
    choice.window = parameters.window;
    choice.threshold = parameters.threshold;
    choice.equalGains = parameters.equalGains;
    choice.beam = plan.beam;
    for (const Day &day : plan.list.days) {
        if (day.reason.isEmpty()) {
            choice.direction = directionOf(plan, day.begin);
            break;
        }
    }
    return choice;
}

QString fourierDaysCommand(bool isSurvey, const FourierDaysParameters &parameters,
                           const QStringList &daysOff, const QStringList &folders)
{
    FourierDaysAnalysis analysis = analysisOf(parameters);
    if (isSurvey)
        analysis.command = surveyCommand;
    if (isSurvey) {
        const auto isOther = [&analysis](const FourierDaysField *field) {
            return !analysis.seriesOptions.contains(field->option);
        };
        analysis.fields.erase(
            std::remove_if(analysis.fields.begin(), analysis.fields.end(), isOther),
            analysis.fields.end());
    }
    const QStringList own = isSurvey ? QStringList() : QStringList("--all-days");
    return commandText(analysis.command, Tools::optionWords(analysis, parameters) + own,
                       isSurvey ? QStringList() : daysOff, folders);
}

QString commandText(const QString &command, const QStringList &options, const QStringList &daysOff,
                    const QStringList &folders)
{
    QStringList words = {"zrt-batch", command};
    words += options;
    if (!daysOff.isEmpty())
        words << "--days-off" << shellWord(daysOff.join(','));
    for (const QString &folder : folders)
        words << shellWord(folder);
    return words.join(' ');
}

} // namespace Days
