#pragma once

#include <QString>

/// Names of sources after their coordinates of 2000.
namespace Tools {

/// "Jhhmm+ddmm" of texts that begin with hh:mm and dd:mm, whatever the separator; "Jhhmm-ddmm"
/// for a declination that begins with "-".
///
/// @return empty when the texts hold no digits in these places
QString pulsarNameFromCoords(const QString &alfa, const QString &delta);

/// The leading "Jhhmm+ddmm" of a longer name, at most four digits of the declination; empty
/// where the name does not begin so.
QString shortSourceName(const QString &name);

} // namespace Tools
