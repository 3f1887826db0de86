#include "forms/days/directoryform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/errorbox.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <algorithm>

namespace {

// Why nothing of a set can be used; empty where a recording can.
QString refusal(const QString &directory, const RecordingSet &set)
{
    const QString native = QDir::toNativeSeparators(directory);
    if (!QFileInfo(directory).isDir())
        return native + ": there is no such directory.";
    if (set.entries.empty())
        return native + ": neither it nor its sub-folders hold files that end in .pnt or .pnthr.";
    if (std::any_of(set.entries.begin(), set.entries.end(),
                    [](const RecordingEntry &entry) { return entry.isUsable(); }))
        return {};
    return QString("%1: none of its %2 files is a recording. The first: %3")
        .arg(native)
        .arg(set.entries.size())
        .arg(set.entries.front().problem);
}

} // namespace

DirectoryForm::DirectoryForm(const QString &path, QWidget *parent)
    : QWidget(parent), directory(path), progress(worker, this)
{
    emptyCentralWidget();
}

DirectoryForm::~DirectoryForm() = default;

void DirectoryForm::readRecordings()
{
    using Set = std::shared_ptr<const RecordingSet>;
    worker.start<Set>(
        [path = directory](const Jobs::Control &control, const Jobs::Deliver<Set> &deliver) {
            deliver(std::make_shared<const RecordingSet>(recordingsOfFolder(path, true, control)));
        },
        [this](const Set &set) { takeRecordings(set); });
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (recordings)
            return;
        if (ending.kind == Jobs::Ending::Failed)
            showError(window(), "Bad directory!", ending.problem);
        leave();
    });
}

void DirectoryForm::takeRecordings(const std::shared_ptr<const RecordingSet> &set)
{
    const QString problem = refusal(directory, *set);
    if (!problem.isEmpty()) {
        const QPointer<DirectoryForm> self = this;
        showError(window(), "Bad directory!\nDirectory without recordings", problem);
        if (self)
            leave();
        return;
    }
    recordings = set;
    recordingsRead();
}

// Deletes this form.
void DirectoryForm::leave()
{
    emptyCentralWidget();
}
