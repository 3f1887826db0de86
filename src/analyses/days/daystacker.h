#pragma once

#include "analyses/days/stackevidence.h"

#include "jobs/control.h"

#include <utility>

/// What all stacks of days begin with, and what is looked up for their lines whatever they are of.
namespace Days {

class DayStacker {
protected:
    DayStacker(const std::vector<FourierDay> &allProducts, const FourierDaysChoice &wanted,
               const Jobs::Control &asked)
        : products(allProducts), choice(wanted), control(asked)
    {}

    /// Only days of one shape can be added: that which most of them have.
    using Shape = std::pair<std::size_t, double>;
    /// Fills `days`, or tells the problem for which there is no stack.
    void selectDays(Shape (*shapeOf)(const FourierDay &day));

    /// The least and the greatest ratio of all days; that of the result is the mean of the chosen,
    /// not a number where a direction is not known. The days are not turned yet.
    std::pair<double, double> findRatios();
    /// Takes the ratios of the days over.
    void turnDays();

    /// Both frequencies of a line whose place is known.
    void findFrequencies(FourierLine &line) const;
    /// The known pulsars that lie in the beam.
    void findPulsars(double stretchSeconds);
    /// Whether other rays have the line, and which pulsar has its frequency.
    void markSky(FourierLine &line) const;
    /// Mains hum of all chosen days.
    std::vector<DayHum> hum() const;

    const std::vector<FourierDay> &products;
    const FourierDaysChoice &choice;
    const Jobs::Control &control;
    FourierStack result;
    StackDays days;

private:
    QDateTime middleDay() const;
    bool isInOtherRays(double frequency) const;

    QDateTime middle;
    std::vector<const Tools::KnownPulsar *> pulsars;
};

} // namespace Days
