#pragma once

#include "analyses/days/dayspectra.h"

class QWidget;
struct StackTexts;

/// Saves what a form of days shows: asks where to, in the folder that was saved to last, and tells
/// in a box what cannot be written.
namespace SaveStack {

/// The spectra or periodograms of the days, as the batch program writes them.
void saveSpectra(QWidget *form, const StackTexts &words, const Days::DaySpectra &spectra);

struct Stack {
    QString directory;
    std::shared_ptr<const Days::DaySpectra> spectra;
    std::shared_ptr<const Days::StackOutcome> outcome;
    std::shared_ptr<const RecordingSet> recordings;
};

/// Three tables beside each other, all of them or none: the stack, its lines, its days.
void saveTables(QWidget *form, const StackTexts &words, const Stack &stack);

} // namespace SaveStack
