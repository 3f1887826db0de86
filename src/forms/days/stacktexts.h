#pragma once

#include "analyses/days/ffatrials.h"

#include <QString>

/// What the form of days says of spectra, or of periodograms of fast folding.
struct StackTexts {
    bool isFfa;
    QString group;        ///< title of the fields
    QString computeTip;   ///< of the button
    QString emptyPicture; ///< before anything is computed
    QString picture;      ///< title; %1: which days
    QString scale;        ///< %1: highest value shown
    float leastHighest;   ///< of that scale
    QString value;        ///< heading of a day's value under the pointer
    QString valueTip;     ///< of the heading; %1: where
    QString saveProducts; ///< the button
    QString saveTables;   ///< title of the dialog
    QString curve;        ///< what the table of the stack is called in the names of files
    QString sees;         ///< which pulsars such a stack sees, and the other does not
};

const StackTexts &stackTexts(bool isFfa);

/// "9183 trial periods from 0.5 to 20 s, 5 widths".
QString trialsText(const Days::FfaTrials &trials);
