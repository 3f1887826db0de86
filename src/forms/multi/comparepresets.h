#pragma once

#include "data/recordingset.h"

class PlaceFields;
class QWidget;

/// Fills the fields of place, module, ray, dispersion and points of a form with what the first
/// recording that can be used has. The days lie under each other by sidereal time, which begins
/// where all recordings that begin near the first one have samples.
void fillPlace(QWidget *form, PlaceFields &place, const RecordingSet &set);
