#include "batch/outputfiles.h"

#include <QDir>
#include <QFileInfo>

namespace Batch {

Failure failureOf(const WriteFailure &failure)
{
    switch (failure.kind) {
    case WriteFailure::Kind::CannotCreate:
        return {ExitCode::CannotCreate,
                failure.text() +
                    " Check the name, the folder and its permissions, or choose another output."};
    case WriteFailure::Kind::CannotWrite:
        return {ExitCode::InputOutput,
                failure.text() +
                    " Nothing of it was kept; make room on the disk and run the same command "
                    "again."};
    case WriteFailure::Kind::Stopped:
        return {ExitCode::TryLater, failure.text()};
    case WriteFailure::Kind::None:
        break;
    }
    return {};
}

Failure makeFolderOf(const QString &path)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (QDir().mkpath(folder))
        return {};
    return failureOf({WriteFailure::Kind::CannotCreate, path,
                      QString("the folder %1 cannot be made").arg(folder)});
}

Failure writeOutputs(const std::vector<FileContent> &files)
{
    for (const FileContent &file : files) {
        if (Failure failure = makeFolderOf(file.path))
            return failure;
    }
    return failureOf(writeTogether(files));
}

} // namespace Batch
