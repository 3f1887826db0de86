#pragma once

#include "data/observationdata.h"

#include <QString>

class QCheckBox;

/// The channels that the user has switched off in the viewer of native data, as other forms use
/// them: only where a check box says so, which is off when the form opens.

/// Prepares the box of a form for its recording; without a channel that is off it is disabled.
void offerSwitchedChannels(QCheckBox *box, const QString &path, int channels);

/// What a form computes with.
struct SwitchedRecording {
    ObservationData data; ///< without samples when memory is short
    QString note;         ///< which channels are left out; empty when none are
};

/// The recording, with zeros in the channels that are off where the box is checked.
SwitchedRecording switchedRecording(const ObservationData &data, const QCheckBox *box,
                                    const QString &path);
