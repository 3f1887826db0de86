#include "forms/readrecording.h"

#include "app/shell/busyguard.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "data/reader.h"
#include "data/recordingfile.h"

#include <QLabel>
#include <QProgressBar>

std::optional<ReadRecording> readRecording(const QString &path, QWidget *window)
{
    Reader reader;
    ReadRecording recording;
    {
        QProgressBar *const progressBar = Settings::instance()->progressBar();
        BusyGuard guard;
        QObject::connect(&reader, &Reader::progress, progressBar, &QProgressBar::setValue);
        QObject::connect(&guard, &BusyGuard::cancelRequested, &reader, &Reader::cancel);
        progressBar->setValue(0);
        progressBar->show();
        recording.data = Reader::readDataFile(&reader, path, false);
        progressBar->hide();
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
