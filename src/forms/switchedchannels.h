#pragma once

#include <QString>

class QCheckBox;

/// The channels that the user has switched off in the viewer of native data, as other forms use
/// them: only where a check box says so, which is off when the form opens.

/// Prepares the box of a form for its recording; without a channel that is off it is disabled.
void offerSwitchedChannels(QCheckBox *box, const QString &path, int channels);

/// Numbers of the channels to leave out, "4,21", where the box is checked; else empty.
QString channelsToLeaveOut(const QCheckBox *box, const QString &path, int channels);
