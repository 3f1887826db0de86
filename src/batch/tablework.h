#pragma once

#include "batch/recordings.h"
#include "batch/runner.h"
#include "results/resulttable.h"

#include "picture/plotexport.h"
#include "picture/rowpicture.h"

#include <QSize>
#include <optional>

namespace Batch {

/// Where results go and in which form.
struct OutputOptions {
    QString folder; ///< empty: beside each input
    QString tag;    ///< part of the names, so that results of other parameters stay apart
    Results::Format format = Results::Format::Text;
    QString picture; ///< "png", "svg" or "pdf"; empty: no picture
    QSize pictureSize = {1280, 720};
    int pictureScale = 1; ///< see Plot::PictureContent::pngScale
};

/// What the work on one recording gives.
struct TableResult {
    Results::ResultTable table;
    std::optional<PlotData> plot; ///< where the picture does not show the columns of the table
    std::optional<Plot::RowPicture> rows; ///< for TableRequest::rowPicture
};

/// A subcommand that makes one table of each recording.
struct TableRequest {
    QString command;
    std::vector<Results::HeaderLine> parameters; ///< all that decide the result, with their units
    OutputOptions output;
    QString rowPicture = {}; ///< name of a second picture, of rows of colours; empty: there is none
    /// Bytes of memory for an opened recording.
    std::function<qint64(const RecordingFile &file)> memory;
    /// Computes the columns and what stands above them. `table.request` is filled already.
    std::function<Failure(RecordingFile &file, const Control &control, TableResult &result)> fill;
};

/// The header line of a picture: its kind and size.
Results::HeaderLine pictureLine(const OutputOptions &output);

/// The picture of a plot with its legend, as the forms save it. The same plot gives the same bytes.
/// From any thread.
///
/// @param key  kept in the file, see requestKey(); may be empty
Plot::PictureBytes pictureOf(const PlotData &plot, const OutputOptions &output, const QString &key);

/// Name of what a subcommand makes of an input: "<input>.<command>[.<tag>].<extension>".
QString outputPath(const QString &input, const QString &command, const OutputOptions &output,
                   const QString &extension);

/// The work of such a subcommand: table and picture appear together, and count as done when the
/// table begins with the same request.
Work tableWork(const TableRequest &request);

} // namespace Batch
