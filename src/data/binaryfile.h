#pragma once

#include <QString>

namespace Tools {

/// A file that can be turned into text.
struct BinaryFile {
    QString path;
    bool isRecording = false; ///< false: a result file
    QString problem;          ///< why it is neither, for the user to read; empty otherwise
};

/// Looks at the header of a file to tell recordings from result files.
BinaryFile recogniseBinary(const QString &path);

} // namespace Tools
