#pragma once

#include "analyses/compare/comparedays.h"
#include "picture/plotdata.h"

#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

/// The stretch of one date as its form shows it: reading and curves, without widgets.

struct DateReading {
    std::shared_ptr<const RecordingSet> recordings;
    std::shared_ptr<const Days::DayPlan> plan;
    Compare::CompareParameters parameters;
    QString folder;         ///< that keeps series
    std::vector<int> dates; ///< indices of days, in the order in which they are wanted
};

struct DateStretch {
    int day = 0;
    std::vector<double> sums;     ///< of the bands, one per point
    std::vector<double> baseline; ///< one per point
    double sigma = 0;             ///< of the sums less the base line
    ObservationData samples;      ///< of the one ray, with what delayed bands take in behind
    int before = 0;               ///< points of the samples before the stretch
    QString remark;
    QString problem; ///< which file, what is wrong, what can be done; empty otherwise
};

/// Reads one after the other.
void readDates(const DateReading &reading, const Jobs::Control &control,
               const std::function<void(std::shared_ptr<const DateStretch>)> &deliver);

/// Sum and base line over the time since the begin of the stretch, with UTC and sidereal time.
PlotData datePlot(const DateStretch &stretch, const Days::DayPlan &plan, const QStringList &source);

/// Statistics of the sums less their base line between two points, as HTML.
QString dateStatistics(const DateStretch &stretch, int first, int count, bool isSelected,
                       double tresolution);
