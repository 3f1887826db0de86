#pragma once

#include "analyses/days/dayspectra.h"
#include "analyses/days/ffatrials.h"

#include <QString>

/// What a form of days says of spectra, of periodograms of fast folding or of sums.
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
    QString sees;         ///< which pulsars such a stack sees, and the other does not
    bool isGrey = false;  ///< greys in place of colours; `scale` has a %2: lowest and highest value
};

const StackTexts &stackTexts(bool isFfa);

/// How many recordings and days a plan has.
QString planText(const Days::DayPlan &plan, qint64 recordings);

/// What a stack was made of, line by line.
QString usedText(const QString &directory, const Days::DaySpectra &spectra,
                 const Days::StackOutcome &outcome);

/// "9183 trial periods from 0.5 to 20 s, 5 widths".
QString trialsText(const Days::FfaTrials &trials);
