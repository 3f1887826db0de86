#pragma once

#include "analyses/compare/comparedays.h"

#include <memory>

/// The reading of compared days, as a job that shares nothing with the form but values that nobody
/// changes meanwhile.
struct CompareReading {
    std::shared_ptr<const RecordingSet> recordings;
    QString directory;
    Compare::CompareParameters parameters;
};

/// Finds the days and reads them, several side by side.
///
/// @return with the plan's problems alone where it has any; null when stopped
std::shared_ptr<const Compare::CompareProducts> readDays(const CompareReading &reading,
                                                         const Jobs::Control &control);
