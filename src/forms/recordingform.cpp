#include "forms/recordingform.h"

#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "app/shell/statusline.h"
#include "data/reader.h"
#include "data/recordingfile.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "forms/switchedchannels.h"

#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <algorithm>

namespace {

void scrollTo(QWidget *field)
{
    for (QWidget *above = field->parentWidget(); above; above = above->parentWidget()) {
        if (auto *const area = qobject_cast<QScrollArea *>(above))
            area->ensureWidgetVisible(field);
    }
}

QRect onScreen(const QWidget *field)
{
    return {field->mapToGlobal({0, 0}), field->size()};
}

} // namespace

std::optional<FileForm::Refusal> RecordingForm::read(int leastPoints)
{
    Reader reader;
    {
        ProgressTask task;
        connect(&reader, &Reader::progress, &task, &ProgressTask::show);
        connect(&task, &ProgressTask::cancelRequested, &reader, &Reader::cancel);
        data = Reader::readDataFile(&reader, path, false);
    }
    readProblem = reader.reason();
    if (reader.outcome() == ReadOutcome::Cancelled)
        return Refusal();
    if (completePoints(data) < 1 || data.samples == nullptr)
        return Refusal{"Bad file!\nFile without data", readProblem};
    if (data.npoints < leastPoints)
        return Refusal{"Bad file!\nFile with short data, must be long data",
                       path + QString(" has %1 points; this form needs at least %2.")
                                  .arg(data.npoints)
                                  .arg(leastPoints)};
    return std::nullopt;
}

bool RecordingForm::open(int leastPoints)
{
    return FileForm::open([&] { return read(leastPoints); });
}

void RecordingForm::install(QWidget *plot, QWidget *panel)
{
    fieldPanel = panel;
    FileForm::install(plot, panel);
    describe(data);
    auto *const dataEnd = findChild<QLabel *>("dataEnd");
    dataEnd->setText(dataEndText(data));
    dataEnd->setVisible(data.missingPoints > 0);
    offerSwitchedChannels(findChild<QCheckBox *>("leaveOutChannels"), path, data.channels);
    connect(findChild<QPushButton *>("pushButton"), &QPushButton::clicked, this,
            &RecordingForm::run);
    connect(findChild<QPushButton *>("commandButton"), &QPushButton::clicked, this,
            &RecordingForm::copyCommand);
}

void RecordingForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        run();
    else
        QWidget::keyPressEvent(event);
}

void RecordingForm::copyCommand()
{
    if (ProgressTask::isRunning())
        return;
    if (const QString text = command(); !text.isEmpty())
        StatusLine::copyCommand(text);
}

QWidget *RecordingForm::field(const QString &name) const
{
    QWidget *const own = FieldValues::find(this, name);
    return own || !fieldPanel ? own : FieldValues::find(fieldPanel, name);
}

QWidget *RecordingForm::fieldOf(const FieldText &told) const
{
    QWidget *const own = FieldValues::find(this, told);
    return own || !fieldPanel ? own : FieldValues::find(fieldPanel, told);
}

void RecordingForm::beginReading()
{
    unread.clear();
    for (QWidget *failing : marked)
        FieldStyles::setStyle(failing, {});
    marked.clear();
}

void RecordingForm::readField(const FieldText &told, FieldRef value)
{
    QWidget *const widget = fieldOf(told);
    if (!widget)
        return;
    if (const std::optional<FieldValues::Unread> problem = FieldValues::read(widget, told, value))
        unread.push_back(*problem);
}

void RecordingForm::showField(const FieldText &told, const FieldValue &value)
{
    if (QWidget *const widget = fieldOf(told))
        FieldValues::show(widget, told, value);
}

bool RecordingForm::refuseUnread()
{
    return Fields::refuseUnread(this) || (fieldPanel && Fields::refuseUnread(fieldPanel));
}

void RecordingForm::mark(QWidget *failing)
{
    if (!failing)
        return;
    FieldStyles::setStyle(failing, FieldStyles::failing);
    marked.push_back(failing);
}

void RecordingForm::focusOn(const FieldProblem &problem)
{
    QWidget *const failing = field(problem.field);
    if (!failing)
        return;
    scrollTo(failing);
    failing->setFocus();
}

void RecordingForm::refuse(const std::vector<FieldProblem> &problems, const QString &remark)
{
    QStringList texts;
    for (const FieldProblem &problem : problems) {
        texts << problem.text;
        mark(field(problem.field));
    }
    const auto first = std::find_if(problems.begin(), problems.end(),
                                    [this](const auto &problem) { return field(problem.field); });
    if (first != problems.end())
        focusOn(*first);
    QRect kept;
    for (const QWidget *failing : marked)
        kept |= onScreen(failing);
    showErrorBeside(this, kept, texts.join("\n\n"), remark);
    if (first != problems.end())
        focusOn(*first);
}

QString RecordingForm::channelsOff() const
{
    return channelsToLeaveOut(findChild<QCheckBox *>("leaveOutChannels"), path, data.channels);
}

bool RecordingForm::runHere(const std::function<void(const Jobs::Control &)> &work)
{
    Jobs::Ending ending;
    {
        ProgressTask task;
        Jobs::Control control;
        control.progress = [&task](int percent) { task.advance(percent); };
        control.isStopped = [&task] { return task.isCancelled(); };
        ending = Jobs::runGuarded([&] { work(control); });
    }
    if (ending.kind == Jobs::Ending::Failed)
        showError(this, ending.problem);
    return ending.kind != Jobs::Ending::Failed;
}
