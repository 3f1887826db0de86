#include "forms/fileform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/jobprogress.h"
#include "app/shell/lastvalues.h"
#include "app/shell/pathlabel.h"
#include "app/shell/statusline.h"
#include "data/recordingsummary.h"

#include <QFileInfo>
#include <QLabel>

FileForm::FileForm(const QString &filePath, QWidget *parent) : QWidget(parent), path(filePath)
{}

FileForm::~FileForm() = default;

bool FileForm::open(const std::function<std::optional<Refusal>()> &read)
{
    auto *const label = findChild<PathLabel *>("filePath");
    if (QFileInfo(path).isDir())
        label->showDirectory(path);
    else
        label->showFile(path);
    emptyCentralWidget();
    StatusLine::clear();
    const std::optional<Refusal> refusal = read();
    if (!refusal)
        return true;
    if (!refusal->text.isEmpty())
        showError(parentWidget(), refusal->text, refusal->reason);
    StatusLine::keep(QFileInfo(path).fileName() +
                     " is not open. Choose a command of the menus to open a file.");
    deleteLater();
    return false;
}

void FileForm::install(QWidget *plot, QWidget *panel, Progress shown)
{
    fillCentralWidget(this, plot, panel);
    progress = std::make_unique<JobProgress>(worker, this, shown == Progress::AtOnce);
    connect(&worker, &Jobs::Worker::ended, this, &FileForm::endWork);
    lastValues = std::make_unique<LastValues>(this);
}

void FileForm::describe(const ObservationData &header)
{
    findChild<QLabel *>("recording")->setText(recordingSummary(header).join("; "));
}

void FileForm::endWork(const Jobs::Ending &ending)
{
    if (ending.kind == Jobs::Ending::Failed)
        showError(this, ending.problem);
}
