#pragma once

#include "analyses/days/stretchparameters.h"

#include <optional>

/// Many places of the sky over many days at once: stretches that follow each other in steps of half
/// a stretch, in several rays, at several dispersions. A cell is one stretch of one ray at one
/// dispersion; its stack is a sum over the days. Maps and searches look at all stacks.
namespace Sky {

/// What a stretch gives to the stack of its cell. Everything but the arithmetic of a stretch and
/// the law of its noise is the same for both.
enum class Product {
    Fourier, ///< whitened powers over frequency, see Days::FourierDay
    Ffa,     ///< standardised S/N over periods and widths
};

/// What a map has on its vertical axis.
enum class MapAxis { Starts, Dispersions };

/// Everything that the stacks depend on, and behind it what maps and searches make of them. The
/// start of a DayPlace is that of the first stretch; a source stands in the middle of all
/// stretches. Without any start, and the first point below 0, the stretches begin at the sidereal
/// time at which the first recording does. Module and ray are not used: the lists below take their
/// place.
struct SkyParameters : Days::StretchParameters {
    SkyParameters()
    {
        points = 2048;
        firstPoint = -1;
    }

    QString modules = "1";     ///< the telescope's numbers, as "1,3-5" or "all"
    QString rays = "all";      ///< the same
    QString dispersions = "0"; ///< pc/cm^3: numbers with commas, or "from:to:step"
    int starts = 0;            ///< stretches; 0: as many as the longest recording holds
    bool allDays = false;      ///< count stretches too that most rays show as disturbed

    double beamAlfa = 0.8;  ///< degrees on the sky: full width of the beams at half maximum
    double beamDelta = 0.6; ///< the same in declination
    double falseAlarms = 1; ///< of a search: as many so strong candidates has noise, at most
    int most = 200;         ///< candidates of a search, at most
    QString over = "starts";
    int mapModule = 0;         ///< number; 0: the first
    int mapRay = 0;            ///< number; 0: the first
    double mapDispersion = -1; ///< over starts: the nearest to it; below 0: the best of all
    int mapStart = 0;          ///< over dispersions: number from 1; 0: the best of all
};

using SkyField = Field<SkyParameters>;

struct SkyAnalysis : Analysis<SkyParameters> {
    SurveyFlags flags;
    Product product = Product::Fourier;
    QString manual;   ///< of the command, in lines of the help
    QString examples; ///< the same
};

/// All maps and searches: the one place that lists them.
const std::vector<SkyAnalysis> &skyAnalyses();

/// The analysis that the flags open; null where there is none.
const SkyAnalysis *findSkyAnalysis(const SurveyFlags &flags);

/// All parameters, in the order of the help and of the headers of tables.
const std::vector<SkyField> &skyFields();

/// Those that the stacks of a product depend on; the others are chosen when the stacks are there.
bool decidesStacks(const SkyField &field, Product product);

/// Everything for which the parameters are refused, whatever the recordings are.
std::vector<FieldProblem> problemsOf(const SkyParameters &parameters);

/// "1,3-5" as numbers, ascending and each once; empty for "all". Nothing where the text is
/// neither.
std::optional<std::vector<int>> numbersOf(const QString &list);

/// "0,10.5,20" or "0:100:5" as dispersions, ascending and each once. Nothing where the text is
/// neither, or names more than a thousand of them.
std::optional<std::vector<double>> dispersionsOf(const QString &list);

/// The call of the batch program that computes the same, ready for a shell.
QString skyCommand(const SkyAnalysis &analysis, const SkyParameters &parameters,
                   const QStringList &folders);

} // namespace Sky
