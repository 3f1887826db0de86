#pragma once

#include <QString>

class QWidget;

namespace Plot {

/// Kinds of files that saveDrawing() writes, for askForPath().
inline constexpr char pictureFilters[] =
    "PNG picture (*.png);;SVG drawing (*.svg);;PDF document (*.pdf)";

/// Asks where to save. A name without an ending gets that of the chosen kind.
///
/// @param name  offered in `folder`
/// @return empty when the user chose none
QString askForPath(QWidget *parent, const QString &title, const QString &folder,
                   const QString &name, const QString &filters);

} // namespace Plot
