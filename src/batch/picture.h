#pragma once

#include "picture/plotdata.h"
#include "picture/plotexport.h"
#include "results/resulttable.h"

#include <QSize>

namespace Batch {

/// Whether a table holds curves or candidates, the two kinds that plotOf() shows.
bool canBeDrawn(const Results::ResultTable &table);

/// What a plot of a result shows: its columns over its axis, as the form that makes the same
/// result shows them; or S/N over period of its candidates, those with a remark (harmonics, hum)
/// as a curve of their own.
PlotData plotOf(const Results::ResultTable &table);

/// A plot of S/N over period.
///
/// @param periods  s, ascending, one per value of each curve
PlotData periodPlot(std::vector<double> periods, std::vector<std::vector<float>> curves,
                    const QVector<QString> &names);

/// The picture as the bytes of a file; the same plot gives the same bytes. From any thread.
///
/// @param kind  "png", "svg" or "pdf"
/// @param key   kept in the file, see requestKey(); may be empty
Plot::PictureBytes pictureBytes(const PlotData &plot, const QString &kind, const QSize &size,
                                const QString &key = {});

} // namespace Batch
