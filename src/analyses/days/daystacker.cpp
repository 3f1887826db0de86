#include "analyses/days/daystacker.h"

#include "coords/barycentre.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace Days {

void DayStacker::selectDays(Shape (*shapeOf)(const FourierDay &day))
{
    std::map<Shape, int> counts;
    for (const FourierDay &day : products) {
        if (day.isWhole() && shapeOf(day).first > 0)
            ++counts[shapeOf(day)];
    }
    Shape common;
    int most = 0;
    for (const auto &[counted, count] : counts) {
        if (count > most) {
            most = count;
            common = counted;
        }
    }
    int other = 0;
    for (std::size_t i = 0; i < products.size(); ++i) {
        const FourierDay &day = products[i];
        if (!day.isWhole())
            continue;
        if (most == 0 || shapeOf(day) != common) {
            ++other;
            continue;
        }
        const bool isChosen = choice.days.empty() || (i < choice.days.size() && choice.days[i]);
        days.days.push_back(&day);
        days.chosen.push_back(isChosen);
        result.days += isChosen;
    }
    result.allDays = int(days.days.size());
    if (other > 0)
        result.remarks << QString("%1 days have spectra of another length or step and are left "
                                  "out.")
                              .arg(other);
    if (result.allDays == 1)
        result.remarks << "There is one day: the stack is that day alone.";
    if (result.allDays == 0)
        result.problem = "There is no day with a spectrum.";
    else if (result.days == 0)
        result.problem = "All days are switched off. Switch on one at least.";
}

std::pair<double, double> DayStacker::findRatios()
{
    days.ratios.assign(days.days.size(), 1);
    double least = 2;
    double most = 0;
    double sum = 0;
    for (std::size_t i = 0; i < days.days.size(); ++i) {
        const double ratio = days.days[i]->ratio;
        least = std::min(least, ratio);
        most = std::max(most, ratio);
        sum += days.chosen[i] ? ratio : 0;
    }
    result.ratio =
        std::isfinite(sum) ? sum / result.days : std::numeric_limits<double>::quiet_NaN();
    if (!std::isfinite(sum) && choice.earthMotion)
        result.remarks << "The Earth's motion is not taken out: the declination of the beam is not "
                          "known.";
    return {least, most};
}

void DayStacker::turnDays()
{
    for (std::size_t i = 0; i < days.days.size(); ++i)
        days.ratios[i] = days.days[i]->ratio;
}

void DayStacker::findFrequencies(FourierLine &line) const
{
    const double frequency = result.frequency(line.bin);
    line.barycentric = result.isTurned ? frequency : frequency / result.ratio;
    line.telescope = result.isTurned ? frequency * result.ratio : frequency;
}

QDateTime DayStacker::middleDay() const
{
    std::vector<QDateTime> begins;
    for (std::size_t i = 0; i < days.days.size(); ++i) {
        if (days.chosen[i])
            begins.push_back(days.days[i]->begin);
    }
    std::sort(begins.begin(), begins.end());
    return begins[begins.size() / 2];
}

void DayStacker::findPulsars(double stretchSeconds)
{
    middle = middleDay();
    pulsars = pulsarsInBeam(choice.beam, choice.direction, middle.date(), stretchSeconds);
}

void DayStacker::markSky(FourierLine &line) const
{
    line.isInOtherRays = isInOtherRays(line.telescope);
    line.pulsars = matchesOf(pulsars, choice.direction, line.barycentric, result.binWidth,
                             Tools::modifiedJulianDay(middle));
}

std::vector<DayHum> DayStacker::hum() const
{
    std::vector<DayHum> all;
    for (std::size_t i = 0; i < days.days.size(); ++i) {
        if (days.chosen[i])
            all.insert(all.end(), days.days[i]->hum.begin(), days.days[i]->hum.end());
    }
    return all;
}

bool DayStacker::isInOtherRays(double frequency) const
{
    constexpr double tolerance = 1.5; // bins
    std::set<int> places;
    for (const OtherRay &ray : choice.otherRays) {
        const bool has =
            std::any_of(ray.frequencies.begin(), ray.frequencies.end(), [&](double other) {
                return std::abs(other - frequency) < tolerance * result.binWidth;
            });
        if (has)
            places.insert(placeOfRay(ray.module, ray.ray));
    }
    return isInRaysApart(places, placeOfRay(choice.beam.module, choice.beam.ray));
}

} // namespace Days
