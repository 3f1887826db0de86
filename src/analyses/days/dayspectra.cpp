#include "analyses/days/dayspectra.h"

namespace Days {

std::shared_ptr<const StackOutcome> stackSpectra(const StackRequest &request,
                                                 const Jobs::Control &control)
{
    const DaySpectra &spectra = *request.spectra;
    const auto outcome = std::make_shared<StackOutcome>();
    outcome->parameters = request.parameters;
    DayRule rule = ruleOf(spectra.parameters, spectra.plan, request.leftOut);
    if (request.frequency > 0)
        rule.frequency = request.frequency;
    outcome->verdicts = proposeDays(spectra.days(), rule);
    FourierDaysChoice &choice = outcome->choice;
    choice = choiceOf(spectra.plan, request.parameters);
    choice.leftOut = request.leftOut;
    for (std::size_t day = 0; day < outcome->verdicts.size(); ++day) {
        DayVerdict &verdict = outcome->verdicts[day];
        const bool isOn = request.decided[day].value_or(verdict.isGood);
        choice.days.push_back(isOn && spectra.days()[day].isWhole());
        if (!isOn && verdict.reason.isEmpty())
            verdict.reason = "switched off";
    }
    const FourierDaysAnalysis &analysis = analysisOf(spectra.parameters);
    const std::vector<int> others = otherRaysOf(spectra.parameters, spectra.plan);
    for (std::size_t i = 0; i < others.size() && !control.isStopped(); ++i)
        choice.otherRays.push_back(otherRayOf(analysis, spectra.parameters.module, others[i],
                                              spectra.rays[i + 1], choice, control));
    outcome->stack = analysis.combine(spectra.days(), choice, control);
    return outcome;
}

} // namespace Days
