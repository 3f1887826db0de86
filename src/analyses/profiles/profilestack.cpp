#include "analyses/profiles/profilestack.h"

#include "calc/significance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Profiles {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr int templateRounds = 3;

// One day on its way into the average.
struct Working {
    Tools::Harmonics harmonics; // normalised or not, as the average takes it
    Tools::ProfileNoise noise;  // of the same
    double weight = 0;
    double turn = 0; // by which it is moved earlier
};

class Stacker {
public:
    Stacker(const std::vector<ProfileDay> &allProducts, const StackChoice &wanted,
            const Jobs::Control &asked)
        : products(allProducts), choice(wanted), control(asked), working(allProducts.size())
    {
        stack.days.resize(products.size());
    }

    ProfileStack run()
    {
        measureDays();
        if (control.isStopped())
            return {};
        sumPowers();
        align();
        addUp();
        return std::move(stack);
    }

private:
    void measureDays();
    void sumPowers();
    void align();
    void alignByTemplate(const std::vector<std::size_t> &aligned);
    void addUp();
    void measureShifts(const std::vector<std::size_t> &in);
    void addHalves(const std::vector<std::size_t> &in);
    void addGrowth(const std::vector<std::size_t> &in);

    struct Sum {
        Tools::Harmonics harmonics;
        double weights = 0;
        double squares = 0;   // of the weights
        double variances = 0; // of the weighted days
        double shared = 0;    // weighted by variance

        Tools::ProfileNoise noise() const
        {
            return {std::sqrt(variances) / weights, variances > 0 ? shared / variances : 0};
        }
        std::vector<double> profile() const
        {
            std::vector<double> mean = Tools::profileOf(harmonics);
            for (double &bin : mean)
                bin /= weights;
            return mean;
        }
    };
    void add(std::size_t day, double sign, Sum &sum) const;
    Sum sumOf(const std::vector<std::size_t> &days) const;
    void compare(std::size_t day, const Sum &others);

    const std::vector<ProfileDay> &products;
    const StackChoice &choice;
    const Jobs::Control &control;
    std::vector<Working> working;
    ProfileStack stack;
};

void Stacker::measureDays()
{
    for (std::size_t i = 0; i < products.size() && !control.isStopped(); ++i) {
        const ProfileDay &product = products[i];
        StackedDay &day = stack.days[i];
        day.shift = day.offset = notANumber;
        control.progress(int(100 * i / products.size()));
        if (!product.isWhole()) {
            day.reason = product.problem;
            continue;
        }
        Working &own = working[i];
        own.harmonics = dayHarmonics(product, partHarmonics(product, choice.moreDispersion),
                                     choice.moreFrequency);
        own.noise = product.noise;
        const std::vector<double> profile = Tools::profileOf(own.harmonics);
        day.snr = Tools::profileSnr(profile, own.noise, choice.harmonics);
        for (const double bin : profile)
            day.profile.push_back(float(bin / own.noise.sigma));
        const double sigma = product.noise.sigma * product.unit; // units of the recording
        const double factor = choice.normalises ? 1 / product.noise.sigma : product.unit;
        for (std::complex<double> &harmonic : own.harmonics)
            harmonic *= factor;
        own.noise.sigma *= factor;
        // Days of equal gain have pulses of equal height in units of the recording.
        own.weight = !choice.weights ? 1 : choice.normalises ? 1 / sigma : 1 / (sigma * sigma);
        if (!choice.days.empty() && !choice.days[i])
            day.reason = i < std::size_t(choice.reasons.size()) ? choice.reasons[int(i)]
                                                                : QString("switched off");
        else if (day.snr.boxcar.snr < choice.leastSnr)
            day.reason = QString("S/N %1 is below %2")
                             .arg(day.snr.boxcar.snr, 0, 'f', 1)
                             .arg(choice.leastSnr);
    }
    if (choice.leastSnr > 0)
        stack.remarks << QString("Days with an S/N below %1 are left out: this selects, and noise "
                                 "selected so has pulses too.")
                             .arg(choice.leastSnr);
}

void Stacker::sumPowers()
{
    double harmonics = 0;
    for (StackedDay &day : stack.days) {
        day.counts = day.reason.isEmpty();
        if (!day.counts)
            continue;
        ++stack.incoherentDays;
        stack.incoherent += day.snr.z2;
        harmonics += day.snr.harmonics;
    }
    if (harmonics > 0)
        stack.incoherentSigma = Tools::sigmaOfPower(harmonics, stack.incoherent / 2);
}

