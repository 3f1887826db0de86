#include "data/recordingset.h"

#include "base/process.h"
#include "data/recordingfile.h"
#include "data/recordingtime.h"
#include "jobs/items.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>
#include <algorithm>
#include <iterator>
#include <tuple>

namespace {

// Files asked for at once, at least: a disk over a network answers each after a millisecond, and
// the processor has little to do meanwhile.
constexpr int leastThreads = 8;

struct FolderContent {
    QStringList files;
    std::vector<RecordingEntry> unreadable; // folders
};

RecordingEntry unreadableFolder(const QString &path, const QString &reason)
{
    RecordingEntry entry;
    entry.path = path;
    entry.problem = QString("The folder %1 %2.").arg(path, reason);
    return entry;
}

RecordingEntry readHeader(const QString &path)
{
    RecordingEntry entry;
    entry.path = path;
    RecordingFile file;
    const bool isUsable = file.open(path);
    entry.header = file.header();
    entry.size = file.size();
    entry.problem = file.reason();
    if (!isUsable) {
        const QFileInfo info(path);
        const bool isThere = info.isFile() && info.isReadable();
        entry.state = isThere ? RecordingState::Damaged : RecordingState::Unreadable;
        return entry;
    }
    entry.begin = exactBegin(file.header());
    entry.announcedSize = file.announcedSize();
    entry.completePoints = file.completePoints();
    entry.state = RecordingState::Whole;
    if (entry.completePoints < entry.header.npoints) {
        entry.state = RecordingState::Short;
        entry.problem = endsEarlyText(path, entry.header);
    }
    return entry;
}

// Adds what stands in one folder and returns the folders in it.
QStringList listFolder(const QString &folder, FolderContent &content)
{
    const QFileInfo info(folder);
    if (!info.isDir() || !info.isReadable() || !info.isExecutable()) {
        const bool isThere = info.isDir();
        content.unreadable.push_back(unreadableFolder(
            folder, isThere ? "cannot be read. Check the permissions" : "is not there"));
        return {};
    }
    QStringList folders;
    // No filter of names: its patterns fail on names that are not UTF-8. System: links to files
    // that are gone.
    QDirIterator found(folder, QDir::Files | QDir::Dirs | QDir::System | QDir::NoDotAndDotDot);
    while (found.hasNext()) {
        const QString path = found.next();
        const bool isNamed = hasRecordingName(found.fileName());
        if (found.fileInfo().isDir())
            folders << path;
        else if (isNamed)
            content.files << path;
    }
    return folders;
}

FolderContent contentOf(const QString &top, bool withSubfolders, const Jobs::Control &control)
{
    FolderContent content;
    QSet<QString> known; // a link may lead back to a folder above it
    QStringList waiting = {QDir::cleanPath(QFileInfo(top).absoluteFilePath())};
    while (!waiting.isEmpty() && !control.isStopped()) {
        const QString folder = waiting.takeLast();
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        if (!canonical.isEmpty() && known.contains(canonical))
            continue;
        known.insert(canonical);
        const QStringList folders = listFolder(folder, content);
        if (withSubfolders)
            waiting += folders;
    }
    content.files.sort(); // the system names them in any order
    return content;
}

void orderByTime(std::vector<RecordingEntry> &entries)
{
    const auto key = [](const RecordingEntry &entry) {
        const bool isUnknown = !entry.begin.isValid();
        return std::tuple<bool, qint64, const QString &>(
            isUnknown, isUnknown ? 0 : entry.begin.toMSecsSinceEpoch(), entry.path);
    };
    std::sort(entries.begin(), entries.end(),
              [&](const RecordingEntry &a, const RecordingEntry &b) { return key(a) < key(b); });
}

} // namespace

bool hasRecordingName(const QString &fileName)
{
    return fileName.endsWith(".pnt", Qt::CaseInsensitive) ||
           fileName.endsWith(".pnthr", Qt::CaseInsensitive);
}

std::vector<RecordingEntry> readHeaders(const QStringList &paths, const Jobs::Control &control)
{
    setUpDates();
    std::vector<RecordingEntry> entries(std::size_t(paths.size()));
    const int threads = std::max(leastThreads, Jobs::threadCount());
    const std::vector<Jobs::Ending> endings =
        Jobs::runItems(paths.size(), threads, control, [&](int item, const Jobs::Control &) {
            entries[std::size_t(item)] = readHeader(paths[item]);
        });
    if (control.isStopped())
        return {};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (endings[i].kind == Jobs::Ending::Finished)
            continue;
        entries[i] = RecordingEntry();
        entries[i].path = paths[int(i)];
        entries[i].problem = paths[int(i)] + ": " + endings[i].problem;
    }
    return entries;
}

QStringList filesOnce(const QStringList &paths)
{
    QStringList once;
    QSet<QString> known;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        const QString canonical = info.canonicalFilePath();
        const QString absolute = QDir::cleanPath(info.absoluteFilePath());
        const QString &key = canonical.isEmpty() ? absolute : canonical;
        if (known.contains(key))
            continue;
        known.insert(key);
        once << absolute;
    }
    return once;
}

RecordingSet recordingsOfFiles(const QStringList &paths, const Jobs::Control &control)
{
    RecordingSet set;
    set.entries = readHeaders(filesOnce(paths), control);
    set.wasStopped = control.isStopped();
    orderByTime(set.entries);
    return set;
}

RecordingSet recordingsOfFolder(const QString &folder, bool withSubfolders,
                                const Jobs::Control &control)
{
    FolderContent content = contentOf(folder, withSubfolders, control);
    RecordingSet set = recordingsOfFiles(content.files, control);
    if (set.wasStopped)
        return set;
    std::move(content.unreadable.begin(), content.unreadable.end(),
              std::back_inserter(set.entries));
    orderByTime(set.entries);
    return set;
}
