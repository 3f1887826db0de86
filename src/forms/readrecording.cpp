#include "forms/readrecording.h"

#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "data/reader.h"
#include "data/recordingfile.h"

#include <QLabel>

std::optional<ReadRecording> readRecording(const QString &path, QWidget *window)
{
    Reader reader;
    ReadRecording recording;
    {
        ProgressTask task;
        QObject::connect(&reader, &Reader::progress, &task, &ProgressTask::show);
        QObject::connect(&task, &ProgressTask::cancelRequested, &reader, &Reader::cancel);
        recording.data = Reader::readDataFile(&reader, path, false);
    }
    if (reader.outcome() == ReadOutcome::Cancelled)
        return std::nullopt;
    recording.problem = reader.reason();
    if (completePoints(recording.data) >= 1 && recording.data.samples != nullptr)
        return recording;
    showError(window, "Bad file!\nFile without data", recording.problem);
    return std::nullopt;
}

void showDataEnd(QLabel *label, const ObservationData &data)
{
    label->setText(dataEndText(data));
    label->setVisible(data.missingPoints > 0);
}
