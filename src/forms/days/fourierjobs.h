#pragma once

#include "analyses/days/fourierdays.h"
#include "jobs/control.h"

#include <memory>
#include <optional>
#include <vector>

/// The long computations of FourierForm, as jobs that share nothing with the form but values that
/// nobody changes meanwhile.

struct SpectraRequest {
    std::shared_ptr<const RecordingSet> recordings;
    QString directory;
    Days::FourierDaysParameters parameters;
};

/// What has been read of a directory so far.
struct DaySpectra {
    Days::FourierDaysParameters parameters; ///< with the module and ray of the plan
    Days::DayPlan plan;
    Days::KeptFolder kept;
    std::vector<std::vector<Days::FourierDay>> rays; ///< the own one first, a product per day

    const std::vector<Days::FourierDay> &days() const { return rays.front(); }
};

/// What a reading tells: first the plan, then day after day, in any order.
struct SpectraNews {
    std::shared_ptr<const DaySpectra> begun; ///< without any day yet; null in all later ones
    int day = 0;
    std::vector<Days::FourierDay> rays;
};

/// Finds the days and makes their spectra, several side by side.
void readSpectra(const SpectraRequest &request, const Jobs::Control &control,
                 const std::function<void(SpectraNews news)> &deliver);

struct StackRequest {
    std::shared_ptr<const DaySpectra> spectra;
    Days::FourierDaysParameters parameters;   ///< those that need no reading may differ
    std::vector<std::optional<bool>> decided; ///< by the user, one per day
    double frequency = 0; ///< Hz at the telescope, whose harmonics speak against no day; 0: none
    std::vector<Days::Interference> leftOut;
};

struct StackOutcome {
    Days::FourierDaysParameters parameters; ///< that it was made with
    std::vector<Days::DayVerdict> verdicts; ///< one per day, as all below
    Days::FourierDaysChoice choice;         ///< with the days that count
    Days::FourierStack stack;
};

/// Which days count, and their stack.
std::shared_ptr<const StackOutcome> stackSpectra(const StackRequest &request);
