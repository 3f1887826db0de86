#pragma once

#include "data/observationdata.h"

#include <QObject>
#include <QString>
#include <functional>

/// How a reading ended.
enum class ReadOutcome {
    NotRead,     ///< nothing was read yet
    Complete,    ///< passport and, unless only that was asked for, every sample
    Short,       ///< the file ends early; interactively the record has the samples that exist
    Cancelled,   ///< by Reader::cancel()
    CannotOpen,  ///< missing, not allowed or no ordinary file
    BadPassport, ///< the text at the beginning does not describe a recording
    TooLarge,    ///< the samples do not fit into this machine's memory
    TooSlow,     ///< given up after more than an hour (batch)
    Busy,        ///< another reading was under way
};

/// Reads recordings (".pnt", ".pnthr") and shows the two warnings that belong to reading.
/// It is interactive while the application has a top-level widget and runs as a batch
/// otherwise, where it prints instead of showing boxes.
///
/// Reading runs on the calling thread and lets pending events be processed every few
/// milliseconds. One reading at a time: a second one, started from such an event, returns
/// an empty record at once.
class Reader : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Reads one file.
    ///
    /// @param progressSource  emits progress(), takes cancel() and keeps the outcome; may be
    ///                        null
    /// @param path            full path
    /// @param headerOnly      stop after the passport; `samples` is then null
    /// @return the recording; `samples` is null and npoints is 0 when nothing usable was
    ///         read, or -1 when the passport lacks channels or modules. A recording with an
    ///         empty list of modules keeps its npoints. After a short file npoints stays,
    ///         `missingPoints` tells how many of them are not whole, and the missing values are
    ///         zero.
    static ObservationData readDataFile(Reader *progressSource, const QString &path,
                                        bool headerOnly = false);

    ReadOutcome outcome() const { return lastOutcome; }
    /// Which file, what is wrong with it and what can be done; empty when it was complete.
    QString reason() const { return lastReason; }

    /// Replaces the clock of the slow-reading rule, for readings that follow.
    ///
    /// @param milliseconds  time since any fixed moment; empty for the steady clock
    void setClock(std::function<qint64()> milliseconds) { clock = std::move(milliseconds); }

signals:
    /// Percent of the points read, 0 to 99: once every 1000 points.
    void progress(int percent);

public slots:
    /// Ends the reading under way within a tenth of a second, without a record.
    void cancel() { cancelled = true; }

private:
    ReadOutcome lastOutcome = ReadOutcome::NotRead;
    QString lastReason;
    std::function<qint64()> clock;
    bool cancelled = false;
};
