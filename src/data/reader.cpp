#include "data/reader.h"

#include "base/debugline.h"
#include "base/systemmemory.h"
#include "data/batchtexts.h"
#include "data/recordingfile.h"
#include "data/samplereader.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPointer>
#include <QScopedValueRollback>
#include <cstdio>
#include <new>

namespace {

bool reading = false;

struct ReadResult {
    ObservationData data;
    ReadOutcome outcome = ReadOutcome::Complete;
    QString reason;
};

bool isInteractive()
{
    return !QApplication::topLevelWidgets().isEmpty();
}

void showInformation(const QString &title, const QString &text)
{
    QMessageBox::information(QApplication::activeWindow(), title, text, QMessageBox::Ok);
}

void printAbout(const char *pattern, const QString &path)
{
    std::printf(pattern, path.toLocal8Bit().constData());
    std::fflush(stdout);
}

// The same recording without samples.
ReadResult withoutSamples(ObservationData data, ReadOutcome outcome, const QString &reason)
{
    data.npoints = 0;
    data.samples = Samples();
    return {data, outcome, reason};
}

SampleShape shapeOf(const ObservationData &data)
{
    return {data.npoints, data.modules, data.channels, data.rays};
}

ReadResult tooLarge(const ObservationData &data, const QFile &file)
{
    const QString counts = QString("%1 points, %2 modules, %3 rays, %4 channels")
                               .arg(data.npoints)
                               .arg(data.modules)
                               .arg(data.rays)
                               .arg(data.channels);
    const QString reason =
        QString("%1 needs %2 of memory by its passport (%3), but %4 are available. The file "
                "itself has %5. Close other programs or cut the recording into shorter ones; if "
                "the file is far smaller than its passport says, the passport is damaged.")
            .arg(file.fileName(), sizeText(memoryToRead(shapeOf(data))), counts,
                 sizeText(availableMemory()), sizeText(file.size()));
    debugLine("ERROR! Reader::readDataFile(): ", reason);
    return withoutSamples(data, ReadOutcome::TooLarge, reason);
}

ReadResult shortFile(ObservationData data, const SampleReading &end, const QFile &file)
{
    const qint64 pointValues = qint64(data.modules) * data.rays * data.channels;
    const qint64 missing = data.npoints * pointValues - end.valuesRead;
    data.missingPoints = data.npoints - int(end.valuesRead / pointValues);
    QString reason =
        QString("%1 ends early: %2 of its samples are missing. %3 Copy the file again "
                "or use its first part only.")
            .arg(file.fileName(), sizeText(missing * qint64(sizeof(float))), dataEndText(data));
    if (!end.error.isEmpty())
        reason += " The system says: " + end.error;
    if (!isInteractive()) {
        printAbout(BatchTexts::wrongSize, file.fileName());
        return {ObservationData(), ReadOutcome::Short, reason};
    }
    showInformation("Data is heavily damaged",
                    "File size is incorrect, data is broken, showing what I can.");
    return {data, ReadOutcome::Short, reason};
}

// Asked once per file, when reading has taken an hour; false gives up.
bool continueSlowReading(const QString &path)
{
    if (!isInteractive()) {
        printAbout(BatchTexts::tooSlow, path);
        return false;
    }
    showInformation("Very slow reading",
                    "You just can't live like that.\nThis warning won't show again.");
    return true;
}

// Reads the samples that follow the passport.
ReadResult readSampleTree(QFile &file, ObservationData data, SampleReadingHooks hooks)
{
    const SampleShape shape = shapeOf(data);
    const qint64 needed = memoryToRead(shape);
    const qint64 available = availableMemory();
    if (needed < 0 || (available > 0 && needed > available))
        return tooLarge(data, file);

    const std::shared_ptr<SampleBlock> block =
        SampleBlock::allocate(shape.modules, shape.channels, shape.rays, shape.npoints);
    if (!block)
        return tooLarge(data, file);

    data.sampleMarker = -1.0;
    data.sampleFactor = 0.89;
    data.samples = Samples(block);
    hooks.continueSlow = [&file] { return continueSlowReading(file.fileName()); };
    const SampleReading end = readSamples(file, shape, *block, hooks);
    switch (end.end) {
    case SampleReadingEnd::Complete:
        break;
    case SampleReadingEnd::Short:
        return shortFile(data, end, file);
    case SampleReadingEnd::Cancelled:
        return withoutSamples(data, ReadOutcome::Cancelled,
                              QString("Reading %1 was cancelled.").arg(file.fileName()));
    case SampleReadingEnd::TooSlow:
        return {ObservationData(), ReadOutcome::TooSlow,
                QString("Reading %1 took more than an hour and was given up. Copy the file to a "
                        "faster disk.")
                    .arg(file.fileName())};
    }
    return {data, ReadOutcome::Complete, {}};
}

ReadResult readFile(const QString &path, bool headerOnly, const SampleReadingHooks &hooks)
{
    QFile file(path);
    QString reason;
    if (!openRecording(file, reason))
        return {ObservationData(), ReadOutcome::CannotOpen, reason};

    const Passport passport = readPassport(file);
    const RecordingHeader header = recordingHeader(passport, path);
    if (!header.problem.isEmpty())
        return {header.data, ReadOutcome::BadPassport, badPassport(path, header.problem)};
    if (headerOnly)
        return {header.data, ReadOutcome::Complete, {}};
    if (isEndless(passport, file.size()))
        return withoutSamples(header.data, ReadOutcome::BadPassport, endlessPassport(path));
    if (header.data.modules < 1) {
        debugLine("------------------- data ERROR! modules =", header.data.modules);
        return {header.data, ReadOutcome::BadPassport,
                QString("%1 has no samples: its passport lists no modules.").arg(path)};
    }
    try {
        return readSampleTree(file, header.data, hooks);
    } catch (const std::bad_alloc &) {
        return tooLarge(header.data, file);
    }
}

} // namespace

ObservationData Reader::readDataFile(Reader *progressSource, const QString &path, bool headerOnly)
{
    // Pending events may delete the form that asked for the file, and its reader with it.
    const QPointer<Reader> source(progressSource);
    if (reading) {
        if (source) {
            source->lastOutcome = ReadOutcome::Busy;
            source->lastReason =
                QString("%1 was not read: another file is still being read.").arg(path);
        }
        return {};
    }
    const QScopedValueRollback<bool> guard(reading, true);

    SampleReadingHooks hooks;
    hooks.keepAlive = [] {
        QCoreApplication::processEvents();
        return true;
    };
    if (source) {
        source->cancelled = false;
        hooks.clock = source->clock;
        hooks.progress = [source](int percent) {
            if (source)
                emit source->progress(percent);
        };
        hooks.keepAlive = [source] {
            QCoreApplication::processEvents();
            return source && !source->cancelled;
        };
    }
    const ReadResult result = readFile(path, headerOnly, hooks);
    if (source) {
        source->lastOutcome = result.outcome;
        source->lastReason = result.reason;
    }
    return result.data;
}
