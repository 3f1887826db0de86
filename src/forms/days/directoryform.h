#pragma once

#include "app/shell/jobprogress.h"
#include "data/recordingset.h"
#include "jobs/worker.h"

#include <QWidget>
#include <memory>

/// The base of every form over a directory. It reads the headers of all recordings there,
/// sub-folders included, beside the window.
///
/// Construction empties the central widget. A directory without recordings is reported in a box;
/// the central widget is then empty and the form gone. The same, without a box, when the user stops
/// the reading.
class DirectoryForm : public QWidget {
    Q_OBJECT

public:
    /// @param directory  full path
    /// @param parent     the main window
    DirectoryForm(const QString &directory, QWidget *parent);
    ~DirectoryForm() override;

protected:
    /// Starts to read the headers; recordingsRead() follows. Call it when the form is shown.
    void readRecordings();
    /// The headers of at least one recording are there.
    virtual void recordingsRead() = 0;

    const QString directory;
    std::shared_ptr<const RecordingSet> recordings; ///< null until they are read
    Jobs::Worker worker;                            ///< of all that is read; Esc stops it

private:
    void takeRecordings(const std::shared_ptr<const RecordingSet> &set);
    void leave();

    JobProgress progress;
};
