#pragma once

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
    QString curve;        ///< what the table of the stack is called in the names of files
    QString sees;         ///< which pulsars such a stack sees, and the other does not
    bool isGrey = false;  ///< greys in place of colours; `scale` has a %2: lowest and highest value
};

const StackTexts &stackTexts(bool isFfa);
