#include "forms/recordingform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"
#include "app/shell/jobprogress.h"
#include "app/shell/lastvalues.h"
#include "app/shell/pathlabel.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "data/recordingsummary.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "forms/readrecording.h"
#include "forms/switchedchannels.h"

#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStatusBar>
#include <algorithm>

namespace {

constexpr int messageMs = 15000; // that a line stays in the status bar

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

RecordingForm::RecordingForm(const QString &path, QWidget *parent)
    : QWidget(parent), recordingPath(path)
{}

RecordingForm::~RecordingForm() = default;

bool RecordingForm::open(int leastPoints)
{
    findChild<PathLabel *>("filePath")->showFile(recordingPath);
    emptyCentralWidget();
    QStatusBar *const status = Settings::instance()->ui().statusbar;
    status->clearMessage();
    std::optional<ReadRecording> recording = readRecording(recordingPath, parentWidget());
    const bool isShort = recording && recording->data.npoints < leastPoints;
    if (isShort)
        showError(parentWidget(), "Bad file!\nFile with short data, must be long data",
                  recordingPath + QString(" has %1 points; this form needs at least %2.")
                                      .arg(recording->data.npoints)
                                      .arg(leastPoints));
    if (!recording || isShort) {
        status->showMessage(QFileInfo(recordingPath).fileName() +
                            " is not open. Choose a command of the menus to open a recording.");
        deleteLater();
        return false;
    }
    data = std::move(recording->data);
    readProblem = recording->problem;
    return true;
}

void RecordingForm::install(QWidget *plot, QWidget *panel)
{
    fieldPanel = panel;
    fillCentralWidget(this, plot, panel);
    findChild<QLabel *>("recording")->setText(recordingSummary(data).join('\n'));
    showDataEnd(findChild<QLabel *>("dataEnd"), data);
    offerSwitchedChannels(findChild<QCheckBox *>("leaveOutChannels"), recordingPath, data.channels);
    connect(findChild<QPushButton *>("pushButton"), &QPushButton::clicked, this,
            &RecordingForm::run);
    connect(findChild<QPushButton *>("commandButton"), &QPushButton::clicked, this,
            &RecordingForm::copyCommand);
    progress = std::make_unique<JobProgress>(worker, this);
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            showError(this, ending.problem);
    });
    lastValues = std::make_unique<LastValues>(this);
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
    const QString text = command();
    if (text.isEmpty())
        return;
    QGuiApplication::clipboard()->setText(text);
    Settings::instance()->ui().statusbar->showMessage("Copied: " + text, messageMs);
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
    return channelsToLeaveOut(findChild<QCheckBox *>("leaveOutChannels"), recordingPath,
                              data.channels);
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
