#pragma once

#include "batch/resulttable.h"
#include "plot/plotdata.h"

#include <QSize>

namespace Batch {

/// What a plot of a result shows: its columns over its axis, as the form that makes the same
/// result shows them.
PlotData plotOf(const ResultTable &table);

/// The picture as the bytes of a file; the same plot gives the same bytes. From any thread.
///
/// @param kind  "png", "svg" or "pdf"
QByteArray pictureBytes(const PlotData &plot, const QString &kind, const QSize &size);

} // namespace Batch
