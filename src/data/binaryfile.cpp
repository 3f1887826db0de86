#include "data/binaryfile.h"

#include "data/passport.h"
#include "data/resulttotext.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace Tools {

BinaryFile recogniseBinary(const QString &path)
{
    BinaryFile binary;
    binary.path = path;
    const QString shown = QDir::toNativeSeparators(path);
    QFile file(path);
    // A pipe is refused before it is opened, because opening one waits for a writer.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        binary.problem = shown + " is not an ordinary file.";
    } else if (!file.open(QIODevice::ReadOnly)) {
        binary.problem = shown + " cannot be opened: " + file.errorString() + ".";
    } else {
        const bool isResult = isResultFile(path);
        const Passport passport = readPassport(file);
        binary.isRecording = !isResult && passport.entries.contains("npoints");
        if (!isResult && !binary.isRecording)
            binary.problem = shown + " is neither a recording (no \"npoints\" in a passport) nor a "
                                     "result file (no \"points:\" in a header).";
    }
    return binary;
}

} // namespace Tools