void Stacker::add(std::size_t day, double sign, Sum &sum) const
{
    const Working &own = working[day];
    Tools::addTurned(own.harmonics, -own.turn, sign * own.weight, sum.harmonics);
    const double variance = std::pow(own.weight * own.noise.sigma, 2);
    sum.weights += sign * own.weight;
    sum.squares += sign * own.weight * own.weight;
    sum.variances += sign * variance;
    sum.shared += sign * variance * own.noise.shared;
}

Stacker::Sum Stacker::sumOf(const std::vector<std::size_t> &days) const
{
    Sum sum;
    sum.harmonics.resize(working[days.front()].harmonics.size());
    for (const std::size_t day : days)
        add(day, 1, sum);
    return sum;
}

void Stacker::align()
{
    const QString refusal = ephemerisRefusal(products, choice);
    const bool byTemplate = choice.alignment == Alignment::Template;
    const bool isAlone = stack.incoherentDays == 1;
    std::vector<std::size_t> aligned;
    int left = 0;
    for (std::size_t i = 0; i < stack.days.size(); ++i) {
        StackedDay &day = stack.days[i];
        if (!day.counts)
            continue;
        if (isAlone) {
            day.use = DayUse::Alone;
        } else if (byTemplate && day.snr.boxcar.snr >= leastAlignedSnr) {
            day.use = DayUse::ByTemplate;
            aligned.push_back(i);
        } else if (choice.alignment == Alignment::None) {
            day.reason = "days are not aligned";
        } else if (refusal.isEmpty()) {
            day.use = DayUse::ByEphemeris;
        } else {
            day.reason = byTemplate
                             ? QString("S/N %1 is too low for a template, and the ephemeris cannot "
                                       "align it")
                                   .arg(day.snr.boxcar.snr, 0, 'f', 1)
                             : "the ephemeris cannot align it";
            ++left;
        }
    }
    if (left > 0)
        stack.remarks << QString("%1 days are not in the average. %2").arg(left).arg(refusal);
    stack.alignedByTemplate = int(aligned.size());
    alignByTemplate(aligned);
}

// How much later a day is than others.
void Stacker::compare(std::size_t day, const Sum &others)
{
    const Working &own = working[day];
    const Tools::TemplateMatch found = Tools::matchTemplate(
        own.harmonics, own.noise, others.harmonics, std::sqrt(others.variances));
    StackedDay &told = stack.days[day];
    if (!(found.snr > 0)) {
        told.shift = told.offset = notANumber;
        return;
    }
    told.shift = found.phase;
    told.shiftError = found.phaseError;
    // In the average it stands at what is left of the shift, beside the others.
    const double height = own.weight * found.height; // of that of the others
    told.offset = own.turn + (told.shift - own.turn) / (1 + height);
    told.offsetError = found.ownPhaseError;
}

// The strongest day is the first template; then each day is compared with the sum of all others.
void Stacker::alignByTemplate(const std::vector<std::size_t> &aligned)
{
    if (aligned.empty())
        return;
    const std::size_t strongest =
        *std::max_element(aligned.begin(), aligned.end(), [&](std::size_t a, std::size_t b) {
            return stack.days[a].snr.boxcar.snr < stack.days[b].snr.boxcar.snr;
        });
    const auto match = [&](std::size_t day, const Sum &others) {
        compare(day, others);
        if (std::isfinite(stack.days[day].shift))
            working[day].turn = stack.days[day].shift;
    };
    const Sum first = sumOf({strongest});
    for (const std::size_t day : aligned) {
        if (day != strongest)
            match(day, first);
    }
    for (int round = 0; round < templateRounds && aligned.size() > 1; ++round) {
        Sum sum = sumOf(aligned);
        for (const std::size_t day : aligned) {
            Sum others = sum;
            add(day, -1, others);
            match(day, others);
        }
    }
    for (const std::size_t day : aligned) {
        if (aligned.size() == 1 || std::isfinite(stack.days[day].shift))
            continue;
        stack.days[day].use = DayUse::Out;
        stack.days[day].reason = "its pulse is not like that of the other days";
        --stack.alignedByTemplate;
    }
}

