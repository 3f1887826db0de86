#pragma once

#include "jobs/worker.h"

#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

class JobProgress;
class LastValues;
struct ObservationData;

/// The base of the forms on one file or directory: it opens the file, tells in a box when that
/// fails, shows the form with its plot and panel, brings back last values and shows what runs
/// beside the window.
///
/// A form brings its .ui. The widgets are known by their object names: `filePath` shows the path
/// and, where the form has them, `recording` says what the file is and `lastValues` brings back.
///
/// Its constructor builds the widgets, calls open() and, where that succeeds, install().
class FileForm : public QWidget {
    Q_OBJECT

public:
    ~FileForm() override;

protected:
    /// @param filePath  full path
    /// @param parent    the main window
    FileForm(const QString &filePath, QWidget *parent);

    /// Why a file cannot be used; without a text: the user stopped the reading.
    struct Refusal {
        QString text;
        QString reason;
    };
    /// Empties the central widget and reads. A file that cannot be used is told in a box; the
    /// central widget then stays empty, the status bar says what to do next, and the form deletes
    /// itself. The same, without a box, when the user stops the reading.
    ///
    /// @return false when there is nothing to show
    bool open(const std::function<std::optional<Refusal>()> &read);

    /// When the progress of the worker is shown: for what the user asked for by a button, or only
    /// when it tells a percentage, for what follows every look.
    enum class Progress { AtOnce, OncePercentIsKnown };
    /// Shows the form in the central widget, with its plot and its panel. The fields have their
    /// presets by then.
    ///
    /// @param plot   takes the room
    /// @param panel  at the right of the plot; null where there is none
    void install(QWidget *plot, QWidget *panel, Progress shown = Progress::AtOnce);

    /// Says what a recording is, by its passport.
    void describe(const ObservationData &header);

    /// What runs beside the window has ended; a failure is told in a box.
    virtual void endWork(const Jobs::Ending &ending);

    const QString path;
    Jobs::Worker
        worker; ///< for what takes longer than a blink; its progress is shown, Esc stops it

private:
    std::unique_ptr<LastValues> lastValues;
    std::unique_ptr<JobProgress> progress;
};
