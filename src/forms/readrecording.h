#pragma once

#include "data/observationdata.h"

#include <QString>
#include <optional>

class QWidget;

/// A recording as a form got it.
struct ReadRecording {
    ObservationData data;
    QString problem; ///< of a file that ends early; else empty
};

/// Reads a recording for a form, with progress and with the menus disabled; Esc stops it. A file
/// without data is reported in a box.
///
/// @param window  parent of the box
/// @return nothing when there are no data or the user stopped the reading
std::optional<ReadRecording> readRecording(const QString &path, QWidget *window);