void Stacker::addUp()
{
    std::vector<std::size_t> in;
    for (std::size_t i = 0; i < stack.days.size(); ++i) {
        if (stack.days[i].use != DayUse::Out)
            in.push_back(i);
    }
    stack.inAverage = int(in.size());
    if (in.empty()) {
        stack.problem = stack.incoherentDays == 0 ? "No day has a profile that counts."
                                                  : "No day could be aligned.";
        return;
    }
    const Sum sum = sumOf(in);
    stack.profile = sum.profile();
    stack.noise = sum.noise();
    stack.effectiveDays = sum.weights * sum.weights / sum.squares;
    stack.snr = Tools::profileSnr(stack.profile, stack.noise, choice.harmonics);
    stack.pulse = Tools::fitGaussian(Tools::harmonicsOf(stack.profile), stack.noise);
    for (const std::size_t i : in) {
        stack.days[i].weight = working[i].weight / sum.weights;
        Tools::Harmonics turned(working[i].harmonics.size());
        Tools::addTurned(working[i].harmonics, -working[i].turn, 1 / working[i].noise.sigma,
                         turned);
        const std::vector<double> profile = Tools::profileOf(turned);
        stack.days[i].profile.assign(profile.begin(), profile.end());
    }
    measureShifts(in);
    addHalves(in);
    addGrowth(in);
}

// Of the days that the ephemeris aligned; they stay where they are.
void Stacker::measureShifts(const std::vector<std::size_t> &in)
{
    if (in.size() < 2)
        return;
    const Sum sum = sumOf(in);
    for (const std::size_t day : in) {
        if (stack.days[day].use != DayUse::ByEphemeris ||
            stack.days[day].snr.boxcar.snr < leastAlignedSnr)
            continue;
        Sum others = sum;
        add(day, -1, others);
        compare(day, others);
    }
}

void Stacker::addHalves(const std::vector<std::size_t> &in)
{
    if (in.size() < 2)
        return;
    const auto middle = in.begin() + std::ptrdiff_t(in.size() / 2);
    const Sum first = sumOf({in.begin(), middle});
    const Sum second = sumOf({middle, in.end()});
    stack.firstHalf = first.profile();
    stack.secondHalf = second.profile();
    stack.halfNoise = first.noise().sigma > second.noise().sigma ? first.noise() : second.noise();
}

void Stacker::addGrowth(const std::vector<std::size_t> &in)
{
    const int bins = int(stack.profile.size());
    const int width = stack.snr.boxcar.width;
    const int begin = int(std::lround(stack.snr.boxcar.phase * bins - width / 2.0));
    Sum sum;
    sum.harmonics.resize(working[in.front()].harmonics.size());
    for (const std::size_t day : in) {
        add(day, 1, sum);
        stack.growth.push_back(
            boxcarSnrAt(sum.profile(), sum.noise(), (begin + bins) % bins, width));
    }
}

} // namespace

QString ephemerisRefusal(const std::vector<ProfileDay> &products, const StackChoice &choice)
{
    const auto whole = std::find_if(products.begin(), products.end(),
                                    [](const ProfileDay &day) { return day.isWhole(); });
    if (whole == products.end())
        return {};
    const double bins = choice.beginError * whole->phase.frequency * whole->bins;
    if (bins > mostBeginError)
        return QString("The begins of the days are uncertain by %1 s, which is %2 bins; the "
                       "ephemeris aligns days up to %3 bins. Align by template, take fewer bins, "
                       "or give a smaller begin error where the begins are better known.")
            .arg(choice.beginError, 0, 'g', 3)
            .arg(bins, 0, 'g', 3)
            .arg(mostBeginError);
    if (!whole->phase.isTurned)
        return "Where the beam points to is not known, so that the Earth's motion cannot be taken "
               "off. Give a source or coordinates.";
    return {};
}

ProfileStack stackDays(const std::vector<ProfileDay> &products, const StackChoice &choice,
                       const Jobs::Control &control)
{
    return Stacker(products, choice, control).run();
}

double boxcarSnrAt(const std::vector<double> &profile, const Tools::ProfileNoise &noise, int begin,
                   int width)
{
    const int bins = int(profile.size());
    const double total = std::accumulate(profile.begin(), profile.end(), 0.0);
    double inside = 0;
    for (int i = begin; i < begin + width; ++i)
        inside += profile[std::size_t(i % bins)];
    const double share = double(width) / bins;
    // The sum of a run of w bins has the variance w - shared, that of all has bins; the covariance
    // of a run with all is w.
    const double variance = noise.sigma * noise.sigma * (width - noise.shared - share * width);
    return variance > 0 ? (inside - share * total) / std::sqrt(variance) : 0;
}

} // namespace Profiles
