#pragma once

#include "analyses/days/dayspectra.h"

#include <functional>
#include <memory>
#include <vector>

/// The long computations of FourierForm, as jobs that share nothing with the form but values that
/// nobody changes meanwhile.

struct SpectraRequest {
    std::shared_ptr<const RecordingSet> recordings;
    QString directory;
    Days::FourierDaysParameters parameters;
};

using Days::DaySpectra;
using Days::StackOutcome;
using Days::StackRequest;
using Days::stackSpectra;

/// What a reading tells: first the plan, then day after day, in any order.
struct SpectraNews {
    std::shared_ptr<const DaySpectra> begun; ///< without any day yet; null in all later ones
    int day = 0;
    std::vector<Days::FourierDay> rays;
};

/// Throws where memory is too small for the products of all days.
void checkMemory(const DaySpectra &spectra);

/// Finds the days and makes their spectra, several side by side.
void readSpectra(const SpectraRequest &request, const Jobs::Control &control,
                 const std::function<void(SpectraNews news)> &deliver);
