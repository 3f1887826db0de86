#pragma once

#include "analyses/days/daylist.h"
#include "analyses/days/dayseries.h"
#include "calc/analysis.h"
#include "jobs/control.h"

/// What analyses over days have in common. Each has two halves: the first makes a product of each
/// day, which can be written and read; the second makes the result of all products and reads no
/// recording again, so that a user can switch days and see at once what it does.
namespace Days {

/// What an analysis takes of each day, all at once, so that the bytes of a day are read once.
struct DayNeeds {
    DayChoice choice;                  ///< the stretch with what delayed bands take in around it
    std::vector<SeriesRequest> series; ///< modules, rays and dispersions
};

/// What the first half gets of a day.
struct DayStretch {
    QDateTime begin;               ///< of the first point, by the recordings' clock
    double tresolution = 0;        ///< s
    double clockOffset = 0;        ///< s by which the recordings' clock is ahead of UTC
    Tools::SkyPosition direction;  ///< that the beam points to; no numbers where unknown
    std::vector<DaySeries> series; ///< one for each of the needs, in their order

    /// UTC halfway through the first series.
    QDateTime middle() const;
};

/// @tparam Product  of a day
/// @tparam Choice   what a user may change without a recording being read again
template <typename Parameters, typename Product, typename Choice, typename Result>
struct DayAnalysis : Analysis<Parameters> {
    SurveyFlags flags;
    QString manual;            ///< of the command, in lines of the help
    QString examples;          ///< the same
    QStringList seriesOptions; ///< options of the parameters that decide which series are kept

    /// Bytes that the products of so many days and the result take together.
    ///
    /// @param header  that the days have in common: step and bands
    qint64 (*bytes)(const Parameters &parameters, const ObservationData &header,
                    int days) = nullptr;
    Product (*ofDay)(const DayStretch &stretch, const Parameters &parameters,
                     const Jobs::Control &control) = nullptr;
    /// The result depends on the products and the choice alone.
    Result (*combine)(const std::vector<Product> &products, const Choice &choice,
                      const Jobs::Control &control) = nullptr;
};

} // namespace Days
