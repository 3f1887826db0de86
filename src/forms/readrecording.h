#pragma once

#include "data/observationdata.h"

#include <QString>
#include <optional>

class QLabel;
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

/// Says in a label of the form where the data of a recording that ends early end, by point and
/// UTC; the label stays hidden where nothing is missing.
void showDataEnd(QLabel *label, const ObservationData &data);
