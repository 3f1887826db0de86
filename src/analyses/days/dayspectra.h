#pragma once

#include "analyses/days/fourierdays.h"

#include <memory>
#include <optional>
#include <vector>

/// What a form and the batch program both stack: the spectra of all days, and what is wanted of
/// them.
namespace Days {

/// What has been read of a folder so far.
struct DaySpectra {
    FourierDaysParameters parameters; ///< with the module and ray of the plan
    DayPlan plan;
    KeptFolder kept;
    std::vector<std::vector<FourierDay>> rays; ///< the own one first, a product per day

    const std::vector<FourierDay> &days() const { return rays.front(); }
};

struct StackRequest {
    std::shared_ptr<const DaySpectra> spectra;
    FourierDaysParameters parameters;         ///< those that need no reading may differ
    std::vector<std::optional<bool>> decided; ///< by the user, one per day; the rest by the rule
    double frequency = 0; ///< Hz at the telescope, whose harmonics speak against no day; 0: none
    std::vector<Interference> leftOut;
};

struct StackOutcome {
    FourierDaysParameters parameters; ///< that it was made with
    std::vector<DayVerdict> verdicts; ///< one per day, as all below
    FourierDaysChoice choice;         ///< with the days that count
    FourierStack stack;
};

/// Which days count, and their stack.
std::shared_ptr<const StackOutcome> stackSpectra(const StackRequest &request,
                                                 const Jobs::Control &control = {});

} // namespace Days
